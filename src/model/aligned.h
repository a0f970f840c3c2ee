// aligned.h -- the Model tab driven without a window: aligned texts from files, a model applied as a user would.
#pragma once

#include <string>

#include "state/form.h"
#include "state/state.h"

namespace trelvane {

// Sets form.SeqModel1 and form.SeqModel2 as a paste would (running their
// TextChange handlers), selects listIndex in PupModel (ModelIndex: 0
// Identity, 1 TS/TV, 2 General model) and runs PupModel_Change, then presses
// Apply. Returns false with a sentence in *error, and matrice untouched, when
// the texts differ in length or the model cannot be chosen (an unknown index,
// or TS/TV or General model with empty texts). Texts without any countable
// pair are accepted: as in the window, matrice then holds not-a-numbers.
bool applyModelFromTexts(ComparisonState& st, Form& form, int listIndex, const std::string& seq1,
                         const std::string& seq2, std::string* error);

// The text that pasting the file's sequence would give: its lines joined
// without line ends, title lines (beginning with ">" or "%") left out, every
// other byte unchanged. On a file that cannot be read: an empty text and a
// sentence in *error (which is emptied on success).
std::string readAlignedFile(const std::string& path, std::string* error);

}  // namespace trelvane
