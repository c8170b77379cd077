#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <utility>
#include <vector>

#include "sma/agent/BladeAgent.h"

namespace sma {

// Subjects of what a blade reports.
inline constexpr const char* kReport = "serviceOrchAG.platformInfo.update";
inline constexpr const char* kFailure = "serviceOrchAG.appFailure";
inline constexpr const char* kProgress = "serviceOrchAG.commandProgress.update";

/// A blade, a clock to turn, and what the blade has sent.
class BladeAgentTest : public testing::Test {
 protected:
  BladeAgent::Settings settings() {
    BladeAgent::Settings settings;
    settings.slot = 3;
    settings.membership.port = 20003;
    settings.membership.beat = std::chrono::seconds(1);
    settings.seed = 0;
    return settings;
  }

  BladeAgent blade(BladeAgent::Settings settings) { return BladeAgent(std::move(settings), now_); }

  void runUntil(BladeAgent& agent, BladeAgent::Duration offset) {
    const auto end = start_ + offset;
    while (agent.due() <= end) {
      now_ = std::max(now_, agent.due());
      agent.onTime(now_, [this](const msglyr::Message& message) {
        if (connected_) {
          sent_.push_back(message);
        }
        return connected_;
      });
      for (PeerMessage& reply : agent.commandReplies(now_)) {
        replies_.push_back(std::move(reply.message));
      }
    }
    now_ = end;
  }

  void answer(BladeAgent& agent, const std::string& id, const std::string& status,
              const std::string& token = "", const std::string& message = "") {
    agent.onMessage(msglyr::Message(std::vector<std::string>{
                        "sma_slot3.x", "nox-xml:1", id, status,
                        "<r><response><code>0</code><message>" + message +
                            "</message></response><token>" + token + "</token></r>"}),
                    now_);
  }

  /// What has been sent under a subject, in order.
  std::vector<msglyr::Message> sentAs(const std::string& subject) const {
    std::vector<msglyr::Message> all;
    for (const msglyr::Message& message : sent_) {
      if (message[0] == subject) {
        all.push_back(message);
      }
    }
    return all;
  }

  void registerWith(BladeAgent& agent, const std::string& token) {
    runUntil(agent, std::chrono::milliseconds(0));
    answer(agent, sent_.back()[2], "100", token);
  }

  const BladeAgent::TimePoint start_ = BladeAgent::TimePoint() + std::chrono::seconds(1000);
  BladeAgent::TimePoint now_ = start_;
  bool connected_ = true;
  std::vector<msglyr::Message> sent_;
  std::vector<msglyr::Message> replies_;  // to commands
};

}  // namespace sma
