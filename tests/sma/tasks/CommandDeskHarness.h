#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "sma/tasks/CommandDesk.h"

namespace sma {

inline std::string appDocument(const std::string& command, const std::string& app) {
  return "<" + command + "Request><appInstanceId>" + app + "</appInstanceId></" + command +
         "Request>";
}

inline std::string installDocument(const std::string& app, const std::string& package) {
  return "<installAppRequest><packageFile>" + package + "</packageFile><appInstanceId>" + app +
         "</appInstanceId><reqDataHdd>3072</reqDataHdd><installType>lxc</installType>"
         "<installTimeout>600</installTimeout><uninstallTimeout>300</uninstallTimeout>"
         "</installAppRequest>";
}

inline std::string upgradeDocument(const std::string& app, const std::string& url) {
  return "<upgradeAppRequest><appInstanceId>" + app + "</appInstanceId><url>" + url +
         "</url><upgradeTimeout>900</upgradeTimeout><reqDataHdd>5120</reqDataHdd>"
         "</upgradeAppRequest>";
}

inline std::string startDocument(const std::string& app) {
  return "<startAppRequest><hdrVersion>1</hdrVersion><appInstanceId>" + app +
         "</appInstanceId><installType>lxc</installType><reqCpuCores>6</reqCpuCores>"
         "<maxAllowedRam>32768</maxAllowedRam><reqDataHdd>40960</reqDataHdd>"
         "<interfaceList type=\"lxc\"/><appAGIPPort>127.128.254.1:5556</appAGIPPort>"
         "<mgmtBootstrapVersion>2.1</mgmtBootstrapVersion><chassis model=\"C-9\">CH1</chassis>"
         "<slot>3</slot><netMgmtBootstrapList/></startAppRequest>";
}

/// The desk of a blade with two instances, both running, and what it makes the blade report.
class CommandDeskHarness : public testing::Test {
 protected:
  CommandDeskHarness() {
    reporter_.onEnd([this](const Operation& operation, Reporter::TimePoint) {
      ended_.push_back(operation.plan().command);
    });
  }

  CommandDesk desk(CommandDesk::Settings settings = {.jitter = 0}) {
    return {settings, platform_, reporter_};
  }

  void send(CommandDesk& desk, const std::string& command, const std::string& document,
            const std::string& id, const std::string& peer) {
    desk.take(peer,
              msglyr::Message(std::vector<std::string>{"sma_slot3." + command, "nox-xml:1", id,
                                                       "serviceOrchAG", document}),
              now_);
  }

  /// Status and text of the reply to a command.
  std::string ask(CommandDesk& desk, const std::string& command, const std::string& document) {
    send(desk, command, document, std::to_string(++id_), "gateway");
    const auto replies = desk.replies(now_);
    if (replies.size() != 1 || replies.front().peer != "gateway") {
      return std::to_string(replies.size()) + " replies";
    }
    const std::string& text = replies.front().message[4];
    const auto begin = text.find("<message>") + 9;
    return replies.front().message[3] + " " + text.substr(begin, text.find("</message>") - begin);
  }

  void playFor(std::chrono::milliseconds time) {
    const auto end = now_ + time;
    while (reporter_.due() <= end) {
      now_ = std::max(now_, reporter_.due());
      while (auto request = reporter_.next(now_)) {
        std::string line;
        for (const char* tag :
             {"operCmd", "appInstanceId", "operProgress", "operStatus", "code", "errorDesc"}) {
          const Element* found = request->document.find(tag);
          line += found == nullptr || found->text.empty() ? "" : " " + found->text;
        }
        said_.push_back(line.substr(1));
      }
    }
    now_ = end;
  }

  std::string shown(const std::string& id) const {
    for (const AppInstance& app : platform_.apps()) {
      if (app.id == id) {
        return app.version + (app.running ? " running" : " stopped");
      }
    }
    return "absent";
  }

  CommandDesk::TimePoint now_ = CommandDesk::TimePoint() + std::chrono::seconds(1000);
  BladePlatform platform_{1, 3, 2};
  Reporter reporter_{{}, platform_, now_};
  std::vector<std::string> said_;
  std::vector<std::string> ended_;
  unsigned id_ = 0;
};

}  // namespace sma
