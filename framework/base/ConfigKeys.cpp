#include "framework/base/ConfigKeys.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <numeric>
#include <optional>
#include <system_error>
#include <type_traits>
#include <vector>

namespace base {
namespace {

constexpr std::int64_t kMebibyte = 1048576;

template <typename T>
std::optional<T> parseWhole(std::string_view text) {
  T value{};
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || stop != end) {
    return std::nullopt;
  }
  return value;
}

bool isControl(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte < 0x20 || byte == 0x7f;
}

bool isPlain(std::string_view text) {
  return std::none_of(text.begin(), text.end(), isControl);
}

bool isPlainAndNotEmpty(std::string_view text) {
  return !text.empty() && isPlain(text);
}

std::optional<std::uint32_t> parseIpv4(std::string_view text) {
  in_addr address{};
  if (inet_pton(AF_INET, std::string(text).c_str(), &address) != 1) {
    return std::nullopt;
  }
  return ntohl(address.s_addr);
}

// Loopback, private use, shared and link-local: what never leaves the chassis by routing.
bool isInternalIpv4(std::string_view text) {
  const std::optional<std::uint32_t> address = isPlain(text) ? parseIpv4(text) : std::nullopt;
  if (!address) {
    return false;
  }
  struct Network {
    std::uint32_t address;
    int bits;
  };
  static constexpr Network kNetworks[] = {{0x7f000000, 8},  {0x0a000000, 8},  {0xac100000, 12},
                                          {0xc0a80000, 16}, {0x64400000, 10}, {0xa9fe0000, 16}};
  return std::any_of(std::begin(kNetworks), std::end(kNetworks), [&](const Network& network) {
    return ((*address ^ network.address) >> (32 - network.bits)) == 0;
  });
}

// Applications know the gateway's ports; only its address can be chosen.
bool isInternalWithPort(std::string_view text, std::string_view port) {
  const std::size_t colon = text.find(':');
  return colon != std::string_view::npos && text.substr(colon + 1) == port &&
         isInternalIpv4(text.substr(0, colon));
}

bool isCommandAddress(std::string_view text) {
  return isInternalWithPort(text, "5556");
}

bool isHeartbeatAddress(std::string_view text) {
  return isInternalWithPort(text, "5559");
}

bool isEndpoint(std::string_view text) {
  constexpr std::string_view kTransports[] = {"inproc://", "ipc://", "tcp://"};
  return isPlain(text) && std::any_of(std::begin(kTransports), std::end(kTransports),
                                      [text](std::string_view transport) {
                                        return text.size() > transport.size() &&
                                               text.starts_with(transport);
                                      });
}

constexpr std::string_view kPlatforms[] = {"standard", "qvm1", "qvm2", "qvm3"};

constexpr std::string_view kText = "a text without control characters";
constexpr std::string_view kPath = "a path";
constexpr std::string_view kCommandAddress = "an internal IPv4 address with the port 5556";
constexpr std::string_view kHeartbeatAddress = "an internal IPv4 address with the port 5559";

using V = ConfigValues;

constexpr std::array kKeys = {
    ConfigKey{"supervisor.self_id", NumberRule{&V::selfId, 1, 255, ""}, false,
              "Which supervisor of the chassis this is; 1 is the left one."},
    ConfigKey{"supervisor.cluster_name", TextRule{&V::clusterName, isPlainAndNotEmpty, kText},
              false, "Name of the system under which services register."},
    ConfigKey{"supervisor.platform", ChoiceRule{&V::platform, kPlatforms}, false,
              "Chassis model; it decides which parts of a command a blade is sent."},
    ConfigKey{"supervisor.state_dir", TextRule{&V::stateDir, isPlainAndNotEmpty, kPath}, true,
              "Directory of everything that outlives a restart."},
    ConfigKey{"supervisor.host_key", TextRule{&V::hostKey, isPlainAndNotEmpty, kPath}, false,
              "File with the public host key that a blade is told when it registers."},
    ConfigKey{"log.level", NumberRule{&V::logLevel, 0, 8, ""}, false,
              "Lines of this level and above are written; 8 is the gravest. Read again on reload."},
    ConfigKey{"log.file", TextRule{&V::logFile, isPlain, kPath}, false,
              "File that the log is appended to; empty for standard error."},
    ConfigKey{"service.library", TextRule{&V::serviceLibrary, isPlainAndNotEmpty, kPath}, false,
              "Shared library of the service that the supervisor loads."},
    ConfigKey{"dme.endpoint",
              TextRule{&V::dmeEndpoint, isEndpoint,
                       "an end point that begins with inproc://, ipc:// or tcp://"},
              false, "Where the service reaches the management engine."},
    ConfigKey{"dme.chassis", TextRule{&V::dmeChassis, isPlain, kPath}, false,
              "File that describes the chassis to an empty database; empty for none."},
    ConfigKey{"dme.heartbeat_interval", NumberRule{&V::dmeHeartbeatInterval, 1, 3600, "seconds"},
              false, "How often a blade is expected to send a heartbeat."},
    ConfigKey{"dme.heartbeat_misses", NumberRule{&V::dmeHeartbeatMisses, 1, 1000, "heartbeats"},
              false, "Missing so many heartbeats in a row makes a blade unreachable."},
    ConfigKey{"dme.grace", NumberRule{&V::dmeGrace, 0, 3600, "seconds"}, false,
              "Time after a start in which no blade is judged by its heartbeats."},
    ConfigKey{"dme.settle_after", NumberRule{&V::dmeSettleAfter, 0, 3600, "seconds"}, false,
              "Time without progress after which a blade's report may show that a command whose "
              "outcome is unknown was not carried out."},
    ConfigKey{"message.max_bytes", NumberRule{&V::messageMaxBytes, 1024, 64 * kMebibyte, "bytes"},
              false, "Largest part of a message that is accepted from a peer."},
    ConfigKey{"message.max_parts", NumberRule{&V::messageMaxParts, 5, 1024, "parts"}, false,
              "Most parts of a message that are accepted from a peer."},
    ConfigKey{"message.receive_hwm", NumberRule{&V::messageReceiveHwm, 1, 1000000, "messages"},
              false, "Messages of one peer that may wait before the peer is held back."},
    ConfigKey{"message.max_handshakes",
              NumberRule{&V::messageMaxHandshakes, 1, 65535, "connections"}, false,
              "Connections that may wait to be accepted."},
    ConfigKey{"message.handshake_ms",
              NumberRule{&V::messageHandshakeMs, 10, 600000, "milliseconds"}, false,
              "Time that a new connection has to say who it is."},
    ConfigKey{"message.heartbeat_ms",
              NumberRule{&V::messageHeartbeatMs, 10, 600000, "milliseconds"}, false,
              "Interval of the transport's own heartbeats, which find peers that are gone."},
    ConfigKey{"xml.max_depth", NumberRule{&V::xmlMaxDepth, 1, 1000, "levels"}, false,
              "Deepest nesting of a document that is parsed."},
    ConfigKey{"xml.max_elements", NumberRule{&V::xmlMaxElements, 1, 1000000, "elements"}, false,
              "Most elements of a document that is parsed."},
    ConfigKey{"xml.max_bytes", NumberRule{&V::xmlMaxBytes, 1024, 64 * kMebibyte, "bytes"}, false,
              "Largest document that is parsed."},
    ConfigKey{"address.tftp", TextRule{&V::tftpAddress, isInternalIpv4, "an internal IPv4 address"},
              false, "Address from which blades fetch images."},
    ConfigKey{"address.app_ag", TextRule{&V::appAgAddress, isCommandAddress, kCommandAddress},
              false, "Address of the application gateway that applications are told."},
    ConfigKey{"address.app_ag_second",
              TextRule{&V::appAgSecondAddress, isCommandAddress, kCommandAddress}, false,
              "The same for applications with an internal management interface; another one."},
    ConfigKey{"address.app_ag_heartbeat",
              TextRule{&V::appAgHeartbeatAddress, isHeartbeatAddress, kHeartbeatAddress}, false,
              "Address to which applications send their heartbeats: that of address.app_ag."},
};

std::string expectation(const NumberRule& rule) {
  std::string text = "a number ";
  if (!rule.unit.empty()) {
    text += "of " + std::string(rule.unit) + ' ';
  }
  return text + "from " + std::to_string(rule.first) + " to " + std::to_string(rule.last);
}

std::string expectation(const ChoiceRule& rule) {
  std::string text = "one of ";
  for (const std::string_view choice : rule.choices) {
    text += choice;
    text += choice == rule.choices.back() ? "" : ", ";
  }
  return text;
}

std::string expectation(const TextRule& rule) {
  return std::string(rule.form);
}

std::string expectation(const ConfigKey& key) {
  return std::visit([](const auto& rule) { return expectation(rule); }, key.rule);
}

std::string defaultOf(const ConfigKey& key) {
  static const ConfigValues kDefaults;
  return std::visit(
      [](const auto& rule) {
        const auto& value = kDefaults.*rule.member;
        if constexpr (std::is_same_v<std::decay_t<decltype(value)>, std::string>) {
          return '"' + value + '"';
        } else {
          return std::to_string(value);
        }
      },
      key.rule);
}

// The number of single characters to insert, delete or replace that turn one into the other.
std::size_t editDistance(std::string_view from, std::string_view to) {
  std::vector<std::size_t> row(to.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < from.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i + 1;
    for (std::size_t j = 0; j < to.size(); ++j) {
      const std::size_t replaced = diagonal + (from[i] == to[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, diagonal + 1, row[j] + 1});
    }
  }
  return row.back();
}

std::string_view lastWord(std::string_view name) {
  return name.substr(name.rfind('.') + 1);  // npos + 1 is 0
}

// A right word in the wrong table is as near as one wrong letter.
std::size_t distance(std::string_view name, std::string_view known) {
  return std::min(editDistance(name, known), editDistance(lastWord(name), lastWord(known)) + 1);
}

}  // namespace

std::span<const ConfigKey> configKeys() noexcept {
  return kKeys;
}

const ConfigKey* findConfigKey(std::string_view name) noexcept {
  const auto* const found = std::find_if(kKeys.begin(), kKeys.end(),
                                         [name](const ConfigKey& key) { return key.name == name; });
  return found == kKeys.end() ? nullptr : found;
}

const ConfigKey* nearestConfigKey(std::string_view name) {
  constexpr std::size_t kFarthest = 4;
  constexpr std::size_t kLongest = 64;
  if (name.size() > kLongest) {
    return nullptr;
  }
  const auto* const nearest =
      std::min_element(kKeys.begin(), kKeys.end(), [name](const auto& left, const auto& right) {
        return distance(name, left.name) < distance(name, right.name);
      });
  return distance(name, nearest->name) <= kFarthest ? nearest : nullptr;
}

std::string refusal(const ConfigKey& key, std::string_view kind) {
  return quoted(key.name) + " must be " + expectation(key) + ", not " + std::string(kind);
}

ConfigOutcome setNumber(ConfigValues& values, const ConfigKey& key, std::int64_t value) {
  const auto* const rule = std::get_if<NumberRule>(&key.rule);
  if (rule == nullptr || value < rule->first || value > rule->last) {
    return tl::unexpected(refusal(key, std::to_string(value)));
  }
  values.*rule->member = value;
  return {};
}

ConfigOutcome setText(ConfigValues& values, const ConfigKey& key, std::string_view value) {
  if (const auto* const rule = std::get_if<TextRule>(&key.rule)) {
    if (rule->isAccepted(value)) {
      values.*rule->member = value;
      return {};
    }
  } else if (const auto* const choice = std::get_if<ChoiceRule>(&key.rule)) {
    if (std::find(choice->choices.begin(), choice->choices.end(), value) != choice->choices.end()) {
      values.*choice->member = value;
      return {};
    }
  }
  return tl::unexpected(refusal(key, quoted(value)));
}

ConfigOutcome setFromText(ConfigValues& values, const ConfigKey& key, std::string_view text) {
  if (!std::holds_alternative<NumberRule>(key.rule)) {
    return setText(values, key, text);
  }
  const std::optional<std::int64_t> number = parseWhole<std::int64_t>(text);
  if (!number) {
    return tl::unexpected(refusal(key, quoted(text)));
  }
  return setNumber(values, key, *number);
}

std::string quoted(std::string_view text) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string result = "'";
  for (const char c : text) {
    if (isControl(c)) {
      const auto byte = static_cast<unsigned char>(c);
      result += {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 0xf]};
    } else {
      result += c;
    }
  }
  return result + '\'';
}

std::string explainConfigKeys() {
  std::string text;
  for (const ConfigKey& key : kKeys) {
    text += key.name;
    text += "\n    ";
    text += key.help;
    text += "\n    " + expectation(key) + "; ";
    text += key.isRequired ? "required" : "default " + defaultOf(key);
    text += '\n';
  }
  return text;
}

}  // namespace base
