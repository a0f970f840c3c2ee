// panel.cpp -- the File tab's logic on the form: file routes and the enabling of PBRUN.
#include "input/panel.h"

#include <filesystem>
#include <system_error>

#include "state/profile.h"
#include "input/result_reader.h"
#include "input/sequence_reader.h"
#include "platform/linereader.h"
#include "platform/numtext.h"

namespace trelvane {
namespace {

std::string absolutePath(const std::string& path) {
  std::error_code ec;
  std::filesystem::path abs = std::filesystem::absolute(path, ec);
  return ec ? path : abs.string();
}

// EFSD follows the width of the analysis range. The test looks at EFTo, the
// plot's bound, not at EFAnaTo (kept so).
void rangeWidth(const ComparisonState& st, Form& form) {
  const double from = Val(form.EFAnaFrom);
  const double to = equalsNoCase(form.EFTo, "max") ? static_cast<double>(st.nbbases)
                                                   : Val(form.EFAnaTo);
  form.EFSD = Str(to - from);
}

}  // namespace

std::string openFile(ComparisonState& st, Form& form, Route route,
                     const std::optional<std::string>& path, const std::function<void()>& graph) {
  const int side = (route == Route::GBLongDrop || route == Route::BevelButton0) ? 0 : 1;
  std::string why;
  if (path && !canReadFile(*path, &why)) {
    form.Message = cannotReadText(*path, why);
    return why;
  }
  // A cancelled dialog forgets the file loaded before, and nothing else.
  const std::optional<std::string> before = st.f[side];
  st.f[side] = path;
  if (!st.f[side]) return "";

  LineReader in;
  in.open(*st.f[side]);
  const std::string first = in.readLine();
  in.close();
  if (isResultHead(first)) return litprevious(st, form, st.f[side], graph);

  std::string& field = side == 0 ? form.EditField0 : form.EditField1;
  std::string& caption = side == 0 ? form.GBLongCaption : form.GBShortCaption;
  const std::string fieldBefore = field, captionBefore = caption;
  field = absolutePath(*st.f[side]);
  if (!first.empty() && (first[0] == '>' || first[0] == '%')) caption = first.substr(1);
  why = side == 0 ? litlongue(st, form) : litshort(st, form);
  const bool region = !(side == 0 ? form.Region0 : form.Region1).empty();
  if (!why.empty()) {
    // A file, record or region that cannot be read leaves the side as it was.
    st.f[side] = before;
    field = fieldBefore;
    caption = captionBefore;
    return why;
  }
  if (region) caption = originLabel(st.origin[side]);
  if (!st.f[side]) return why;  // the length check failed

  // Enabling rules: the drops never enable PBDot, the side-1 routes ignore
  // CBCPG, and no route disables a button.
  switch (route) {
    case Route::GBLongDrop:
      if (st.f[1] || form.CBCPG) form.PBRUNEnabled = true;
      break;
    case Route::BevelButton0:
      if (st.f[1] || form.CBCPG) form.PBRUNEnabled = form.PBDotEnabled = true;
      break;
    case Route::GBShortDrop:
      if (st.f[0]) form.PBRUNEnabled = true;
      break;
    case Route::BevelButton1:
      if (st.f[0]) form.PBRUNEnabled = form.PBDotEnabled = true;
      break;
  }
  return why;
}

void CBCPG_Action(ComparisonState& st, Form& form) {
  form.PBRUNEnabled = st.f[0].has_value() && form.CBCPG;
  form.GBShortVisible = !form.CBCPG;
}

void EFAnaFrom_TextChange(ComparisonState& st, Form& form) {
  form.EFFrom = form.EFAnaFrom;
  rangeWidth(st, form);
}

void EFAnaTo_TextChange(ComparisonState& st, Form& form) {
  form.EFTo = form.EFAnaTo;
  rangeWidth(st, form);
}

void EFWS_LostFocus(Form& form) {
  if (Val(form.EFWS) > 255) form.EFWS = "255";
}

}  // namespace trelvane
