// qt_event_loop.h -- the Qt event loop in tests: one core application a test program, and runs of the loop.
#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>

#include <gtest/gtest.h>

#include <functional>
#include <memory>

namespace trelvane::testsupport {

// Runs the event loop until done() holds or maxMs have passed; true if done.
// The limit only bounds a broken exchange: no test measures time.
inline bool runUntil(const std::function<bool()>& done, int maxMs = 15000) {
  QDeadlineTimer deadline(maxMs);
  while (!done()) {
    if (deadline.hasExpired()) return false;
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
  return true;
}

// Lets the loop run for a while, to show that nothing more happens.
inline void runFor(int ms) {
  QDeadlineTimer deadline(ms);
  while (!deadline.hasExpired()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 10);
}

// A QCoreApplication for the whole test program, made before its first test
// (where none is there yet) and ended after its last.
class CoreApplicationEnvironment : public ::testing::Environment {
 public:
  void SetUp() override {
    static int argc = 1;
    static char arg0[] = "trelvane_tests";
    static char* argv[] = {arg0, nullptr};
    if (QCoreApplication::instance() == nullptr) app_ = std::make_unique<QCoreApplication>(argc, argv);
  }
  void TearDown() override { app_.reset(); }

 private:
  std::unique_ptr<QCoreApplication> app_;
};

}  // namespace trelvane::testsupport
