#include "model/Catalog.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

/// Loads every table, as start-up does.
class CatalogTest : public testing::Test {
 protected:
  CatalogTest() {
    meta::Type::initializeTypeMeta(model::types().data(), model::types().size());
    meta::Prop::initializePropMeta(model::props().data(), model::props().size());
    meta::NameRef::initializeNameRefMeta(model::nameRefs().data(), model::nameRefs().size());
    meta::NameRef::indexByProperty();
    meta::Class::initializeClassMeta(model::classes().data(), model::classes().size());
    meta::Result::init(model::results().data(), model::results().size());
    meta::PropValidator::initializePropValMeta(model::propValidators().data(),
                                               model::propValidators().size());
    meta::Arg::initializeArgMeta(model::args().data(), model::args().size());
    meta::Method::initializeMethodMeta(model::methods().data(), model::methods().size());
    meta::Svc::initializeSvcMeta(model::services().data(), model::services().size());
    meta::AppDomain::initializeDomainMeta(model::domains().data(), model::domains().size());
    meta::FsmStateHandler::install(model::fsmStateHandlers().data(),
                                   model::fsmStateHandlers().size());
    meta::FsmThrottle::install(model::fsmThrottles().data(), model::fsmThrottles().size());
    meta::FsmThrottle::indexById();
  }
};

TEST_F(CatalogTest, Methods_Are27WithDistinctIds) {
  std::set<std::uint32_t> ids;
  std::set<std::string_view> names;
  for (const meta::Method& method : meta::Method::all()) {
    ids.insert(method.id);
    names.insert(method.name);
  }
  EXPECT_EQ(ids.size(), 27U);
  EXPECT_EQ(names.size(), 27U);
}

TEST_F(CatalogTest, MethodsThatTheGatewayCalls_HaveTheseNumbers) {
  const std::pair<std::uint32_t, const char*> kExpected[] = {
      {398, "serviceorchapi::ValidateBladeState"},
      {146, "serverapi::OsControllerVersion"},
      {400, "serviceorchapi::UpdatePlatformInfo"},
      {399, "serviceorchapi::ValidateAppInstances"},
      {397, "serviceorchapi::UpdateSmaHeartbeat"},
      {401, "serviceorchapi::NotifyAppFailure"},
      {396, "serviceorchapi::UpdateProgress"},
      {404, "serviceorchapi::UpdateDiskFormatStatus"},
      {147, "serverapi::OsControllerUpgradeProgress"},
      {446, "dmeapi::ClusterStateRequest"},
      {575, "agboot::Bootstrap"},
      {576, "agboot::BootstrapDone"},
  };
  for (const auto& [id, name] : kExpected) {
    ASSERT_NE(meta::Method::find(id), nullptr) << id;
    EXPECT_EQ(meta::Method::find(id)->name, name);
  }
}

TEST_F(CatalogTest, Arguments_FollowTheMethodsDeclaration) {
  const auto args = meta::Arg::ofMethod(398);
  ASSERT_EQ(args.size(), 6U);
  EXPECT_EQ(meta::Type::find(args[0].typeId)->name, "u32");
  EXPECT_EQ(meta::Type::find(args[1].typeId)->name, "text");
  EXPECT_EQ(meta::Type::find(args[2].typeId)->name, "text");
  EXPECT_FALSE(args[2].isResult);
  EXPECT_EQ(meta::Type::find(args[3].typeId)->name, "text");
  EXPECT_TRUE(args[3].isResult);
  EXPECT_EQ(meta::Type::find(args[4].typeId)->name, "bool");
  EXPECT_EQ(meta::Method::find(398)->arguments, 3U);
  EXPECT_EQ(meta::Method::find(398)->results, 3U);
}

TEST_F(CatalogTest, EveryArgument_HasAKnownTypeAndMethod) {
  for (const meta::Arg& arg : model::args()) {
    EXPECT_NE(meta::Type::find(arg.typeId), nullptr) << arg.methodId;
    EXPECT_NE(meta::Method::find(arg.methodId), nullptr) << arg.methodId;
  }
}

TEST_F(CatalogTest, EveryProperty_HasAKnownClassAndType) {
  EXPECT_EQ(meta::Prop::all().size(), 138U);
  for (const meta::Prop& prop : meta::Prop::all()) {
    EXPECT_NE(meta::Class::find(prop.classId), nullptr) << prop.name;
    EXPECT_NE(meta::Type::find(prop.typeId), nullptr) << prop.name;
  }
}

TEST_F(CatalogTest, PropertiesOfABladesReport_HaveTheseNumbers) {
  EXPECT_EQ(meta::Prop::find(0x2811)->classId, 0x286U);
  EXPECT_EQ(meta::Prop::find(0x843)->classId, 0x289U);
  EXPECT_EQ(meta::Prop::find(0x88d)->classId, 0x28fU);
  EXPECT_EQ(meta::Type::find(meta::Prop::find(0x88d)->typeId)->name, "bool");
}

TEST_F(CatalogTest, Classes_HaveTheNamesThatPeopleRead) {
  EXPECT_EQ(meta::Class::all().size(), 24U);
  EXPECT_EQ(meta::Class::find(0x286)->name, "monitor");
  EXPECT_EQ(meta::Class::find(0x302)->name, "slot");
}

TEST_F(CatalogTest, NameReference_IsFoundByItsProperty) {
  ASSERT_NE(meta::NameRef::findByProperty(0x87e), nullptr);
  EXPECT_EQ(meta::NameRef::findByProperty(0x87e)->classId, 0x28fU);
  ASSERT_NE(meta::NameRef::findByProperty(0x3020), nullptr);
  EXPECT_EQ(meta::NameRef::findByProperty(0x3020)->classId, 0x302U);
  EXPECT_EQ(meta::NameRef::findByProperty(0x883), nullptr);
}

TEST_F(CatalogTest, ServiceAndItsDomain_AreKnown) {
  ASSERT_NE(meta::Svc::find(26), nullptr);
  EXPECT_EQ(meta::Svc::find(26)->name, "serviceOrchAG");
  EXPECT_NE(meta::AppDomain::find(meta::Svc::find(26)->domainId), nullptr);
}

TEST_F(CatalogTest, StateMachineTables_HaveTwoRowsEach) {
  EXPECT_EQ(meta::FsmStateHandler::all().size(), 2U);
  EXPECT_NE(meta::FsmThrottle::find(1), nullptr);
  EXPECT_NE(meta::FsmThrottle::find(2), nullptr);
}

TEST_F(CatalogTest, Validator_RefusesANegativeLoad) {
  EXPECT_TRUE(meta::PropValidator::isValid(0x830, 0.5F));
  EXPECT_FALSE(meta::PropValidator::isValid(0x830, -0.5F));
}

TEST_F(CatalogTest, FrameworkResults_AreNamed) {
  EXPECT_EQ(meta::Result::find(1)->name, "no handler");
  EXPECT_EQ(meta::Result::find(2)->name, "undecodable");
  EXPECT_EQ(meta::Result::find(3)->name, "exception");
}

}  // namespace
