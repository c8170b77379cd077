#include "framework/method/Config.h"

#include <type_traits>
#include <utility>

// Config     class u32, flags u32, name text, values, children
// values     count u32, then per value in ascending order of the property: property u32, tag u8,
//            the value in the tag's width
// children   count u32, then each Config
// ConfigSet  count u32, then each Config

namespace method {

namespace {

constexpr unsigned int kDeepest = 8;
constexpr std::uint32_t kMostValues = 1024;
constexpr std::uint32_t kMostConfigs = 16384;
// The fewest bytes that one value and one configuration take: what a count is checked against
// before anything is allocated for it.
constexpr std::size_t kSmallestValue = 5;
constexpr std::size_t kSmallestConfig = 20;

bool readCount(base::IBioStream& stream, std::uint32_t most, std::size_t smallest,
               std::uint32_t& count) {
  return stream.read(count) && count <= most && count <= stream.remaining() / smallest;
}

void writeProperty(base::OBioStream& stream, std::uint32_t propertyId, const Value& value) {
  const auto tag = static_cast<std::uint8_t>(value.index());
  std::visit(
      [&](const auto& content) {
        using Content = std::decay_t<decltype(content)>;
        if constexpr (std::is_arithmetic_v<Content>) {
          stream.writeTogether(propertyId, tag, content);
        } else {
          stream.writeTogether(propertyId, tag);
          if constexpr (!std::is_same_v<Content, std::monostate>) {
            stream.write(content);
          }
        }
      },
      value);
}

template <std::size_t kTag>
bool readAlternative(base::IBioStream& stream, Value& value) {
  std::variant_alternative_t<kTag, Value> content{};
  if constexpr (kTag != 0) {
    if (!stream.read(content)) {
      return false;
    }
  }
  value.emplace<kTag>(std::move(content));
  return true;
}

template <std::size_t... kTags>
bool readTagged(base::IBioStream& stream, std::size_t tag, Value& value,
                std::index_sequence<kTags...>) {
  return ((tag == kTags && readAlternative<kTags>(stream, value)) || ...);
}

bool readValue(base::IBioStream& stream, Value& value) {
  std::uint8_t tag = 0;
  return stream.read(tag) &&
         readTagged(stream, tag, value, std::make_index_sequence<std::variant_size_v<Value>>());
}

}  // namespace

Config& Config::addChild(Config child) {
  return children_.emplace_back(std::move(child));
}

void Config::serialize(base::OBioStream& stream) const {
  stream.writeTogether(classId_, flags_);
  dn_.serialize(stream);
  stream.write(static_cast<std::uint32_t>(values_.size()));
  for (const auto& [propertyId, value] : values_) {
    writeProperty(stream, propertyId, value);
  }
  stream.write(static_cast<std::uint32_t>(children_.size()));
  for (const Config& child : children_) {
    child.serialize(stream);
  }
}

bool Config::deserialize(base::IBioStream& stream) {
  Config read;
  const bool isRead = read.deserialize(stream, 1);
  *this = isRead ? std::move(read) : Config();
  return isRead;
}

bool Config::deserialize(base::IBioStream& stream, unsigned int depth) {
  return depth <= kDeepest && stream.read(classId_) && stream.read(flags_) &&
         dn_.deserialize(stream) && readValues(stream) && readChildren(stream, depth);
}

bool Config::readValues(base::IBioStream& stream) {
  std::uint32_t count = 0;
  if (!readCount(stream, kMostValues, kSmallestValue, count)) {
    return false;
  }
  std::uint32_t before = 0;
  for (std::uint32_t i = 0; i < count; ++i) {
    std::uint32_t propertyId = 0;
    Value value;
    if (!stream.read(propertyId) || !readValue(stream, value) || (i > 0 && propertyId <= before)) {
      return false;
    }
    values_.set(propertyId, std::move(value));
    before = propertyId;
  }
  return true;
}

bool Config::readChildren(base::IBioStream& stream, unsigned int depth) {
  std::uint32_t count = 0;
  if (!readCount(stream, kMostConfigs, kSmallestConfig, count)) {
    return false;
  }
  for (std::uint32_t i = 0; i < count; ++i) {
    if (!children_.emplace_back().deserialize(stream, depth + 1)) {
      return false;
    }
  }
  return true;
}

void ConfigSet::serialize(base::OBioStream& stream) const {
  stream.write(static_cast<std::uint32_t>(configs_.size()));
  for (const Config& config : configs_) {
    config.serialize(stream);
  }
}

bool ConfigSet::deserialize(base::IBioStream& stream) {
  configs_.clear();
  std::uint32_t count = 0;
  bool isRead = readCount(stream, kMostConfigs, kSmallestConfig, count);
  for (std::uint32_t i = 0; isRead && i < count; ++i) {
    isRead = configs_.emplace_back().deserialize(stream);
  }
  if (!isRead) {
    configs_.clear();
  }
  return isRead;
}

}  // namespace method
