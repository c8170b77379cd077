#include "serviceOrchAG/server/StatusCodes.h"

#include <algorithm>
#include <array>

namespace zan_serviceOrchAG {
namespace {

struct StatusCode {
  unsigned code;
  unsigned jobStatus;
  const char* text;
};

constexpr std::array kStatusCodes{
    StatusCode{100, 1, "Success"},
    StatusCode{101, 2, "Queued"},
    StatusCode{102, 3, "In Progress"},
    StatusCode{500, 4, "Invalid command"},
    StatusCode{501, 5, "Invalid content type"},
    StatusCode{502, 6, "Invalid content version"},
    StatusCode{503, 7, "Error during parsing data"},
    StatusCode{504, 8, "Unknown parameter"},
    StatusCode{505, 9, "Wrong parameter value"},
    StatusCode{506, 10, "Operation time out"},
    StatusCode{507, 11, "Queue is full"},
    StatusCode{508, 12, "Operation failed"},
    StatusCode{509, 13, "Unknown Error try again"},
    StatusCode{510, 14, "Blade is not register, re-register the blade"},
    StatusCode{511, 15, "Not able to recognized blade"},
    StatusCode{512, 16, "Error connecting to ZED for file transfer"},
    StatusCode{513, 17, "Format validation failure"},
    StatusCode{514, 18, "Failure validating checksum"},
    StatusCode{576, 0, "SMAClient channel is not initialized"},
    StatusCode{577, 0, "REQ/REP between ServiceAG and SMA failed"},
    StatusCode{578, 0, "serviceAG received timeout or zero response part from SMA"},
    StatusCode{579, 0, "No response received or missing message part from SMA"},
    StatusCode{580, 0, "SMA is not register for slot"},
    StatusCode{581, 0, "Blade token does not match, please format the blade"},
};

constexpr StatusCode kUnknown{0, 0, "Unknown status code"};

const StatusCode& find(unsigned code) {
  const auto entry = std::find_if(kStatusCodes.begin(), kStatusCodes.end(),
                                  [code](const StatusCode& known) { return known.code == code; });
  return entry == kStatusCodes.end() ? kUnknown : *entry;
}

}  // namespace

unsigned getSdJobStatusCode(unsigned code) {
  return find(code).jobStatus;
}

const char* getStatusCodeText(unsigned code) {
  return find(code).text;
}

}  // namespace zan_serviceOrchAG
