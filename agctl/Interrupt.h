#pragma once

#include <csignal>

namespace agctl {

/// Ctrl-C and SIGTERM as something that can be read instead of something that ends the process: as
/// long as a Hold lives. For the main thread.
class Interrupt {
 public:
  Interrupt();
  ~Interrupt();
  Interrupt(const Interrupt&) = delete;
  Interrupt& operator=(const Interrupt&) = delete;

  /// Can be read as soon as one came that was not counted; -1 where there is no such descriptor.
  int descriptor() const { return descriptor_; }
  /// How many came so far.
  unsigned count();

  /// From before an order until what became of it is told. One may live within another. What came
  /// and was not counted is forgotten with the last one: all is told then.
  class Hold {
   public:
    Hold();
    ~Hold();
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

   private:
    sigset_t before_;
  };

 private:
  int descriptor_;
  unsigned count_ = 0;
};

}  // namespace agctl
