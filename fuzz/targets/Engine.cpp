#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "dme/blades/BladeMonitor.h"
#include "dme/chassis/Chassis.h"
#include "dme/link/MethodServer.h"
#include "dme/store/ObjectStore.h"
#include "framework/base/ChassisFile.h"
#include "framework/method/Wire.h"
#include "framework/msglyr/LinkBatch.h"
#include "fuzz/Target.h"
#include "fuzz/support/Check.h"
#include "fuzz/support/LogChecks.h"
#include "fuzz/support/StimulusChecks.h"

// What a service sends to the engine: one character for how fast time passes ('0' slowly), then
// stimuli as a link sends them together, each behind its length. The engine's state is on a disk of
// its own, and must be there when it comes back.

namespace fuzz {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kPeer = 5;

/// The directory for the state, in memory where the system has such a place; removed when the
/// process ends.
class StateDirectory {
 public:
  StateDirectory() {
    const fs::path memory = "/dev/shm";
    const fs::path above = fs::is_directory(memory) ? memory : fs::temp_directory_path();
    std::string pattern = above / "fuzz-engine-XXXXXX";
    check(::mkdtemp(pattern.data()) != nullptr, "there is a place for the state", pattern);
    path_ = pattern;
  }
  ~StateDirectory() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  StateDirectory(const StateDirectory&) = delete;
  StateDirectory& operator=(const StateDirectory&) = delete;

  /// The path, with nothing in it.
  std::string emptied() const {
    for (const auto& entry : fs::directory_iterator(path_)) {
      fs::remove_all(entry.path());
    }
    return path_.string();
  }
  std::string path() const { return path_.string(); }

 private:
  fs::path path_;
};

/// What the engine sends, by cookie. Answers come on the store's thread, too.
class Answers {
 public:
  bool take(const base::OBioStream& bytes) {
    const Input input(bytes.data(), bytes.size());
    checkStimulus(input);
    const auto header = method::readHeader(input.data(), input.size());
    check(header != nullptr, "what the engine sends is a stimulus", textOf(input));
    const std::lock_guard<std::mutex> guard(lock_);
    if (header->type() == proc::Stimulus::kTypeAnswer) {
      ++byCookie_[header->cookie()];
    }
    return true;
  }

  /// Fails unless there is an answer for each of the cookies, and no other.
  void checkAll(const std::map<base::Buffer, unsigned>& expected) const {
    const std::lock_guard<std::mutex> guard(lock_);
    check(byCookie_ == expected, "each call that wants an answer gets one");
  }

 private:
  mutable std::mutex lock_;
  std::map<base::Buffer, unsigned> byCookie_;  // guarded by lock_
};

base::ChassisDescription description() {
  using App = base::ChassisDescription::App;
  base::ChassisDescription chassis;
  chassis.slots = {{3, "left", {{"a1", "1.0", App::State::kStarted}, {"a2", "", App::State::kAny}}},
                   {4, "right", {{"a3", "2.0", App::State::kStopped}}}};
  return chassis;
}

/// True for what need not be on the disk as it is in memory.
bool mayDiffer(std::string_view property, bool isFast) {
  const bool isVolatile = property == "registrations";
  const bool lags = property == "observedAt" || property == "count";  // by a minute
  return isVolatile || (lags && !isFast);
}

std::vector<dme::ObjectView> viewOf(const dme::ObjectStore& store, bool isFast) {
  std::vector<dme::ObjectView> objects = store.view(mo::Dn());
  for (dme::ObjectView& object : objects) {
    std::erase_if(object.values,
                  [isFast](const auto& value) { return mayDiffer(value.first, isFast); });
  }
  return objects;
}

/// An engine without a link and without threads but its store's.
class EngineRun {
 public:
  explicit EngineRun(bool isFast) : isFast_(isFast) {
    auto opened = dme::ObjectStore::open(directory().emptied());
    check(opened.has_value(), "an empty state opens", opened ? "" : opened.error().text);
    store_ = std::move(*opened);
    chassis_.emplace(*store_, description());
    server_.emplace(
        *store_, *chassis_, monitor_,
        [this](std::uint64_t /*peer*/, const base::OBioStream& bytes, bool /*urgent*/) {
          return answers_.take(bytes);
        },
        [this] { return wallClock_; });
  }

  void handle(std::string_view stimulus) {
    constexpr std::uint64_t kFastStep = 61000;
    wallClock_ += isFast_ ? kFastStep : 1;
    now_ += std::chrono::milliseconds(1);
    const auto* bytes = reinterpret_cast<const unsigned char*>(stimulus.data());
    const auto header = method::readHeader(bytes, stimulus.size());
    if (header != nullptr && header->type() != proc::Stimulus::kTypeAnswer &&
        header->isResponseRequired()) {
      ++expected_[header->cookie()];
    }
    ++handled_;
    server_->handle(kPeer, bytes, stimulus.size(), now_);
    monitor_.judge(now_);
  }

  void checkEnd() {
    store_->close();
    answers_.checkAll(expected_);
    const dme::MethodServer::Counters counters = server_->counters();
    std::uint64_t sum = counters.undecodable + counters.unknownMethods + counters.answers;
    for (const auto& method : counters.methods) {
      sum += method.calls;
    }
    check(sum == handled_, "every stimulus is counted once");
    check(counters.notDurable == 0, "what changes is stored");
    checkDisk();
  }

 private:
  static const StateDirectory& directory() {
    static const StateDirectory only;
    return only;
  }

  void checkDisk() {
    const std::vector<dme::ObjectView> before = viewOf(*store_, isFast_);
    server_.reset();
    chassis_.reset();
    store_.reset();
    auto opened = dme::ObjectStore::open(directory().path());
    check(opened.has_value(), "a state that was closed opens", opened ? "" : opened.error().text);
    const std::vector<dme::ObjectView> after = viewOf(**opened, isFast_);
    const auto [mine, theirs] =
        std::mismatch(before.begin(), before.end(), after.begin(), after.end());
    check(before == after, "the state is on the disk",
          mine != before.end()    ? mine->dn
          : theirs != after.end() ? theirs->dn
                                  : "");
  }

  const bool isFast_;
  std::uint64_t wallClock_ = 1700000000000;
  dme::MethodServer::TimePoint now_{std::chrono::seconds(1000)};
  std::uint64_t handled_ = 0;
  std::map<base::Buffer, unsigned> expected_;
  Answers answers_;
  dme::BladeMonitor monitor_{{std::chrono::seconds(1), 3, std::chrono::seconds(30)}};
  std::unique_ptr<dme::ObjectStore> store_;
  std::optional<dme::Chassis> chassis_;
  std::optional<dme::MethodServer> server_;
};

}  // namespace

void runEngine(Input input) {
  const LogChecks log;
  const bool isFast = !input.empty() && input.front() != '0';
  const std::string batch = textOf(input.empty() ? input : input.subspan(1));
  std::vector<std::string_view> stimuli;
  if (!msglyr::splitBatch(batch, stimuli)) {
    return;  // no link would pass it on
  }
  constexpr std::size_t kMostStimuli = 64;
  EngineRun engine(isFast);
  for (const std::string_view stimulus :
       std::span(stimuli).first(std::min(stimuli.size(), kMostStimuli))) {
    engine.handle(stimulus);
  }
  engine.checkEnd();
}

}  // namespace fuzz
