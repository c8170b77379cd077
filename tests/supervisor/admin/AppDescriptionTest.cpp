#include "supervisor/admin/AppDescription.h"

#include <gtest/gtest.h>

#include "model/AllClasses.h"
#include "supervisor/admin/JsonBody.h"
#include "supervisor/admin/Problem.h"
#include "tests/supervisor/admin/FullApp.h"
#include "tests/support/ObjectViews.h"

namespace supervisor::admin {
namespace {

using Link = sd::ExternalLduLinkMo;

constexpr const char* kLeast = R"({"id":"a","slot":3,"app":{"packageFile":"/p/fw-1.2.pkg"}})";

/// The body with one value at the JSON pointer.
std::string with(const std::string& pointer, const Json& value, const char* body = kFullApp) {
  Json json = Json::parse(body);
  json[Json::json_pointer(pointer)] = value;
  return json.dump();
}

/// "KIND FIELD (REMEDY)" of what is wrong with the body.
std::string complaint(const std::string& body) {
  try {
    readApp(parseBody(body));
  } catch (const ProblemError& error) {
    const Problem& problem = error.problem();
    EXPECT_EQ(problem.status, 400u);
    return problem.kind + " " + problem.field.value_or("(none)") + " (" + problem.remedy + ")";
  }
  return "none";
}

Json readAndDescribe(const std::string& body) {
  const AppDescription app = readApp(parseBody(body));
  std::vector<dme::ObjectView> views;
  test_support::addViews(*app.instance, "sys/chassis-1/slot-3/app-a", views);
  return describeApp(app.slot, "sys/chassis-1/slot-3/app-a", views);
}

TEST(AppDescription, LeastBody_GetsWhatAPlainApplicationHas) {
  const AppDescription app = readApp(parseBody(kLeast));
  EXPECT_EQ(app.slot, 3u);
  EXPECT_TRUE(app.instance->dn().empty());
  EXPECT_EQ(readAndDescribe(kLeast).dump(),
            R"({"id":"a","slot":3,"mgmtBootstrapVersion":"1",)"
            R"("app":{"packageFile":"/p/fw-1.2.pkg","reqDataHdd":1,"deployType":"native",)"
            R"("installTimeout":300,"uninstallTimeout":300,"upgradeTimeout":300},)"
            R"("resource":{"reqCpuCores":1,"maxAllowedRam":1024,"reqDataHdd":1024},)"
            R"("ldu":{"name":"ldu","links":[{"portName":"mgmt0","linkInterfaceType":"mgmt",)"
            R"("mgmtSubType":"management","vlan":1,"bladeVnic1":"1:1"}]},"mgmtBootstrap":{}})");
}

TEST(AppDescription, InternalManagement_HasNoOtherOne) {
  const Json described = readAndDescribe(with("/app/vdp", true, kLeast));
  EXPECT_FALSE(described.contains("mgmtBootstrap"));
}

TEST(AppDescription, FullBody_ComesBackAsItWas) {
  EXPECT_EQ(readAndDescribe(kFullApp).dump(), Json::parse(kFullApp).dump());
}

TEST(AppDescription, FullBody_BecomesObjectsOfTheModel) {
  const AppDescription app = readApp(parseBody(kFullApp));
  const auto* const instance = mo::checkCast<sd::AppInstanceMo>(app.instance.get());
  ASSERT_NE(instance, nullptr);
  EXPECT_EQ(instance->get(sd::AppInstanceMo::kAppInstanceId), "fw.1_a:b-2");
  EXPECT_EQ(instance->get(sd::AppInstanceMo::kExpectedVersion), "1.2");
  const auto* const package = instance->resolve<sm::AppMo>();
  ASSERT_NE(package, nullptr);
  EXPECT_EQ(package->get(sm::AppMo::kDeployType), static_cast<std::uint8_t>(sm::DeployType::kLxc));
  EXPECT_TRUE(package->get(sm::AppMo::kVdp));
  ASSERT_NE(instance->resolveSdLdu(), nullptr);
  const auto links = instance->resolveSdLdu()->findChild(Link::kClassId);
  ASSERT_EQ(links.size(), 2u);
  const auto* const mgmt = mo::checkCast<Link>(links[0]);
  EXPECT_EQ(mgmt->get(Link::kSystemMac), 0x00112233aabbU);
  EXPECT_EQ(mgmt->get(Link::kMgmtSubType), static_cast<std::uint8_t>(sd::MgmtSubType::kEvents));
  EXPECT_EQ(mo::checkCast<Link>(links[1])->resolveSdIP()->get(sd::IPMo::kAddress), 0x0a630103U);
  EXPECT_EQ(instance->resolveSdClusterBootstrap()->get(sd::ClusterBootstrapMo::kIPv4PoolEnd),
            0xc0000213U);
  EXPECT_EQ(
      instance->resolveSdInternalMgmtBootstrap()->resolveSdSystemMac()->get(sd::SystemMacMo::kMac),
      0x00aabbccddeeU);
  EXPECT_EQ(instance->resolveSdMgmtBootstrap()->resolveSdIPV6()->get(sd::IPV6Mo::kPrefixLength),
            48u);
  EXPECT_EQ(instance->findChild(sd::NetMgmtBootstrapMo::kClassId).size(), 2u);
}

TEST(AppDescription, OwnValues_AreKept) {
  const Json json = readAndDescribe(with("/resource", {{"reqCpuCores", 8}}, kLeast));
  EXPECT_EQ(json["resource"].dump(), R"({"reqCpuCores":8,"maxAllowedRam":1024,"reqDataHdd":1024})");
  const Json other =
      readAndDescribe(with("/ldu", {{"links", {{{"portName", "Ethernet1/1"}}}}}, kLeast));
  EXPECT_EQ(other["ldu"].dump(), R"({"name":"ldu","links":[{"portName":"Ethernet1/1"}]})");
}

TEST(AppDescription, MissingValue_IsNamed) {
  const struct {
    const char* body;
    const char* field;
  } rows[] = {
      {"{}", "id"},
      {R"({"id":"a"})", "slot"},
      {R"({"id":"a","slot":1})", "app.packageFile"},
      {R"({"id":"a","slot":1,"app":{}})", "app.packageFile"},
      {R"({"id":"a","slot":1,"app":{"packageFile":""}})", "app.packageFile"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(complaint(row.body).find(std::string("bad-value ") + row.field + " ("), 0u)
        << row.body << ": " << complaint(row.body);
  }
}

TEST(AppDescription, UnknownField_IsNamedWithItsPath) {
  const struct {
    const char* pointer;
    const char* field;
  } rows[] = {
      {"/colour", "colour"},
      {"/jobType", "jobType"},
      {"/slotId", "slotId"},
      {"/app/package", "app.package"},
      {"/resource/cores", "resource.cores"},
      {"/ldu/links/0/vlam", "ldu.links[0].vlam"},
      {"/ldu/links/1/ip/mask", "ldu.links[1].ip.mask"},
      {"/ldu/appLinks/0/vlan", "ldu.appLinks[0].vlan"},
      {"/clusterBootstrap/ip", "clusterBootstrap.ip"},
      {"/internalMgmtBootstrap/systemMac/ip", "internalMgmtBootstrap.systemMac.ip"},
      {"/mgmtBootstrap/ipv4", "mgmtBootstrap.ipv4"},
      {"/netMgmtBootstraps/1/name", "netMgmtBootstraps[1].name"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(complaint(with(row.pointer, 1)).find(std::string("unknown-field ") + row.field), 0u)
        << row.pointer << ": " << complaint(with(row.pointer, 1));
  }
}

TEST(AppDescription, WrongValue_IsNamedWithWhatIsWanted) {
  const std::string ipv4 = " (give an IPv4 address such as 192.0.2.1)";
  const std::string ipv6 = " (give an IPv6 address such as 2001:db8::1)";
  const std::string mac = " (give a MAC address such as 02:00:5e:10:00:ff)";
  const struct {
    const char* pointer;
    Json value;
    std::string complaint;
  } rows[] = {
      {"/id", "", "id (give a text that is not empty)"},
      {"/slot", "3", "slot (give a whole number from 0 to 4294967295)"},
      {"/slot", 4294967296, "slot (give a whole number from 0 to 4294967295)"},
      {"/version", 1.2, "version (give a text)"},
      {"/app", "p", "app (give an object)"},
      {"/app/deployType", "docker", "app.deployType (give one of native, lxc, vm)"},
      {"/app/deployType", 1, "app.deployType (give a text)"},
      {"/app/vdp", 1, "app.vdp (give true or false)"},
      {"/app/packageFile", "a\nb",
       "app.packageFile (give at most 255 bytes without control characters)"},
      {"/resource/maxAllowedRam", -1,
       "resource.maxAllowedRam (give a whole number from 0 to 4294967295)"},
      {"/ldu/links", Json::object(), "ldu.links (give a list of at most 64)"},
      {"/ldu/links/0/linkInterfaceType", "wan",
       "ldu.links[0].linkInterfaceType (give one of data, mgmt, cluster, direct)"},
      {"/ldu/links/0/mgmtSubType", "", "ldu.links[0].mgmtSubType (give one of management, events)"},
      {"/ldu/links/0/hasMac", "true", "ldu.links[0].hasMac (give true or false)"},
      {"/ldu/links/1/ip/address", 167772161, "ldu.links[1].ip.address (give a text)"},
      {"/ldu/links/1/ip/address", "10.99.1", "ldu.links[1].ip.address" + ipv4},
      {"/ldu/links/1/ip/address", "10.99.1.256", "ldu.links[1].ip.address" + ipv4},
      {"/ldu/links/1/ip/address", "::1", "ldu.links[1].ip.address" + ipv4},
      {"/ldu/links/1/ip/address", "10.99.1.3 ", "ldu.links[1].ip.address" + ipv4},
      {"/clusterBootstrap/ipv4Netmask", "/24", "clusterBootstrap.ipv4Netmask" + ipv4},
      {"/clusterBootstrap/ipv6Gateway", "2001:db8::g", "clusterBootstrap.ipv6Gateway" + ipv6},
      {"/mgmtBootstrap/ipv6/address", "10.0.0.1", "mgmtBootstrap.ipv6.address" + ipv6},
      {"/mgmtBootstrap/ipv6/address", "2001:db8::1/64", "mgmtBootstrap.ipv6.address" + ipv6},
      {"/ldu/links/0/systemMac", "00:11:22:33:aa", "ldu.links[0].systemMac" + mac},
      {"/ldu/links/0/systemMac", "00:11:22:33:aa:bb:cc", "ldu.links[0].systemMac" + mac},
      {"/ldu/links/0/systemMac", "0011.2233.aabb", "ldu.links[0].systemMac" + mac},
      {"/ldu/links/0/systemMac", "00:11:22:33:aa:g0", "ldu.links[0].systemMac" + mac},
      {"/ldu/links/0/systemMac", "00:11:22:33:aa-bb", "ldu.links[0].systemMac" + mac},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(complaint(with(row.pointer, row.value)), "bad-value " + row.complaint)
        << row.pointer << " " << row.value.dump();
  }
}

TEST(AppDescription, TooManyLinks_AreRefused) {
  Json links = Json::array();
  for (int i = 0; i < 65; ++i) {
    links.push_back({{"portName", "p" + std::to_string(i)}});
  }
  EXPECT_EQ(complaint(with("/ldu/links", links)),
            "bad-value ldu.links (give a list of at most 64)");
  links.erase(links.end() - 1);
  EXPECT_EQ(complaint(with("/ldu/links", links)), "none");
}

TEST(AppDescription, InstanceThatIsNotThere_IsAnEmptyObject) {
  EXPECT_EQ(describeApp(3, "sys/chassis-1/slot-3/app-a", {}).dump(), "{}");
}

}  // namespace
}  // namespace supervisor::admin
