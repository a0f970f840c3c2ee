// blocking_check.h -- one update check to its end, with the brakes a program without a window needs.
#pragma once

#include <string>

namespace trelvane::update {

// Brakes of our own, which the about window does without.
struct CheckLimits {
  int maxRedirects = 10;
  double timeoutSeconds = 20;
  double maxPageBytes = 1024 * 1024;  // a version page is a few lines
};

struct CheckResult {
  std::string text;     // what the about window would show
  std::string failure;  // why no version page came; empty when one came
};

// Asks the update site at baseURL (ending in '/') for its version page and
// waits for the answer, running a Qt event loop on the calling thread (a
// QCoreApplication is made for the call where none exists). Gives up past
// the limits, with the reason in failure; text is then the window's text
// where the exchange stood.
CheckResult checkUntilAnswered(const std::string& version, const std::string& baseURL,
                               const CheckLimits& limits = {});

}  // namespace trelvane::update
