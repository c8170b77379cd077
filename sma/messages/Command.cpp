#include "sma/messages/Command.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <vector>

#include "framework/noxxml/XMLConverter.h"
#include "serviceOrchAG/svc/Vocabulary.h"
#include "sma/base/Element.h"
#include "sma/messages/Requests.h"

namespace sma {
namespace {

using zan_serviceOrchAG::names;
using zan_serviceOrchAG::words;

constexpr std::size_t kMostText = 4096;
constexpr std::size_t kMostId = 255;
/// As an instance it would be taken for the platform in reports.
constexpr std::string_view kNoInstance = "-1";

/// What the text of an element must be.
enum class Kind {
  AppId,
  Text,    ///< one line, not empty
  Number,  ///< decimal, above 0
  Level,   ///< a log level's word
  Deploy,  ///< a way to deploy
  Slot,    ///< the blade's own
  Group,   ///< elements; its own text does not matter
};

struct Tag {
  std::string name;
  Kind kind;
  std::string Command::*into = nullptr;  ///< where its text goes
  bool isRequired = true;
};

struct Shape {
  std::string name;
  std::string documentName;
  std::string root;
  std::vector<Tag> tags;
};

std::string requestRoot(const std::string& documentName) {
  return documentName + "Request";
}

Shape shapeOf(const std::string& name, const std::string& documentName, std::vector<Tag> tags) {
  return {name, documentName, requestRoot(documentName), std::move(tags)};
}

Tag appTag() {
  return {names().appInstanceId.str(), Kind::AppId, &Command::app};
}

Tag tag(const base::String& name, Kind kind, std::string Command::*into = nullptr) {
  return {name.str(), kind, into};
}

std::vector<Tag> startTags() {
  return {tag(names().hdrVersion, Kind::Number),
          appTag(),
          tag(names().installType, Kind::Deploy),
          tag(names().reqCpuCores, Kind::Number),
          tag(names().maxAllowedRam, Kind::Number),
          tag(names().reqDataHdd, Kind::Number),
          tag(names().interfaceList, Kind::Group),
          tag(names().appAGIPPort, Kind::Text),
          tag(names().mgmtBootstrapVersion, Kind::Text),
          tag(names().chassis, Kind::Text),
          tag(names().slot, Kind::Slot)};
}

std::vector<Shape> makeShapes() {
  Tag optionalApp = appTag();
  optionalApp.isRequired = false;
  const Tag level = tag(names().logLevel, Kind::Level, &Command::logLevel);
  const Tag anyLevel = tag(names().logLevel, Kind::Text, &Command::logLevel);
  std::vector<Shape> shapes{
      shapeOf(
          words().installAppName, words().installAppName,
          {tag(names().packageFile, Kind::Text, &Command::package), appTag(),
           tag(names().reqDataHdd, Kind::Number), tag(names().installType, Kind::Text),
           tag(names().installTimeout, Kind::Number), tag(names().uninstallTimeout, Kind::Number)}),
      shapeOf(words().startAppName, words().startAppName, startTags()),
      shapeOf(words().stopAppName, words().stopAppName, {appTag()}),
      shapeOf(words().upgradeAppName, words().upgradeAppName,
              {appTag(), tag(names().url, Kind::Text, &Command::package),
               tag(names().upgradeTimeout, Kind::Number), tag(names().reqDataHdd, Kind::Number)}),
      shapeOf(words().uninstallAppName, words().uninstallAppName, {appTag()}),
      shapeOf(words().platformLogLevelSetSubject, words().platformLogLevelSetName, {level}),
      shapeOf(words().formatDiskSubject, words().formatDiskSubject,
              {tag(names().token, Kind::Text, &Command::token)}),
      shapeOf(words().clearLogDataSubject, words().clearLogDataName, {optionalApp}),
      shapeOf(words().settingsUpdateSubject, words().platformSettingsUpdateName,
              {tag(names().timezone, Kind::Text, &Command::timeZone), anyLevel}),
  };
  shapes.back().root = words().platformSettingsUpdateName;  // the only one without "Request"
  return shapes;
}

const std::vector<Shape>& shapes() {
  static const std::vector<Shape> kShapes = makeShapes();
  return kShapes;
}

const Shape* shapeByName(std::string_view name) {
  const auto found = std::find_if(shapes().begin(), shapes().end(),
                                  [name](const Shape& each) { return each.name == name; });
  return found == shapes().end() ? nullptr : &*found;
}

// --- what is allowed to stand in an element

bool isLine(std::string_view text, std::size_t most) {
  return !text.empty() && text.size() <= most &&
         std::none_of(text.begin(), text.end(), [](char character) {
           return static_cast<unsigned char>(character) < ' ' || character == '\x7f';
         });
}

std::optional<std::uint64_t> numberOf(std::string_view text) {
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool whole = error == std::errc() && end == text.data() + text.size();
  return whole ? std::optional(number) : std::nullopt;
}

template <std::size_t kCount>
bool isOneOf(std::string_view text, const std::array<const base::String*, kCount>& all) {
  return std::any_of(all.begin(), all.end(),
                     [text](const base::String* each) { return each->view() == text; });
}

bool isLevel(std::string_view text) {
  return isOneOf(text, std::array{&names().debug, &names().info, &names().warning, &names().error,
                                  &names().critical});
}

bool isDeployType(std::string_view text) {
  return isOneOf(text, std::array{&names().native, &names().lxc, &names().vm});
}

bool holds(Kind kind, std::string_view text, std::uint32_t slot) {
  switch (kind) {
    case Kind::AppId:
      return isLine(text, kMostId) && text != kNoInstance;
    case Kind::Text:
      return isLine(text, kMostText);
    case Kind::Number:
      return numberOf(text).value_or(0) > 0;
    case Kind::Level:
      return isLevel(text);
    case Kind::Deploy:
      return isDeployType(text);
    case Kind::Slot:
      return numberOf(text) == slot;
    case Kind::Group:
      return true;
  }
  return false;
}

// --- reading

using Outcome = std::optional<Refusal>;

Outcome readTag(const noxxml::AgElement& root, const Tag& tag, std::uint32_t slot,
                Command& command) {
  const auto found = root.findChildren(tag.name);
  const std::string request = " in the " + command.documentName + " request";
  if (found.size() > 1) {
    return Refusal{code::kWrongValue, "More <" + tag.name + "> tag found" + request};
  }
  if (found.empty()) {
    return tag.isRequired
               ? Outcome(Refusal{code::kWrongValue, "No <" + tag.name + "> tag found" + request})
               : Outcome();
  }
  const std::string_view text = found.front()->textView();
  if (!holds(tag.kind, text, slot)) {
    return Refusal{code::kWrongValue, "Invalid value \"" + std::string(text.substr(0, kMostId)) +
                                          "\" found for <" + tag.name + ">" + request};
  }
  if (tag.into != nullptr) {
    command.*tag.into = text;
  }
  return {};
}

// Reads on after the first fault: whoever reports it wants to name the instance.
Outcome readDocument(std::string_view document, const Shape& shape, std::uint32_t slot,
                     Command& command) {
  noxxml::XMLConverter converter;
  const noxxml::AgElement* root = converter.xmlDeserialize(document);
  if (root == nullptr) {
    return Refusal{code::kUnreadable, "The document of " + shape.name + " cannot be read"};
  }
  if (root->name() != shape.root) {
    return Refusal{code::kUnreadable,
                   "The document of " + shape.name + " has no root element <" + shape.root + ">"};
  }
  Outcome first;
  for (const Tag& tag : shape.tags) {
    const Outcome outcome = readTag(*root, tag, slot, command);
    first = first ? first : outcome;
  }
  return first;
}

Outcome checkContentType(const std::string& text) {
  const std::string wanted = words().contentType + ":" + words().contentVersion;
  if (text == wanted) {
    return {};
  }
  const bool known = text.substr(0, text.find(':')) == words().contentType;
  return Refusal{known ? code::kInvalidContentVersion : code::kInvalidContentType,
                 "Only content-type:version \"" + wanted + "\" is supported"};
}

std::string_view afterFirstDot(std::string_view subject) {
  const std::size_t dot = subject.find('.');
  return dot == std::string_view::npos ? std::string_view() : subject.substr(dot + 1);
}

/// The name for documents that a peer cannot make an element of.
constexpr std::string_view kUnknownName = "error";

}  // namespace

std::string packageVersion(std::string_view path) {
  const std::string_view file = path.substr(path.find_last_of('/') + 1);
  const std::size_t dash = file.find_last_of('-');
  const std::size_t dot = file.find_last_of('.');
  const bool has = dash != std::string_view::npos && dot != std::string_view::npos;
  return has && dot > dash + 1 ? std::string(file.substr(dash + 1, dot - dash - 1)) : "1.0";
}

std::vector<std::string> commandNames() {
  std::vector<std::string> all;
  for (const Shape& each : shapes()) {
    all.push_back(each.name);
  }
  return all;
}

CommandRead readCommand(const msglyr::Message& message, std::uint32_t slot) {
  const std::string_view subject = message[0];
  const Shape* shape = shapeByName(afterFirstDot(subject));
  CommandRead read;
  if (shape == nullptr) {
    read.refusal = Refusal{code::kInvalidCommand, "Invalid command"};
    return read;
  }
  if (subject.substr(0, subject.find('.')) != clientIdentity(slot)) {
    read.refusal = Refusal{code::kForeignSlot, "This is the blade in slot " + std::to_string(slot)};
    return read;
  }
  read.command.name = shape->name;
  read.command.documentName = shape->documentName;
  read.command.messageId = message[2];
  read.refusal = checkContentType(message[1]);
  if (!read.refusal) {
    read.refusal = readDocument(message[4], *shape, slot, read.command);
  }
  return read;
}

msglyr::Message makeCommandReply(const msglyr::Message& command, unsigned status,
                                 std::string_view text) {
  const std::string_view name = afterFirstDot(command[0]);
  const Shape* shape = shapeByName(name);
  Element document{
      (shape == nullptr ? std::string(kUnknownName) : shape->documentName) + "Response", "", {}};
  Element& response = document.add("response");
  response.add(names().code.view(), std::to_string(status));
  response.add("message", text);
  return msglyr::Message(std::vector<std::string>{command[3] + "." + std::string(name), command[1],
                                                  command[2], std::to_string(status),
                                                  toXml(document)});
}

}  // namespace sma
