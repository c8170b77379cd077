#pragma once

#include <map>
#include <memory>

#include "agctl/Http.h"

namespace agctl {

/// Exchanges over a Unix socket. An answer is at most 64 MiB; redirects are not followed, and
/// nothing is taken from the environment.
class CurlExchanges final : public Exchanges {
 public:
  static constexpr std::size_t kMostBytes = std::size_t{64} << 20U;

  /// `interrupt` is a descriptor that makes wait() return as soon as it can be read; -1 for none.
  explicit CurlExchanges(std::string socket, int interrupt = -1);
  ~CurlExchanges() override;
  CurlExchanges(const CurlExchanges&) = delete;
  CurlExchanges& operator=(const CurlExchanges&) = delete;

  void interruptOn(int descriptor) { interrupt_ = descriptor; }

  void start(std::size_t key, const Request& request) override;
  std::vector<Finished> wait(std::chrono::milliseconds most) override;
  void clear() override;

 private:
  class Transfer;

  std::vector<Finished> takeFinished();

  const std::string socket_;
  int interrupt_;
  void* multi_;
  std::vector<std::unique_ptr<Transfer>> transfers_;
};

}  // namespace agctl
