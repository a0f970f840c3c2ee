// interrupt.cpp -- the SIGINT handler: one lock-free store, nothing else.
#include "cli/interrupt.h"

namespace trelvane::cli {
namespace {

static_assert(std::atomic<bool>::is_always_lock_free, "askclose must be settable from a signal");
static_assert(std::atomic<std::atomic<bool>*>::is_always_lock_free);

std::atomic<std::atomic<bool>*> gFlag{nullptr};

extern "C" void onInterrupt(int) {
  if (std::atomic<bool>* f = gFlag.load()) f->store(true);
}

}  // namespace

InterruptGuard::InterruptGuard(std::atomic<bool>& flag) {
  gFlag.store(&flag);
  struct sigaction action {};
  action.sa_handler = onInterrupt;
  sigemptyset(&action.sa_mask);
  action.sa_flags = SA_RESETHAND | SA_RESTART;
  installed_ = ::sigaction(SIGINT, &action, &previous_) == 0;
}

InterruptGuard::~InterruptGuard() {
  if (installed_) ::sigaction(SIGINT, &previous_, nullptr);
  gFlag.store(nullptr);
}

}  // namespace trelvane::cli
