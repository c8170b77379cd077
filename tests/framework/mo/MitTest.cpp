#include "framework/mo/Mit.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>

#include "framework/mo/StimuliHelper.h"
#include "framework/mo/TreeInitializer.h"

namespace {

using mo::Dn;
using mo::Mit;
using mo::Mo;

class MapMit final : public Mit {
 public:
  void put(Object object) override { objects[object->dn()] = object; }
  bool remove(const Dn& dn) override { return objects.erase(dn) != 0; }
  Object find(const Dn& dn) const override {
    const auto found = objects.find(dn);
    return found == objects.end() ? nullptr : found->second;
  }
  std::vector<Object> below(const Dn&) const override { return {}; }
  std::size_t size() const override { return objects.size(); }

  std::map<Dn, Object> objects;
};

class MitRegistry : public testing::Test {
 protected:
  ~MitRegistry() override {
    Mit::registerInstance(nullptr);
    mo::TreeInitializer::INSTANCE = nullptr;
  }
  MapMit tree_;
};

TEST_F(MitRegistry, RegisteredTree_IsTheInstance) {
  Mit::registerInstance(&tree_);
  EXPECT_EQ(Mit::instance(), &tree_);
  EXPECT_EQ(tree_.size(), 0U);
}

TEST_F(MitRegistry, WithAnInitializer_TheTreeGetsItsRoot) {
  mo::MoTreeInitializer initializer;
  mo::TreeInitializer::INSTANCE = &initializer;
  Mit::registerInstance(&tree_);
  ASSERT_NE(tree_.find(Dn()), nullptr);
  EXPECT_EQ(tree_.find(Dn())->classId(), 1U);
}

TEST(MoStimuliHelper, Configurations_BecomeObjectsWithWhatTravelsBelow) {
  method::Config slot(5, Dn("sys/slot-3"));
  slot.set(7, std::uint32_t{3});
  slot.addChild(method::Config(6, Dn("sys/slot-3/app-1")));
  method::ConfigSet set;
  set.append(slot);
  set.append(method::Config(5, Dn("sys/slot-4")));
  MapMit tree;
  EXPECT_EQ(mo::MoStimuliHelper().apply(set, tree), 3U);
  ASSERT_NE(tree.find(Dn("sys/slot-3")), nullptr);
  ASSERT_NE(tree.find(Dn("sys/slot-3"))->find(7), nullptr);
  EXPECT_EQ(*tree.find(Dn("sys/slot-3"))->find(7), method::Value(std::uint32_t{3}));
  EXPECT_NE(tree.find(Dn("sys/slot-3/app-1")), nullptr);
  EXPECT_NE(tree.find(Dn("sys/slot-4")), nullptr);
}

TEST(Mo, PropertyThatIsNotSet_IsNull) {
  Mo object(5, Dn("a"));
  EXPECT_EQ(object.find(1), nullptr);
  object.set(1, base::String("x"));
  object.set(1, base::String("y"));
  ASSERT_NE(object.find(1), nullptr);
  EXPECT_EQ(*object.find(1), method::Value(base::String("y")));
}

TEST(Mo, DeleteObjectByConfig_FreesTheObjectAndTakesNull) {
  struct Counted : Mo {
    explicit Counted(int& freed) : Mo(1, Dn()), freed_(freed) {}
    ~Counted() override { ++freed_; }
    int& freed_;
  };
  int freed = 0;
  Mo::deleteObjectByConfig(new Counted(freed), 0);
  Mo::deleteObjectByConfig(nullptr, 0);
  EXPECT_EQ(freed, 1);
}

}  // namespace
