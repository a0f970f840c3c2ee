// temp_files.h -- a temporary folder of test files, removed with its contents.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace trelvane::testing {

class TempDir {
 public:
  TempDir() {
    std::string tmpl = (std::filesystem::temp_directory_path() / "trelvane-input-XXXXXX").string();
    path_ = ::mkdtemp(tmpl.data());
  }
  ~TempDir() {
    std::error_code ec;
    std::filesystem::remove_all(path_, ec);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const std::filesystem::path& path() const { return path_; }

  // Writes the bytes, unchanged, to a file of the folder; returns its path.
  std::string write(const std::string& name, const std::string& bytes) const {
    const std::filesystem::path p = path_ / name;
    std::ofstream(p, std::ios::binary) << bytes;
    return p.string();
  }

 private:
  std::filesystem::path path_;
};

}  // namespace trelvane::testing
