// cli_harness.h -- runs trelvane-cli in-process with captured streams, in a temporary folder.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "cli/cli.h"

namespace trelvane::cli::testing {

namespace fs = std::filesystem;

inline std::string readFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

inline void writeFile(const fs::path& path, const std::string& bytes) {
  std::ofstream out(path, std::ios::binary);
  out << bytes;
}

// What one call of the program left: its status and both streams.
struct Captured {
  int status = -1;
  std::string out;
  std::string err;
};

inline std::string drain(std::FILE* f) {
  std::fflush(f);
  std::rewind(f);
  std::string s;
  char buf[65536];
  std::size_t n;
  while ((n = std::fread(buf, 1, sizeof buf, f)) > 0) s.append(buf, n);
  std::fclose(f);
  return s;
}

// Runs the whole program (cliMain) or, with a hook, a comparison command
// directly; errIsTerminal stands for a stderr that is a terminal.
inline Captured runCli(const std::vector<std::string>& args, bool errIsTerminal = false) {
  Console c;
  c.out = std::tmpfile();
  c.err = std::tmpfile();
  c.errIsTerminal = errIsTerminal;
  Captured r;
  r.status = cliMain(args, c);
  r.out = drain(c.out);
  r.err = drain(c.err);
  return r;
}

inline Captured runWithHook(bool cpg, const std::vector<std::string>& args,
                            const DoEventsHook& hook) {
  Console c;
  c.out = std::tmpfile();
  c.err = std::tmpfile();
  Captured r;
  r.status = runComparison(cpg, args, c, hook);
  r.out = drain(c.out);
  r.err = drain(c.err);
  return r;
}

inline int countLines(const std::string& s) {
  int n = 0;
  for (char ch : s)
    if (ch == '\n') ++n;
  return n;
}

// A fresh folder per test, removed afterwards.
class CliTest : public ::testing::Test {
 protected:
  void SetUp() override {
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    dir_ = fs::temp_directory_path() /
           ("trelvane-cli-" + std::string(info->test_suite_name()) + "-" + info->name() + "-" +
            std::to_string(::getpid()));
    fs::remove_all(dir_);
    fs::create_directories(dir_);
  }
  void TearDown() override { fs::remove_all(dir_); }

  std::string path(const std::string& name) const { return (dir_ / name).string(); }

  // A FASTA file of one record, 60 letters a line.
  std::string fasta(const std::string& name, const std::string& bases) const {
    std::string text = ">" + name + "\n";
    for (std::size_t i = 0; i < bases.size(); i += 60) text += bases.substr(i, 60) + "\n";
    writeFile(dir_ / name, text);
    return path(name);
  }

  fs::path dir_;
};

// Bases from a small linear congruential generator: the same for every run.
inline std::string pseudoBases(std::size_t n, uint32_t seed) {
  std::string s;
  uint32_t x = seed;
  for (std::size_t i = 0; i < n; ++i) {
    x = x * 1664525u + 1013904223u;
    s += "ACGT"[(x >> 16) & 3];
  }
  return s;
}

}  // namespace trelvane::cli::testing
