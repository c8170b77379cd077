#include "sma/scenario/ScenarioReader.h"

#include <stdexcept>

#include "sma/base/SlotRange.h"

namespace sma {
namespace {

constexpr double kMostSeconds = 1e6;

template <class Words>
std::string joined(const Words& words) {
  std::string text;
  for (const auto& word : words) {
    text += (text.empty() ? "" : ", ") + std::string(word);
  }
  return text;
}

}  // namespace

void ScenarioReader::fail(const std::string& cause) const {
  throw std::runtime_error(name_ + ": " + (place_.empty() ? "" : place_ + ": ") + cause);
}

ScenarioReader ScenarioReader::step(const std::string& step, const Json& value) const {
  ScenarioReader reader(name_, value);
  const bool dot = !place_.empty() && step.front() != '[';
  reader.place_ = place_ + (dot ? "." : "") + step;
  return reader;
}

void ScenarioReader::allowOnly(const std::set<std::string>& keys) const {
  if (!value_->is_object()) {
    fail("an object is needed here");
  }
  for (const auto& item : value_->items()) {
    if (!keys.contains(item.key())) {
      fail("unknown key '" + item.key() + "'; known are " + joined(keys));
    }
  }
}

std::vector<ScenarioReader> ScenarioReader::list(const char* key) const {
  std::vector<ScenarioReader> members;
  if (!has(key)) {
    return members;
  }
  const Json& all = value_->at(key);
  if (!all.is_array()) {
    fail("'" + std::string(key) + "' is no list");
  }
  for (const Json& member : all) {
    members.push_back(step(key + ("[" + std::to_string(members.size()) + "]"), member));
  }
  return members;
}

std::vector<std::pair<std::string, ScenarioReader>> ScenarioReader::object(const char* key) const {
  std::vector<std::pair<std::string, ScenarioReader>> members;
  if (!has(key)) {
    return members;
  }
  const Json& all = value_->at(key);
  if (!all.is_object()) {
    fail("'" + std::string(key) + "' is no object");
  }
  for (const auto& item : all.items()) {
    members.emplace_back(item.key(), step(key + ("." + item.key()), item.value()));
  }
  return members;
}

ScenarioReader ScenarioReader::at(const char* key) const {
  return step(key, value_->at(key));
}

std::string ScenarioReader::string(const char* key) const {
  const auto found = value_->find(key);
  if (found == value_->end() || !found->is_string()) {
    fail("a text '" + std::string(key) + "' is needed");
  }
  return found->get<std::string>();
}

std::string ScenarioReader::word(const char* key, const std::vector<std::string>& words) const {
  std::string text = string(key);
  if (std::find(words.begin(), words.end(), text) == words.end()) {
    fail("unknown " + std::string(key) + " '" + text + "'; known are " + joined(words));
  }
  return text;
}

bool ScenarioReader::boolean(const char* key) const {
  const auto found = value_->find(key);
  if (found == value_->end() || !found->is_boolean()) {
    fail("'" + std::string(key) + "' is neither true nor false");
  }
  return found->get<bool>();
}

unsigned ScenarioReader::number(const char* key, unsigned least, unsigned most) const {
  const auto found = value_->find(key);
  if (found == value_->end() || !found->is_number_unsigned() ||
      found->get<std::uint64_t>() < least || found->get<std::uint64_t>() > most) {
    fail("'" + std::string(key) + "' is no number from " + std::to_string(least) + " to " +
         std::to_string(most));
  }
  return found->get<unsigned>();
}

double ScenarioReader::share(const char* key) const {
  const auto found = value_->find(key);
  if (found == value_->end() || !found->is_number() || found->get<double>() < 0 ||
      found->get<double>() > 1) {
    fail("'" + std::string(key) + "' is no number from 0 to 1");
  }
  return found->get<double>();
}

std::chrono::milliseconds ScenarioReader::seconds(const char* key) const {
  const auto found = value_->find(key);
  if (found == value_->end()) {
    return std::chrono::milliseconds(0);
  }
  if (!found->is_number() || found->get<double>() < 0 || found->get<double>() > kMostSeconds) {
    fail("'" + std::string(key) + "' is no number of seconds");
  }
  return std::chrono::milliseconds(static_cast<std::int64_t>(found->get<double>() * 1000));
}

std::vector<std::uint32_t> ScenarioReader::slots() const {
  const std::string text = string("slots");
  try {
    return parseSlotRange(text);
  } catch (const std::invalid_argument& error) {
    fail(error.what());
  }
}

Span ScenarioReader::span() const {
  if (value_->is_number_unsigned()) {
    const auto exact = value_->get<std::uint64_t>();
    return {exact, exact};
  }
  allowOnly({"min", "max"});
  Span span;
  span.least = value_->value("min", span.least);
  span.most = value_->value("max", span.most);
  return span;
}

}  // namespace sma
