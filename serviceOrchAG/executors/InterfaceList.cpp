#include "serviceOrchAG/executors/InterfaceList.h"

#include "framework/core_utils/Numbers.h"
#include "model/sd/InternalMgmtBootstrapMo.h"
#include "model/sd/SystemMacMo.h"
#include "serviceOrchAG/executors/Addresses.h"
#include "serviceOrchAG/executors/ApplicationPackage.h"
#include "serviceOrchAG/executors/LduLink.h"
#include "serviceOrchAG/executors/StartDocument.h"
#include "serviceOrchAG/svc/Vocabulary.h"

namespace zan_serviceOrchAG {

namespace {

using Instance = sd::AppInstanceMo;
using Internal = sd::InternalMgmtBootstrapMo;
using Link = sd::ExternalLduLinkMo;
using noxxml::AgElement;

constexpr const char* kVirtio = "virtio";
constexpr const char* kPassthrough = "passthrough";
constexpr const char* kQueues = "2";

template <typename... Args>
void trace(core_log::FormatString<std::type_identity_t<Args>...> format, Args... args) {
  core_log::logPrintf("getInterfaceList", core_log::serviceLevel(), ExecutorFrame::kTrace, format,
                      args...);
}

/// One link's interface while it is built.
struct LinkInterface {
  const base::String& listName;
  const sm::AppMo& app;
  const Instance& instance;
  const Link& link;
  noxxml::XMLConverter& converter;
  AgElement* element;

  bool add(const base::String& name, const base::String& value) {
    return createChildNode(name, value, element, converter) != nullptr;
  }
  void addOrTell(const base::String& name, const base::String& value) {
    if (!add(name, value)) {
      trace("STARTAPP: ExternalLduLink : %s[%d]: %s[%s]: %s[%s] : missing", names().slot.c_str(),
            static_cast<int>(instance.get(Instance::kSlotId)), names().appInstanceId.c_str(),
            instance.get(Instance::kAppInstanceId).c_str(), name.c_str(),
            link.get(Link::kPortName).c_str());
    }
  }
  void addVnic(const base::String& index) {
    if (!add(names().allocatedVNIC, index)) {
      trace("STARTAPP: ExternalLduLink: %s[%d]: %s[%s]: %s: type = %s : allocatedVnic : missing ",
            names().slot.c_str(), static_cast<int>(instance.get(Instance::kSlotId)),
            names().appInstanceId.c_str(), instance.get(Instance::kAppInstanceId).c_str(),
            listName.c_str(), getDeployType(app).c_str());
    }
  }
};

void addVnics(LinkInterface& interface) {
  const base::String& first = interface.link.get(Link::kBladeVnic1);
  const base::String& second = interface.link.get(Link::kBladeVnic2);
  trace(
      "STARTAPP: ExternalLduLink: interfaceList : interface : [Adaptor1:Index1]:[%s], "
      "[Adaptor2:Index2]:[%s]",
      first.c_str(), second.c_str());
  const base::String firstIndex = getVnic(first, interface.instance);
  const base::String secondIndex = getVnic(second, interface.instance);
  trace("STARTAPP: ExternalLduLink: interfaceList : interface : VnicIndex1:[%s], VnicIndex2:[%s]",
        firstIndex.c_str(), secondIndex.c_str());
  interface.addVnic(firstIndex);
  interface.addVnic(secondIndex);
}

void fill(LinkInterface& interface) {
  const Link& link = interface.link;
  const sd::LinkInterfaceType type = link.linkInterfaceType();
  const bool isMgmt = type == sd::LinkInterfaceType::kMgmt;
  interface.addOrTell(names().interfaceType, getLinkInterfaceType(link));
  if (isMgmt) {
    interface.addOrTell(names().mgmtSubType, getExternalLinkLduMgmtSubType(link));
  }
  interface.addOrTell(names().interfaceDriver,
                      isMgmt || type == sd::LinkInterfaceType::kCluster ? kVirtio : kPassthrough);
  interface.addOrTell(names().queues, kQueues);
  addVnics(interface);
  if (isToldByMac(link)) {
    interface.addOrTell(names().macAddress, macAddressOf(link));
  } else {
    interface.addOrTell(names().vlan, core_utils::uintToString(link.get(Link::kVlan)));
  }
}

/// The interface to the chassis' own management.
void addInternalInterface(const Instance& instance, noxxml::XMLConverter& converter,
                          AgElement* list) {
  AgElement* const interface = converter.xmlAddChildNode(names().interface, "", list);
  createChildNode(names().interfaceType, names().internalMgmt, interface, converter);
  createChildNode(names().interfaceDriver, kVirtio, interface, converter);
  createChildNode(names().queues, kQueues, interface, converter);
  const Internal* const internal = instance.resolveSdInternalMgmtBootstrap();
  const base::String vnic =
      internal != nullptr ? internal->get(Internal::kBladeVnic) : base::String();
  trace("STARTAPP: interfaceList :InternalMgmtBootstrap : bladeVnic : [Adaptor:Index]:[%s]",
        vnic.c_str());
  const base::String index = getVnic(vnic, instance);
  trace("STARTAPP: interfaceList : InternalMgmtBootstrap : bladeVnic : VnicIndex:[%s]",
        index.c_str());
  createChildNode(names().allocatedVNIC, index, interface, converter);
  if (const sd::SystemMacMo* const mac =
          internal != nullptr ? internal->resolveSdSystemMac() : nullptr) {
    createChildNode(names().macAddress, convertMacAddress(mac->get(sd::SystemMacMo::kMac)),
                    interface, converter);
  }
}

}  // namespace

void getInterfaceList(const base::String& listName, const sm::AppMo& app, const Instance& instance,
                      const sd::LduMo* ldu, noxxml::XMLConverter& converter, AgElement* list,
                      sd::LinkInterfaceType type) {
  if (ldu == nullptr) {
    if (app.get(sm::AppMo::kVdp)) {
      addInternalInterface(instance, converter, list);
    }
    return;
  }
  for (const Link* const link : externalLinks(*ldu, type)) {
    LinkInterface interface {
      listName, app, instance, *link, converter,
          converter.xmlAddChildNode(names().interface, "", list)
    };
    fill(interface);
  }
}

bool addInterfaceList(StartDocument& start) {
  using enum sd::LinkInterfaceType;
  const base::String& name = names().interfaceList;
  const base::String deployType = getDeployType(start.app());
  if (deployType == names().unknown) {
    start.frame().log(ExecutorFrame::kError, "STARTAPP: %s[%s]: %s[%s]: %s: type = %s",
                      names().appInstanceId.c_str(), start.id().c_str(), names().slot.c_str(),
                      start.slot().c_str(), name.c_str(), deployType.c_str());
    start.frame().refuse("STARTAPP:: interfaceList deploy type is unknown.");
    return false;
  }
  AgElement* const list = start.addGroup(name, start.root());
  start.converter().xmlAddAttr("type", deployType, list);
  getInterfaceList(name, start.app(), start.instance(), nullptr, start.converter(), list, kData);
  for (const sd::LinkInterfaceType type : {kMgmt, kData, kDirect, kCluster}) {
    getInterfaceList(name, start.app(), start.instance(), &start.ldu(), start.converter(), list,
                     type);
  }
  return true;
}

}  // namespace zan_serviceOrchAG
