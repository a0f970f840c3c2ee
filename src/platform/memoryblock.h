// memoryblock.h -- a zero-filled byte buffer of fixed size, replaced whole, never resized.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace trelvane {

// Offsets are 0-based. get() outside the block gives 0 and set() outside is
// dropped, so odd inputs cannot reach outside memory. Hot loops use data()
// directly: kPad zero bytes stand before and after the block, and no API
// ever writes there, so a loop may read up to kPad bytes past either edge.
class MemoryBlock {
 public:
  static constexpr std::ptrdiff_t kPad = 512;

  MemoryBlock() = default;  // the nil block: size 0
  explicit MemoryBlock(std::ptrdiff_t size);

  MemoryBlock(const MemoryBlock& other);
  MemoryBlock& operator=(const MemoryBlock& other);
  MemoryBlock(MemoryBlock&&) noexcept = default;
  MemoryBlock& operator=(MemoryBlock&&) noexcept = default;

  std::ptrdiff_t size() const { return size_; }
  bool isNil() const { return !buf_; }

  uint8_t get(std::ptrdiff_t off) const {
    return (off >= 0 && off < size_) ? buf_[kPad + off] : 0;
  }
  void set(std::ptrdiff_t off, uint8_t v) {
    if (off >= 0 && off < size_) buf_[kPad + off] = v;
  }
  // Writes the bytes from off on; what falls outside the block is dropped.
  void setBytes(std::ptrdiff_t off, std::string_view bytes);

  // The bytes from off up to, and without, the first zero byte (or the end).
  std::string_view cstringAt(std::ptrdiff_t off) const;

  const uint8_t* data() const { return buf_ ? buf_.get() + kPad : nullptr; }
  uint8_t* data() { return buf_ ? buf_.get() + kPad : nullptr; }

 private:
  // calloc: a large block costs no time nor memory until its pages are used.
  struct Free {
    void operator()(uint8_t* p) const;
  };
  std::ptrdiff_t size_ = 0;
  std::unique_ptr<uint8_t[], Free> buf_;
};

}  // namespace trelvane
