// commands.h -- the subcommands of trelvane-cli, each taking the arguments after its name.
#pragma once

#include <string>
#include <vector>

#include "cli/console.h"

namespace trelvane::cli {

// Each writes its outputs and errors through the console.
int runCompare(const std::vector<std::string>& args, const Console& console = Console::standard());    // compare LONG SHORT [options]
int runCpg(const std::vector<std::string>& args, const Console& console = Console::standard());        // cpg LONG [options]
int runRedraw(const std::vector<std::string>& args, const Console& console = Console::standard());     // redraw RESULT [options]
int runStack(const std::vector<std::string>& args, const Console& console = Console::standard());      // stack RESULT... [options]
int runBatch(const std::vector<std::string>& args, const Console& console = Console::standard());      // batch MANIFEST [options]
int runCheckUpdate(const std::vector<std::string>& args, const Console& console = Console::standard());// check-update [--site URL]

}  // namespace trelvane::cli
