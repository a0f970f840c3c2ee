// check_update.cpp -- trelvane-cli check-update: the about window's update check, told on the console.
#include <QString>
#include <QSysInfo>

#include <cmath>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/command_line.h"
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
    "  --version             output version information and exit\n"
    "\n"
    "Redirects are followed up to 10 times, and a version page above 1 MiB is\n"
    "refused.\n"
    "\n"
    "Exit status: 0 when the site sent its version page (up to date or not),\n"
    "1 when it could not be reached or understood, 2 on a usage error.\n";

struct CheckOptions {
  std::string site = update::kUpdateSiteBaseURL;
  double timeout = kDefaultTimeoutSeconds;
  bool help = false, version = false;
};

// Fills o from args; false with a sentence in *error on a usage error.
bool parse(const std::vector<std::string>& args, CheckOptions& o, std::string* error) {
  const std::vector<Option> table = {
      {"site", 1,
       [&o](const std::vector<std::string>& v) {
         if (v[0].empty()) return std::string("--site needs the URL of the update site");
         o.site = v[0];
         if (o.site.back() != '/') o.site += '/';
         return std::string();
       }},
      {"timeout", 1,
       [&o](const std::vector<std::string>& v) {
         const std::optional<double> s = decimalNumber(v[0], 0, kMaxTimeoutSeconds);
         if (!s) return "--timeout takes a number of seconds above 0 and at most 86400, not '" + v[0] + "'";
         o.timeout = *s;
         return std::string();
       }},
  };
  CommandLine line;
  if (!parseCommandLine(args, table, line, error)) return false;
  o.help = line.help;
  o.version = line.version;
  return o.help || o.version || checkOperands(line.operands, {}, error);
}

// App.version as the window builds it: the dotted number, a blank, the
// package information.
std::string appVersion() {
  return std::string(TRELVANE_VERSION) + " Trelvane for " + QSysInfo::prettyProductName().toStdString();
}

}  // namespace

int runCheckUpdate(const std::vector<std::string>& args, const Console& console) {
  CheckOptions o;
  std::string error;
  if (!parse(args, o, &error)) return usageError(console, error, "check-update");
  if (o.help || o.version) return helpOrVersion(console, o.help, kCheckUpdateHelp);

  update::CheckLimits limits;
  limits.timeoutSeconds = o.timeout;
  const update::CheckResult result = update::checkUntilAnswered(appVersion(), o.site, limits);
  std::string why;
  if (!writeOutput(console, "-", result.text, &why)) return badInput(console, why);
  return result.failure.empty() ? kExitOk : badInput(console, result.failure);
}

}  // namespace trelvane::cli
