// entry.cpp -- keeps PupModel in step with the aligned texts, and filters their keys.
#include "model/entry.h"

#include <string>

#include "model/estimation.h"

namespace trelvane {

namespace {

// field is the text whose change is handled; both handlers differ only there.
void alignedTextChange(Form& form, const std::string& field) {
  if (form.SeqModel1.size() != form.SeqModel2.size()) {
    form.messModel = kNotAlignedMessage;
    form.PupModelListIndex = kIdentity;
    form.PupModelEnabled = false;
  } else if (field.empty()) {
    form.messModel.clear();
    form.PupModelListIndex = kIdentity;
    form.PupModelEnabled = false;
  } else {
    form.messModel.clear();
    form.PupModelEnabled = true;
  }
}

}  // namespace

void SeqModel1_TextChange(Form& form) { alignedTextChange(form, form.SeqModel1); }

void SeqModel2_TextChange(Form& form) { alignedTextChange(form, form.SeqModel2); }

void PupModel_Change(Form& form) {
  if (form.SeqModel1.empty() || form.SeqModel2.empty()) form.PupModelListIndex = kIdentity;
}

void PupModel_Change(ComparisonState& /*st*/, Form& form) { PupModel_Change(form); }

bool SeqModel_KeyDown(char key) {
  unsigned char k = static_cast<unsigned char>(key);
  if (k <= ' ') return false;
  switch (k) {
    case 'A': case 'T': case 'G': case 'C':
    case 'a': case 't': case 'g': case 'c':
      return false;
    default:
      return true;
  }
}

}  // namespace trelvane
