// rowbuffer.h -- the profile rows of a run: one zero-terminated text that grows as rows arrive.
#pragma once

#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

#include "engine/text_sink.h"

namespace trelvane {

// Each row is written at rowpos with a zero byte behind it, and rowpos moves
// on by the row's length, so the next row overwrites that zero. The text of
// the buffer is its bytes up to the first zero byte: a row that holds a zero
// byte itself ends the text there, although rowpos goes on. The buffer grows
// as needed instead of holding a fixed 30 bytes per base. With a sink, the
// rows written go to it a megabyte at a time, cut as the text is cut.
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
    if (sink_ && rowpos_ >= kSpillBytes) spill();
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
  void reserve(std::size_t bytes) {
    if (!sink_) bytes_.reserve(bytes);
  }

  // From now on, the rows ended go to sink instead of staying here.
  void streamTo(TextSink* sink) { sink_ = sink; }
  // The rows ended so far into the sink, up to the text's first zero byte;
  // nothing more once that byte has been met.
  void spill() {
    if (!cut_) {
      const void* zero = std::memchr(bytes_.data(), '\0', rowpos_);
      const std::size_t n = zero ? static_cast<std::size_t>(static_cast<const char*>(zero) - bytes_.data()) : rowpos_;
      if (n > 0) sink_->write(std::string_view(bytes_.data(), n));
      spilled_ += n;
      cut_ = zero != nullptr;
    }
    bytes_.assign(1, '\0');
    rowpos_ = 0;
  }

  std::size_t rowpos() const { return rowpos_; }
  // The bytes gone to the sink so far.
  std::size_t spilled() const { return spilled_; }
  // The bytes up to the first zero byte.
  std::string_view text() const { return std::string_view(bytes_.c_str()); }
  bool empty() const { return spilled_ == 0 && (cut_ || bytes_.front() == '\0'); }
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
  TextSink* sink_ = nullptr;
  std::size_t spilled_ = 0;  // bytes of the text gone to the sink
  bool cut_ = false;         // the text's zero byte has gone by
};

}  // namespace trelvane
