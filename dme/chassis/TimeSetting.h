#pragma once

#include <string>

#include "dme/store/ObjectStore.h"
#include "framework/method/Config.h"

namespace dme {

/// The chassis' time zone, as an object of the store. Not thread-safe. Changes are staged.
class TimeSetting {
 public:
  /// The store outlives this.
  explicit TimeSetting(ObjectStore& store) : store_(store) {}

  /// The object's name.
  static const mo::Dn& name();
  /// "UTC" unless set.
  std::string zone() const;
  void setZone(const std::string& zone);
  /// What a blade is told of it.
  method::Config snapshot(const std::string& zone) const;

  /// Whether the system's database of zones has it. Reads a file.
  static bool isZone(const std::string& zone);

 private:
  ObjectStore& store_;
};

}  // namespace dme
