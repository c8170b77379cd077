#include "sma/RunResult.h"

#include <array>
#include <iomanip>
#include <nlohmann/json.hpp>
#include <ostream>
#include <sstream>

#include "sma/BladeJson.h"

namespace sma {
namespace {

constexpr std::size_t kTokenShown = 8;

/// Text of a peer for a terminal.
std::string printable(std::string text) {
  for (char& character : text) {
    if (static_cast<unsigned char>(character) < ' ' || character == '\x7f') {
      character = '?';
    }
  }
  return text;
}

std::string shortened(const std::string& token) {
  if (token.empty()) {
    return "-";
  }
  return printable(token.size() <= kTokenShown ? token : token.substr(0, kTokenShown) + "..");
}

std::string statusText(const Statuses& statuses) {
  std::string text;
  for (const auto& [status, count] : statuses) {
    text += (text.empty() ? "" : " ") + std::to_string(status) + "x" + std::to_string(count);
  }
  return text.empty() ? "-" : text;
}

struct Totals {
  std::array<std::size_t, 3> inState{};
  BladeCounts counts;
};

Totals total(const std::vector<const BladeAgent*>& blades) {
  Totals totals;
  for (const BladeAgent* blade : blades) {
    ++totals.inState[static_cast<std::size_t>(blade->state())];
    totals.counts += blade->counts();
  }
  return totals;
}

std::size_t inState(const Totals& totals, BladeAgent::State state) {
  return totals.inState[static_cast<std::size_t>(state)];
}

void row(std::ostream& out, const std::string& slot, const std::string& state,
         const std::string& token, const std::vector<std::string>& numbers,
         const std::string& statuses) {
  out << std::left << std::setw(6) << slot << std::setw(14) << state << std::setw(12) << token
      << std::right;
  for (const std::string& number : numbers) {
    out << std::setw(11) << number;
  }
  out << "  " << statuses << '\n';
}

std::vector<std::string> numbersOf(const BladeCounts& counts) {
  return {std::to_string(counts.sent(RequestKind::Register)),
          std::to_string(counts.sent(RequestKind::Beat)),
          std::to_string(counts.sent(RequestKind::Report)), std::to_string(counts.unanswered()),
          std::to_string(counts.unsent)};
}

/// A line for each kind of request that was sent: how many, and what they got.
void printKinds(std::ostream& out, const BladeCounts& counts) {
  out << "\nsent               number  no reply  replies by status\n";
  for (const KindName& each : kKindNames) {
    const RequestCounts& requests = counts.of(each.kind);
    if (requests.sent > 0) {
      out << std::left << std::setw(16) << each.name << std::right << std::setw(9) << requests.sent
          << std::setw(10) << requests.unanswered << "  " << statusText(requests.statuses) << '\n';
    }
  }
}

/// One line: how often each command was carried out.
void printExecuted(std::ostream& out, const std::vector<const BladeAgent*>& blades) {
  std::map<std::string, std::uint64_t> sums;
  for (const BladeAgent* blade : blades) {
    for (const auto& [what, count] : blade->desk().executions()) {
      sums[what.first] += count;
    }
  }
  if (sums.empty()) {
    return;
  }
  out << "\ncarried out ";
  for (const auto& [command, count] : sums) {
    out << ' ' << command << 'x' << count;
  }
  out << '\n';
}

nlohmann::json statusesJson(const Statuses& statuses) {
  nlohmann::json result = nlohmann::json::object();
  for (const auto& [status, count] : statuses) {
    result[std::to_string(status)] = count;
  }
  return result;
}

nlohmann::json countsJson(const BladeCounts& counts) {
  nlohmann::json requests = nlohmann::json::object();
  for (const KindName& each : kKindNames) {
    const RequestCounts& of = counts.of(each.kind);
    requests[std::string(each.name)] = {
        {"sent", of.sent}, {"unanswered", of.unanswered}, {"statuses", statusesJson(of.statuses)}};
  }
  nlohmann::json result{{"statuses", statusesJson(counts.statuses())},
                        {"requests", std::move(requests)}};
  for (const CountName& each : kCountNames) {
    result[std::string(each.name)] = each.count(counts);
  }
  return result;
}

}  // namespace

void printTable(std::ostream& out, const RunResult& result, std::size_t mostRows) {
  const Totals totals = total(result.blades);
  if (result.blades.size() <= mostRows) {
    row(out, "slot", "state", "token", {"registers", "beats", "reports", "unanswered", "unsent"},
        "replies by status");
    for (const BladeAgent* blade : result.blades) {
      row(out, std::to_string(blade->slot()), stateName(blade->state()), shortened(blade->token()),
          numbersOf(blade->counts()), statusText(blade->counts().statuses()));
    }
  }
  const std::string count = std::to_string(result.blades.size());
  row(out, "all", count + " blades", "", numbersOf(totals.counts),
      statusText(totals.counts.statuses()));
  printKinds(out, totals.counts);
  printExecuted(out, result.blades);
  for (const std::string& failure : result.failures) {
    out << "failed: " << failure << '\n';
  }
}

void printJson(std::ostream& out, const RunResult& result) {
  nlohmann::json blades = nlohmann::json::array();
  for (const BladeAgent* blade : result.blades) {
    nlohmann::json each = countsJson(blade->counts());
    each["slot"] = blade->slot();
    each["state"] = stateName(blade->state());
    each["token"] = blade->token();
    each["last_status"] = blade->lastStatus();
    each["last_message"] = blade->lastMessage();
    each["told"] = toldJson(*blade);
    blades.push_back(std::move(each));
  }
  const nlohmann::json document{
      {"elapsed_ms", result.elapsed.count()},
      {"commands", result.commands},
      {"totals", countsJson(total(result.blades).counts)},
      {"blades", std::move(blades)},
      {"failures", result.failures},
  };
  // Bytes that a peer sent may be no UTF-8.
  out << document.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
}

void printLive(std::ostream& out, const std::vector<const BladeAgent*>& blades,
               std::chrono::milliseconds elapsed) {
  out << "after " << elapsed.count() / 1000 << " s\n";
  out << "  slot  state         token       beats  last reply\n";
  for (const BladeAgent* blade : blades) {
    out << std::right << std::setw(6) << blade->slot() << "  " << std::left << std::setw(14)
        << stateName(blade->state()) << std::setw(12) << shortened(blade->token()) << std::right
        << std::setw(5) << blade->counts().sent(RequestKind::Beat) << "  ";
    if (blade->lastStatus() == 0) {
      out << "none yet\n";
    } else {
      out << blade->lastStatus() << ' ' << printable(blade->lastMessage()) << '\n';
    }
  }
  out.flush();
}

std::string progressLine(const std::vector<const BladeAgent*>& blades,
                         std::chrono::milliseconds elapsed) {
  const Totals totals = total(blades);
  std::ostringstream line;
  line << std::setw(5) << elapsed.count() / 1000 << " s  "
       << inState(totals, BladeAgent::State::Registered) << " registered, "
       << inState(totals, BladeAgent::State::Unregistered) << " unregistered, "
       << inState(totals, BladeAgent::State::Refused) << " refused; "
       << totals.counts.sent(RequestKind::Beat) << " beats, "
       << totals.counts.sent(RequestKind::Report) << " reports, " << totals.counts.unanswered()
       << " unanswered; replies " << statusText(totals.counts.statuses());
  return line.str();
}

}  // namespace sma
