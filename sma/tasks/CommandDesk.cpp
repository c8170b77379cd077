#include "sma/tasks/CommandDesk.h"

#include <algorithm>
#include <functional>

#include "serviceOrchAG/svc/Vocabulary.h"

namespace sma {
namespace {

using zan_serviceOrchAG::words;

constexpr unsigned kParts = 5;
constexpr std::size_t kShortParts = 3;
/// A connection has one command under way, so what comes again comes soon.
constexpr std::size_t kMostAnswered = 16;
constexpr std::size_t kMostInstances = 1000;

bool is(const CommandFault* fault, FaultKind kind) {
  return fault != nullptr && fault->kind == kind;
}

bool isFormat(const Command& command) {
  return command.name == words().formatDiskSubject;
}

bool isInstall(const Command& command) {
  return command.name == words().installAppName;
}

/// Commands that are done later, with reports of progress.
bool takesTime(const Command& command) {
  const auto& all = operationCommands();
  return std::find(all.begin(), all.end(), command.name) != all.end();
}

std::size_t digestOf(const msglyr::Message& message) {
  std::size_t digest = 0;
  for (const std::string& part : message.parts()) {
    digest = mixed(digest ^ std::hash<std::string>()(part));
  }
  return digest;
}

std::string progressInstance(const Command& command) {
  return isFormat(command) ? std::string(kPlatformInstance) : command.app;
}

}  // namespace

CommandDesk::CommandDesk(const Settings& settings, BladePlatform& platform, Reporter& reporter,
                         Journal journal)
    : settings_(settings),
      platform_(platform),
      reporter_(reporter),
      journal_(std::move(journal)),
      draws_(settings.seed),
      faults_(settings.faults) {}

void CommandDesk::take(const std::string& peer, const msglyr::Message& message, TimePoint now) {
  if (message.getnumParts() != kParts) {
    return;
  }
  ++received_;
  const std::size_t digest = digestOf(message);
  const auto known = std::find_if(answered_.begin(), answered_.end(), [&](const Answered& each) {
    return each.peer == peer && each.digest == digest;
  });
  if (known != answered_.end()) {
    post(peer, known->reply, nullptr, now);
    return;
  }
  const CommandRead read = readCommand(message, platform_.slot());
  const auto met = read.command.name.empty() ? std::nullopt : faults_.take(read.command.name);
  const CommandFault* fault = met ? &*met : nullptr;
  if (is(fault, FaultKind::Ignore)) {
    return;
  }
  answered_.push_back({peer, digest, answer(message, read, fault, now)});
  if (is(fault, FaultKind::Die) && !death_) {
    death_ = Death{now, fault->lasts};
  }
  post(peer, answered_.back().reply, fault, now);
  if (answered_.size() > kMostAnswered) {
    answered_.pop_front();
  }
}

msglyr::Message CommandDesk::answer(const msglyr::Message& message, const CommandRead& read,
                                    const CommandFault* fault, TimePoint now) {
  auto refusal = read.refusal ? read.refusal : refusalOf(read.command);
  if (is(fault, FaultKind::Refuse)) {
    refusal = Refusal{fault->code, "Refused on purpose"};
  }
  if (refusal) {
    tellFailure(read.command, *refusal);
    return makeCommandReply(message, refusal->code, refusal->text);
  }
  run(read.command, fault, now);
  return makeCommandReply(message, code::kOk, "OK");
}

// --- what is to be sent, and when

void CommandDesk::post(const std::string& peer, const msglyr::Message& reply,
                       const CommandFault* fault, TimePoint now) {
  const bool lost = is(fault, FaultKind::NoReply) || (death_ && death_->due <= now);
  if (lost) {
    return;
  }
  Waiting waiting{now, {peer, reply}};
  if (is(fault, FaultKind::LateReply)) {
    waiting.due += fault->delay;
  }
  if (is(fault, FaultKind::ShortReply)) {
    waiting.reply.message.parts().resize(kShortParts);
  }
  if (is(fault, FaultKind::DoubleReply)) {
    waiting_.push_back(waiting);
  }
  waiting_.push_back(std::move(waiting));
}

CommandDesk::TimePoint CommandDesk::due() const {
  TimePoint due = death_ ? death_->due : TimePoint::max();
  for (const Waiting& each : waiting_) {
    due = std::min(due, each.due);
  }
  return due;
}

std::vector<PeerMessage> CommandDesk::replies(TimePoint now) {
  std::vector<PeerMessage> ready;
  std::erase_if(waiting_, [&](Waiting& each) {
    const bool isReady = each.due <= now;
    if (isReady) {
      ready.push_back(std::move(each.reply));
    }
    return isReady;
  });
  return ready;
}

std::optional<CommandDesk::Duration> CommandDesk::death(TimePoint now) {
  if (!death_ || now < death_->due) {
    return std::nullopt;
  }
  return std::exchange(death_, std::nullopt)->lasts;
}

void CommandDesk::forget() {
  answered_.clear();
  waiting_.clear();
  death_.reset();
}

void CommandDesk::clearFaults(TimePoint now) {
  faults_.clear();
  reporter_.resume(now);
}

std::uint64_t CommandDesk::executed(std::string_view command) const {
  std::uint64_t sum = 0;
  for (const auto& [what, count] : executions_) {
    sum += what.first == command ? count : 0;
  }
  return sum;
}

// --- what is refused

std::optional<Refusal> CommandDesk::refusalOf(const Command& command) const {
  const bool queues = takesTime(command);
  if (queues && !reporter_.commandOn(kPlatformInstance).empty()) {
    return Refusal{code::kBusy, "The platform is at work; send the command again later"};
  }
  if (isFormat(command) && !reporter_.isIdle()) {
    return Refusal{code::kBusy, "Commands are under way; format the disk after them"};
  }
  if (command.app.empty()) {
    return {};
  }
  if (queues && !reporter_.commandOn(command.app).empty()) {
    return Refusal{code::kBusy, "A command is under way on instance " + command.app};
  }
  return refusalByState(command);
}

std::optional<Refusal> CommandDesk::refusalByState(const Command& command) const {
  const std::vector<AppInstance> apps = platform_.apps();
  const auto app = std::find_if(apps.begin(), apps.end(), [&command](const AppInstance& each) {
    return each.id == command.app;
  });
  const bool known = app != apps.end();
  const std::string instance = "Instance " + command.app;
  if (isInstall(command)) {
    if (known) {
      return Refusal{code::kFailed, instance + " is installed already"};
    }
    if (apps.size() >= kMostInstances) {
      return Refusal{code::kFailed, "There is no room for another instance"};
    }
    return {};
  }
  if (!known) {
    return Refusal{code::kUnknownInstance, instance + " is not installed here"};
  }
  if (command.name == words().startAppName && app->running) {
    return Refusal{code::kFailed, instance + " runs already"};
  }
  if (command.name == words().stopAppName && !app->running) {
    return Refusal{code::kFailed, instance + " does not run"};
  }
  if (command.name == words().uninstallAppName && app->running) {
    return Refusal{code::kFailed, instance + " runs; stop it first"};
  }
  return {};
}

// A gateway may take any reply for an acknowledgement, so a refusal is reported as well. Not so
// where the same command is under way: the report would be taken for its end.
void CommandDesk::tellFailure(const Command& command, const Refusal& refusal) {
  const std::string instance = progressInstance(command);
  if (!takesTime(command) || instance.empty() || reporter_.commandOn(instance) == command.name) {
    return;
  }
  reporter_.say({.app = instance,
                 .command = command.name,
                 .percent = 0,
                 .status = words().stateFailed,
                 .code = refusal.code,
                 .ack = settings_.ack,
                 .error = refusal.text});
}

// --- what is done

void CommandDesk::run(const Command& command, const CommandFault* fault, TimePoint now) {
  note(CommandBegun{command.name, command.app, command.messageId});
  if (takesTime(command)) {
    work(command, fault, now);
  } else if (command.name == words().clearLogDataSubject) {
    note(LogsCleared{command.app});
  } else {
    note(SettingsKept{command.logLevel, command.timeZone.empty() ? timeZone_ : command.timeZone});
  }
}

template <class What>
void CommandDesk::note(const What& memory) {
  if (journal_) {
    journal_(memory);
  }
  recall(memory);
}

void CommandDesk::recall(const CommandBegun& memory) {
  ++executions_[{memory.command, memory.app}];
}

void CommandDesk::recall(const SettingsKept& memory) {
  logLevel_ = memory.logLevel;
  timeZone_ = memory.timeZone;
}

void CommandDesk::recall(const LogsCleared& memory) {
  ++clearedLogs_[memory.app];
}

OperationPlan CommandDesk::planOf(const Command& command) {
  OperationPlan plan;
  plan.app = progressInstance(command);
  plan.command = command.name;
  plan.steps = settings_.steps;
  const double stretch = 1 + settings_.jitter * (2 * draws_.share() - 1);
  const auto whole = static_cast<double>(settings_.time.count()) * stretch;
  plan.every = Duration(static_cast<std::int64_t>(whole / plan.steps));
  plan.ack = settings_.ack;
  plan.succeeds = draws_.share() >= settings_.failChance;
  if (!command.package.empty()) {
    plan.version = packageVersion(command.package);
  }
  if (isFormat(command)) {
    plan.token = command.token;
  }
  return plan;
}

void CommandDesk::work(const Command& command, const CommandFault* fault, TimePoint now) {
  OperationPlan plan = planOf(command);
  if (is(fault, FaultKind::Fail)) {
    plan.succeeds = false;
    plan.failCode = fault->code;
  } else if (is(fault, FaultKind::Stall)) {
    plan.hitch = Hitch::Stalls;
    plan.stall = fault->lasts;
  } else if (is(fault, FaultKind::RunBackwards)) {
    plan.hitch = Hitch::RunsBackwards;
  } else if (is(fault, FaultKind::LoseReport)) {
    plan.hitch = Hitch::LosesLastReport;
  } else if (is(fault, FaultKind::Die) && !fault->beforeReply) {
    // Between two reports.
    death_ = Death{now + plan.every * plan.steps / 2 + plan.every / 2, fault->lasts};
  }
  reporter_.run(plan, now, std::nullopt);
}

}  // namespace sma
