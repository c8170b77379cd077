#include "agctl/Progress.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <ostream>
#include <tuple>

#include "framework/os/Clock.h"

namespace agctl {
namespace {

constexpr std::size_t kBarColumns = 20;
constexpr std::size_t kNarrowBarColumns = 10;
constexpr std::size_t kNarrowColumns = 80;

class Lines final : public Progress {
 public:
  explicit Lines(const Console& console) : console_(console) {}

  void show(const Job& job) override {
    std::string text = job.subject() + ": " + job.progress();
    std::string& last = last_[job.id];
    if (last != text) {
      note(text);
      last = std::move(text);
    }
  }
  void note(const std::string& text) override {
    console_.err << "agctl: " << printable(text, console_.errScreen.charset) << std::endl;
  }
  void tick() override {}
  void end() override {}

 private:
  const Console& console_;
  std::map<std::uint64_t, std::string> last_;
};

/// Jobs that are over scroll away above a block of those that are open.
class Bars final : public Progress {
 public:
  explicit Bars(const Console& console)
      : console_(console), screen_(console.errScreen), started_(os::Clock::instance().now()) {}

  void show(const Job& job) override {
    if (job.isOpen()) {
      open_[job.id] = job;
    } else if (over_.insert({job.id, true}).second) {
      open_.erase(job.id);
      above_ += line(job) + "\n";
    }
    draw();
  }
  void note(const std::string& text) override {
    above_ += fitted("agctl: " + printable(text, screen_.charset)) + "\n";
    draw();
  }
  void tick() override { draw(); }
  void end() override { draw(); }

 private:
  void draw() {
    std::string block;
    std::size_t drawn = 0;
    const std::size_t room = std::max<std::size_t>(screen_.rows, 3) - 2;
    for (const auto& [id, job] : open_) {
      if (drawn == room) {
        block += fitted("... and " + std::to_string(open_.size() - room) + " more") + "\n";
        ++drawn;
        break;
      }
      block += line(job) + "\n";
      ++drawn;
    }
    if (above_.empty() && block == block_) {
      return;
    }
    if (drawn_ > 0) {
      console_.err << "\x1b[" << drawn_ << "A\r\x1b[J";
    }
    console_.err << above_ << block << std::flush;
    above_.clear();
    drawn_ = drawn;
    block_ = std::move(block);
  }

  std::string line(const Job& job) const {
    const std::size_t width = screen_.columns < kNarrowColumns ? kNarrowBarColumns : kBarColumns;
    const std::size_t full = job.percentage * width / 100;
    const std::string bar = std::string(full, '#') + std::string(width - full, '-');
    const auto seconds =
        std::chrono::duration_cast<std::chrono::seconds>(os::Clock::instance().now() - started_);
    const std::string text =
        printable("job " + std::to_string(job.id) + "  " + job.target + "  " + job.verb + "  [" +
                      bar + "] " + job.progress() + "  " + std::to_string(seconds.count()) + " s",
                  screen_.charset);
    return screen_.coloured(fitted(text), toneOf(job));
  }
  /// One column stays free: some terminals wrap when the last one is written.
  std::string fitted(const std::string& text) const {
    return cut(text, std::max<std::size_t>(screen_.columns, 2) - 1, screen_.charset);
  }

  const Console& console_;
  const Screen& screen_;
  const os::Clock::TimePoint started_;
  std::map<std::uint64_t, Job> open_;
  std::map<std::uint64_t, bool> over_;
  std::string above_;  ///< lines to be written once
  std::string block_;  ///< the lines that are written anew
  std::size_t drawn_ = 0;
};

}  // namespace

std::unique_ptr<Progress> makeProgress(const Console& console) {
  if (console.errScreen.canMove) {
    return std::make_unique<Bars>(console);
  }
  return std::make_unique<Lines>(console);
}

}  // namespace agctl
