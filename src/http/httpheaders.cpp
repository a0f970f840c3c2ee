// httpheaders.cpp -- HTTPHeaders: an ordered list of header fields and values.
#include "http/httpheaders.h"

#include "http/httpmodule.h"
#include "http/httptext.h"
#include "platform/numtext.h"

namespace trelvane::http {

void HTTPHeaders::Add(std::string_view name, std::string_view value) {
  Field.push_back(Trim(name));
  Value.push_back(Trim(value));
}

std::string HTTPHeaders::Data() const {
  std::string out;
  for (int32_t i = 1; i <= UBound(); ++i) {
    out += Field[i];
    out += ": ";
    out += Value[i];
    out += "\r\n";
  }
  return out;
}

void HTTPHeaders::Clear() {
  Field.assign(1, std::string());
  Value.assign(1, std::string());
}

std::string HTTPHeaders::Get(std::string_view name) const {
  for (int32_t i = 1; i <= UBound(); ++i)
    if (equalsNoCase(Field[i], name)) return Value[i];
  return {};
}

void HTTPHeaders::Parse(std::string_view text, std::string_view eol) {
  for (std::string_view line : SplitFields(text, eol)) {
    if (!line.empty() && (line[0] == ' ' || line[0] == '\t')) {
      // A continuation extends the value at UBound() - 1: the entry before
      // the last, or the unused element 0 for a list of one entry, where the
      // text vanishes. This off-by-one is kept deliberately.
      if (UBound() >= 1) Value[UBound() - 1] += " " + Trim(line);
      continue;
    }
    // Unlike Add, the name is taken as it stands, a blank before ':' included.
    Field.push_back(NthField(line, ":", 1));
    Value.push_back(Trim(GetAfter(line, ":")));
  }
}

void HTTPHeaders::Remove(std::string_view name) {
  for (int32_t i = 1; i <= UBound(); ++i) {
    if (equalsNoCase(Field[i], name)) {
      Field.erase(Field.begin() + i);
      Value.erase(Value.begin() + i);
      return;
    }
  }
}

void HTTPHeaders::Combine(const HTTPHeaders& other) {
  // Copied first, so that a list combined with itself doubles once.
  std::vector<std::string> fields(other.Field.begin() + 1, other.Field.end());
  std::vector<std::string> values(other.Value.begin() + 1, other.Value.end());
  Field.insert(Field.end(), fields.begin(), fields.end());
  Value.insert(Value.end(), values.begin(), values.end());
}

}  // namespace trelvane::http
