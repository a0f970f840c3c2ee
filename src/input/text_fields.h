// text_fields.h -- setting a field's text and telling whether it changed.
#pragma once

#include <string>

namespace trelvane {

// Sets field to text; true when the text differs from what it held, which is
// when the field's TextChange handler has to run.
inline bool setFieldText(std::string& field, const std::string& text) {
  if (field == text) return false;
  field = text;
  return true;
}

}  // namespace trelvane
