#include <murvane/core/CloneableObjPtr.h>
#include <murvane/core/Fallible.h>
#include <murvane/core/LimitedObjPtr.h>
#include <murvane/core/MemAccount.h>
#include <murvane/core/Object.h>
#include <murvane/core/RefCountedObjPtr.h>
#include <testkit/LogRecorder.h>
#include <testkit/TraceRecords.h>

#include <gmock/gmock.h>

#include <memory>
#include <ostream>
#include <sstream>
#include <string>
#include <utility>

namespace {

using testing::IsEmpty;
using testkit::failedAssertion;
using testkit::LogRecorder;
using testkit::LogRecords;
using Zantrix::Cloneable;
using Zantrix::CloneableObjPtr;
using Zantrix::Fallible;
using Zantrix::LimitedObjPtr;
using Zantrix::MemAccount;
using Zantrix::RefCountedObjPtr;

int g_living = 0;

/// Counts itself.
struct Counted : virtual Cloneable {
    explicit Counted(int aNumber = 0) : number(aNumber) { ++g_living; }
    Counted(const Counted& other) : Zantrix::Object(), Cloneable(), number(other.number) { ++g_living; }
    Counted& operator=(const Counted&) = delete;
    ~Counted() override { --g_living; }
    Cloneable* clone() const override { return new Counted(*this); }
    int number;
};

struct Derived : Counted {
    using Counted::Counted;
    Cloneable* clone() const override { return new Derived(*this); }
};

/// Forgot to say how it is cloned: its clones are of the base's type.
struct Forgetful : Counted {};

struct Uncloneable : Counted {
    Cloneable* clone() const override { return nullptr; }
};

class OwnerPointers : public testing::Test {
protected:
    OwnerPointers() { g_living = 0; }
    ~OwnerPointers() override { EXPECT_EQ(g_living, 0); }
};

using CloneablePointer = OwnerPointers;

TEST_F(CloneablePointer, IsEmptyByDefault) {
    LogRecorder log;
    const CloneableObjPtr<Counted> pointer;
    EXPECT_TRUE(pointer.isNull());
    EXPECT_FALSE(pointer);
    EXPECT_EQ(pointer.get(), nullptr);
    const CloneableObjPtr<Counted> copy(pointer);
    EXPECT_TRUE(copy.isNull());
    const CloneableObjPtr<Counted> null(nullptr);
    EXPECT_TRUE(null.isNull());
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(CloneablePointer, OwnsItsObject) {
    {
        const CloneableObjPtr<Counted> pointer(new Derived(7));
        EXPECT_FALSE(pointer.isNull());
        EXPECT_EQ(pointer->number, 7);
        EXPECT_EQ((*pointer).number, 7);
        EXPECT_EQ(g_living, 1);
    }
    EXPECT_EQ(g_living, 0);
}

TEST_F(CloneablePointer, OwnsAnObjectWhoseTypeIsHidden) {
    LogRecorder log;
    Cloneable* const pHidden = new Derived(7);
    const CloneableObjPtr<Counted> pointer(pHidden);
    ASSERT_FALSE(pointer.isNull());
    EXPECT_EQ(pointer->number, 7);
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(CloneablePointer, ClonesItsObjectWhenCopied) {
    const CloneableObjPtr<Counted> pointer(new Derived(7));
    CloneableObjPtr<Counted> copy(pointer);
    EXPECT_EQ(g_living, 2);
    EXPECT_NE(copy.get(), pointer.get());
    EXPECT_NE(dynamic_cast<Derived*>(copy.get()), nullptr);
    copy->number = 8;
    EXPECT_EQ(pointer->number, 7);
    copy = pointer;
    EXPECT_EQ(copy->number, 7);
    EXPECT_EQ(g_living, 2) << "the old object is gone";
    CloneableObjPtr<Counted>& same = copy;
    copy = same;
    EXPECT_EQ(copy->number, 7);
    copy = CloneableObjPtr<Counted>();
    EXPECT_TRUE(copy.isNull());
    EXPECT_EQ(g_living, 1);
}

TEST_F(CloneablePointer, MovesWithoutCloning) {
    CloneableObjPtr<Counted> pointer(new Counted(7));
    Counted* const pObject = pointer.get();
    CloneableObjPtr<Counted> moved(std::move(pointer));
    EXPECT_EQ(moved.get(), pObject);
    EXPECT_TRUE(pointer.isNull());
    pointer = std::move(moved);
    EXPECT_EQ(pointer.get(), pObject);
    EXPECT_EQ(g_living, 1);
}

TEST_F(CloneablePointer, HandsItsObjectOver) {
    CloneableObjPtr<Counted> pointer(new Counted);
    const std::unique_ptr<Counted> owner(pointer.release());
    EXPECT_TRUE(pointer.isNull());
    EXPECT_EQ(g_living, 1);
}

TEST_F(CloneablePointer, RefusesAnObjectOfAnotherKind) {
    LogRecorder log;
    const CloneableObjPtr<Derived> pointer(new Counted);
    EXPECT_TRUE(pointer.isNull());
    EXPECT_EQ(log.records(), LogRecords{failedAssertion("(pCloneable == 0) || m_ptr", "CloneableObjPtr")});
    EXPECT_EQ(g_living, 0) << "and does not leak it";
}

TEST_F(CloneablePointer, RefusesACloneOfAnotherKind) {
    LogRecorder log;
    const CloneableObjPtr<Forgetful> pointer(new Forgetful);
    EXPECT_THAT(log.records(), IsEmpty());
    const CloneableObjPtr<Forgetful> copy(pointer);
    EXPECT_TRUE(copy.isNull());
    EXPECT_EQ(log.take(), LogRecords{failedAssertion("aCP.isNull() || m_ptr", "CloneableObjPtr")});
    EXPECT_EQ(g_living, 1);

    const CloneableObjPtr<Counted> uncloneable(new Uncloneable);
    const CloneableObjPtr<Counted> none(uncloneable);
    EXPECT_TRUE(none.isNull());
    EXPECT_EQ(log.take(), LogRecords{failedAssertion("aCP.isNull() || m_ptr", "CloneableObjPtr")});
}

using CountedPointer = OwnerPointers;

TEST_F(CountedPointer, SharesItsObjectUntilTheLastHolderGoes) {
    const MemAccount& counts = MemAccount::named("ReferenceCount");
    const std::int64_t before = counts.live();
    {
        RefCountedObjPtr<Counted> outer;
        EXPECT_EQ(outer.useCount(), 0u);
        EXPECT_TRUE(outer.isNull());
        {
            const RefCountedObjPtr<Counted> first(new Counted(5));
            EXPECT_EQ(first.useCount(), 1u);
            EXPECT_EQ(counts.live(), before + 1);
            const RefCountedObjPtr<Counted> second(first);
            outer = second;
            EXPECT_EQ(first.useCount(), 3u);
            EXPECT_EQ(outer.get(), first.get());
            EXPECT_EQ(counts.live(), before + 1) << "one count for all";
        }
        EXPECT_EQ(outer.useCount(), 1u);
        EXPECT_EQ(outer->number, 5);
        RefCountedObjPtr<Counted>& same = outer;
        outer = same;
        EXPECT_EQ(outer.useCount(), 1u);
        EXPECT_EQ(g_living, 1);
    }
    EXPECT_EQ(counts.live(), before);
}

TEST_F(CountedPointer, LetsItsObjectGoWhenAssigned) {
    RefCountedObjPtr<Counted> pointer(new Counted);
    pointer = RefCountedObjPtr<Counted>(new Counted(2));
    EXPECT_EQ(g_living, 1);
    EXPECT_EQ((*pointer).number, 2);
    pointer = RefCountedObjPtr<Counted>();
    EXPECT_EQ(g_living, 0);
    EXPECT_FALSE(pointer);
}

TEST_F(CountedPointer, MovesWithoutCounting) {
    RefCountedObjPtr<Counted> pointer(new Counted);
    const RefCountedObjPtr<Counted> moved(std::move(pointer));
    EXPECT_EQ(moved.useCount(), 1u);
    EXPECT_TRUE(pointer.isNull());
    EXPECT_EQ(pointer.useCount(), 0u);
}

TEST_F(CountedPointer, OfNullNeedsNoCount) {
    const std::int64_t before = MemAccount::named("ReferenceCount").live();
    const RefCountedObjPtr<Counted> pointer(nullptr);
    EXPECT_EQ(pointer.useCount(), 0u);
    EXPECT_EQ(MemAccount::named("ReferenceCount").live(), before);
}

TEST(LimitedObjPtr, PointsWithoutOwning) {
    int number = 1;
    {
        LimitedObjPtr<int> pointer(&number);
        EXPECT_FALSE(pointer.isNull());
        *pointer = 2;
        EXPECT_EQ(pointer.get(), &number);
        pointer = LimitedObjPtr<int>();
        EXPECT_TRUE(pointer.isNull());
        EXPECT_FALSE(pointer);
    }
    EXPECT_EQ(number, 2);
}

TEST(Fallible, IsAValueOrNothing) {
    const Fallible<std::string> nothing;
    EXPECT_FALSE(nothing.isValid());
    EXPECT_FALSE(nothing);
    EXPECT_EQ(nothing.getValue(), "");
    const auto find = [](bool found) -> Fallible<std::string> {
        if (!found) {
            return {};
        }
        return std::string("value");
    };
    EXPECT_TRUE(find(true).isValid());
    EXPECT_EQ(find(true).getValue(), "value");
    EXPECT_EQ(*find(true), "value");
    EXPECT_FALSE(find(false).isValid());
    EXPECT_TRUE(Fallible<int>(0).isValid()) << "zero is a value";
}

TEST(OutputStreamable, IsPrintedByItsWrite) {
    struct Printable : Zantrix::OutputStreamable {
        std::ostream& write(std::ostream& os) const override { return os << "me " << 255; }
    };
    std::ostringstream os;
    os << std::hex << Printable() << "!";
    EXPECT_EQ(os.str(), "me ff!");
}

}  // namespace
