#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <variant>

namespace dme {

/// A property's value as the database keeps it; the first alternative stands for "not set".
using Cell = std::variant<std::monostate, std::int64_t, double, std::string>;

/// What becomes of one object, in this order: it goes together with everything below it; it comes
/// into being; properties of it get a value or lose it.
struct ObjectChange {
  bool isRemoved = false;
  std::string className;                            ///< empty when it does not come into being
  std::map<std::string, Cell, std::less<>> values;  ///< by property
};

/// Changes of the object tree that become durable together. What a later change makes pointless is
/// dropped: of each property only the last value is left, and of an object that came and went
/// nothing. So a set never holds more than the objects that it is about, however often they
/// change.
class ChangeSet {
 public:
  /// Parents before children, so that a removal comes before what follows it below.
  using Objects = std::map<std::string, ObjectChange, std::less<>>;

  /// The object must not be in the database, but for a removal in this set.
  void create(std::string_view dn, std::string_view className);
  /// The object must be in the database or in this set.
  void set(std::string_view dn, std::string_view property, Cell value);
  /// The object and everything below it.
  void remove(std::string_view dn);

  /// Adds the changes that come after those of this set.
  void append(ChangeSet later);

  const Objects& objects() const { return objects_; }
  bool empty() const { return objects_.empty(); }
  void clear() { objects_.clear(); }

 private:
  ObjectChange& at(std::string_view dn);
  void eraseBelow(std::string_view dn);

  Objects objects_;
};

}  // namespace dme
