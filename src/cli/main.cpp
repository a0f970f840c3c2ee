// main.cpp -- trelvane-cli: the comparison engine without a window.
#include <string>
#include <vector>

#include "cli/cli.h"

int main(int argc, char** argv) {
  std::vector<std::string> args(argv + 1, argv + argc);
  return trelvane::cli::cliMain(args, trelvane::cli::Console::standard());
}
