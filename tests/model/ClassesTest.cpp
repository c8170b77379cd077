#include "model/AllClasses.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "model/Catalog.h"

namespace {

using method::Config;
using method::Value;

constexpr std::uint8_t kBool = 1;
constexpr std::uint8_t kU8 = 2;
constexpr std::uint8_t kI32 = 3;
constexpr std::uint8_t kU32 = 4;
constexpr std::uint8_t kU64 = 5;
constexpr std::uint8_t kFloat = 6;
constexpr std::uint8_t kText = 7;

struct Expected {
  std::uint32_t id;
  std::string_view name;
  std::uint8_t kind;
  std::uint32_t group;
  bool isDurable = true;
};

void expectClass(std::uint32_t id, std::string_view name, const std::vector<Expected>& properties) {
  const mo::ClassInfo* const info = model::findClass(id);
  ASSERT_NE(info, nullptr) << name;
  EXPECT_EQ(info->name, name);
  EXPECT_EQ(model::findClass(name), info);
  ASSERT_EQ(info->properties.size(), properties.size()) << name;
  for (std::size_t i = 0; i < properties.size(); ++i) {
    const mo::PropertyInfo& row = info->properties[i];
    EXPECT_EQ(row.id, properties[i].id) << properties[i].name;
    EXPECT_EQ(row.name, properties[i].name);
    EXPECT_EQ(static_cast<std::uint8_t>(row.kind), properties[i].kind) << row.name;
    EXPECT_EQ(row.group, properties[i].group) << row.name;
    EXPECT_EQ(row.isDurable(), properties[i].isDurable) << row.name;
  }
}

TEST(Classes, ReportedMonitor_HasTheseProperties) {
  expectClass(0x286, "monitor",
              {{0x82f, "osVersion", kText, 2},
               {0x837, "sysUptime", kText, 2},
               {0x830, "cpuMinus1", kFloat, 2},
               {0x831, "cpuMinus5", kFloat, 2},
               {0x832, "cpuMinus15", kFloat, 2},
               {0x2811, "memTotal", kU32, 2},
               {0x2812, "memFree", kU32, 2},
               {0x2813, "memUsed", kU32, 2},
               {0x2814, "appsMemTotal", kU32, 2},
               {0x836, "diskCount", kI32, 2},
               {0x30a0, "observedAt", kU64, 4}});
}

TEST(Classes, ReportedDisk_HasTheseProperties) {
  expectClass(0x289, "diskFileSystem",
              {{0x841, "diskName", kText, 1},
               {0x2815, "diskTotal", kU32, 2},
               {0x2816, "diskFree", kU32, 2},
               {0x2817, "diskUsed", kU32, 2},
               {0x843, "diskMountPoint", kText, 2},
               {0x30b0, "observedAt", kU64, 4}});
}

TEST(Classes, ReportedAppInstance_HasTheseProperties) {
  expectClass(0x28f, "reportedAppInstance",
              {{0x87e, "appInstanceId", kText, 1},
               {0x883, "state", kU8, 2},
               {0x88d, "externalSoftwareManagement", kBool, 2},
               {0x880, "installedVersion", kText, 2},
               {0x88c, "hotfixes", kText, 2},
               {0x30c0, "observedAt", kU64, 4},
               {0x30c1, "isFailed", kBool, 4},
               {0x30c2, "failures", kU32, 4},
               {0x30c3, "failedAt", kU64, 4}});
}

TEST(Classes, SystemAndChassis_HaveTheseProperties) {
  expectClass(0x300, "system", {{0x3000, "clusterId", kU64, 2}, {0x3001, "epoch", kU64, 2}});
  expectClass(0x301, "chassis",
              {{0x3010, "id", kU32, 1},
               {0x3011, "name", kText, 2},
               {0x3012, "model", kText, 2},
               {0x3013, "serial", kText, 2},
               {0x3014, "isDescribed", kBool, 2}});
}

TEST(Classes, Job_HasTheseProperties) {
  expectClass(0x320, "job",
              {{0x30d0, "id", kU64, 1},
               {0x30d1, "verb", kText, 2},
               {0x30d2, "target", kText, 2},
               {0x30d3, "slot", kU32, 2},
               {0x30d4, "state", kText, 2},
               {0x30d5, "cause", kText, 2},
               {0x30d6, "percentage", kU32, 2},
               {0x30d7, "attempts", kU32, 2},
               {0x30d8, "acceptedAt", kU64, 2},
               {0x30d9, "sentAt", kU64, 2},
               {0x30da, "acknowledgedAt", kU64, 2},
               {0x30db, "finishedAt", kU64, 2},
               {0x30dc, "deliverBy", kU64, 2},
               {0x30dd, "finishBy", kU64, 2},
               {0x30de, "argument", kText, 2},
               {0x30df, "reason", kText, 2},
               {0x31c0, "code", kU32, 2},
               {0x31c1, "revision", kU64, 2},
               {0x31c2, "app", kText, 2},
               {0x31c3, "finishWithin", kU64, 2},
               {0x31c4, "version", kText, 2},
               {0x31c5, "phaseBefore", kText, 2}});
}

TEST(Classes, ApplicationAndDateTime_HaveTheseProperties) {
  expectClass(0x306, "app",
              {{0x30e0, "packageFile", kText, 2},
               {0x30e1, "reqDataHdd", kU64, 2},
               {0x30e2, "deployType", kU8, 2},
               {0x30e3, "installTimeout", kU64, 2},
               {0x30e4, "uninstallTimeout", kU64, 2},
               {0x30e5, "upgradeTimeout", kU64, 2},
               {0x30e6, "vdp", kBool, 2}});
  expectClass(0x307, "dateTime", {{0x30f0, "timeZone", kText, 2}});
}

TEST(Classes, Slot_HasTheseProperties) {
  expectClass(0x302, "slot",
              {{0x3020, "number", kU32, 1},
               {0x3021, "name", kText, 2},
               {0x3022, "token", kText, 8},
               {0x3023, "admission", kU8, 2},
               {0x3024, "runningVersion", kText, 2},
               {0x3025, "runningImage", kText, 2},
               {0x3026, "runningImageSize", kU32, 2},
               {0x3027, "cachedVersion", kText, 2},
               {0x3028, "cachedImage", kText, 2},
               {0x3029, "cachedImageSize", kU32, 2},
               {0x302a, "startupVersion", kText, 2},
               {0x302b, "vendor", kText, 2},
               {0x302c, "registrations", kU32, 2, false},
               {0x302d, "slotCommand", kU32, 2},
               {0x302e, "platformLogLevel", kU8, 2}});
}

TEST(Classes, WhatTheEngineBelievesAndFinds_HasTheseProperties) {
  expectClass(0x303, "appInstance",
              {{0x3040, "appInstanceId", kText, 1},
               {0x3041, "expectedVersion", kText, 2},
               {0x3042, "expectedState", kU8, 2},
               {0x3043, "isFailed", kBool, 2},
               {0x3044, "failures", kU32, 2},
               {0x3045, "failedAt", kU64, 2},
               {0x3046, "slotId", kU32, 2},
               {0x3047, "jobType", kU8, 2},
               {0x3048, "mgmtBootstrapVersion", kText, 2},
               {0x3049, "phase", kText, 4}});
  expectClass(0x304, "operation",
              {{0x3060, "command", kText, 2},
               {0x3061, "percentage", kU32, 2},
               {0x3062, "status", kText, 2},
               {0x3063, "code", kU32, 2},
               {0x3064, "errorText", kText, 2},
               {0x3065, "startedAt", kU64, 2},
               {0x3066, "observedAt", kU64, 2}});
  expectClass(0x305, "fault",
              {{0x3080, "kind", kText, 1},
               {0x3081, "detail", kText, 2},
               {0x3082, "since", kU64, 2},
               {0x3083, "observedAt", kU64, 2},
               {0x3084, "count", kU32, 2}});
}

TEST(Classes, LogicalDeviceAndItsLinks_HaveTheseProperties) {
  expectClass(0x308, "ldu", {{0x3100, "name", kText, 1}});
  expectClass(0x309, "externalLduLink",
              {{0x3110, "portName", kText, 1},
               {0x3111, "linkInterfaceType", kU8, 2},
               {0x3112, "mgmtSubType", kU8, 2},
               {0x3113, "vlan", kU32, 2},
               {0x3114, "bladeVnic1", kText, 2},
               {0x3115, "bladeVnic2", kText, 2},
               {0x3116, "systemMac", kU64, 2},
               {0x3117, "hasMac", kBool, 2}});
  expectClass(0x30a, "appLduLink",
              {{0x3120, "name", kText, 1},
               {0x3121, "bladeVnic1", kText, 2},
               {0x3122, "bladeVnic2", kText, 2}});
}

TEST(Classes, WhatAnInstanceIsGiven_HasTheseProperties) {
  expectClass(0x30b, "resource",
              {{0x3130, "reqCpuCores", kU32, 2},
               {0x3131, "maxAllowedRam", kU32, 2},
               {0x3132, "reqDataHdd", kU32, 2},
               {0x3133, "reqSecDataHdd", kU32, 2}});
  expectClass(0x30c, "clusterBootstrap",
              {{0x3140, "ipv4PoolStart", kU32, 2},
               {0x3141, "ipv4PoolEnd", kU32, 2},
               {0x3142, "ipv4VirtIP", kU32, 2},
               {0x3143, "ipv4Netmask", kU32, 2},
               {0x3144, "ipv4Gateway", kU32, 2},
               {0x3145, "ipv6PoolStart", kText, 2},
               {0x3146, "ipv6PoolEnd", kText, 2},
               {0x3147, "ipv6VirtIP", kText, 2},
               {0x3148, "ipv6PrefixLength", kU32, 2},
               {0x3149, "ipv6Gateway", kText, 2}});
  expectClass(0x30d, "internalMgmtBootstrap", {{0x3150, "bladeVnic", kText, 2}});
  expectClass(0x30e, "mgmtBootstrap", {});
  expectClass(0x30f, "netMgmtBootstrap", {{0x3170, "key", kText, 1}, {0x3171, "value", kText, 2}});
}

TEST(Classes, AddressesAndTheBlade_HaveTheseProperties) {
  expectClass(
      0x310, "ip",
      {{0x3180, "address", kU32, 2}, {0x3181, "netmask", kU32, 2}, {0x3182, "gateway", kU32, 2}});
  expectClass(0x311, "ipv6",
              {{0x3190, "address", kText, 2},
               {0x3191, "prefixLength", kU32, 2},
               {0x3192, "gateway", kText, 2}});
  expectClass(0x312, "systemMac", {{0x31a0, "mac", kU64, 2}});
  expectClass(0x313, "blade", {{0x31b0, "serial", kText, 2}, {0x31b1, "model", kText, 2}});
}

TEST(Classes, EnumeratedProperties_HaveTheseTexts) {
  sm::AppMo app;
  EXPECT_EQ(app.stringify(sm::AppMo::kDeployType), "unknown");
  for (const auto& [value, text] : std::vector<std::pair<std::uint8_t, const char*>>{
           {0, "unknown"}, {1, "native"}, {2, "lxc"}, {3, "vm"}, {4, "unknown"}}) {
    app.set(sm::AppMo::kDeployType, value);
    EXPECT_EQ(app.stringify(sm::AppMo::kDeployType), text) << int{value};
  }
  for (const auto& [value, text] : std::vector<std::pair<std::uint8_t, const char*>>{
           {3, "stopped"}, {7, "started"}, {255, "unknown"}, {0, "unknown"}}) {
    sm::AppInstanceMo reported;
    reported.set(sm::AppInstanceMo::kState, value);
    EXPECT_EQ(reported.stringify(sm::AppInstanceMo::kState), text) << int{value};
    sd::AppInstanceMo believed;
    believed.set(sd::AppInstanceMo::kExpectedState, value);
    EXPECT_EQ(believed.stringify(sd::AppInstanceMo::kExpectedState), text) << int{value};
  }
  sd::ExternalLduLinkMo link;
  EXPECT_EQ(link.stringify(sd::ExternalLduLinkMo::kLinkInterfaceType), "");
  for (const auto& [value, text] : std::vector<std::pair<std::uint8_t, const char*>>{
           {0, "data"}, {1, "mgmt"}, {2, "cluster"}, {3, "direct"}, {4, ""}}) {
    link.set(sd::ExternalLduLinkMo::kLinkInterfaceType, value);
    EXPECT_EQ(link.stringify(sd::ExternalLduLinkMo::kLinkInterfaceType), text) << int{value};
  }
  for (const auto& [value, text] : std::vector<std::pair<std::uint8_t, const char*>>{
           {0, ""}, {1, "management"}, {2, "events"}, {3, ""}}) {
    link.set(sd::ExternalLduLinkMo::kMgmtSubType, value);
    EXPECT_EQ(link.stringify(sd::ExternalLduLinkMo::kMgmtSubType), text) << int{value};
  }
}

TEST(Classes, AllOfThem_AreThese) {
  std::set<std::string_view> names;
  for (const mo::ClassInfo* const each : model::classInfos()) {
    names.insert(each->name);
  }
  EXPECT_EQ(names, (std::set<std::string_view>{"monitor",
                                               "diskFileSystem",
                                               "reportedAppInstance",
                                               "app",
                                               "dateTime",
                                               "system",
                                               "chassis",
                                               "slot",
                                               "appInstance",
                                               "operation",
                                               "fault",
                                               "job",
                                               "ldu",
                                               "externalLduLink",
                                               "appLduLink",
                                               "resource",
                                               "clusterBootstrap",
                                               "internalMgmtBootstrap",
                                               "mgmtBootstrap",
                                               "netMgmtBootstrap",
                                               "ip",
                                               "ipv6",
                                               "systemMac",
                                               "blade"}));
  EXPECT_EQ(model::classInfos().size(), 24U);
}

TEST(Classes, UnknownClass_IsNotFound) {
  EXPECT_EQ(model::findClass("Slot"), nullptr);
  EXPECT_EQ(model::findClass(""), nullptr);
  EXPECT_EQ(model::findClass(0x287), nullptr);
}

TEST(Classes, ReportedDisk_TravelsAsTheseBytes) {
  sm::DiskFileSystemMo disk;
  disk.set(sm::DiskFileSystemMo::kDiskUsed, 2);
  disk.set(sm::DiskFileSystemMo::kDiskName, "sda");
  disk.set(sm::DiskFileSystemMo::kObservedAt, 77);
  base::OBioStream out;
  disk.toConfig(3, &disk.changeFlags(), 0, 0x2000).serialize(out);
  const std::vector<unsigned char> expected{
      0x89, 0x02, 0x00, 0x00,                                               // class
      0x00, 0x20, 0x00, 0x00,                                               // flags
      0x00, 0x00, 0x00, 0x00,                                               // no name
      0x02, 0x00, 0x00, 0x00,                                               // two values:
      0x41, 0x08, 0x00, 0x00, 0x07, 0x03, 0x00, 0x00, 0x00, 's', 'd', 'a',  // the disk's name
      0x17, 0x28, 0x00, 0x00, 0x04, 0x02, 0x00, 0x00, 0x00,                 // used, in megabytes
      0x00, 0x00, 0x00, 0x00,                                               // no children
  };
  EXPECT_EQ(std::vector<unsigned char>(out.data(), out.data() + out.size()), expected);
}

TEST(Classes, AppInstance_AdministrativeThenOperationalStateIsOneProperty) {
  sm::AppInstanceMo app;
  app.set(sm::AppInstanceMo::kState, sm::kAppActive);
  app.set(sm::AppInstanceMo::kState, sm::kAppInactive);
  const Config config = app.toConfig(3, &app.changeFlags(), 0, 0x2000);
  ASSERT_EQ(config.values().size(), 1U);
  EXPECT_EQ(*config.find(0x883), Value(std::uint8_t{3}));
}

TEST(Classes, Monitor_ComesBackThroughTheBytesAsTheSameValues) {
  sm::MonitorMo sent;
  sent.set(sm::MonitorMo::kOsVersion, "Debian 12");
  sent.set(sm::MonitorMo::kSysUptime, "3 days");
  sent.set(sm::MonitorMo::kCpuMinus15, 0.25F);
  sent.set(sm::MonitorMo::kMemTotal, 16384);
  sent.set(sm::MonitorMo::kDiskCount, -1);
  base::OBioStream out;
  sent.toConfig(3, &sent.changeFlags(), 0, 0x2000).serialize(out);
  base::IBioStream in(out.data(), out.size());
  Config config;
  ASSERT_TRUE(config.deserialize(in));
  sm::MonitorMo received;
  EXPECT_EQ(mo::fromConfig(config, received, mo::kReportGroups), 0U);
  EXPECT_EQ(received.values(), sent.values());
  EXPECT_EQ(received.get(sm::MonitorMo::kCpuMinus15), 0.25F);
}

TEST(Classes, TwoAppInstanceClasses_AreNotTakenForEachOther) {
  sm::AppInstanceMo reported;
  sd::AppInstanceMo believed;
  EXPECT_EQ(mo::checkCast<sd::AppInstanceMo>(static_cast<mo::Mo*>(&reported)), nullptr);
  EXPECT_NE(mo::checkCast<sd::AppInstanceMo>(static_cast<mo::Mo*>(&believed)), nullptr);
  Config config = reported.toConfig();
  config.set(0x87e, base::String("a1"));
  EXPECT_EQ(mo::fromConfig(config, believed), 1U);
}

}  // namespace
