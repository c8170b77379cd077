#include "serviceOrchAG/server/StatusCodes.h"

#include <gtest/gtest.h>

#include "serviceOrchAG/server/MsgHandler.h"

namespace zan_serviceOrchAG {
namespace {

struct Row {
  unsigned code;
  const char* text;
  unsigned jobStatus;
};

void PrintTo(const Row& row, std::ostream* out) {
  *out << row.code;
}

class StatusCodes : public testing::TestWithParam<Row> {};

TEST_P(StatusCodes, KnownCode_HasItsTextAndJobStatus) {
  const Row& row = GetParam();
  EXPECT_STREQ(row.text, getStatusCodeText(row.code));
  EXPECT_EQ(row.jobStatus, getSdJobStatusCode(row.code));
  EXPECT_EQ(row.jobStatus, MsgHandler::getSdJobStatusCode(row.code));
}

INSTANTIATE_TEST_SUITE_P(
    All, StatusCodes,
    testing::Values(Row{100, "Success", 1}, Row{101, "Queued", 2}, Row{102, "In Progress", 3},
                    Row{500, "Invalid command", 4}, Row{501, "Invalid content type", 5},
                    Row{502, "Invalid content version", 6},
                    Row{503, "Error during parsing data", 7}, Row{504, "Unknown parameter", 8},
                    Row{505, "Wrong parameter value", 9}, Row{506, "Operation time out", 10},
                    Row{507, "Queue is full", 11}, Row{508, "Operation failed", 12},
                    Row{509, "Unknown Error try again", 13},
                    Row{510, "Blade is not register, re-register the blade", 14},
                    Row{511, "Not able to recognized blade", 15},
                    Row{512, "Error connecting to ZED for file transfer", 16},
                    Row{513, "Format validation failure", 17},
                    Row{514, "Failure validating checksum", 18},
                    Row{576, "SMAClient channel is not initialized", 0},
                    Row{577, "REQ/REP between ServiceAG and SMA failed", 0},
                    Row{578, "serviceAG received timeout or zero response part from SMA", 0},
                    Row{579, "No response received or missing message part from SMA", 0},
                    Row{580, "SMA is not register for slot", 0},
                    Row{581, "Blade token does not match, please format the blade", 0}));

INSTANTIATE_TEST_SUITE_P(
    Unknown, StatusCodes,
    testing::Values(Row{0, "Unknown status code", 0}, Row{99, "Unknown status code", 0},
                    Row{103, "Unknown status code", 0}, Row{499, "Unknown status code", 0},
                    Row{515, "Unknown status code", 0}, Row{575, "Unknown status code", 0},
                    Row{582, "Unknown status code", 0},
                    Row{4294967295U, "Unknown status code", 0}));

}  // namespace
}  // namespace zan_serviceOrchAG
