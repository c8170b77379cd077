// The tables of the model's description, filled once at start-up.

#include <algorithm>
#include <type_traits>
#include <variant>

#include "framework/meta/AppDomain.h"
#include "framework/meta/Arg.h"
#include "framework/meta/Class.h"
#include "framework/meta/Fsm.h"
#include "framework/meta/Method.h"
#include "framework/meta/NameRef.h"
#include "framework/meta/Prop.h"
#include "framework/meta/PropValidator.h"
#include "framework/meta/Result.h"
#include "framework/meta/Svc.h"
#include "framework/meta/Table.h"
#include "framework/meta/Type.h"

namespace meta {

namespace {

/// Never destroyed: threads may look while the process exits.
template <class Row, std::uint32_t Row::*kKey = &Row::id>
Table<Row, kKey>& table() {
  static auto& instance = *new Table<Row, kKey>;
  return instance;
}

std::span<const Arg> args;
std::span<const FsmThrottle> throttles;

}  // namespace

void Type::initializeTypeMeta(const Type* rows, std::size_t size) {
  table<Type>().load(rows, size);
}
const Type* Type::find(std::uint32_t id) {
  return table<Type>().find(id);
}
std::span<const Type> Type::all() {
  return table<Type>().rows();
}

void Prop::initializePropMeta(const Prop* rows, std::size_t size) {
  table<Prop>().load(rows, size);
}
const Prop* Prop::find(std::uint32_t id) {
  return table<Prop>().find(id);
}
std::span<const Prop> Prop::all() {
  return table<Prop>().rows();
}

void NameRef::initializeNameRefMeta(const NameRef* rows, std::size_t size) {
  table<NameRef>().load(rows, size);
}
void NameRef::indexByProperty() {
  const std::span<const NameRef> rows = table<NameRef>().rows();
  table<NameRef, &NameRef::propertyId>().load(rows.data(), rows.size());
}
const NameRef* NameRef::find(std::uint32_t id) {
  return table<NameRef>().find(id);
}
const NameRef* NameRef::findByProperty(std::uint32_t propertyId) {
  return table<NameRef, &NameRef::propertyId>().find(propertyId);
}

void Class::initializeClassMeta(const Class* rows, std::size_t size) {
  table<Class>().load(rows, size);
}
const Class* Class::find(std::uint32_t id) {
  return table<Class>().find(id);
}
std::span<const Class> Class::all() {
  return table<Class>().rows();
}

void Result::init(const Result* rows, std::size_t size) {
  table<Result>().load(rows, size);
}
const Result* Result::find(std::uint32_t id) {
  return table<Result>().find(id);
}

void PropValidator::initializePropValMeta(const PropValidator* rows, std::size_t size) {
  table<PropValidator, &PropValidator::propertyId>().load(rows, size);
}
bool PropValidator::isValid(std::uint32_t propertyId, const method::Value& value) {
  const PropValidator* const range =
      table<PropValidator, &PropValidator::propertyId>().find(propertyId);
  return range == nullptr || std::visit(
                                 [&](const auto& content) {
                                   using Content = std::decay_t<decltype(content)>;
                                   if constexpr (std::is_arithmetic_v<Content>) {
                                     const auto number = static_cast<double>(content);
                                     return number >= range->least && number <= range->most;
                                   } else {
                                     return true;
                                   }
                                 },
                                 value);
}

void Arg::initializeArgMeta(const Arg* rows, std::size_t size) {
  args = {rows, size};
}
std::span<const Arg> Arg::ofMethod(std::uint32_t methodId) {
  const auto isOfMethod = [methodId](const Arg& arg) {
    return arg.methodId == methodId;
  };
  const auto first = std::find_if(args.begin(), args.end(), isOfMethod);
  return {first, std::find_if_not(first, args.end(), isOfMethod)};
}

void Method::initializeMethodMeta(const Method* rows, std::size_t size) {
  table<Method>().load(rows, size);
}
const Method* Method::find(std::uint32_t id) {
  return table<Method>().find(id);
}
std::span<const Method> Method::all() {
  return table<Method>().rows();
}

void Svc::initializeSvcMeta(const Svc* rows, std::size_t size) {
  table<Svc>().load(rows, size);
}
const Svc* Svc::find(std::uint32_t id) {
  return table<Svc>().find(id);
}

void AppDomain::initializeDomainMeta(const AppDomain* rows, std::size_t size) {
  table<AppDomain>().load(rows, size);
}
const AppDomain* AppDomain::find(std::uint32_t id) {
  return table<AppDomain>().find(id);
}

void FsmStateHandler::install(const FsmStateHandler* rows, std::size_t size) {
  table<FsmStateHandler>().load(rows, size);
}
std::span<const FsmStateHandler> FsmStateHandler::all() {
  return table<FsmStateHandler>().rows();
}

void FsmThrottle::install(const FsmThrottle* rows, std::size_t size) {
  throttles = {rows, size};
}
void FsmThrottle::indexById() {
  table<FsmThrottle>().load(throttles.data(), throttles.size());
}
const FsmThrottle* FsmThrottle::find(std::uint32_t id) {
  return table<FsmThrottle>().find(id);
}

}  // namespace meta
