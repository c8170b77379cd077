#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "dme/ChangeSet.h"
#include "dme/CommitQueue.h"
#include "dme/Database.h"
#include "dme/ObjectClass.h"
#include "dme/ObjectView.h"
#include "dme/Result.h"
#include "framework/method/Config.h"
#include "framework/mo/Dn.h"

namespace dme {

/// A managed object: its name, its class and the values of its properties. Changed only through
/// its store.
class Object {
 public:
  Object(const mo::Dn& dn, const ClassInfo& objectClass)
      : dn_(dn), class_(&objectClass), values_(objectClass.properties.size()) {}

  const mo::Dn& dn() const { return dn_; }
  const ClassInfo& objectClass() const { return *class_; }

  /// The value, or what T makes of {} when the property is not set.
  template <class T>
  const T& get(const Property<T>& property) const {
    static const T kNotSet{};
    const T* value = std::get_if<T>(&values_[property.id - 1]);
    return value != nullptr ? *value : kNotSet;
  }
  ObjectView view() const;

 private:
  friend class ObjectStore;

  mo::Dn dn_;
  const ClassInfo* class_;
  std::vector<method::Value> values_;  // one for each row of the class's table
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
  /// content that does not fit the tables of the classes. Blocks on the disk.
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
  Object& create(const mo::Dn& dn, const ClassInfo& objectClass);

  /// Removes the object, if it is there, and everything below it.
  void remove(const mo::Dn& dn);

  template <class T>
  void set(Object& object, const Property<T>& property, const T& value) {
    method::Value& held = object.values_[property.id - 1];
    if (const T* old = std::get_if<T>(&held); old != nullptr && *old == value) {
      return;
    }
    held = value;
    stage(object, property.id);
  }
  template <class T>
  void clear(Object& object, const Property<T>& property) {
    method::Value& held = object.values_[property.id - 1];
    if (held.index() != 0) {
      held = method::Value();
      stage(object, property.id);
    }
  }

  /// Sends every change since the last call to the disk as one transaction. For `done` see
  /// CommitQueue::submit; without changes it tells that all earlier ones are durable.
  void commit(Completion done = {});

  /// Writes what waits and leaves the file without a log to replay. Later commits fail.
  /// Idempotent. Blocks on the disk.
  void close();

  CommitQueue::Counters counters() const { return queue_.counters(); }

 private:
  using Place = std::map<mo::Dn, std::unique_ptr<Object>>::iterator;

  explicit ObjectStore(Database database);
  Result<void> load();
  std::pair<Place, Place> rangeBelow(const mo::Dn& dn);
  void stage(const Object& object, std::uint32_t propertyId);

  Database database_;  // once loaded, used by the queue's thread alone
  bool isClosed_ = false;
  std::map<mo::Dn, std::unique_ptr<Object>> objects_;
  ChangeSet staged_;
  CommitQueue queue_;  // last: its thread uses the database
};

}  // namespace dme
