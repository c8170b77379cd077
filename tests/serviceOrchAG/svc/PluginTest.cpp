#include <dlfcn.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "framework/proc/ServicePlugin.h"

// The library as the supervisor loads it.

namespace {

class Plugin : public testing::Test {
 protected:
  void SetUp() override {
    library_.reset(dlopen(ZAN_PLUGIN, RTLD_NOW | RTLD_LOCAL));
    ASSERT_NE(library_, nullptr) << dlerror();
  }

  void* find(const char* symbol) const { return dlsym(library_.get(), symbol); }

 private:
  struct Close {
    void operator()(void* library) const { dlclose(library); }
  };
  std::unique_ptr<void, Close> library_;
};

TEST_F(Plugin, EntryPoint_GivesEveryLifeCycleCallback) {
  const auto entry = reinterpret_cast<proc::ServicePlugin::EntryPoint>(find("zanServicePlugin"));
  ASSERT_NE(entry, nullptr);
  const proc::ServicePlugin* plugin = entry();
  ASSERT_NE(plugin, nullptr);
  EXPECT_EQ(plugin->version, 1U);
  EXPECT_EQ(std::string(plugin->name), "serviceOrchAG");
  EXPECT_NE(plugin->init, nullptr);
  EXPECT_NE(plugin->initSvc, nullptr);
  EXPECT_NE(plugin->main, nullptr);
  EXPECT_NE(plugin->preShutdown, nullptr);
  EXPECT_NE(plugin->shutdown, nullptr);
  EXPECT_NE(plugin->postShutdown, nullptr);
}

TEST_F(Plugin, OtherNames_AreHidden) {
  EXPECT_EQ(find("_ZN17zan_serviceOrchAG3Svc4initEiPPc"), nullptr);
}

}  // namespace
