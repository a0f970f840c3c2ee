// console_host.h -- the RunHost of trelvane-cli: stage and bar on a terminal.
#pragma once

#include <functional>
#include <string>

#include "cli/console.h"
#include "state/form.h"
#include "engine/run.h"
#include "state/state.h"

namespace trelvane::cli {

// A hook called at every Application.DoEvents of the run, before the stop
// test: the place where a user's click (or a test) lands during a scan.
using DoEventsHook = std::function<void(ComparisonState&)>;

// Answers the run directly on the calling thread. Stage texts also go to
// form.Message, as in the window. The rows go to their file through a sink,
// never through the clipboard.
class ConsoleHost : public RunHost {
 public:
  ConsoleHost(ComparisonState& st, Form& form, const Console& console, bool showProgress,
              DoEventsHook hook);

  void message(const std::string& text) override;
  void progress(int value, int maximum) override;
  void doEvents() override;
  void setEFAnaTo(const std::string& text) override;
  void setClipboard(std::string) override {}

  // Ends the progress line, if one is showing.
  void finish();

  const std::string& lastMessage() const { return lastMessage_; }

 private:
  void render();

  ComparisonState& st_;
  Form& form_;
  const Console& console_;
  bool show_;
  DoEventsHook hook_;
  std::string stage_;
  int percent_ = -1;
  bool lineOpen_ = false;
  bool stopAnnounced_ = false;
  std::string lastMessage_;
};

}  // namespace trelvane::cli
