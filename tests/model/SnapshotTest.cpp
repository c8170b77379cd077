#include "model/Snapshot.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "framework/base/BioStream.h"
#include "model/sd/AppInstanceMo.h"
#include "model/sm/AppMo.h"
#include "model/zan_dme/Methods.h"

namespace model {
namespace {

using method::Config;
using mo::checkCast;

Config instanceWithApp() {
  Config instance(0x303, mo::Dn("sys/chassis-1/slot-3/app-a1"));
  instance.set(0x3040, method::Value(base::String("a1")));
  instance.set(0x3046, method::Value(std::uint32_t{3}));
  Config app(0x306, mo::Dn("sys/chassis-1/slot-3/app-a1/package"));
  app.set(0x30e0, method::Value(base::String("/p.bin")));
  instance.addChild(app);
  return instance;
}

TEST(Snapshot, KnownClasses_BecomeTheirObjects) {
  const std::unique_ptr<mo::Mo> object = objectOf(instanceWithApp());
  const auto* const instance = checkCast<sd::AppInstanceMo>(object.get());
  ASSERT_NE(instance, nullptr);
  EXPECT_EQ(instance->dn(), mo::Dn("sys/chassis-1/slot-3/app-a1"));
  EXPECT_EQ(instance->get(sd::AppInstanceMo::kAppInstanceId), "a1");
  EXPECT_EQ(instance->get(sd::AppInstanceMo::kSlotId), 3U);
  ASSERT_NE(instance->resolve<sm::AppMo>(), nullptr);
  EXPECT_EQ(instance->resolve<sm::AppMo>()->get(sm::AppMo::kPackageFile), "/p.bin");
}

TEST(Snapshot, NothingInIt_CountsAsChanged) {
  EXPECT_TRUE(objectOf(instanceWithApp())->changeFlags().empty());
}

TEST(Snapshot, UnknownClass_IsAPlainObject) {
  Config unknown(0x9999, mo::Dn("x"));
  unknown.set(1, method::Value(true));
  unknown.addChild(instanceWithApp());
  const std::unique_ptr<mo::Mo> object = objectOf(unknown);
  EXPECT_EQ(object->classId(), 0x9999U);
  EXPECT_EQ(checkCast<sd::AppInstanceMo>(object.get()), nullptr);
  EXPECT_NE(object->resolve<sd::AppInstanceMo>(), nullptr);
}

TEST(Snapshot, ValueOfAnotherKind_IsLeftOut) {
  Config instance(0x303, mo::Dn());
  instance.set(0x3046, method::Value(base::String("3")));
  EXPECT_EQ(objectOf(instance)->find(0x3046), nullptr);
}

TEST(Stage, Target_IsTheObjectThatTheCallCarries) {
  zan_dme::FsmSdAppInstanceStopApplicationSendCommandMe sent;
  std::get<Config>(sent.in) = instanceWithApp();
  base::OBioStream bytes;
  sent.serializeArgs(bytes);
  zan_dme::FsmSdAppInstanceStopApplicationSendCommandMe me;
  base::IBioStream stream(bytes.data(), bytes.size());
  ASSERT_TRUE(me.deserializeArgs(stream));
  ASSERT_NE(checkCast<sd::AppInstanceMo>(me.target()), nullptr);
  EXPECT_EQ(me.target(), me.target());
}

TEST(Stage, CallWithoutAnObject_HasNoTargetOfAnyClass) {
  zan_dme::FsmSdAppInstanceStopApplicationSendCommandMe me;
  ASSERT_NE(me.target(), nullptr);
  EXPECT_EQ(checkCast<sd::AppInstanceMo>(me.target()), nullptr);
}

}  // namespace
}  // namespace model
