#include "sma/messages/Command.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace sma {
namespace {

/// A command document as the gateway builds it.
std::string golden(const std::string& name) {
  std::ifstream file(std::string(ZAN_GOLDEN_FOLDER) + "/" + name + ".xml");
  std::ostringstream text;
  text << file.rdbuf();
  std::string document = text.str();
  document.erase(document.find_last_not_of('\n') + 1);
  return document;
}

msglyr::Message message(const std::string& command, const std::string& document) {
  return msglyr::Message(std::vector<std::string>{"sma_slot3." + command, "nox-xml:1", "7",
                                                  "serviceOrchAG", document});
}

CommandRead read(const std::string& command, const std::string& document) {
  return readCommand(message(command, document), 3);
}

std::string refusalText(const CommandRead& read) {
  return read.refusal ? std::to_string(read.refusal->code) + " " + read.refusal->text : "";
}

struct Whole {
  const char* document;
  const char* command;
};

TEST(Command, DocumentsOfTheGateway_AreReadWithoutAFault) {
  for (const auto& [document, command] : std::initializer_list<Whole>{
           {"install", "installApp"},
           {"start", "startApp"},
           {"start.qvm1", "startApp"},
           {"start.qvm2", "startApp"},
           {"start.qvm3", "startApp"},
           {"startVdp", "startApp"},
           {"startVdp.qvm1", "startApp"},
           {"startVdp.qvm2", "startApp"},
           {"startVdp.qvm3", "startApp"},
           {"stop", "stopApp"},
           {"upgrade", "upgradeApp"},
           {"uninstall", "uninstallApp"},
           {"platformLogLevel", "platformLogLevel.set"},
           {"formatDisk", "formatDisk"},
           {"clearApplicationLogData", "clearLogData"},
           {"clearSystemLogData", "clearLogData"},
           {"timeZone", "settings.update"},
       }) {
    ASSERT_FALSE(golden(document).empty()) << document;
    const CommandRead result = read(command, golden(document));
    EXPECT_EQ(refusalText(result), "") << document;
    EXPECT_EQ(result.command.name, command);
    EXPECT_EQ(result.command.messageId, "7");
  }
}

TEST(Command, Values_AreThoseOfTheDocument) {
  EXPECT_EQ(read("installApp", golden("install")).command.app, "a1");
  EXPECT_EQ(read("installApp", golden("install")).command.package, "/pkg/a1.bin");
  EXPECT_EQ(read("formatDisk", golden("formatDisk")).command.token, "0123abcd");
  EXPECT_EQ(read("platformLogLevel.set", golden("platformLogLevel")).command.logLevel, "warning");
  EXPECT_EQ(read("clearLogData", golden("clearApplicationLogData")).command.app, "a1");
  EXPECT_EQ(read("clearLogData", golden("clearSystemLogData")).command.app, "");
  const Command settings =
      read("settings.update",
           "<platformSettingsUpdate><timezone>CET-1CEST,M3.5.0,M10.5.0/3</timezone>"
           "<logLevel>info</logLevel></platformSettingsUpdate>")
          .command;
  EXPECT_EQ(settings.timeZone, "CET-1CEST,M3.5.0,M10.5.0/3");
  EXPECT_EQ(settings.logLevel, "info");
}

struct Wrong {
  const char* command;
  const char* document;
  const char* refusal;
};

TEST(Command, WrongDocuments_AreRefusedWithTheCodeOfTheFault) {
  for (const Wrong& each : std::initializer_list<Wrong>{
           {"reboot", "<rebootRequest/>", "500 Invalid command"},
           {"", "<x/>", "500 Invalid command"},
           {"platformLogLevel", "<platformLogLevelRequest/>", "500 Invalid command"},
           {"formatDisk.now", "<formatDiskRequest/>", "500 Invalid command"},
           {"stopApp", "", "503 The document of stopApp cannot be read"},
           {"stopApp", "<stopAppRequest>", "503 The document of stopApp cannot be read"},
           {"stopApp", "<!DOCTYPE x [<!ENTITY e 'e'>]><stopAppRequest>&e;</stopAppRequest>",
            "503 The document of stopApp cannot be read"},
           {"stopApp", "<stopApp><appInstanceId>a1</appInstanceId></stopApp>",
            "503 The document of stopApp has no root element <stopAppRequest>"},
           {"settings.update", "<platformSettingsUpdateRequest/>",
            "503 The document of settings.update has no root element <platformSettingsUpdate>"},
           {"stopApp", "<stopAppRequest/>",
            "505 No <appInstanceId> tag found in the stopApp request"},
           {"stopApp", "<stopAppRequest><x><appInstanceId>a1</appInstanceId></x></stopAppRequest>",
            "505 No <appInstanceId> tag found in the stopApp request"},
           {"stopApp",
            "<stopAppRequest><appInstanceId>a1</appInstanceId><appInstanceId>a2</appInstanceId>"
            "</stopAppRequest>",
            "505 More <appInstanceId> tag found in the stopApp request"},
           {"stopApp", "<stopAppRequest><appInstanceId/></stopAppRequest>",
            "505 Invalid value \"\" found for <appInstanceId> in the stopApp request"},
           {"stopApp", "<stopAppRequest><appInstanceId>-1</appInstanceId></stopAppRequest>",
            "505 Invalid value \"-1\" found for <appInstanceId> in the stopApp request"},
           {"stopApp", "<stopAppRequest><appInstanceId>a&#10;b</appInstanceId></stopAppRequest>",
            "505 Invalid value \"a\nb\" found for <appInstanceId> in the stopApp request"},
           {"formatDisk", "<formatDiskRequest/>",
            "505 No <token> tag found in the formatDisk request"},
           {"platformLogLevel.set",
            "<platformLogLevelSetRequest><logLevel>loud</logLevel></platformLogLevelSetRequest>",
            "505 Invalid value \"loud\" found for <logLevel> in the platformLogLevelSet request"},
           {"settings.update",
            "<platformSettingsUpdate><timezone>UTC0</timezone></platformSettingsUpdate>",
            "505 No <logLevel> tag found in the platformSettingsUpdate request"},
           {"upgradeApp",
            "<upgradeAppRequest><appInstanceId>a1</appInstanceId><url>/p</url>"
            "<upgradeTimeout>soon</upgradeTimeout><reqDataHdd>1</reqDataHdd></upgradeAppRequest>",
            "505 Invalid value \"soon\" found for <upgradeTimeout> in the upgradeApp request"},
           {"upgradeApp",
            "<upgradeAppRequest><appInstanceId>a1</appInstanceId><url>/p</url>"
            "<upgradeTimeout>99999999999999999999</upgradeTimeout><reqDataHdd>1</reqDataHdd>"
            "</upgradeAppRequest>",
            "505 Invalid value \"99999999999999999999\" found for <upgradeTimeout> in the "
            "upgradeApp request"},
       }) {
    EXPECT_EQ(refusalText(read(each.command, each.document)), each.refusal) << each.document;
  }
}

TEST(Command, EachRequiredElement_IsMissedWhereItLacks) {
  struct Case {
    const char* command;
    const char* document;
    std::vector<std::string> required;
  };
  for (const Case& each : std::initializer_list<Case>{
           {"installApp",
            "install",
            {"packageFile", "appInstanceId", "reqDataHdd", "installType", "installTimeout",
             "uninstallTimeout"}},
           {"startApp",
            "start",
            {"hdrVersion", "appInstanceId", "installType", "reqCpuCores", "maxAllowedRam",
             "reqDataHdd", "interfaceList", "appAGIPPort", "mgmtBootstrapVersion", "chassis",
             "slot"}},
           {"upgradeApp", "upgrade", {"appInstanceId", "url", "upgradeTimeout", "reqDataHdd"}},
           {"settings.update", "timeZone", {"timezone", "logLevel"}},
       }) {
    for (const std::string& tag : each.required) {
      std::string document = golden(each.document);
      // What is no longer found by its name is missing.
      for (const std::string& mark : {"<" + tag + ">", "</" + tag + ">", "<" + tag + " "}) {
        const auto at = document.find(mark);
        if (at != std::string::npos) {
          document.replace(at + mark.find(tag), tag.size(), "gone");
        }
      }
      EXPECT_NE(
          refusalText(read(each.command, document)).find("505 No <" + tag + "> tag found in the "),
          std::string::npos)
          << document;
    }
  }
}

TEST(Command, DeepOrLargeDocument_IsUnreadable) {
  std::string deep;
  for (int level = 0; level < 5000; ++level) {
    deep += "<stopAppRequest>";
  }
  EXPECT_EQ(read("stopApp", deep).refusal->code, 503U);
  const std::string large(2'000'000, 'x');
  EXPECT_EQ(read("stopApp",
                 "<stopAppRequest><appInstanceId>" + large + "</appInstanceId></stopAppRequest>")
                .refusal->code,
            503U);
}

TEST(Command, LongValue_IsRefusedAndQuotedInPart) {
  const std::string id(1000, 'x');
  const CommandRead result =
      read("stopApp", "<stopAppRequest><appInstanceId>" + id + "</appInstanceId></stopAppRequest>");
  ASSERT_TRUE(result.refusal);
  EXPECT_EQ(result.refusal->code, 505U);
  EXPECT_LT(result.refusal->text.size(), 400U);
}

TEST(Command, ForAnotherSlot_IsRefused) {
  const CommandRead result = readCommand(message("stopApp", golden("stop")), 4);
  EXPECT_EQ(refusalText(result), "511 This is the blade in slot 4");
  EXPECT_EQ(result.command.name, "");
}

TEST(Command, StartForAnotherSlot_IsRefused) {
  auto start = message("startApp", golden("start"));
  start[0] = "sma_slot4.startApp";
  EXPECT_EQ(refusalText(readCommand(start, 4)),
            "505 Invalid value \"3\" found for <slot> in the startApp request");
}

TEST(Command, OtherContentTypeOrVersion_IsRefused) {
  auto stop = message("stopApp", golden("stop"));
  stop[1] = "nox-json:1";
  EXPECT_EQ(refusalText(readCommand(stop, 3)),
            "501 Only content-type:version \"nox-xml:1\" is supported");
  stop[1] = "nox-xml:2";
  EXPECT_EQ(refusalText(readCommand(stop, 3)),
            "502 Only content-type:version \"nox-xml:1\" is supported");
}

TEST(Command, FaultBeforeTheInstance_StillTellsTheInstance) {
  std::string document = golden("install");
  document.replace(document.find("/pkg/a1.bin"), 11, "");
  const CommandRead result = read("installApp", document);
  ASSERT_TRUE(result.refusal);
  EXPECT_EQ(result.command.app, "a1");
}

TEST(Command, Reply_HasFivePartsAndEchoesTheId) {
  const auto reply = makeCommandReply(message("platformLogLevel.set", ""), 505, "a<b");
  ASSERT_EQ(reply.getnumParts(), 5U);
  EXPECT_EQ(reply[0], "serviceOrchAG.platformLogLevel.set");
  EXPECT_EQ(reply[1], "nox-xml:1");
  EXPECT_EQ(reply[2], "7");
  EXPECT_EQ(reply[3], "505");
  EXPECT_EQ(reply[4],
            "<platformLogLevelSetResponse><response><code>505</code><message>a&lt;b</message>"
            "</response></platformLogLevelSetResponse>");
}

TEST(Command, ReplyToAnUnknownCommand_MakesNoMarkupOfItsName) {
  const auto reply = makeCommandReply(message("<x>", ""), 500, "Invalid command");
  EXPECT_EQ(reply[4],
            "<errorResponse><response><code>500</code><message>Invalid command</message></response>"
            "</errorResponse>");
}

TEST(Command, PackageVersion_IsPartOfTheFileName) {
  EXPECT_EQ(packageVersion("fw-1.2.pkg"), "1.2");
  EXPECT_EQ(packageVersion("/a-9/fw-x86-10.2.1.pkg"), "10.2.1");
  EXPECT_EQ(packageVersion("/pkg/a1.bin"), "1.0");
  EXPECT_EQ(packageVersion("/p-1.2/fw"), "1.0");
  EXPECT_EQ(packageVersion("fw-.pkg"), "1.0");
  EXPECT_EQ(packageVersion("fw.1-2"), "1.0");
  EXPECT_EQ(packageVersion(""), "1.0");
}

}  // namespace
}  // namespace sma
