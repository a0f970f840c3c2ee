// interrupt.h -- Ctrl-C during a run: SIGINT sets askclose, as the window's Stop does.
#pragma once

#include <atomic>
#include <csignal>

namespace trelvane::cli {

// While alive, the first SIGINT sets flag and puts back the default action,
// so that a second Ctrl-C ends the process at once. The previous action is
// restored when the guard goes.
class InterruptGuard {
 public:
  explicit InterruptGuard(std::atomic<bool>& flag);
  ~InterruptGuard();
  InterruptGuard(const InterruptGuard&) = delete;
  InterruptGuard& operator=(const InterruptGuard&) = delete;

 private:
  struct sigaction previous_ {};
  bool installed_ = false;
};

}  // namespace trelvane::cli
