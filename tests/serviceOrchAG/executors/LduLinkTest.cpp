#include "serviceOrchAG/executors/LduLink.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "model/sd/AppInstanceMo.h"
#include "model/sd/LduMo.h"
#include "tests/support/LogCapture.h"

namespace zan_serviceOrchAG {
namespace {

using test_support::LogCapture;
using test_support::LogLine;

struct VnicRow {
  const char* text;
  const char* index;
  std::vector<LogLine> lines;
};

TEST(GetVnic, Texts_AreTakenApart) {
  sd::AppInstanceMo instance;
  instance.attach(std::make_unique<sd::LduMo>());
  const auto adaptor = [](const std::string& id) {
    return std::vector<LogLine>{
        {5, "getVnic", "STARTAPP : vnicIndex adaptorId = " + id + " (must me 1 or 2)"}};
  };
  const auto number = [](const std::string& text, const std::string& index) {
    return std::vector<LogLine>{
        {8, "getVnic",
         "STARTAPP : vnicIndex [" + text + "]: not a decimal number: '" + index + "'"}};
  };
  const std::vector<VnicRow> rows{
      {"1:7", "7", {}},
      {"2:7", "7", {}},
      {"1:007", "7", {}},
      {"1:2147483647", "2147483647", {}},
      {"1:2:3", "2", {}},
      {"1:0", "", {}},
      {"2:0", "", {}},
      {"3:7", "", adaptor("3")},
      {"0:7", "", adaptor("0")},
      {"12:7", "", adaptor("12")},
      {" 1:7", "", adaptor(" 1")},
      {"", "", adaptor("")},
      {":", "", adaptor("")},
      {"3:x", "", adaptor("3")},
      {"x\n:7", "", adaptor("x\\x0A")},
      {"1", "", number("1", "")},
      {"1:", "", number("1:", "")},
      {"1:x", "", number("1:x", "x")},
      {"1: 7", "", number("1: 7", " 7")},
      {"1:2147483648", "", number("1:2147483648", "2147483648")},
  };
  for (const VnicRow& row : rows) {
    const LogCapture log;
    EXPECT_EQ(getVnic(row.text, instance), row.index) << row.text;
    EXPECT_EQ(log.lines(), row.lines) << row.text;
  }
}

TEST(GetVnic, InstanceWithoutADevice_HasNone) {
  sd::AppInstanceMo instance;
  instance.set(sd::AppInstanceMo::kAppInstanceId, "a1");
  const LogCapture log;
  EXPECT_EQ(getVnic("1:7", instance), "");
  EXPECT_EQ(log.lines(), (std::vector<LogLine>{{6, "getVnic", "STARTAPP : a1 : LduMo is null"}}));
  // What is no number is told first, and no interface needs no device.
  EXPECT_EQ(getVnic("1:x", instance), "");
  EXPECT_TRUE(log.contains(8, "STARTAPP : vnicIndex [1:x]: not a decimal number: 'x'"));
  EXPECT_EQ(getVnic("1:0", instance), "");
  EXPECT_EQ(log.lines().size(), 2U);
}

}  // namespace
}  // namespace zan_serviceOrchAG
