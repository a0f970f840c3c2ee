// entry.h -- the rules of the two aligned-sequence fields and of PupModel on the Model tab.
#pragma once

#include "state/form.h"
#include "state/state.h"

namespace trelvane {

// The message shown while the two texts differ in length.
inline constexpr const char* kNotAlignedMessage = "The sequences must be aligned";

// At each change of text of SeqModel1 or SeqModel2: texts of different
// lengths show kNotAlignedMessage and put PupModel, disabled, on Identity;
// an empty field does the same without a message; otherwise the message goes
// and PupModel is enabled on the model it shows. Aligned means equal length,
// blanks and line ends included.
void SeqModel1_TextChange(Form& form);
void SeqModel2_TextChange(Form& form);

// A new choice in PupModel falls back to Identity while either text is empty.
void PupModel_Change(ComparisonState& st, Form& form);
void PupModel_Change(Form& form);

// The keyboard filter of both fields; true swallows the key. A, T, G, C in
// either case and every key up to the blank pass, all else is swallowed
// (other letters, N and U among them, digits, "-", delete). Pasted text is
// not filtered.
bool SeqModel_KeyDown(char key);

}  // namespace trelvane
