#include "serviceOrchAG/executors/StartDocument.h"

#include "serviceOrchAG/svc/Vocabulary.h"

namespace zan_serviceOrchAG {

StartDocument::StartDocument(ExecutorFrame& frame, const sd::AppInstanceMo& instance,
                             const sm::AppMo& app, const sd::LduMo& ldu, const base::String& root)
    : frame_(frame),
      instance_(instance),
      app_(app),
      ldu_(ldu),
      slot_(std::to_string(instance.get(sd::AppInstanceMo::kSlotId))),
      document_(root) {}

noxxml::AgElement* StartDocument::addGroup(const base::String& name, noxxml::AgElement* parent) {
  return converter().xmlAddChildNode(name, "", parent);
}

void StartDocument::addOptional(const base::String& name, const base::String& value,
                                noxxml::AgElement* parent) {
  createChildNode(name, value, parent, converter());
}

noxxml::AgElement* StartDocument::addRequired(noxxml::AgElement* parent,
                                              const RequiredElement& element) {
  return frame_.addRequired(document_, parent, slot_, id(), element);
}

void StartDocument::logMissing(int level, const char* what) const {
  frame_.log(level, "STARTAPP: %s[%s]: %s[%s]: %s : missing", names().appInstanceId.c_str(),
             id().c_str(), names().slot.c_str(), slot_.c_str(), what);
}

}  // namespace zan_serviceOrchAG
