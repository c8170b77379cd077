#pragma once

#include <gtest/gtest.h>

#include <concepts>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "dme/chassis/Chassis.h"
#include "dme/reports/AppInstances.h"
#include "dme/reports/Operations.h"
#include "dme/reports/PlatformReports.h"
#include "dme/reports/Report.h"
#include "dme/store/ObjectStore.h"
#include "model/sm/AppInstanceMo.h"
#include "model/sm/DiskFileSystemMo.h"
#include "model/sm/MonitorMo.h"
#include "tests/dme/support/TempDirectory.h"

namespace dme_test {

inline std::string textOf(const method::Value& value) {
  return std::visit(
      [](const auto& content) -> std::string {
        using T = std::decay_t<decltype(content)>;
        if constexpr (std::same_as<T, std::monostate>) {
          return "nothing";
        } else if constexpr (std::same_as<T, bool>) {
          return content ? "true" : "false";
        } else if constexpr (std::same_as<T, base::String>) {
          return "'" + content.str() + "'";
        } else {
          return std::to_string(content);
        }
      },
      value);
}

/// One line for an object: the last step of its name, its class, its values.
inline std::string lineOf(const dme::ObjectView& view, std::size_t skip) {
  std::string line = view.dn.substr(skip) + ": " + view.className;
  for (const auto& [name, value] : view.values) {
    line += " " + name + "=" + textOf(value);
  }
  return line;
}

using Lines = std::vector<std::string>;

/// What the engine makes of reports, without the wire. Slots 3 and 7 are there, slot 3 with "a1"
/// (version 1.0, started) and "a2" (any version and state).
class ReportFixture : public testing::Test {
 protected:
  static constexpr std::uint64_t kNow = 1700000000000;

  void SetUp() override { open(); }
  void TearDown() override { store_->close(); }

  /// Opens the store, at first or anew, as an engine does when it starts.
  void open() {
    operations_.reset();
    instances_.reset();
    platforms_.reset();
    chassis_.reset();
    store_.reset();
    auto store = dme::ObjectStore::open(directory_.path());
    ASSERT_TRUE(store) << store.error().text;
    store_ = std::move(*store);
    chassis_ = std::make_unique<dme::Chassis>(*store_, description());
    platforms_ = std::make_unique<dme::PlatformReports>(*store_, *chassis_, counters_);
    instances_ = std::make_unique<dme::AppInstances>(*store_, *chassis_, counters_);
    operations_ = std::make_unique<dme::Operations>(*store_, *chassis_, *instances_, counters_);
    ASSERT_TRUE(commit());
  }

  bool commit() {
    std::promise<bool> stored;
    store_->commit(
        [&](const dme::Result<void>& outcome) { stored.set_value(outcome.has_value()); });
    return stored.get_future().get();
  }

  /// The objects below `dn`, which is left out of their names.
  Lines linesBelow(const std::string& dn) const {
    Lines lines;
    for (const dme::ObjectView& view : store_->view(mo::Dn(dn))) {
      if (view.dn != dn) {
        lines.push_back(lineOf(view, dn.size() + 1));
      }
    }
    return lines;
  }
  std::vector<std::string> namesBelow(const std::string& dn) const {
    std::vector<std::string> names;
    for (const dme::ObjectView& view : store_->view(mo::Dn(dn))) {
      if (view.dn != dn) {
        names.push_back(view.dn.substr(dn.size() + 1));
      }
    }
    return names;
  }

  static std::string errorOf(const dme::Result<void>& result) {
    return result ? "no error" : result.error().text;
  }

  static sm::MonitorMo monitor(const std::string& osVersion = "1.2") {
    sm::MonitorMo report;
    report.set(sm::MonitorMo::kOsVersion, osVersion);
    return report;
  }
  static method::Config disk(const std::string& name, std::uint32_t total = 10) {
    sm::DiskFileSystemMo report;
    report.set(sm::DiskFileSystemMo::kDiskName, name);
    report.set(sm::DiskFileSystemMo::kDiskTotal, total);
    return report.toConfig();
  }
  static method::Config instance(const std::string& identifier, std::uint8_t state = 7,
                                 const std::string& version = "1.0") {
    sm::AppInstanceMo report;
    report.set(sm::AppInstanceMo::kAppInstanceId, identifier);
    report.set(sm::AppInstanceMo::kState, state);
    report.set(sm::AppInstanceMo::kInstalledVersion, version);
    return report.toConfig();
  }
  static method::ConfigSet setOf(std::initializer_list<method::Config> configs) {
    method::ConfigSet set;
    for (const method::Config& config : configs) {
      set.append(config);
    }
    return set;
  }

  TempDirectory directory_;
  dme::ReportCounters counters_;
  std::unique_ptr<dme::ObjectStore> store_;
  std::unique_ptr<dme::Chassis> chassis_;
  std::unique_ptr<dme::PlatformReports> platforms_;
  std::unique_ptr<dme::AppInstances> instances_;
  std::unique_ptr<dme::Operations> operations_;

 private:
  static base::ChassisDescription description() {
    return base::parseChassisText(
               "[[slot]]\nnumber = 3\n"
               "apps = [{id = \"a1\", version = \"1.0\", state = \"started\"}, {id = \"a2\"}]\n"
               "[[slot]]\nnumber = 7\n",
               "chassis.toml")
        .value();
  }
};

}  // namespace dme_test
