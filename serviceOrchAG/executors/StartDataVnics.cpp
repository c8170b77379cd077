#include <set>
#include <string>

#include "framework/base/SvcConfigParams.h"
#include "model/sd/AppLduLinkMo.h"
#include "serviceOrchAG/executors/LduLink.h"
#include "serviceOrchAG/executors/StartDocument.h"
#include "serviceOrchAG/svc/Vocabulary.h"

namespace zan_serviceOrchAG {

namespace {

/// In the order of their characters, each once: "10" stands before "2".
using VnicSet = std::set<std::string>;

void insertVnics(StartDocument& start, const char* kind, const base::String& first,
                 const base::String& second, VnicSet& vnics) {
  start.frame().log(ExecutorFrame::kTrace,
                    "STARTAPP: %s : reqDataVnics : [Adaptor1:Index1]:[%s], [Adaptor2:Index2]:[%s]",
                    kind, first.c_str(), second.c_str());
  const base::String indices[] = {getVnic(first, start.instance()),
                                  getVnic(second, start.instance())};
  start.frame().log(ExecutorFrame::kTrace,
                    "STARTAPP: %s : reqDataVnics : VnicIndex1:[%s], VnicIndex2:[%s]", kind,
                    indices[0].c_str(), indices[1].c_str());
  for (const base::String& index : indices) {
    if (!index.empty()) {
      vnics.insert(index.str());
    }
  }
}

VnicSet dataVnics(StartDocument& start) {
  using App = sd::AppLduLinkMo;
  using External = sd::ExternalLduLinkMo;
  VnicSet vnics;
  for (const External* const link : externalLinks(start.ldu())) {
    insertVnics(start, "ExternalLDULink", link->get(External::kBladeVnic1),
                link->get(External::kBladeVnic2), vnics);
  }
  for (const mo::Mo* const object : start.ldu().findChild(App::kClassId)) {
    insertVnics(start, "AppLDULink", object->get(App::kBladeVnic1), object->get(App::kBladeVnic2),
                vnics);
  }
  return vnics;
}

std::string joined(const VnicSet& vnics) {
  std::string text;
  for (const std::string& each : vnics) {
    text += (text.empty() ? "" : ",") + each;
  }
  return text;
}

}  // namespace

bool addDataVnics(StartDocument& start) {
  const std::string vnics = joined(dataVnics(start));
  const auto& platform = base::SvcConfigParams::getInstance();
  if (platform.isQvm2() || platform.isQvm1()) {
    start.frame().log(ExecutorFrame::kNotice,
                      "STARTAPP: reqDataVnics: ignored because of QVM2/QVM1 platform");
    return true;
  }
  start.frame().log(ExecutorFrame::kTrace, "STARTAPP: reqDataVnics : [%s]", vnics.c_str());
  return start.addRequired({names().reqDataVnics, vnics, MissingLine::kInstanceFirst,
                            "STARTAPP:: reqDataVnics is missing."}) != nullptr;
}

}  // namespace zan_serviceOrchAG
