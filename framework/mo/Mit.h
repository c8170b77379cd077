#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "framework/mo/Dn.h"
#include "framework/mo/Mo.h"

namespace mo {

/// A tree of managed objects. An object in it is constant: to change one is to put another in its
/// place. Thread-safe.
class Mit {
 public:
  using Object = std::shared_ptr<const Mo>;  // shared by the tree and those who looked it up

  /// Makes `tree` the one of the process's service and has TreeInitializer::INSTANCE, if there is
  /// one, put into it what every tree has. Borrowed; stays until it is replaced.
  static void registerInstance(Mit* tree);
  /// Null before registerInstance().
  static Mit* instance();

  virtual ~Mit() = default;

  /// Puts the object under its name, in the place of the one that is there. Null has no effect.
  virtual void put(Object object) = 0;
  /// Takes the object of this name out; those below it stay. False when there is none.
  virtual bool remove(const Dn& dn) = 0;
  /// Null when there is none.
  virtual Object find(const Dn& dn) const = 0;
  /// Every object below `dn`, at any depth, itself excluded, in the order of the names.
  virtual std::vector<Object> below(const Dn& dn) const = 0;
  virtual std::size_t size() const = 0;
};

}  // namespace mo
