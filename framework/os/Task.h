#pragma once

#include <memory>

namespace os {

/// A piece of work. A pool or a queue that takes one owns it, and destroys it by `dealloc` only.
class Task {
 public:
  Task() = default;
  Task(const Task&) = delete;
  Task& operator=(const Task&) = delete;

  /// Called before `run`, on the same thread: a place for a trace line. Does nothing here.
  virtual void logTaskInfo();

  /// The work. An exception that leaves it is logged at level 8 and ends this task only.
  virtual void run() = 0;

  /// Called after `run`, also after one that threw, on the same thread. Does nothing here.
  virtual void onExit();

  /// Frees the task. The base deletes it; a task that was not made by `new` overrides this.
  virtual void dealloc();

  /// A further task of the same kind, owned by the caller, or null where that makes no sense, as
  /// here.
  [[nodiscard]] virtual Task* clone() const;

  virtual ~Task();

  /// Data that travels with the task, for those who know its class. None here; `setPayload` ignores
  /// its argument.
  [[nodiscard]] virtual void* getPayload() const;
  virtual void setPayload(void* payload);

  /// The number that the pool gave it, -1 before.
  [[nodiscard]] int id() const { return id_; }

 private:
  friend class ThreadPool;

  int id_ = -1;
};

/// Frees a task the way tasks are freed.
struct TaskDeleter {
  void operator()(Task* task) const { task->dealloc(); }
};

using TaskPtr = std::unique_ptr<Task, TaskDeleter>;

/// Runs logTaskInfo, run and onExit on the calling thread and logs what they throw at level 8.
/// Throws nothing. The task stays the caller's.
void runTask(Task& task);

}  // namespace os
