#include "framework/os/TimerTask.h"

#include "framework/os/TimerThread.h"

namespace os {

TimerTask::TimerTask(unsigned interval) : interval_(interval) {}

TimerTask::~TimerTask() {
  cancel();
}

void TimerTask::submit() {
  TimerThread::instance().add(*this);
}

void TimerTask::reset() {
  TimerThread::instance().reset(*this);
}

void TimerTask::cancel() {
  TimerThread::instance().remove(*this);
}

void TimerTask::setInterval(unsigned interval) {
  interval_ = interval;
}

unsigned TimerTask::interval() const {
  return interval_;
}

int TimerTask::handle() const {
  return handle_;
}

}  // namespace os
