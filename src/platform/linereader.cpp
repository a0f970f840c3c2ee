// linereader.cpp -- line reading over a file's raw bytes.
#include "platform/linereader.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace trelvane {
namespace {
constexpr std::size_t kChunk = 1 << 16;
}

LineReader::~LineReader() { close(); }

bool LineReader::open(const std::string& path) {
  close();
  std::string why;
  if (!canReadFile(path, &why)) {
    error_ = why;
    return false;
  }
  file_ = std::fopen(path.c_str(), "rb");
  if (!file_) {
    error_ = std::strerror(errno);
    return false;
  }
  error_.clear();
  return true;
}

void LineReader::openMemory(std::string bytes) {
  close();
  buf_ = std::move(bytes);
  pos_ = 0;
  memOpen_ = true;
}

void LineReader::openPull(Pull pull) {
  close();
  pull_ = std::move(pull);
}

void LineReader::close() {
  if (file_) std::fclose(file_);
  file_ = nullptr;
  pull_ = nullptr;
  memOpen_ = false;
  buf_.clear();
  pos_ = 0;
}

bool LineReader::fill() {
  if (!file_ && !pull_) return false;
  if (pos_ > 0) {
    buf_.erase(0, pos_);
    pos_ = 0;
  }
  std::size_t old = buf_.size();
  buf_.resize(old + kChunk);
  const std::size_t got = file_ ? std::fread(buf_.data() + old, 1, kChunk, file_)
                                 : pull_(buf_.data() + old, kChunk);
  buf_.resize(old + got);
  return got > 0;
}

int LineReader::peekByte() {
  if (pos_ >= buf_.size() && !fill()) return -1;
  return static_cast<unsigned char>(buf_[pos_]);
}

int LineReader::nextByte() {
  int c = peekByte();
  if (c >= 0) ++pos_;
  return c;
}

std::string LineReader::readLine() {
  std::string line;
  readLine(line);
  return line;
}

void LineReader::readLine(std::string& line) {
  line.clear();
  for (;;) {
    if (pos_ >= buf_.size() && !fill()) return;
    // Take the run of bytes up to the next line end in one piece: the first
    // LF, or a CR before it.
    const char* start = buf_.data() + pos_;
    const std::size_t avail = buf_.size() - pos_;
    const void* lf = std::memchr(start, '\n', avail);
    std::size_t k = lf ? static_cast<std::size_t>(static_cast<const char*>(lf) - start) : avail;
    if (const void* cr = std::memchr(start, '\r', k)) k = static_cast<std::size_t>(static_cast<const char*>(cr) - start);
    line.append(start, k);
    pos_ += k;
    if (k < avail) {
      char c = buf_[pos_++];
      if (c == '\r' && peekByte() == '\n') ++pos_;
      return;
    }
  }
}

bool LineReader::eof() { return peekByte() < 0; }

std::string LineReader::readBytes(std::size_t n) {
  std::string out;
  while (out.size() < n) {
    if (pos_ >= buf_.size() && !fill()) break;
    std::size_t take = std::min(n - out.size(), buf_.size() - pos_);
    out.append(buf_.data() + pos_, take);
    pos_ += take;
  }
  return out;
}

bool canReadFile(const std::string& path, std::string* why) {
  struct stat st;
  if (::stat(path.c_str(), &st) != 0) {
    if (why) *why = errno == ENOENT ? "the file does not exist" : std::strerror(errno);
    return false;
  }
  if (S_ISDIR(st.st_mode)) {
    if (why) *why = "it is a folder, not a file";
    return false;
  }
  std::FILE* f = std::fopen(path.c_str(), "rb");
  if (!f) {
    if (why) *why = errno == EACCES ? "permission denied" : std::strerror(errno);
    return false;
  }
  std::fclose(f);
  return true;
}

}  // namespace trelvane
