#include <murvane/core/MemAccount.h>

#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <string>
#include <thread>

namespace {

using Zantrix::MemAccount;

struct Base {
    MURVANE_MEM_ACCOUNT("MemAccountTest")
    virtual ~Base() = default;
    int number = 1;
};

struct Derived : Base {
    double more[10] = {};
};

struct Throwing : Base {
    Throwing() { throw 1; }
};

std::int64_t live() {
    return MemAccount::named("MemAccountTest").live();
}

TEST(MemAccount, IsOneObjectPerName) {
    EXPECT_EQ(&MemAccount::named("One"), &MemAccount::named(std::string("One").c_str()));
    EXPECT_NE(&MemAccount::named("One"), &MemAccount::named("Two"));
}

TEST(MemAccount, CountsWhatLives) {
    MemAccount account;
    EXPECT_EQ(account.live(), 0);
    void* const first = account.allocate(10);
    void* const second = account.allocate(0);
    EXPECT_EQ(account.live(), 2);
    account.deallocate(first, 10);
    account.deallocate(second);
    EXPECT_EQ(account.live(), 0);
}

TEST(MemAccount, IgnoresNull) {
    MemAccount account;
    account.deallocate(nullptr);
    account.deallocate(nullptr, 8);
    EXPECT_EQ(account.live(), 0);
}

TEST(MemAccount, CountsTheObjectsOfItsClass) {
    EXPECT_STREQ(Base::getMemAccountName(), "MemAccountTest");
    EXPECT_EQ(&Base::getMemAccount(), &MemAccount::named("MemAccountTest"));
    const std::int64_t before = live();
    {
        const auto pBase = std::make_unique<Base>();
        const std::unique_ptr<Base> pDerived = std::make_unique<Derived>();
        EXPECT_EQ(live(), before + 2) << "a derived object is deleted through its base";
        const auto pArray = std::make_unique<Base[]>(5);
        EXPECT_EQ(live(), before + 3) << "an array is one allocation";
        const Base onTheStack;
        EXPECT_EQ(onTheStack.number, 1);
        EXPECT_EQ(live(), before + 3);
    }
    EXPECT_EQ(live(), before);
}

TEST(MemAccount, DoesNotCountAnObjectBuiltInPlace) {
    const std::int64_t before = live();
    alignas(Base) unsigned char place[sizeof(Base)];
    Base* const pBase = new (place) Base;
    EXPECT_EQ(live(), before);
    pBase->~Base();
}

TEST(MemAccount, CountsAnObjectMadeWithoutThrowing) {
    const std::int64_t before = live();
    const std::unique_ptr<Base> pBase(new (std::nothrow) Derived);
    ASSERT_NE(pBase, nullptr);
    EXPECT_EQ(live(), before + 1);
    EXPECT_THROW(delete new (std::nothrow) Throwing, int);
    EXPECT_EQ(live(), before + 1);
}

TEST(MemAccount, ForgetsAnObjectWhoseConstructorThrew) {
    const std::int64_t before = live();
    EXPECT_THROW(delete new Throwing, int);
    EXPECT_EQ(live(), before);
}

TEST(MemAccount, TellsOfEveryAccount) {
    MemAccount& account = MemAccount::named("MemAccountTest.Snapshot");
    EXPECT_EQ(MemAccount::snapshot().at("MemAccountTest.Snapshot"), 0);
    void* const memory = account.allocate(1);
    EXPECT_EQ(MemAccount::snapshot().at("MemAccountTest.Snapshot"), 1);
    account.deallocate(memory, 1);
    EXPECT_EQ(MemAccount::snapshot().at("MemAccountTest.Snapshot"), 0);
}

TEST(MemAccount, CountsFromSeveralThreads) {
    const std::int64_t before = live();
    const auto work = [] {
        for (int i = 0; i < 5000; ++i) {
            delete new Base;
            MemAccount::named("MemAccountTest.Threads").live();
        }
    };
    std::thread first(work);
    std::thread second(work);
    first.join();
    second.join();
    EXPECT_EQ(live(), before);
}

}  // namespace
