#pragma once

#include <string>

#include "dme/base/UnsettledValue.h"
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
  /// settle() is to be told of each zone, in their order.
  void setZone(const std::string& zone);
  /// The zone was stored, or not: then it is taken back.
  void settle(bool isStored);
  /// What a blade is told of it.
  method::Config snapshot(const std::string& zone) const;

  /// Whether the system's database of zones has it. Reads a file.
  static bool isZone(const std::string& zone);

 private:
  void write(const std::string& zone);

  ObjectStore& store_;
  UnsettledValue<std::string> unsettled_;
};

}  // namespace dme
