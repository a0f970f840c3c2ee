// console_host.cpp -- progress on standard error, the EFAnaTo rewrite.
#include "cli/console_host.h"

#include <utility>

#include "platform/numtext.h"
#include "input/panel.h"
#include "input/text_fields.h"

namespace trelvane::cli {

namespace {
constexpr int kBarWidth = 30;
}

ConsoleHost::ConsoleHost(ComparisonState& st, Form& form, const Console& console,
                         bool showProgress, DoEventsHook hook)
    : st_(st), form_(form), console_(console), show_(showProgress), hook_(std::move(hook)) {}

void ConsoleHost::message(const std::string& text) {
  form_.Message = text;
  lastMessage_ = text;
  stage_ = text;
  if (show_) render();
}

void ConsoleHost::progress(int value, int maximum) {
  form_.ProgressBar1Value = value;
  form_.ProgressBar1Maximum = maximum;
  // The CpG scan's single position divides 0 by 0: the value is then
  // whatever the conversion gave; the bar shows it within its bounds.
  int percent = maximum > 0 ? toInt(100.0 * value / maximum) : 0;
  if (percent < 0) percent = 0;
  if (percent > 100) percent = 100;
  if (percent == percent_) return;
  percent_ = percent;
  if (show_) render();
}

void ConsoleHost::doEvents() {
  if (hook_) hook_(st_);
  // What PBRUN_Action shows when Stop is pressed; here Ctrl-C set the flag.
  if (st_.askclose && !stopAnnounced_) {
    stopAnnounced_ = true;
    message("Stopping...");
  }
}

void ConsoleHost::setEFAnaTo(const std::string& text) {
  if (setFieldText(form_.EFAnaTo, text)) EFAnaTo_TextChange(st_, form_);
}

void ConsoleHost::render() {
  std::string line = "\r\033[K" + stage_;
  if (percent_ >= 0) {
    int filled = percent_ * kBarWidth / 100;
    line += " [" + std::string(static_cast<std::size_t>(filled), '#') +
            std::string(static_cast<std::size_t>(kBarWidth - filled), ' ') + "] " +
            std::to_string(percent_) + "%";
  }
  std::fputs(line.c_str(), console_.err);
  std::fflush(console_.err);
  lineOpen_ = true;
}

void ConsoleHost::finish() {
  if (!lineOpen_) return;
  std::fputs("\n", console_.err);
  std::fflush(console_.err);
  lineOpen_ = false;
}

}  // namespace trelvane::cli
