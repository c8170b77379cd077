#include "supervisor/admin/AdminInterface.h"

#include <utility>

#include "supervisor/admin/Routes.h"

namespace supervisor::admin {

AdminInterface::AdminInterface(const std::string& stateDir, std::string version,
                               std::string engineEndPoint, dme::Engine* engine)
    : engine_(engine == nullptr ? std::nullopt : std::make_optional<EmbeddedEngine>(*engine)),
      context_{std::move(version), engine_ ? &*engine_ : nullptr, std::move(engineEndPoint), false},
      router_(routes(), context_),
      socket_(stateDir),
      server_(socket_.duplicate(), HttpLimits{}, [this](Request request, const Reply& reply) {
        router_.answer(std::move(request), reply);
      }) {}

}  // namespace supervisor::admin
