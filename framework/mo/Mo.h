#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "framework/base/String.h"
#include "framework/method/Config.h"
#include "framework/mo/ChangeFlags.h"
#include "framework/mo/Dn.h"
#include "framework/mo/Property.h"

namespace filter {
class Filter;
}

namespace mo {

/// A managed object: its class, its name and the properties that are set. Not synchronised.
///
/// The classes of the model derive from it, each with its description, and add nothing else. An
/// object of a class that this process does not know is a plain Mo.
class Mo {
 public:
  Mo(std::uint32_t classId, const Dn& dn) : classId_(classId), dn_(dn) {}
  virtual ~Mo() = default;
  /// A copy of the object alone: what is attached stays with the original.
  Mo(const Mo& other)
      : classId_(other.classId_),
        classInfo_(other.classInfo_),
        dn_(other.dn_),
        values_(other.values_),
        changeFlags_(other.changeFlags_) {}
  Mo& operator=(const Mo&) = delete;

  std::uint32_t classId() const { return classId_; }
  /// The description of a class of the model; null for a plain object.
  const ClassInfo* classInfo() const { return classInfo_; }
  const Dn& dn() const { return dn_; }

  /// Sets the property and marks it changed, also when it has this value already.
  template <class T>
  void set(const Property<T>& property, const std::type_identity_t<T>& value) {
    values_.set(property.id, value);
    changeFlags_.mark(property.id);
  }
  template <class T>
  void set(const Property<T>& property, std::type_identity_t<T>&& value) {
    values_.set(property.id, std::move(value));
    changeFlags_.mark(property.id);
  }
  /// The same, with the text made in its place.
  void set(const Property<base::String>& property, std::string_view value) {
    values_.set(property.id, value);
    changeFlags_.mark(property.id);
  }
  /// The same by number. Whether the class has the property and of which kind is not checked.
  void set(std::uint32_t propertyId, method::Value value) {
    values_.set(propertyId, std::move(value));
    changeFlags_.mark(propertyId);
  }
  /// Takes the value away and marks the property changed. Without a value it has no effect.
  template <class T>
  void clear(const Property<T>& property) {
    clear(property.id);
  }
  void clear(std::uint32_t propertyId) {
    if (values_.erase(propertyId)) {
      changeFlags_.mark(propertyId);
    }
  }

  /// The value, or what T makes of {} when the property is not set or holds another kind. Valid
  /// until the object's next change.
  template <class T>
  const T& get(const Property<T>& property) const {
    static const T kNotSet{};
    const method::Value* const value = find(property.id);
    const T* const content = value != nullptr ? std::get_if<T>(value) : nullptr;
    return content != nullptr ? *content : kNotSet;
  }
  /// The value, or null when the property is not set. Valid until the object's next change.
  const method::Value* find(std::uint32_t propertyId) const { return values_.find(propertyId); }
  /// In ascending order of the properties.
  const method::ValueMap& values() const { return values_; }
  /// The text of an enumerated property's value. Empty when the property's values have no texts, or
  /// the class's description lacks it.
  template <class T>
  base::String stringify(const Property<T>& property) const {
    return stringify(property.id);
  }
  base::String stringify(std::uint32_t propertyId) const;

  /// What was set or cleared since the object was made or resetChangeFlags() was called.
  const ChangeFlags& changeFlags() const { return changeFlags_; }
  void resetChangeFlags() { changeFlags_.clear(); }

  /// Gives the object one that came along with it: a child, or one that it resolves. Null is
  /// fine. Returned is the object given.
  Mo* attach(std::unique_ptr<Mo> object);
  /// The attached objects of a class that pass the filter, all of the class when it is null, in
  /// the order in which they were attached. They live as long as this object.
  std::vector<Mo*> findChild(std::uint32_t classId, const filter::Filter* filter = nullptr) const;
  /// The first attached object of the model's class T, or null.
  template <class T>
  T* resolve() const;

  /// The object as an argument of a method: the properties of the groups that `propertyGroup` is
  /// the sum of, and of these only those in `only` unless it is null. One that is in `only` and
  /// not set travels without a value, so that the reader clears it. Properties that the class's
  /// description lacks belong to kStateGroup. `depth` is how many levels of attached objects travel
  /// along, each with all its properties of those groups.
  method::Config toConfig(std::uint32_t propertyGroup = kAllGroups,
                          const ChangeFlags* only = nullptr, unsigned int depth = 0,
                          std::uint32_t flags = 0) const&;
  /// The same of an object that is done with: it gives its values away.
  method::Config toConfig(std::uint32_t propertyGroup = kAllGroups,
                          const ChangeFlags* only = nullptr, unsigned int depth = 0,
                          std::uint32_t flags = 0) &&;

  /// Frees an object that a handler attached to its request. Null is fine. `flags` is always 0.
  static void deleteObjectByConfig(Mo* object, unsigned int flags);

 protected:
  /// For the classes of the model.
  Mo(const ClassInfo& classInfo, const Dn& dn)
      : classId_(classInfo.id), classInfo_(&classInfo), dn_(dn) {}

 private:
  friend class Pool;
  /// Makes the object what it was when it was new, under another name, in the memory that it has.
  void renew(Dn dn);
  bool isIn(std::uint32_t propertyGroup, std::uint32_t propertyId) const;
  method::Config packed(method::ValueMap&& values, std::uint32_t propertyGroup,
                        const ChangeFlags* only, unsigned int depth, std::uint32_t flags) const;

  const std::uint32_t classId_;
  const ClassInfo* const classInfo_ = nullptr;
  Dn dn_;
  method::ValueMap values_;
  ChangeFlags changeFlags_;
  std::vector<std::unique_ptr<Mo>> attached_;
};

/// The object as one of the model's class T; null when it is null, plain or of another class.
template <class T>
T* checkCast(Mo* object) {
  return object != nullptr && object->classInfo() != nullptr && object->classId() == T::kClassId
             ? static_cast<T*>(object)
             : nullptr;
}
template <class T>
const T* checkCast(const Mo* object) {
  return checkCast<T>(const_cast<Mo*>(object));
}

template <class T>
T* Mo::resolve() const {
  for (const std::unique_ptr<Mo>& object : attached_) {
    if (T* const wanted = checkCast<T>(object.get())) {
      return wanted;
    }
  }
  return nullptr;
}

/// Sets on `object` what `config` says of it. Taken are the properties that the object's class
/// has, of the groups in `propertyGroup`, whose value is of the property's kind; one without a
/// value is cleared. Returns how many values were not taken; all of them when `config` is of
/// another class or the object is plain. Name, flags and children of `config` are not looked at.
std::size_t fromConfig(const method::Config& config, Mo& object,
                       std::uint32_t propertyGroup = kAllGroups);

}  // namespace mo
