#include "bench/jobs/Orders.h"

#include <stdexcept>

namespace jobs {
namespace {

constexpr std::chrono::seconds kPatience{60};
const std::string kRoot = "/api/v1";

agctl::Json documentOf(const agctl::Response& response, long wanted) {
  auto document = agctl::readJson(response.body);
  if (response.status != wanted || !document) {
    throw std::runtime_error("unexpected answer " + std::to_string(response.status) + ": " +
                             response.body);
  }
  return std::move(*document);
}

const agctl::Response& responseOf(const agctl::Reply& reply) {
  if (!reply) {
    throw std::runtime_error("no answer: " + reply.error().cause);
  }
  return *reply;
}

}  // namespace

std::string appIn(std::uint32_t slot) {
  return "fw-" + std::to_string(slot);
}

agctl::Json Orders::get(const std::string& path) {
  const agctl::Reply reply = exchanges_.exchange({"GET", kRoot + path, "", kPatience});
  return documentOf(responseOf(reply), 200);
}

void Orders::createApps(std::uint32_t slots) {
  for (std::uint32_t slot = 1; slot <= slots; ++slot) {
    const agctl::Json body{
        {"id", appIn(slot)}, {"slot", slot}, {"app", {{"packageFile", "/packages/fw-1.0.pkg"}}}};
    const agctl::Reply reply =
        exchanges_.exchange({"POST", kRoot + "/apps", body.dump(), kPatience});
    documentOf(responseOf(reply), 201);
  }
}

void Orders::begin(std::uint32_t slot, Line& line) {
  const Step& step = kCycle[line.done % kCycle.size()];
  line.isOrdered = false;
  line.ordered = Clock::now();
  exchanges_.start(slot,
                   {"POST", kRoot + "/apps/" + appIn(slot) + "/" + step.verb, "{}", kPatience});
}

bool Orders::next(std::uint32_t slot, Line& line, const agctl::Response& response,
                  unsigned wanted) {
  const agctl::Json job = documentOf(response, line.isOrdered ? 200 : 202);
  if (!line.isOrdered) {
    line.isOrdered = true;
    line.job = agctl::numberTextOf(job, "id");
    exchanges_.start(slot, {"GET", kRoot + "/jobs/" + line.job + "?waitMs=30000", "", kPatience});
    return true;
  }
  if (agctl::textOf(job, "state") != "succeeded") {
    throw std::runtime_error("a job did not succeed: " + response.body);
  }
  nanos_.push_back(static_cast<std::uint32_t>((Clock::now() - line.ordered).count()));
  if (++line.done == wanted) {
    return false;
  }
  begin(slot, line);
  return true;
}

std::vector<std::uint32_t> Orders::run(std::uint32_t slots, unsigned cycles) {
  const unsigned wanted = cycles * static_cast<unsigned>(kCycle.size());
  std::vector<Line> lines(slots + 1);
  for (std::uint32_t slot = 1; slot <= slots; ++slot) {
    begin(slot, lines[slot]);
  }
  nanos_.clear();
  for (std::uint32_t open = slots; open > 0;) {
    for (const auto& finished : exchanges_.wait(kPatience)) {
      const auto slot = static_cast<std::uint32_t>(finished.key);
      if (!next(slot, lines[slot], responseOf(finished.reply), wanted)) {
        --open;
      }
    }
  }
  return nanos_;
}

}  // namespace jobs
