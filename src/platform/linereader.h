// linereader.h -- reads a file line by line (LF, CRLF or CR), then raw bytes.
#pragma once

#include <cstddef>
#include <cstdio>
#include <functional>
#include <string>

namespace trelvane {

// A text input stream over the bytes of a file, with no conversion of any
// byte. readLine() returns a line without its line end, also a last line
// that has none, and leaves the stream right behind the line end it
// consumed, so readBytes() can go on with raw bytes from there.
class LineReader {
 public:
  LineReader() = default;
  ~LineReader();
  LineReader(const LineReader&) = delete;
  LineReader& operator=(const LineReader&) = delete;

  // Opens path for reading; on failure returns false and sets error() to a
  // sentence fit for the user ("No such file or directory", ...).
  bool open(const std::string& path);
  // Reads from a text held in memory (tests, fuzzing).
  void openMemory(std::string bytes);
  // Reads the bytes a pull function gives (a decompressor): it fills up to
  // n bytes at p and returns how many, 0 at the end. It is released by close().
  using Pull = std::function<std::size_t(char* p, std::size_t n)>;
  void openPull(Pull pull);
  void close();
  bool isOpen() const { return file_ != nullptr || memOpen_ || pull_; }
  const std::string& error() const { return error_; }

  // The next line; an empty string at the end of the stream.
  std::string readLine();
  // The same into line, whose storage is kept from one line to the next.
  void readLine(std::string& line);
  // True when no byte is left.
  bool eof();
  // Up to n raw bytes from the present position.
  std::string readBytes(std::size_t n);

 private:
  int peekByte();
  int nextByte();
  bool fill();

  std::FILE* file_ = nullptr;
  Pull pull_;
  bool memOpen_ = false;
  std::string buf_;
  std::size_t pos_ = 0;
  std::string error_;
};

// True where path names a regular file that can be opened for reading;
// otherwise false with a sentence about why in *why.
bool canReadFile(const std::string& path, std::string* why);

}  // namespace trelvane
