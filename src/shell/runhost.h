// runhost.h -- a run's host in the window: posts the worker's reports to the main thread.
#pragma once

#include <QPointer>

#include <atomic>
#include <functional>
#include <memory>
#include <string>

#include "engine/run.h"

namespace trelvane::shell {

class Window1;

// Every call made on the worker thread is posted to the main thread and
// there delivered to the window, or dropped when the window has gone; a call
// made on the main thread (the end of the run) acts at once. Progress is
// coalesced: while one update waits to be delivered, later values replace it.
class QtRunHost : public RunHost {
 public:
  QtRunHost(Window1* window, std::function<void()> yield);

  void message(const std::string& text) override;
  void progress(int value, int maximum) override;
  void doEvents() override;
  void setEFAnaTo(const std::string& text) override;
  void setClipboard(std::string text) override;
  void beep() override;

  // Runs fn with the window on the main thread, if the window still exists.
  void post(std::function<void(Window1&)> fn);

 private:
  QPointer<Window1> window_;  // dereferenced on the main thread only
  std::function<void()> yield_;
  struct ProgressSlot {
    std::atomic<int> value{0}, maximum{0};
    std::atomic<bool> pending{false};
  };
  std::shared_ptr<ProgressSlot> progress_ = std::make_shared<ProgressSlot>();
};

// The worker threads of all runs. A finished thread is joined at the next
// start; joinAll waits for every run (at exit, and in tests).
namespace runthreads {
void start(std::function<void()> body);
void joinAll();
int active();
}  // namespace runthreads

}  // namespace trelvane::shell
