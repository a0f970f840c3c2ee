// runhost.cpp -- posting a run's reports to the main thread, and the runs' worker threads.
#include "shell/runhost.h"

#include <QApplication>
#include <QClipboard>
#include <QThread>

#include <list>
#include <memory>
#include <mutex>
#include <thread>

#include "shell/widgets.h"
#include "shell/window1.h"

namespace trelvane::shell {

QtRunHost::QtRunHost(Window1* window, std::function<void()> yield)
    : window_(window), yield_(std::move(yield)) {}

void QtRunHost::post(std::function<void(Window1&)> fn) {
  QPointer<Window1> target = window_;
  auto deliver = [target, fn = std::move(fn)] {
    if (target) fn(*target);
  };
  if (QThread::currentThread() == qApp->thread()) deliver();
  else QMetaObject::invokeMethod(qApp, std::move(deliver), Qt::QueuedConnection);
}

void QtRunHost::message(const std::string& text) {
  post([text](Window1& w) { w.runMessage(text); });
}

void QtRunHost::progress(int value, int maximum) {
  auto slot = progress_;
  slot->value = value;
  slot->maximum = maximum;
  if (slot->pending.exchange(true)) return;
  post([slot](Window1& w) {
    slot->pending = false;
    w.runProgress(slot->value, slot->maximum);
  });
}

void QtRunHost::doEvents() {
  if (yield_) yield_();
}

void QtRunHost::setEFAnaTo(const std::string& text) {
  post([text](Window1& w) { w.runSetEFAnaTo(text); });
}

void QtRunHost::setClipboard(std::string text) {
  // The clipboard belongs to the application: it is set even when the
  // window has closed meanwhile.
  auto set = [text = std::move(text)] { QGuiApplication::clipboard()->setText(toQ(text)); };
  if (QThread::currentThread() == qApp->thread()) set();
  else QMetaObject::invokeMethod(qApp, set, Qt::QueuedConnection);
}

void QtRunHost::beep() {
  post([](Window1&) { QApplication::beep(); });
}

// worker threads

namespace runthreads {
namespace {

struct Worker {
  std::thread thread;
  std::shared_ptr<std::atomic<bool>> done = std::make_shared<std::atomic<bool>>(false);
};

std::mutex mutex;
std::list<Worker> workers;

void reapLocked() {
  for (auto it = workers.begin(); it != workers.end();) {
    if (*it->done) {
      it->thread.join();
      it = workers.erase(it);
    } else {
      ++it;
    }
  }
}

}  // namespace

void start(std::function<void()> body) {
  std::lock_guard<std::mutex> lock(mutex);
  reapLocked();
  Worker w;
  auto done = w.done;
  w.thread = std::thread([body = std::move(body), done] {
    body();
    *done = true;
  });
  workers.push_back(std::move(w));
}

void joinAll() {
  std::list<Worker> all;
  {
    std::lock_guard<std::mutex> lock(mutex);
    all.swap(workers);
  }
  for (Worker& w : all) w.thread.join();
}

int active() {
  std::lock_guard<std::mutex> lock(mutex);
  int n = 0;
  for (const Worker& w : workers)
    if (!*w.done) ++n;
  return n;
}

}  // namespace runthreads

}  // namespace trelvane::shell
