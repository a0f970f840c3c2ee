// commands.h -- the subcommands of trelvane-cli, each taking the arguments after its name.
#pragma once

#include <string>
#include <vector>

namespace trelvane::cli {

int runCompare(const std::vector<std::string>& args);      // compare LONG SHORT [options]
int runCpg(const std::vector<std::string>& args);          // cpg LONG [options]
int runRedraw(const std::vector<std::string>& args);       // redraw RESULT [options]
int runCheckUpdate(const std::vector<std::string>& args);  // check-update [--site URL]

}  // namespace trelvane::cli
