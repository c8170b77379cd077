#pragma once

#include <string>

#include "framework/base/String.h"
#include "model/sd/AppInstanceMo.h"
#include "model/sd/LduMo.h"
#include "model/sm/AppMo.h"
#include "serviceOrchAG/executors/ExecutorFrame.h"

namespace zan_serviceOrchAG {

/// The document that starts an application instance, while it is built: the instance that it is
/// about, and the adding of elements.
class StartDocument {
 public:
  /// All are borrowed.
  StartDocument(ExecutorFrame& frame, const sd::AppInstanceMo& instance, const sm::AppMo& app,
                const sd::LduMo& ldu, const base::String& root);

  const sd::AppInstanceMo& instance() const { return instance_; }
  const sm::AppMo& app() const { return app_; }
  const sd::LduMo& ldu() const { return ldu_; }
  const std::string& slot() const { return slot_; }
  const base::String& id() const { return instance_.get(sd::AppInstanceMo::kAppInstanceId); }
  bool isVdp() const { return app_.get(sm::AppMo::kVdp); }

  ExecutorFrame& frame() { return frame_; }
  noxxml::XMLConverter& converter() { return document_.converter(); }
  noxxml::AgElement* root() { return document_.root(); }
  std::string text() const { return document_.text(); }

  /// An element that holds others.
  noxxml::AgElement* addGroup(const base::String& name, noxxml::AgElement* parent);
  /// Leaves the element out when its value counts as not set.
  void addOptional(const base::String& name, const base::String& value, noxxml::AgElement* parent);
  /// Null when it has no value, which has been logged and reported.
  [[nodiscard]] noxxml::AgElement* addRequired(noxxml::AgElement* parent,
                                               const RequiredElement& element);
  /// The same below the root.
  [[nodiscard]] noxxml::AgElement* addRequired(const RequiredElement& element) {
    return addRequired(root(), element);
  }

  /// Tells that something the document can do without is not there.
  void logMissing(int level, const char* what) const;

 private:
  ExecutorFrame& frame_;
  const sd::AppInstanceMo& instance_;
  const sm::AppMo& app_;
  const sd::LduMo& ldu_;
  const std::string slot_;
  CommandDocument document_;
};

// The parts of the document, in its order. One that can fail returns false then, and has logged and
// reported why.

/// What the instance is, and what it is given of its blade.
[[nodiscard]] bool addResources(StartDocument& start);
/// The virtual interfaces of all its links.
[[nodiscard]] bool addDataVnics(StartDocument& start);
/// How it reaches the other members of its cluster and how that is managed.
[[nodiscard]] bool addClusterBootstraps(StartDocument& start);
[[nodiscard]] bool addClusterMgmtBootstrap(StartDocument& start);
/// How it is managed.
[[nodiscard]] bool addMgmtBootstrap(StartDocument& start);
[[nodiscard]] bool addInterfaceList(StartDocument& start);
/// Where it reaches the application gateway.
void addGatewayAddresses(StartDocument& start);
/// Where it runs.
[[nodiscard]] bool addIdentity(StartDocument& start);
/// The settings of its network.
void addNetMgmtBootstraps(StartDocument& start);

}  // namespace zan_serviceOrchAG
