// aligned.cpp -- reading an aligned sequence file and applying a model to two texts.
#include "model/aligned.h"

#include "model/entry.h"
#include "model/estimation.h"
#include "platform/linereader.h"

#include <string>
#include <utility>

namespace trelvane {

namespace {

bool fail(std::string* error, std::string text) {
  if (error) *error = std::move(text);
  return false;
}

}  // namespace

bool applyModelFromTexts(ComparisonState& st, Form& form, int listIndex, const std::string& seq1,
                         const std::string& seq2, std::string* error) {
  if (listIndex < kIdentity || listIndex > kGeneral)
    return fail(error, "unknown model " + std::to_string(listIndex) +
                           " (0 Identity, 1 TS/TV, 2 General model)");

  // the paste into each field
  form.SeqModel1 = seq1;
  SeqModel1_TextChange(form);
  form.SeqModel2 = seq2;
  SeqModel2_TextChange(form);
  if (seq1.size() != seq2.size())
    return fail(error, std::string(kNotAlignedMessage) + ": sequence 1 has " +
                           std::to_string(seq1.size()) + " characters, sequence 2 has " +
                           std::to_string(seq2.size()));

  // the choice in PupModel, which only an enabled menu takes
  if (listIndex != kIdentity) {
    if (form.PupModelEnabled) {
      form.PupModelListIndex = listIndex;
      PupModel_Change(st, form);
    }
    if (form.PupModelListIndex != listIndex)
      return fail(error, "the model cannot be chosen: the aligned sequences are empty");
  } else if (form.PupModelListIndex != kIdentity) {
    form.PupModelListIndex = kIdentity;
    PupModel_Change(st, form);
  }

  Apply_Action(st, form);
  if (error) error->clear();
  return true;
}

std::string readAlignedFile(const std::string& path, std::string* error) {
  LineReader reader;
  if (!reader.open(path)) {
    if (error) *error = "cannot read the aligned sequence file " + path + ": " + reader.error();
    return {};
  }
  std::string text;
  while (!reader.eof()) {
    std::string line = reader.readLine();
    if (!line.empty() && (line[0] == '>' || line[0] == '%')) continue;
    text += line;
  }
  if (error) error->clear();
  return text;
}

}  // namespace trelvane
