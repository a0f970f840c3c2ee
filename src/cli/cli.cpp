// cli.cpp -- the command dispatch of trelvane-cli, with GNU --help and --version.
#include "cli/cli.h"

#include <cstdio>

#include "cli/commands.h"
#include "cli/console.h"
#include "plots/picture_qt.h"

#ifndef TRELVANE_VERSION
#error "TRELVANE_VERSION comes from the CMake project version"
#endif

namespace trelvane::cli {
namespace {

const char kHelp[] =
    "Usage: trelvane-cli COMMAND [ARGUMENT]... [OPTION]...\n"
    "Identity profiles of two DNA sequences, without a window, for pipelines.\n"
    "\n"
    "Commands:\n"
    "  compare LONG SHORT    profile of the sequence file LONG against SHORT\n"
    "  cpg LONG              CpG profile of LONG alone\n"
    "  redraw RESULT         draw a stored result file again\n"
    "  stack RESULT...       several results against one reference, stacked\n"
    "  batch MANIFEST        run the comparisons of a manifest, one pair a line\n"
    "  check-update          ask the update site for the newest version\n"
    "\n"
    "  --help                display this help and exit\n"
    "  --version             output version information and exit\n"
    "\n"
    "'trelvane-cli COMMAND --help' describes the options of a command.\n";

}  // namespace

std::string versionLine() { return std::string(kProgram) + " (Trelvane) " + TRELVANE_VERSION; }

int cliMain(const std::vector<std::string>& args, const Console& console) {
  if (args.empty()) return usageError(console, "missing command");
  const std::string& command = args[0];
  std::vector<std::string> rest(args.begin() + 1, args.end());
  if (command == "--help" || command == "--version") return helpOrVersion(console, command == "--help", kHelp);
  if (command == "compare") return runCompare(rest, console);
  if (command == "cpg") return runCpg(rest, console);
  if (command == "redraw") return runRedraw(rest, console);
  if (command == "stack") return runStack(rest, console);
  if (command == "batch") return runBatch(rest, console);
  if (command == "check-update") return runCheckUpdate(rest, console);
  if (!command.empty() && command[0] == '-')
    return usageError(console, "unrecognized option '" + command + "'");
  return usageError(console, "unknown command '" + command + "'");
}

}  // namespace trelvane::cli
