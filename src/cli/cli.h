// cli.h -- trelvane-cli in-process: the command dispatch and the comparison commands.
#pragma once

#include <string>
#include <vector>

#include "cli/console.h"
#include "cli/console_host.h"

namespace trelvane::cli {

// The whole program: args are those after the program name.
int cliMain(const std::vector<std::string>& args, const Console& console);

// compare (cpg false) or cpg (cpg true), with the arguments after the
// command's name. hook runs at each DoEvents of the scan (tests stop a run
// there as Ctrl-C would).
int runComparison(bool cpg, const std::vector<std::string>& args, const Console& console,
                  const DoEventsHook& hook = {});

}  // namespace trelvane::cli
