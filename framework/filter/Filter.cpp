#include "framework/filter/Filter.h"

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <utility>

namespace filter {

namespace {

/// Compares what a property holds; null when it is not set.
using Predicate = bool (*)(const method::Value* held, const method::Value& wanted);

class PropertyFilter final : public Filter {
 public:
  PropertyFilter(Predicate predicate, std::uint32_t propertyId, method::Value wanted)
      : predicate_(predicate), propertyId_(propertyId), wanted_(std::move(wanted)) {}
  bool matches(const mo::Mo& object) const override {
    return predicate_(object.find(propertyId_), wanted_);
  }

 private:
  const Predicate predicate_;
  const std::uint32_t propertyId_;
  const method::Value wanted_;
};

using Factories = std::map<std::string, Predicate, std::less<>>;

std::mutex lock;

Factories& factories() {  // guarded by lock
  static Factories& instance = *new Factories;
  return instance;
}

bool isEqual(const method::Value* held, const method::Value& wanted) {
  return held != nullptr && *held == wanted;
}
bool isOther(const method::Value* held, const method::Value& wanted) {
  return !isEqual(held, wanted);
}
bool isSet(const method::Value* held, const method::Value&) {
  return held != nullptr;
}

}  // namespace

void Filter::initFactories() {
  const std::lock_guard guard(lock);
  factories() = {{"eq", isEqual}, {"ne", isOther}, {"set", isSet}};
}

std::unique_ptr<Filter> Filter::create(std::string_view kind, std::uint32_t propertyId,
                                       const method::Value& value) {
  const std::lock_guard guard(lock);
  const auto found = factories().find(kind);
  return found == factories().end()
             ? nullptr
             : std::make_unique<PropertyFilter>(found->second, propertyId, value);
}

}  // namespace filter
