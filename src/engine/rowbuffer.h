// rowbuffer.h -- the profile rows of a run: one zero-terminated text that grows as rows arrive.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace trelvane {

// Each row is written at rowpos with a zero byte behind it, and rowpos moves
// on by the row's length, so the next row overwrites that zero. The text of
// the buffer is its bytes up to the first zero byte: a row that holds a zero
// byte itself ends the text there, although rowpos goes on. The buffer grows
// as needed instead of holding a fixed 30 bytes per base.
class RowBuffer {
 public:
  RowBuffer() { bytes_.push_back('\0'); }

  // Row building in place: append the fields, then end the row.
  void append(std::string_view s) { bytes_.append(s); }
  void append(char c) { bytes_.push_back(c); }
  // Ends the row begun since the last end; puts the zero byte behind it.
  void endRow() {
    rowpos_ = bytes_.size();
    bytes_.push_back('\0');
  }
  // Starts a row at rowpos: drops the zero byte that stands there.
  void beginRow() { bytes_.resize(rowpos_); }
  // beginRow(), with the text to append the row to, until endRow().
  std::string& begin() {
    beginRow();
    return bytes_;
  }
  // Rows written elsewhere, each ended by its line end, as if written one
  // by one: rowpos ends behind the last.
  void appendRows(std::string_view rows) {
    beginRow();
    append(rows);
    endRow();
  }

  void write(std::string_view row) {
    beginRow();
    append(row);
    endRow();
  }

  // Room for `bytes` of rows at once, so that the text is not copied each
  // time it doubles; the pages not written are never touched.
  void reserve(std::size_t bytes) { bytes_.reserve(bytes); }

  std::size_t rowpos() const { return rowpos_; }
  // The bytes up to the first zero byte.
  std::string_view text() const { return std::string_view(bytes_.c_str()); }
  bool empty() const { return bytes_.front() == '\0'; }
  // text(), moved out with room for `before` bytes in front; the buffer is
  // left empty.
  std::string take(std::string_view before) {
    bytes_.resize(text().size());
    bytes_.reserve(bytes_.size() + before.size());
    bytes_.insert(0, before);
    std::string out = std::move(bytes_);
    bytes_.assign(1, '\0');
    rowpos_ = 0;
    return out;
  }

 private:
  std::string bytes_;  // the rows, then the zero byte at rowpos_
  std::size_t rowpos_ = 0;
};

}  // namespace trelvane
