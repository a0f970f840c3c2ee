// check_update.cpp -- trelvane-cli check-update: the about window's update check, told on the console.
#include <QString>
#include <QSysInfo>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/args.h"
#include "cli/commands.h"
#include "cli/console.h"
#include "platform/numtext.h"
#include "update/blocking_check.h"
#include "update/update_check.h"

#ifndef TRELVANE_VERSION
#error "TRELVANE_VERSION comes from the CMake project version"
#endif

namespace trelvane::cli {
namespace {

constexpr double kDefaultTimeoutSeconds = 20;
constexpr double kMaxTimeoutSeconds = 86400;

const char kCheckUpdateHelp[] =
    "Usage: trelvane-cli check-update [OPTION]...\n"
    "Ask the update site for the newest version, as the about window does at\n"
    "every start, and print the text that the window shows.\n"
    "\n"
    "  --site URL            the update site: the folder that holds version.html\n"
    "                        (a '/' is added where URL does not end in one)\n"
    "  --timeout S           give up after S seconds (20)\n"
    "  --help                display this help and exit\n"
    "\n"
    "Redirects are followed up to 10 times, and a version page above 1 MiB is\n"
    "refused.\n"
    "\n"
    "Exit status: 0 when the site sent its version page (up to date or not),\n"
    "1 when it could not be reached or understood, 2 on a usage error.\n";

struct CheckOptions {
  std::string site = update::kUpdateSiteBaseURL;
  double timeout = kDefaultTimeoutSeconds;
  bool help = false;
};

int usage(std::string_view text) {
  std::fprintf(stderr, "%s: %.*s\nTry '%s check-update --help' for more information.\n", kProgram,
               static_cast<int>(text.size()), text.data(), kProgram);
  std::fflush(stderr);
  return kExitUsage;
}

// A plain decimal number of seconds, above 0 and at most a day.
std::optional<double> seconds(const std::string& text) {
  double v = 0;
  const char* end = text.data() + text.size();
  auto [at, ec] = std::from_chars(text.data(), end, v, std::chars_format::fixed);
  if (ec != std::errc() || at != end || !std::isfinite(v) || v <= 0 || v > kMaxTimeoutSeconds) return std::nullopt;
  return v;
}

// Fills o from args; false with a sentence in *error on a usage error.
bool parse(const std::vector<std::string>& args, CheckOptions& o, std::string* error) {
  for (OptionWalker walk(args); walk.next();) {
    const std::string& name = walk.name();
    const std::optional<std::string>& inlineValue = walk.inlineValue();
    auto value = [&](std::string* out) { return walk.value(out, error); };
    if (name == "--help") {
      if (inlineValue) {
        *error = "option '--help' doesn't allow an argument";
        return false;
      }
      o.help = true;
    } else if (name == "--site") {
      if (!value(&o.site)) return false;
      if (o.site.empty()) {
        *error = "--site needs the URL of the update site";
        return false;
      }
      if (o.site.back() != '/') o.site += '/';
    } else if (name == "--timeout") {
      std::string v;
      if (!value(&v)) return false;
      std::optional<double> s = seconds(v);
      if (!s) {
        *error = "--timeout takes a number of seconds above 0 and at most 86400, not '" + v + "'";
        return false;
      }
      o.timeout = *s;
    } else if (name.size() > 1 && name[0] == '-') {
      *error = "unrecognized option '" + walk.arg() + "'";
      return false;
    } else {
      *error = "extra operand '" + name + "'";
      return false;
    }
  }
  return true;
}

// App.version as the window builds it: the dotted number, a blank, the
// package information.
std::string appVersion() {
  return std::string(TRELVANE_VERSION) + " Trelvane for " + QSysInfo::prettyProductName().toStdString();
}

}  // namespace

int runCheckUpdate(const std::vector<std::string>& args) {
  CheckOptions o;
  std::string error;
  if (!parse(args, o, &error)) return usage(error);
  if (o.help) {
    std::fputs(kCheckUpdateHelp, stdout);
    std::fflush(stdout);
    return kExitOk;
  }

  update::CheckLimits limits;
  limits.timeoutSeconds = o.timeout;
  const update::CheckResult result = update::checkUntilAnswered(appVersion(), o.site, limits);
  std::fwrite(result.text.data(), 1, result.text.size(), stdout);
  std::fflush(stdout);
  const std::string& gaveUp = result.failure;
  if (gaveUp.empty()) return kExitOk;
  std::fprintf(stderr, "%s: %s\n", kProgram, gaveUp.c_str());
  std::fflush(stderr);
  return kExitBadInput;
}

}  // namespace trelvane::cli
