#include "dme/store/ObjectStore.h"

#include <cctype>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

#include "framework/core_log/Log.h"
#include "model/Catalog.h"

namespace dme {

namespace {

Cell cellOf(const method::Value& value) {
  return std::visit(
      [](const auto& held) -> Cell {
        using T = std::decay_t<decltype(held)>;
        if constexpr (std::is_same_v<T, std::monostate>) {
          return held;
        } else if constexpr (std::is_same_v<T, base::String>) {
          return held.str();
        } else if constexpr (std::is_same_v<T, float>) {
          // What is not a number has no place in the database: it would refuse the transaction.
          return std::isnan(held) ? Cell() : Cell(static_cast<double>(held));
        } else {
          return static_cast<std::int64_t>(held);  // the upper half of 64 bits becomes negative
        }
      },
      value);
}

template <class T>
std::optional<method::Value> integerOf(std::int64_t number) {
  if (!std::in_range<T>(number)) {
    return std::nullopt;
  }
  return method::Value(static_cast<T>(number));
}

std::optional<method::Value> valueOfInteger(method::ValueKind kind, std::int64_t number) {
  switch (kind) {
    case method::ValueKind::kBool:
      return number == 0 || number == 1 ? std::optional<method::Value>(number == 1) : std::nullopt;
    case method::ValueKind::kUint8:
      return integerOf<std::uint8_t>(number);
    case method::ValueKind::kInt32:
      return integerOf<std::int32_t>(number);
    case method::ValueKind::kUint32:
      return integerOf<std::uint32_t>(number);
    case method::ValueKind::kUint64:
      return method::Value(static_cast<std::uint64_t>(number));
    case method::ValueKind::kNone:
    case method::ValueKind::kFloat:
    case method::ValueKind::kText:
      break;
  }
  return std::nullopt;
}

// Nothing when the database holds another kind of value than the class's table says.
std::optional<method::Value> valueOf(method::ValueKind kind, const Cell& cell) {
  if (const auto* number = std::get_if<std::int64_t>(&cell)) {
    return valueOfInteger(kind, *number);
  }
  if (const auto* real = std::get_if<double>(&cell);
      real != nullptr && kind == method::ValueKind::kFloat) {
    return method::Value(static_cast<float>(*real));
  }
  if (const auto* text = std::get_if<std::string>(&cell);
      text != nullptr && kind == method::ValueKind::kText) {
    return method::Value(base::String(*text));
  }
  return std::nullopt;
}

// "hasToken" for "token".
std::string nameOfPresence(std::string_view property) {
  std::string name = "has" + std::string(property);
  name[3] = static_cast<char>(std::toupper(static_cast<unsigned char>(name[3])));
  return name;
}

}  // namespace

ObjectView Object::view() const {
  ObjectView view{dn_.text().str(), std::string(class_->name), {}};
  view.values.reserve(class_->properties.size());
  for (const mo::PropertyInfo& info : class_->properties) {
    const method::Value* const value = values_.find(info.id);
    if (info.group == mo::kSecretGroup) {
      const auto* text = value != nullptr ? std::get_if<base::String>(value) : nullptr;
      view.values.emplace_back(nameOfPresence(info.name), text != nullptr && !text->empty());
    } else if (value != nullptr) {
      view.values.emplace_back(info.name, *value);
    }
  }
  return view;
}

ObjectStore::ObjectStore(Database database)
    : database_(std::move(database)),
      queue_([this](const ChangeSet& changes) { return database_.write(changes); }) {}

ObjectStore::~ObjectStore() {
  close();
}

Result<std::unique_ptr<ObjectStore>> ObjectStore::open(const std::string& stateDir) {
  Result<Database> database = Database::open(stateDir);
  if (!database) {
    return tl::unexpected<Error>(database.error());
  }
  const std::string file = database->file();
  std::unique_ptr<ObjectStore> store(new ObjectStore(std::move(*database)));
  if (const Result<void> loaded = store->load(); !loaded) {
    return failure(file + " cannot be loaded (" + loaded.error().text +
                       "): restore a copy of it, or move it away to start with an empty database",
                   loaded.error().code);
  }
  return store;
}

Result<void> ObjectStore::load() {
  std::string mismatch;  // the first one
  const auto report = [&mismatch](std::string finding) {
    mismatch = mismatch.empty() ? std::move(finding) : mismatch;
  };
  Result<void> read = database_.load(
      [&](std::string_view dn, std::string_view className) {
        if (const mo::ClassInfo* info = model::findClass(className)) {
          objects_.emplace(dn, std::make_unique<Object>(mo::Dn(dn), *info));
        } else {
          report("unknown class " + std::string(className));
        }
      },
      [&](std::string_view dn, std::string_view name, const Cell& cell) {
        Object* object = find(mo::Dn(dn));
        const mo::PropertyInfo* info = object != nullptr ? object->class_->find(name) : nullptr;
        auto value = info != nullptr ? valueOf(info->kind, cell) : std::nullopt;
        if (value) {
          object->values_.set(info->id, std::move(*value));
        } else {
          report("unfit value of " + std::string(name) + " at " + std::string(dn));
        }
      });
  if (read && !mismatch.empty()) {
    return failure(mismatch);
  }
  return read;
}

Object* ObjectStore::find(const mo::Dn& dn) {
  const auto found = objects_.find(dn);
  return found == objects_.end() ? nullptr : found->second.get();
}

std::pair<ObjectStore::Place, ObjectStore::Place> ObjectStore::rangeBelow(const mo::Dn& dn) {
  const std::string prefix = dn.text().str() + "/";
  const Place first = objects_.lower_bound(mo::Dn(prefix));
  Place last = first;
  while (last != objects_.end() && last->first.text().str().starts_with(prefix)) {
    ++last;
  }
  return {first, last};
}

std::vector<Object*> ObjectStore::below(const mo::Dn& dn) {
  const auto [first, last] = rangeBelow(dn);
  std::vector<Object*> found;
  for (Place next = first; next != last; ++next) {
    found.push_back(next->second.get());
  }
  return found;
}

std::vector<ObjectView> ObjectStore::view(const mo::Dn& dn) const {
  if (!dn.empty() && !objects_.contains(dn)) {
    return {};
  }
  const std::string prefix = dn.text().str() + "/";
  std::vector<ObjectView> views;
  for (auto next = objects_.lower_bound(dn); next != objects_.end(); ++next) {
    const std::string& name = next->first.text().str();
    // "a-b" stands between "a" and "a/b", so the range is left by name only.
    if (dn.empty() || next->first == dn || name.starts_with(prefix)) {
      views.push_back(next->second->view());
    } else if (name > prefix) {
      break;
    }
  }
  return views;
}

Object& ObjectStore::create(const mo::Dn& dn, const mo::ClassInfo& classInfo) {
  auto& object = objects_[dn];
  if (object == nullptr) {
    object = std::make_unique<Object>(dn, classInfo);
    staged_.create(dn.text().view(), classInfo.name);
  }
  return *object;
}

void ObjectStore::remove(const mo::Dn& dn) {
  const auto [first, last] = rangeBelow(dn);
  const Place itself = objects_.find(dn);
  if (itself == objects_.end() && first == last) {
    return;
  }
  staged_.remove(dn.text().view());
  objects_.erase(first, last);
  if (itself != objects_.end()) {
    objects_.erase(itself);  // last: `dn` may be its own
  }
}

std::vector<Object> ObjectStore::copy(const mo::Dn& dn) const {
  std::vector<Object> copies;
  if (const auto itself = objects_.find(dn); itself != objects_.end()) {
    copies.push_back(*itself->second);
    const std::string prefix = dn.text().str() + "/";
    for (auto next = objects_.lower_bound(mo::Dn(prefix));
         next != objects_.end() && next->first.text().str().starts_with(prefix); ++next) {
      copies.push_back(*next->second);
    }
  }
  return copies;
}

void ObjectStore::restore(const std::vector<Object>& copies) {
  for (const Object& copy : copies) {
    Object& object = create(copy.dn(), copy.classInfo());
    object.values_ = copy.values_;
    for (const mo::PropertyInfo& info : object.class_->properties) {
      stage(object, info.id);
    }
  }
}

bool ObjectStore::set(Object& object, std::uint32_t propertyId, method::Value value) {
  const method::Value* const held = object.values_.find(propertyId);
  const bool isSet = !std::holds_alternative<std::monostate>(value);
  if (held != nullptr ? *held == value : !isSet) {
    return false;
  }
  if (isSet) {
    object.values_.set(propertyId, std::move(value));
  } else {
    object.values_.erase(propertyId);
  }
  stage(object, propertyId);
  return true;
}

bool ObjectStore::assign(Object& object, const mo::Mo& source, std::uint32_t groups) {
  bool hasChanged = false;
  for (const mo::PropertyInfo& info : object.class_->properties) {
    if ((info.group & groups) != 0) {
      const method::Value* const value = source.find(info.id);
      hasChanged |= set(object, info.id, value != nullptr ? *value : method::Value());
    }
  }
  return hasChanged;
}

bool ObjectStore::observe(Object& object, const mo::Property<std::uint64_t>& property,
                          std::uint64_t now, bool hasChanged) {
  hold(object, property, now);
  const std::uint64_t stored = object.storedObservation_;
  const bool isRecent = stored != 0 && now >= stored && now - stored < kObservationIsStoredEvery;
  if (isRecent && !hasChanged) {
    return false;
  }
  object.storedObservation_ = now;
  stage(object, property.id);
  return true;
}

void ObjectStore::stage(const Object& object, std::uint32_t propertyId) {
  const mo::PropertyInfo* const info = object.class_->find(propertyId);
  if (info != nullptr && info->isDurable()) {
    const method::Value* const value = object.values_.find(propertyId);
    staged_.set(object.dn_.text().view(), info->name, value != nullptr ? cellOf(*value) : Cell());
  }
}

void ObjectStore::commit(Completion done, CommitQueue::Tell tell) {
  queue_.submit(std::exchange(staged_, ChangeSet()), std::move(done), tell);
}

void ObjectStore::close() {
  if (std::exchange(isClosed_, true)) {
    return;
  }
  commit();
  queue_.stop();
  if (const Result<void> done = database_.checkpoint(); !done) {
    // Nothing is lost: the next start replays the log.
    core_log::logPrintf("close", core_log::serviceLevel(), 6, "%s keeps its log: %s",
                        database_.file().c_str(), done.error().text.c_str());
  }
}

}  // namespace dme
