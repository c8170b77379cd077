#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "dme/base/Result.h"
#include "dme/store/ChangeSet.h"
#include "dme/store/CommitQueue.h"
#include "dme/store/Database.h"
#include "dme/store/ObjectView.h"
#include "framework/method/ValueMap.h"
#include "framework/mo/Dn.h"
#include "framework/mo/Mo.h"
#include "framework/mo/Property.h"

namespace dme {

/// A managed object: its name, its class and the values of its properties. Changed only through
/// its store.
class Object {
 public:
  Object(const mo::Dn& dn, const mo::ClassInfo& classInfo) : dn_(dn), class_(&classInfo) {}

  const mo::Dn& dn() const { return dn_; }
  const mo::ClassInfo& classInfo() const { return *class_; }
  /// Secrets and all: not for people. Valid until the object's next change.
  const method::ValueMap& values() const { return values_; }
  /// Whether it is of the model's class Me.
  template <class Me>
  bool is() const {
    return class_->id == Me::kClassId;
  }

  template <class T>
  bool has(const mo::Property<T>& property) const {
    return values_.find(property.id) != nullptr;
  }
  /// The value, or what T makes of {} when the property is not set. Valid until the object's next
  /// change.
  template <class T>
  const T& get(const mo::Property<T>& property) const {
    static const T kNotSet{};
    const method::Value* const value = values_.find(property.id);
    const T* const content = value != nullptr ? std::get_if<T>(value) : nullptr;
    return content != nullptr ? *content : kNotSet;
  }
  ObjectView view() const;

 private:
  friend class ObjectStore;

  mo::Dn dn_;
  const mo::ClassInfo* class_;
  method::ValueMap values_;              // of the kinds that the class describes
  std::uint64_t storedObservation_ = 0;  // the last one that was sent to the disk since the start
};

/// The tree of managed objects, in memory and, as far as the properties are durable, on the disk.
///
/// A change shows in memory at once and reaches the disk with the next commit(), whose
/// completion tells that it is there. Not thread-safe, save counters(): its owner decides who
/// may look and change. Nothing here but open() and close() waits for the disk.
class ObjectStore {
 public:
  using Completion = CommitQueue::Completion;

  /// Opens the database in `stateDir` and reads the tree. Fails as Database::open does, and on
  /// content that does not fit the classes of the model. Blocks on the disk.
  static Result<std::unique_ptr<ObjectStore>> open(const std::string& stateDir);
  ~ObjectStore();
  ObjectStore(const ObjectStore&) = delete;
  ObjectStore& operator=(const ObjectStore&) = delete;

  /// The object, or null. An object stays in its place until it is removed.
  Object* find(const mo::Dn& dn);
  /// The objects below `dn`, in the order of their names' bytes; not the object itself.
  std::vector<Object*> below(const mo::Dn& dn);
  std::size_t size() const { return objects_.size(); }
  /// Copies of the object and those below it, in the order of their names' bytes: of all objects
  /// for the empty name, of none for one that is not there.
  std::vector<ObjectView> view(const mo::Dn& dn) const;

  /// Makes the object, or returns the one that is there. What stands above it is there already,
  /// or else it must not be removed.
  template <class Me>
  Object& create(const mo::Dn& dn) {
    return create(dn, Me::kClass);
  }
  Object& create(const mo::Dn& dn, const mo::ClassInfo& classInfo);
  /// Removes the object, if it is there, and everything below it.
  void remove(const mo::Dn& dn);
  /// The object and those below it, as they are; none when it is not there.
  std::vector<Object> copy(const mo::Dn& dn) const;
  /// Makes copied objects, which have been removed, again.
  void restore(const std::vector<Object>& copies);

  template <class T>
  void set(Object& object, const mo::Property<T>& property, const std::type_identity_t<T>& value) {
    set(object, property.id, method::Value(std::in_place_type<T>, value));
  }
  template <class T>
  void clear(Object& object, const mo::Property<T>& property) {
    set(object, property.id, method::Value());
  }
  /// Gives the object the values of `source`, which is of its class, in the properties of these
  /// groups: one that `source` lacks loses its value. True when that changed anything.
  bool assign(Object& object, const mo::Mo& source, std::uint32_t groups);

  /// A value that comes so often, and so often alone, that not each is worth a write: it shows in
  /// memory, and reaches the disk with a later set() of another value of the property.
  template <class T>
  void hold(Object& object, const mo::Property<T>& property, const std::type_identity_t<T>& value) {
    object.values_.set(property.id, method::Value(std::in_place_type<T>, value));
  }
  /// Notes in `property` when the object was last seen as it is. That reaches the disk together
  /// with what has changed, so that it is never older than the values beside it, and once in
  /// kObservationIsStoredEvery when nothing has: after a restart it may lag by that much. `now` is
  /// in milliseconds since the epoch. True when it goes to the disk.
  bool observe(Object& object, const mo::Property<std::uint64_t>& property, std::uint64_t now,
               bool hasChanged);
  static constexpr std::uint64_t kObservationIsStoredEvery = 60000;  // milliseconds

  /// Sends every change since the last call to the disk as one transaction. For `done` see
  /// CommitQueue::submit; without changes it tells that all earlier ones are durable.
  void commit(Completion done = {}, CommitQueue::Tell tell = CommitQueue::Tell::kHereAndNow);

  /// Writes what waits and leaves the file without a log to replay. Later commits fail.
  /// Idempotent. Blocks on the disk.
  void close();

  CommitQueue::Counters counters() const { return queue_.counters(); }

 private:
  using Place = std::map<mo::Dn, std::unique_ptr<Object>>::iterator;

  explicit ObjectStore(Database database);
  Result<void> load();
  std::pair<Place, Place> rangeBelow(const mo::Dn& dn);
  /// True when the value is another one than before; no value clears the property.
  bool set(Object& object, std::uint32_t propertyId, method::Value value);
  void stage(const Object& object, std::uint32_t propertyId);

  Database database_;  // once loaded, used by the queue's thread alone
  bool isClosed_ = false;
  std::map<mo::Dn, std::unique_ptr<Object>> objects_;
  ChangeSet staged_;
  CommitQueue queue_;  // last: its thread uses the database
};

}  // namespace dme
