#include "framework/mo/Mit.h"

#include <atomic>

#include "framework/mo/StimuliHelper.h"
#include "framework/mo/TreeInitializer.h"

namespace mo {

namespace {

std::atomic<Mit*> registered{nullptr};

std::size_t put(const method::Config& config, Mit& tree) {
  auto object = std::make_shared<Mo>(config.classId(), config.dn());
  for (const auto& [propertyId, value] : config.values()) {
    object->set(propertyId, value);
  }
  tree.put(std::move(object));
  std::size_t count = 1;
  for (const method::Config& child : config.children()) {
    count += put(child, tree);
  }
  return count;
}

}  // namespace

StimuliHelper* StimuliHelper::INSTANCE = nullptr;
TreeInitializer* TreeInitializer::INSTANCE = nullptr;

void Mit::registerInstance(Mit* tree) {
  registered = tree;
  if (tree != nullptr && TreeInitializer::INSTANCE != nullptr) {
    TreeInitializer::INSTANCE->initialize(*tree);
  }
}

Mit* Mit::instance() {
  return registered;
}

void MoTreeInitializer::initialize(Mit& tree) {
  tree.put(std::make_shared<Mo>(kRootClass, Dn()));
}

std::size_t MoStimuliHelper::apply(const method::ConfigSet& set, Mit& tree) {
  std::size_t count = 0;
  for (const method::Config& config : set.configs()) {
    count += put(config, tree);
  }
  return count;
}

}  // namespace mo
