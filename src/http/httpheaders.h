// httpheaders.h -- HTTPHeaders: an ordered list of header fields and values.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace trelvane::http {

// Entries live at indexes 1 to UBound(); element 0 of both arrays is never
// read. Order is that of insertion or reception, duplicates are kept, and
// names keep the case in which they came.
class HTTPHeaders {
 public:
  std::vector<std::string> Field{std::string()};
  std::vector<std::string> Value{std::string()};

  virtual ~HTTPHeaders() = default;

  // Upper bound of both arrays: the number of entries.
  int32_t UBound() const { return static_cast<int32_t>(Field.size()) - 1; }

  // Appends name and value, both trimmed; an entry of that name stays.
  virtual void Add(std::string_view name, std::string_view value);
  // "name: value" CR LF per entry; empty for an empty list.
  virtual std::string Data() const;
  virtual void Clear();
  // Value of the first entry of that name (any case); empty if none.
  virtual std::string Get(std::string_view name) const;
  // Adds the lines of a received header, cut at eol.
  virtual void Parse(std::string_view text, std::string_view eol);
  // Removes the first entry of that name (any case); later ones stay.
  virtual void Remove(std::string_view name);
  // Appends every entry of other, in order.
  virtual void Combine(const HTTPHeaders& other);
};

}  // namespace trelvane::http
