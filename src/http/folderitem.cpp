// folderitem.cpp -- FolderItem and TextOutputStream: the file a download writes to.
#include "http/folderitem.h"

namespace trelvane::http {

void TextOutputStream::Write(std::string_view bytes) {
  stream_.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!stream_) throw std::ios_base::failure("write failed");
}

void TextOutputStream::Close() {
  stream_.close();
  if (!stream_) throw std::ios_base::failure("close failed");
}

bool FolderItem::Exists() const {
  std::error_code ec;
  return std::filesystem::exists(path_, ec);
}

void FolderItem::Delete() {
  std::error_code ec;
  std::filesystem::remove(path_, ec);
}

int64_t FolderItem::Length() const {
  std::error_code ec;
  auto n = std::filesystem::file_size(path_, ec);
  return ec ? 0 : static_cast<int64_t>(n);
}

TextOutputStream FolderItem::AppendToTextFile() {
  std::ofstream out(path_, std::ios::binary | std::ios::app);
  if (!out) throw std::ios_base::failure("cannot open " + path_.string());
  return TextOutputStream(std::move(out));
}

}  // namespace trelvane::http
