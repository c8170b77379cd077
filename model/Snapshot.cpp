#include "model/Snapshot.h"

#include "model/AllClasses.h"

namespace model {

namespace {

using Maker = std::unique_ptr<mo::Mo> (*)(const mo::Dn& dn);

template <class Me>
std::unique_ptr<mo::Mo> make(const mo::Dn& dn) {
  return std::make_unique<Me>(dn);
}

template <class... Me>
Maker findMaker(std::uint32_t classId, ClassList<Me...>) {
  Maker maker = nullptr;
  static_cast<void>(((Me::kClassId == classId ? (maker = &make<Me>, true) : false) || ...));
  return maker;
}

}  // namespace

std::unique_ptr<mo::Mo> objectOf(const method::Config& config) {
  const Maker maker = findMaker(config.classId(), AllClasses());
  std::unique_ptr<mo::Mo> object = maker != nullptr
                                       ? maker(config.dn())
                                       : std::make_unique<mo::Mo>(config.classId(), config.dn());
  mo::fromConfig(config, *object);
  object->resetChangeFlags();
  for (const method::Config& child : config.children()) {
    object->attach(objectOf(child));
  }
  return object;
}

}  // namespace model
