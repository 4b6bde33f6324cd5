#include <murvane/core/SingletonRegistry.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <thread>

namespace {

using Zantrix::SingletonRegistry;

TEST(SingletonRegistry, IsOneForTheProcess) {
    EXPECT_EQ(&SingletonRegistry::getInstance(), &SingletonRegistry::getInstance());
}

TEST(SingletonRegistry, KeepsTheFirstObjectOfAName) {
    SingletonRegistry& registry = SingletonRegistry::getInstance();
    EXPECT_EQ(registry.find("RegistryTest.first"), nullptr);
    int first = 1;
    int second = 2;
    EXPECT_EQ(registry.registerObject("RegistryTest.first", &first, nullptr), &first);
    EXPECT_EQ(registry.registerObject("RegistryTest.first", &second, nullptr), &first);
    EXPECT_EQ(registry.find("RegistryTest.first"), &first);
    EXPECT_EQ(registry.registerObject("RegistryTest.second", &second, nullptr), &second);
}

TEST(SingletonRegistry, GivesEveryThreadTheSameObject) {
    SingletonRegistry& registry = SingletonRegistry::getInstance();
    int objects[2] = {};
    void* held[2] = {};
    const auto work = [&](int i) { held[i] = registry.registerObject("RegistryTest.threads", &objects[i], nullptr); };
    std::thread first(work, 0);
    std::thread second(work, 1);
    first.join();
    second.join();
    EXPECT_EQ(held[0], held[1]);
    EXPECT_EQ(registry.find("RegistryTest.threads"), held[0]);
}

TEST(SingletonRegistryDeathTest, DestroysInReverseOrderWhenTheProcessEnds) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto end = [] {
        SingletonRegistry& registry = SingletonRegistry::getInstance();
        const auto destroy = [](void* object) {
            // Others may still be asked for meanwhile.
            const bool found = SingletonRegistry::getInstance().find("RegistryTest.a") != nullptr;
            std::fprintf(stderr, "%s %d;", static_cast<const char*>(object), found ? 1 : 0);
        };
        static char a[] = "a";
        static char b[] = "b";
        static char late[] = "late";
        registry.registerObject("RegistryTest.a", a, destroy);
        registry.registerObject("RegistryTest.b", b, destroy);
        registry.registerObject("RegistryTest.b", late, destroy);
        registry.registerObject("RegistryTest.undestroyed", late, nullptr);
        std::exit(0);
    };
    EXPECT_EXIT(end(), testing::ExitedWithCode(0), "^b 1;a 1;$");
}

}  // namespace
