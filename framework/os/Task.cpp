#include "framework/os/Task.h"

#include <exception>

#include "framework/core_log/Log.h"

namespace os {
namespace {

void logFailure(const Task& task, const char* step, const char* what) {
  core_log::logPrintf(step, core_log::serviceLevel(), 8, "Task %d ended by an exception: %s",
                      task.id(), what);
}

template <typename Step>
void guarded(const Task& task, const char* name, Step step) {
  try {
    step();
  } catch (const std::exception& exception) {
    logFailure(task, name, exception.what());
  } catch (...) {
    logFailure(task, name, "not a std::exception");
  }
}

}  // namespace

void Task::logTaskInfo() {}

void Task::onExit() {}

void Task::dealloc() {
  delete this;
}

Task* Task::clone() const {
  return nullptr;
}

Task::~Task() = default;

void* Task::getPayload() const {
  return nullptr;
}

void Task::setPayload(void* /*payload*/) {}

void runTask(Task& task) {
  guarded(task, "run", [&task] {
    task.logTaskInfo();
    task.run();
  });
  guarded(task, "onExit", [&task] { task.onExit(); });
}

}  // namespace os
