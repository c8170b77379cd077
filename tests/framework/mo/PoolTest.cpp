#include "framework/mo/Pool.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <set>
#include <thread>
#include <vector>

namespace {

using mo::Dn;
using mo::Pool;

/// A class for each test: the pool is the process's, and the tests' order is not given.
template <std::uint32_t kId>
class CountedMo final : public mo::Mo {
 public:
  static constexpr std::uint32_t kClassId = kId;
  static constexpr mo::Property<std::uint32_t> kNumber{kId * 0x100, "number"};
  static constexpr auto kProperties = mo::describe(kNumber);
  static constexpr mo::ClassInfo kClass{kClassId, "counted", kProperties};

  explicit CountedMo(const Dn& dn = {}) : Mo(kClass, dn) { ++alive; }
  ~CountedMo() override { --alive; }

  static inline std::atomic<int> alive{0};
};

TEST(Pool, WithoutObjects_AllocIsNull) {
  EXPECT_EQ(Pool::alloc(0x6001), nullptr);
}

TEST(Pool, ReleasedObject_ComesBackEmpty) {
  using Me = CountedMo<0x6002>;
  auto* const object = new Me(Dn("a"));
  object->set(Me::kNumber, 5);
  Pool::release(object);
  EXPECT_EQ(Me::alive, 1);
  const std::unique_ptr<mo::Mo> back(Pool::alloc(0x6002));
  EXPECT_EQ(back.get(), object);
  EXPECT_TRUE(back->dn().empty());
  EXPECT_TRUE(back->values().empty());
  EXPECT_TRUE(back->changeFlags().empty());
  EXPECT_EQ(Pool::alloc(0x6002), nullptr);
}

TEST(Pool, AnotherClass_GetsNothing) {
  Pool::release(new CountedMo<0x6003>);
  EXPECT_EQ(Pool::alloc(0x6013), nullptr);
  delete Pool::alloc(0x6003);
}

TEST(Pool, BeyondTheBound_FreesTheObject) {
  using Me = CountedMo<0x6004>;
  for (int i = 0; i < 300; ++i) {
    Pool::release(new Me);
  }
  EXPECT_EQ(Me::alive, 256);
  while (const std::unique_ptr<mo::Mo> object{Pool::alloc(0x6004)}) {
  }
  EXPECT_EQ(Me::alive, 0);
}

TEST(Pool, PlainObjectAndNull_AreNotKept) {
  Pool::release(new mo::Mo(0x6005, Dn()));
  Pool::release(nullptr);
  EXPECT_EQ(Pool::alloc(0x6005), nullptr);
}

TEST(Pool, Obtained_GoesBackAtTheEndOfItsScope) {
  using Me = CountedMo<0x6006>;
  const Me* first = nullptr;
  {
    const Pool::Lent<Me> object = Pool::obtain<Me>(Dn("a"));
    EXPECT_EQ(object->dn(), Dn("a"));
    object->set(Me::kNumber, 5);
    first = object.get();
  }
  const Pool::Lent<Me> again = Pool::obtain<Me>(Dn("b"));
  EXPECT_EQ(again.get(), first);
  EXPECT_EQ(again->dn(), Dn("b"));
  EXPECT_EQ(again->get(Me::kNumber), 0U);
  EXPECT_TRUE(again->changeFlags().empty());
}

TEST(Pool, TwoThreads_NeverShareAnObject) {
  using Me = CountedMo<0x6007>;
  std::atomic<int> shared{0};
  const auto work = [&shared](std::uint32_t own) {
    for (int round = 0; round < 2000; ++round) {
      std::vector<Pool::Lent<Me>> held;
      for (int i = 0; i < 5; ++i) {
        held.push_back(Pool::obtain<Me>());
        held.back()->set(Me::kNumber, own);
      }
      for (const auto& object : held) {
        shared += object->get(Me::kNumber) == own ? 0 : 1;
      }
    }
  };
  std::thread first(work, 1);
  std::thread second(work, 2);
  first.join();
  second.join();
  EXPECT_EQ(shared, 0);
  EXPECT_LE(Me::alive, 10);
}

}  // namespace
