// batch_manifest.h -- a batch manifest: one comparison a line, written as the arguments of compare.
#pragma once

#include <string>
#include <vector>

namespace trelvane::cli {

// One line of a manifest that names a pair.
struct BatchLine {
  int number = 0;                  // 1-based line of the manifest
  std::vector<std::string> words;  // the arguments of compare, as written
  std::string mistake;             // why the line could not be split, else ""
};

// Splits a line into words as a shell does, without expansions: blanks
// separate, '...' keeps everything, "..." keeps all but \" and \\, a
// backslash outside quotes keeps the next character, and '#' at the start of
// a word ends the line. False with the mistake in *why.
bool splitManifestWords(const std::string& line, std::vector<std::string>& words, std::string* why);

// The pair lines of a manifest file (blank and comment lines skipped), each
// with its mistake where it cannot be split. False with a sentence in *why
// where the file cannot be read.
bool readManifest(const std::string& path, std::vector<BatchLine>& lines, std::string* why);

// The folder name of pair k (1-based) from its two sequence arguments:
// "003-HUMHBB-V00508", the files' names without their extensions, every
// character outside A-Z, a-z, 0-9, '.', '_' and '-' turned into '_'.
std::string pairFolderName(int k, const std::string& longArg, const std::string& shortArg);

}  // namespace trelvane::cli
