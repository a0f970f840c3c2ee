// memoryblock.cpp -- the padded, zero-filled byte buffer.
#include "platform/memoryblock.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace trelvane {

namespace {
uint8_t* zeroed(std::ptrdiff_t bytes) {
  void* p = std::calloc(static_cast<std::size_t>(bytes), 1);
  if (!p) throw std::bad_alloc();
  return static_cast<uint8_t*>(p);
}
}  // namespace

void MemoryBlock::Free::operator()(uint8_t* p) const { std::free(p); }

MemoryBlock::MemoryBlock(std::ptrdiff_t size) : size_(size < 0 ? 0 : size), buf_(zeroed(size_ + 2 * kPad)) {}

MemoryBlock::MemoryBlock(const MemoryBlock& other) : size_(other.size_) {
  if (other.buf_) {
    buf_.reset(zeroed(size_ + 2 * kPad));
    std::memcpy(buf_.get(), other.buf_.get(), static_cast<std::size_t>(size_ + 2 * kPad));
  }
}

MemoryBlock& MemoryBlock::operator=(const MemoryBlock& other) {
  if (this != &other) *this = MemoryBlock(other);
  return *this;
}

void MemoryBlock::setBytes(std::ptrdiff_t off, std::string_view bytes) {
  std::ptrdiff_t from = off < 0 ? -off : 0;
  std::ptrdiff_t n = static_cast<std::ptrdiff_t>(bytes.size());
  for (std::ptrdiff_t k = from; k < n; ++k) {
    if (off + k >= size_) break;
    buf_[kPad + off + k] = static_cast<uint8_t>(bytes[static_cast<std::size_t>(k)]);
  }
}

std::string_view MemoryBlock::cstringAt(std::ptrdiff_t off) const {
  if (off < 0 || off >= size_) return {};
  const char* p = reinterpret_cast<const char*>(data()) + off;
  std::size_t n = strnlen(p, static_cast<std::size_t>(size_ - off));
  return {p, n};
}

}  // namespace trelvane
