#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "dme/base/Result.h"
#include "dme/chassis/Chassis.h"
#include "dme/reports/Report.h"
#include "dme/store/ObjectStore.h"
#include "framework/base/String.h"
#include "framework/method/Config.h"

namespace dme {

/// The application instances of the chassis: those that the engine believes to be on a blade
/// ("app-<identifier>" below its slot), those that the blade reports ("reported-<identifier>"), and
/// the differences ("fault-<kind>" below the instance that they are about):
///
///   missing       believed, not reported; not when its phase is absent or unsure
///   unexpected    reported, not believed to be in this slot
///   otherState    both, in another state; not when one side tells none
///   otherVersion  both, in another version; not when one side tells none
///
/// A fault goes when a report does not show the difference any more. Of an instance that has a job
/// nothing is judged: what is expected of it is changing.
///
/// Not thread-safe. Changes are staged in the store, for one transaction.
class AppInstances {
 public:
  static constexpr std::size_t kMostInstances = base::kMostAppsPerSlot;  ///< of a report

  /// Finds the instances that the store holds. Everything outlives this.
  AppInstances(ObjectStore& store, Chassis& chassis, ReportCounters& counters);

  /// Puts the slot's report in the place of the one before, and compares it with what is believed.
  /// An instance that is reported again keeps its failures and operations. Fails, changing
  /// nothing, when there is no such slot. `now` is in milliseconds since the epoch.
  Result<void> record(std::uint32_t slot, const method::ConfigSet& instances, std::uint64_t now);

  /// The instance with this identifier: the believed one, else the only reported one. Fails when
  /// there is none, or when blades of several slots report one and none is believed.
  Result<Object*> find(const base::String& identifier) const;

  /// The believed instance with this identifier, or null.
  Object* believed(std::string_view identifier) const;
  /// The believed instances of the slot, or of every slot, by identifier.
  std::vector<Object*> believedIn(std::optional<std::uint32_t> slot) const;
  /// What the slot's blade says of the instance in its last report; null when that lacks it.
  const Object* reported(std::uint32_t slot, std::string_view identifier) const;

  /// Whether the instance has a job that is not over. Without it none has.
  using HasJob = std::function<bool(std::uint32_t slot, std::string_view identifier)>;
  void askForJobs(HasJob hasJob) { hasJob_ = std::move(hasJob); }

  /// Takes a believed instance in that was made, or out before it is removed.
  void add(std::uint32_t slot, Object& instance);
  void drop(std::uint32_t slot, const Object& instance);

  /// Marks the instance as failed.
  Result<void> noteFailure(const base::String& identifier, std::uint64_t now);
  /// The instance runs afresh: it is failed no longer. How often and when it failed stays.
  void clearFailure(Object& instance);

 private:
  /// By identifier.
  using Instances = std::map<std::string, Object*, std::less<>>;
  struct Slot {
    Instances believed;
    Instances reported;
    std::size_t faults = 0;  // by the last report since the start
  };
  struct Report;  // what a report says, by identifier

  /// Finds the instances that the store holds below the slot.
  void index(const Object& slot);
  /// What is fit to be kept of a report.
  Report take(const method::ConfigSet& instances);
  void replace(const Object& slot, Instances& held, const Report& report, std::uint64_t now);
  void forget(const std::string& identifier, const Object& instance);
  /// The number of faults.
  std::size_t compare(std::uint32_t number, const Slot& slot, std::uint64_t now);
  /// Makes or keeps the fault when there is a `difference`, else takes it away. True when there is.
  bool judge(const Object& instance, std::string_view kind,
             const std::optional<std::string>& difference, std::uint64_t now);

  ObjectStore& store_;
  Chassis& chassis_;
  ReportCounters& counters_;
  HasJob hasJob_;
  std::unordered_map<std::uint32_t, Slot> slots_;
  Instances believed_;
  std::unordered_map<std::string, std::vector<Object*>> reported_;
};

}  // namespace dme
