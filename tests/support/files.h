// files.h -- a file's bytes, and a folder of a test's own under the temporary directory.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace trelvane::testing {

// The whole file, byte for byte; empty where it cannot be read.
inline std::string readBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream out;
  out << in.rdbuf();
  return out.str();
}

// A new, empty folder "trelvane-NAME-XXXXXX" under the temporary directory.
inline std::filesystem::path makeScratchDir(const std::string& name) {
  std::string pattern = (std::filesystem::temp_directory_path() / ("trelvane-" + name + "-XXXXXX")).string();
  return ::mkdtemp(pattern.data());
}

// makeScratchDir's folder, removed with all it holds when the test ends.
struct ScratchDir {
  explicit ScratchDir(const std::string& name) : path(makeScratchDir(name)) {}
  ~ScratchDir() {
    std::error_code ec;
    std::filesystem::remove_all(path, ec);
  }
  ScratchDir(const ScratchDir&) = delete;
  ScratchDir& operator=(const ScratchDir&) = delete;
  const std::filesystem::path path;
};

}  // namespace trelvane::testing
