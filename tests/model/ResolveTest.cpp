#include <gtest/gtest.h>

#include <memory>

#include "model/AllClasses.h"

namespace {

using sd::AppInstanceMo;

template <class T>
T* attachTo(mo::Mo& object) {
  return static_cast<T*>(object.attach(std::make_unique<T>()));
}

TEST(Resolve, InstanceWithNothing_ResolvesNull) {
  const AppInstanceMo instance;
  EXPECT_EQ(instance.resolveSdLdu(), nullptr);
  EXPECT_EQ(instance.resolveSdResource(), nullptr);
  EXPECT_EQ(instance.resolveSdClusterBootstrap(), nullptr);
  EXPECT_EQ(instance.resolveSdInternalMgmtBootstrap(), nullptr);
  EXPECT_EQ(instance.resolveSdMgmtBootstrap(), nullptr);
}

TEST(Resolve, Instance_FindsEachClassAmongTheOthers) {
  AppInstanceMo instance;
  const auto* const mgmt = attachTo<sd::MgmtBootstrapMo>(instance);
  const auto* const internal = attachTo<sd::InternalMgmtBootstrapMo>(instance);
  const auto* const cluster = attachTo<sd::ClusterBootstrapMo>(instance);
  const auto* const resource = attachTo<sd::ResourceMo>(instance);
  const auto* const ldu = attachTo<sd::LduMo>(instance);
  EXPECT_EQ(instance.resolveSdLdu(), ldu);
  EXPECT_EQ(instance.resolveSdResource(), resource);
  EXPECT_EQ(instance.resolveSdClusterBootstrap(), cluster);
  EXPECT_EQ(instance.resolveSdInternalMgmtBootstrap(), internal);
  EXPECT_EQ(instance.resolveSdMgmtBootstrap(), mgmt);
}

TEST(Resolve, Addresses_AreTheOwnOnes) {
  sd::ExternalLduLinkMo link;
  sd::InternalMgmtBootstrapMo internal;
  sd::MgmtBootstrapMo mgmt;
  EXPECT_EQ(link.resolveSdIP(), nullptr);
  EXPECT_EQ(internal.resolveSdIP(), nullptr);
  EXPECT_EQ(internal.resolveSdSystemMac(), nullptr);
  EXPECT_EQ(mgmt.resolveSdIP(), nullptr);
  EXPECT_EQ(mgmt.resolveSdIPV6(), nullptr);
  const auto* const ofLink = attachTo<sd::IPMo>(link);
  const auto* const mac = attachTo<sd::SystemMacMo>(internal);
  const auto* const ofInternal = attachTo<sd::IPMo>(internal);
  const auto* const v6 = attachTo<sd::IPV6Mo>(mgmt);
  const auto* const ofMgmt = attachTo<sd::IPMo>(mgmt);
  EXPECT_EQ(link.resolveSdIP(), ofLink);
  EXPECT_EQ(internal.resolveSdIP(), ofInternal);
  EXPECT_EQ(internal.resolveSdSystemMac(), mac);
  EXPECT_EQ(mgmt.resolveSdIP(), ofMgmt);
  EXPECT_EQ(mgmt.resolveSdIPV6(), v6);
}

}  // namespace
