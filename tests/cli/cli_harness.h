// cli_harness.h -- runs trelvane-cli in-process with captured streams, in a temporary folder.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
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
template <class Run>
Captured capture(bool errIsTerminal, Run run) {
  Console c;
  c.out = std::tmpfile();
  c.err = std::tmpfile();
  c.errIsTerminal = errIsTerminal;
  Captured r;
  r.status = run(c);
  r.out = drain(c.out);
  r.err = drain(c.err);
  return r;
}

inline Captured runCli(const std::vector<std::string>& args, bool errIsTerminal = false) {
  return capture(errIsTerminal, [&](Console& c) { return cliMain(args, c); });
}

inline Captured runWithHook(bool cpg, const std::vector<std::string>& args, const DoEventsHook& hook) {
  return capture(false, [&](Console& c) { return runComparison(cpg, args, c, hook); });
}

inline int countLines(const std::string& s) { return static_cast<int>(std::count(s.begin(), s.end(), '\n')); }

// The lines of a text, without their line ends.
inline std::vector<std::string> lines(const std::string& text) {
  std::vector<std::string> out;
  std::size_t start = 0;
  while (start < text.size()) {
    std::size_t end = text.find('\n', start);
    if (end == std::string::npos) end = text.size();
    out.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return out;
}

// The value after "<key>" on the line that begins with it.
inline std::string valueOf(const std::string& text, const std::string& key) {
  for (const std::string& line : lines(text))
    if (line.rfind(key, 0) == 0) return line.substr(key.size());
  return "<no " + key + ">";
}

// The arguments of the golden run S3 (reversed, complemented, short shown),
// which every kernel must reproduce.
inline std::vector<std::string> s3Args() {
  const std::string examples = TRELVANE_EXAMPLES;
  return {"compare", examples + "/HUMHBB.fa", examples + "/V00508.fa", "--long-reverse", "--long-complement",
          "--window", "20", "--to", "3000", "--seed", "3", "--resamplings", "300", "--show-short", "--identities", "14"};
}

inline std::string goldenFile(const std::string& name) { return std::string(TRELVANE_TEST_DATA) + "/golden/" + name; }

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
