// folderitem.h -- FolderItem and TextOutputStream: the file a download writes to.
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string_view>

namespace trelvane::http {

// Writes bytes unchanged (binary, no line end or encoding conversion).
// Write and Close throw std::ios_base::failure when the bytes do not reach
// the file.
class TextOutputStream {
 public:
  explicit TextOutputStream(std::ofstream stream) : stream_(std::move(stream)) {}
  void Write(std::string_view bytes);
  void Close();

 private:
  std::ofstream stream_;
};

class FolderItem {
 public:
  explicit FolderItem(std::filesystem::path path) : path_(std::move(path)) {}
  virtual ~FolderItem() = default;

  const std::filesystem::path& NativePath() const { return path_; }
  virtual bool Exists() const;
  // Removes the file; a file that is not there, or cannot go, is left alone.
  virtual void Delete();
  // Size in bytes; 0 for a missing file.
  virtual int64_t Length() const;
  // Opens for appending, creating a missing file; throws
  // std::ios_base::failure when it cannot be opened.
  virtual TextOutputStream AppendToTextFile();

 private:
  std::filesystem::path path_;
};

}  // namespace trelvane::http
