#include "framework/mo/Transactor.h"

#include <exception>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "framework/core_log/Log.h"

namespace mo {

namespace {

struct Open {
  int depth = 0;
  bool isDoomed = false;
  std::vector<Transactor::Hook> onCommit;
  std::vector<Transactor::Hook> onRollback;
};

/// The transactions that the calling thread has open.
std::map<const Transactor*, Open>& openHere() {
  thread_local std::map<const Transactor*, Open> open;
  return open;
}

void undo(const Transactor::Hook& hook) {
  try {
    hook();
  } catch (const std::exception& error) {
    core_log::logPrintf("rollback", core_log::serviceLevel(), 8,
                        "transaction could not be rolled back: %s", error.what());
  }
}

}  // namespace

Transactor::Transactor(int id, int nesting) : id_(id), isNestingAllowed_(nesting != 0) {}

void Transactor::begin() {
  if (!isNestingAllowed_ && isOpen()) {
    throw std::logic_error("transactor " + std::to_string(id_) + ": a transaction is open");
  }
  ++openHere()[this].depth;
}

void Transactor::commit() {
  const auto found = openHere().find(this);
  if (found == openHere().end()) {
    return;
  }
  if (found->second.isDoomed) {
    rollback();
    return;
  }
  if (--found->second.depth > 0) {
    return;
  }
  // Taken out first: a hook may begin a transaction of its own.
  const auto ended = openHere().extract(found);
  for (const Hook& hook : ended.mapped().onCommit) {
    hook();
  }
}

void Transactor::rollback() {
  const auto found = openHere().find(this);
  if (found == openHere().end()) {
    return;
  }
  if (--found->second.depth > 0) {
    found->second.isDoomed = true;
    return;
  }
  const auto ended = openHere().extract(found);
  std::vector<Hook>& hooks = ended.mapped().onRollback;
  for (auto hook = hooks.rbegin(); hook != hooks.rend(); ++hook) {
    undo(*hook);
  }
}

bool Transactor::isOpen() const {
  return openHere().contains(this);
}

void Transactor::onCommit(Hook hook) {
  const auto found = openHere().find(this);
  if (found == openHere().end()) {
    hook();
    return;
  }
  found->second.onCommit.push_back(std::move(hook));
}

void Transactor::onRollback(Hook hook) {
  const auto found = openHere().find(this);
  if (found != openHere().end()) {
    found->second.onRollback.push_back(std::move(hook));
  }
}

}  // namespace mo
