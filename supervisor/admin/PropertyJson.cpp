#include "supervisor/admin/PropertyJson.h"

#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <optional>
#include <variant>

#include "framework/core_utils/Addresses.h"
#include "model/sd/ClusterBootstrapMo.h"
#include "model/sd/ExternalLduLinkMo.h"
#include "model/sd/IPMo.h"
#include "model/sd/IPV6Mo.h"
#include "model/sd/SystemMacMo.h"
#include "supervisor/admin/Fields.h"

namespace supervisor::admin {
namespace {

using method::Value;
using method::ValueKind;

/// How a value is written where its kind alone does not say.
enum class Form : std::uint8_t { kPlain, kIpV4, kIpV6, kMac };

struct FormRow {
  std::uint32_t property;
  Form form;
};

using Cluster = sd::ClusterBootstrapMo;

constexpr FormRow kForms[] = {
    {sd::ExternalLduLinkMo::kSystemMac.id, Form::kMac},
    {sd::SystemMacMo::kMac.id, Form::kMac},
    {sd::IPMo::kAddress.id, Form::kIpV4},
    {sd::IPMo::kNetmask.id, Form::kIpV4},
    {sd::IPMo::kGateway.id, Form::kIpV4},
    {sd::IPV6Mo::kAddress.id, Form::kIpV6},
    {sd::IPV6Mo::kGateway.id, Form::kIpV6},
    {Cluster::kIPv4PoolStart.id, Form::kIpV4},
    {Cluster::kIPv4PoolEnd.id, Form::kIpV4},
    {Cluster::kIPv4VirtIP.id, Form::kIpV4},
    {Cluster::kIPv4Netmask.id, Form::kIpV4},
    {Cluster::kIPv4Gateway.id, Form::kIpV4},
    {Cluster::kIPv6PoolStart.id, Form::kIpV6},
    {Cluster::kIPv6PoolEnd.id, Form::kIpV6},
    {Cluster::kIPv6VirtIP.id, Form::kIpV6},
    {Cluster::kIPv6Gateway.id, Form::kIpV6},
};

Form formOf(std::uint32_t property) {
  const auto* const row = std::ranges::find(kForms, property, &FormRow::property);
  return row != std::end(kForms) ? row->form : Form::kPlain;
}

std::uint32_t readIpV4(const Json& json, const std::string& path) {
  in_addr address{};
  if (::inet_pton(AF_INET, textIn(json, path).c_str(), &address) != 1) {
    refuseValue(json, path, "give an IPv4 address such as 192.0.2.1");
  }
  return ntohl(address.s_addr);
}

std::optional<std::uint64_t> macOf(const std::string& text) {
  constexpr std::size_t kLength = sizeof "aa:bb:cc:dd:ee:ff" - 1;
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::uint64_t mac = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (i % 3 == 2) {
      if (text[i] != ':') {
        return std::nullopt;
      }
      continue;
    }
    const char lower = text[i] >= 'A' && text[i] <= 'F' ? static_cast<char>(text[i] + 32) : text[i];
    const std::size_t digit = kDigits.find(lower);
    if (digit == std::string_view::npos) {
      return std::nullopt;
    }
    mac = mac << 4U | digit;
  }
  return text.size() == kLength ? std::optional(mac) : std::nullopt;
}

std::uint64_t readMac(const Json& json, const std::string& path) {
  const auto mac = macOf(textIn(json, path));
  if (!mac) {
    refuseValue(json, path, "give a MAC address such as 02:00:5e:10:00:ff");
  }
  return *mac;
}

std::string textOfMac(std::uint64_t mac) {
  std::array<char, sizeof "aa:bb:cc:dd:ee:ff"> text{};
  const auto byte = [mac](unsigned shift) {
    return static_cast<unsigned>(mac >> shift & 0xffU);
  };
  std::snprintf(text.data(), text.size(), "%02x:%02x:%02x:%02x:%02x:%02x", byte(40), byte(32),
                byte(24), byte(16), byte(8), byte(0));
  return text.data();
}

std::string readText(Form form, const Json& json, const std::string& path) {
  std::string text = textIn(json, path);
  in6_addr address{};
  if (form == Form::kIpV6 && ::inet_pton(AF_INET6, text.c_str(), &address) != 1) {
    refuseValue(json, path, "give an IPv6 address such as 2001:db8::1");
  }
  return text;
}

std::uint8_t readEnumerated(const mo::Enumeration& enumeration, const Json& json,
                            const std::string& path) {
  const std::string text = textIn(json, path);
  std::string known;
  for (const mo::EnumText& row : enumeration.texts) {
    if (row.text == text) {
      return row.value;
    }
    known += (known.empty() ? "" : ", ") + std::string(row.text);
  }
  refuseValue(json, path, "give one of " + known);
}

template <class T>
T readNumber(const Json& json, const std::string& path) {
  return static_cast<T>(numberIn(json, path, 0, std::numeric_limits<T>::max()));
}

}  // namespace

Value readValue(const mo::PropertyInfo& property, const Json& json, const std::string& path) {
  const Form form = formOf(property.id);
  switch (property.kind) {
    case ValueKind::kBool:
      return flagIn(json, path);
    case ValueKind::kUint8:
      return property.enumeration != nullptr ? readEnumerated(*property.enumeration, json, path)
                                             : readNumber<std::uint8_t>(json, path);
    case ValueKind::kUint32:
      return form == Form::kIpV4 ? readIpV4(json, path) : readNumber<std::uint32_t>(json, path);
    case ValueKind::kUint64:
      return form == Form::kMac ? readMac(json, path) : readNumber<std::uint64_t>(json, path);
    case ValueKind::kText:
      return base::String(readText(form, json, path));
    default:
      refuseValue(json, path, "leave it out: it cannot be given");
  }
}

Json writeValue(const mo::PropertyInfo& property, const Value& value) {
  const Form form = formOf(property.id);
  if (const auto* const byte = std::get_if<std::uint8_t>(&value);
      byte != nullptr && property.enumeration != nullptr) {
    return property.enumeration->textOf(*byte);
  }
  if (const auto* const number = std::get_if<std::uint32_t>(&value);
      number != nullptr && form == Form::kIpV4) {
    return core_utils::ipV4ToString(*number).str();
  }
  if (const auto* const number = std::get_if<std::uint64_t>(&value);
      number != nullptr && form == Form::kMac) {
    return textOfMac(*number);
  }
  return toJson(value);
}

}  // namespace supervisor::admin
