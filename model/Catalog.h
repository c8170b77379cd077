#pragma once

#include <cstdint>
#include <span>
#include <string_view>

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
#include "framework/meta/Type.h"
#include "framework/mo/Property.h"

namespace model {

/// Every class of managed object. Constants of the library.
std::span<const mo::ClassInfo* const> classInfos();
/// By the name that people read and the database keeps; null when there is no such class.
const mo::ClassInfo* findClass(std::string_view name);
const mo::ClassInfo* findClass(std::uint32_t id);

// The description of the model, for the meta tables. Constants of the library; each class, property
// and method is described in one place, and these tables are made from that.

std::span<const meta::Type> types();
std::span<const meta::Prop> props();
std::span<const meta::NameRef> nameRefs();
std::span<const meta::Class> classes();
std::span<const meta::Result> results();
std::span<const meta::PropValidator> propValidators();
std::span<const meta::Arg> args();
std::span<const meta::Method> methods();
std::span<const meta::Svc> services();
std::span<const meta::AppDomain> domains();
std::span<const meta::FsmStateHandler> fsmStateHandlers();
std::span<const meta::FsmThrottle> fsmThrottles();

}  // namespace model
