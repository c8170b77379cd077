#include "framework/dmemem/Mit.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "framework/mo/Transactor.h"

namespace {

using mo::Dn;
using mo::Mo;

std::shared_ptr<Mo> object(const char* dn, std::uint32_t classId = 1) {
  return std::make_shared<Mo>(classId, Dn(dn));
}

std::vector<std::string> namesBelow(const dmemem::Mit& tree, const char* dn) {
  std::vector<std::string> names;
  for (const auto& each : tree.below(Dn(dn))) {
    names.push_back(each->dn().text().str());
  }
  return names;
}

TEST(DmememMit, PutAndFind_GiveTheNewestObject) {
  dmemem::Mit tree(nullptr);
  tree.put(object("sys", 1));
  const auto before = tree.find(Dn("sys"));
  tree.put(object("sys", 2));
  EXPECT_EQ(tree.find(Dn("sys"))->classId(), 2U);
  EXPECT_EQ(before->classId(), 1U);
  EXPECT_EQ(tree.size(), 1U);
  EXPECT_EQ(tree.find(Dn("other")), nullptr);
}

TEST(DmememMit, Null_IsNotPut) {
  dmemem::Mit tree(nullptr);
  tree.put(nullptr);
  EXPECT_EQ(tree.size(), 0U);
}

TEST(DmememMit, Remove_TakesOneObjectOut) {
  dmemem::Mit tree(nullptr);
  tree.put(object("sys"));
  tree.put(object("sys/slot-1"));
  EXPECT_TRUE(tree.remove(Dn("sys")));
  EXPECT_FALSE(tree.remove(Dn("sys")));
  EXPECT_NE(tree.find(Dn("sys/slot-1")), nullptr);
}

TEST(DmememMit, Below_IsTheSubtreeWithoutItselfAndItsNeighbours) {
  dmemem::Mit tree(nullptr);
  for (const char* dn :
       {"", "sys", "sys-x", "sys/slot-1", "sys/slot-1/app-1", "sys/slot-10", "sys0", "sz"}) {
    tree.put(object(dn));
  }
  using Names = std::vector<std::string>;
  EXPECT_EQ(namesBelow(tree, "sys"), (Names{"sys/slot-1", "sys/slot-1/app-1", "sys/slot-10"}));
  EXPECT_EQ(namesBelow(tree, "sys/slot-1"), (Names{"sys/slot-1/app-1"}));
  EXPECT_EQ(namesBelow(tree, "").size(), 7U);
  EXPECT_TRUE(namesBelow(tree, "sys/slot-1/app-1").empty());
}

TEST(DmememMit, RolledBack_IsAsItWas) {
  mo::Transactor transactor(0, 1);
  dmemem::Mit tree(&transactor);
  tree.put(object("kept", 1));
  tree.put(object("removed", 1));
  {
    const mo::Transactor::Scope scope(transactor);
    tree.put(object("kept", 2));
    tree.put(object("new", 1));
    tree.remove(Dn("removed"));
  }
  EXPECT_EQ(tree.find(Dn("kept"))->classId(), 1U);
  EXPECT_EQ(tree.find(Dn("new")), nullptr);
  EXPECT_NE(tree.find(Dn("removed")), nullptr);
}

TEST(DmememMit, Committed_Stays) {
  mo::Transactor transactor(0, 1);
  dmemem::Mit tree(&transactor);
  mo::Transactor::Scope scope(transactor);
  tree.put(object("new"));
  scope.commit();
  EXPECT_NE(tree.find(Dn("new")), nullptr);
}

TEST(DmememMit, FourThreads_LoseNothing) {
  dmemem::Mit tree(nullptr);
  {
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < 4; ++thread) {
      threads.emplace_back([&tree, thread] {
        for (int i = 0; i < 100; ++i) {
          const std::string name = "t" + std::to_string(thread) + "/" + std::to_string(i);
          tree.put(object(name.c_str()));
          EXPECT_NE(tree.find(Dn(name)), nullptr);
          static_cast<void>(tree.below(Dn("t0")));
        }
      });
    }
  }
  EXPECT_EQ(tree.size(), 400U);
}

}  // namespace
