#include "agctl/Order.h"

#include "agctl/Batch.h"
#include "agctl/Confirm.h"
#include "agctl/Interrupt.h"

namespace agctl {
namespace {

void addTimes(Json& body, const Options& options) {
  if (options.deliverWithin) {
    body["deliverWithinMs"] = toMilliseconds(*options.deliverWithin).count();
  }
  if (options.finishWithin) {
    body["finishWithinMs"] = toMilliseconds(*options.finishWithin).count();
  }
}

Outcome<Job> place(Session& session, const Order& order) {
  Json body = order.body;
  addTimes(body, session.options());
  const bool isPreview = session.options().dryRun;
  const auto answer =
      session.server().order("POST", order.target + (isPreview ? "?dryRun=true" : ""), body);
  if (!answer) {
    return tl::unexpected(answer.error());
  }
  return Job::read(isPreview ? objectOf(*answer, "would") : *answer);
}

Failure notPlaced() {
  return {ExitCode::kOther, "not ordered, since it was interrupted", "", {}};
}

void summarise(const Session& session, const Batch& batch) {
  const std::size_t refused = batch.size() - batch.jobs();
  if (batch.size() > 1) {
    session.say(std::to_string(batch.jobs()) + " of " + std::to_string(batch.size()) +
                (session.options().dryRun ? " would be ordered" : " ordered") +
                (refused > 0 ? ", " + std::to_string(refused) + " refused" : ""));
  }
}

}  // namespace

ExitCode carryOut(Session& session, const std::vector<Order>& orders, const std::string& question) {
  if (!question.empty() && !session.options().dryRun) {
    if (const auto allowed = confirm(session, question); !allowed) {
      return session.fail(allowed.error());
    }
  }
  const Interrupt::Hold hold;
  Batch batch(session);
  for (const Order& order : orders) {
    batch.add(orders.size() > 1 ? order.label : "",
              session.isInterrupted() ? tl::unexpected(notPlaced()) : place(session, order));
  }
  summarise(session, batch);
  return batch.finish();
}

}  // namespace agctl
