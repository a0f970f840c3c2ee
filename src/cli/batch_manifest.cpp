// batch_manifest.cpp -- reading a batch manifest: words of a line, pair lines, folder names.
#include "cli/batch_manifest.h"

#include <cstdio>
#include <filesystem>

#include "platform/linereader.h"

namespace trelvane::cli {

bool splitManifestWords(const std::string& line, std::vector<std::string>& words, std::string* why) {
  words.clear();
  std::string word;
  bool inWord = false;
  for (std::size_t i = 0; i < line.size(); ++i) {
    const char c = line[i];
    if (c == ' ' || c == '\t' || c == '\r') {
      if (inWord) words.push_back(word);
      word.clear();
      inWord = false;
      continue;
    }
    if (c == '#' && !inWord) break;
    inWord = true;
    if (c == '\\') {
      if (i + 1 < line.size()) word += line[++i];
    } else if (c == '\'') {
      const std::size_t end = line.find('\'', i + 1);
      if (end == std::string::npos) {
        *why = "unterminated quote";
        return false;
      }
      word += line.substr(i + 1, end - i - 1);
      i = end;
    } else if (c == '"') {
      for (++i;; ++i) {
        if (i >= line.size()) {
          *why = "unterminated quote";
          return false;
        }
        if (line[i] == '"') break;
        if (line[i] == '\\' && i + 1 < line.size() && (line[i + 1] == '"' || line[i + 1] == '\\')) ++i;
        word += line[i];
      }
    } else {
      word += c;
    }
  }
  if (inWord) words.push_back(word);
  return true;
}

bool readManifest(const std::string& path, std::vector<BatchLine>& lines, std::string* why) {
  std::error_code ec;
  if (std::filesystem::is_directory(path, ec)) {
    *why = "cannot read " + path + ": it is a folder, not a file";
    return false;
  }
  LineReader in;
  if (!in.open(path)) {
    *why = "cannot read " + path + ": " + in.error();
    return false;
  }
  lines.clear();
  for (int number = 1; !in.eof(); ++number) {
    const std::string text = in.readLine();
    BatchLine line{number, {}, {}};
    if (!splitManifestWords(text, line.words, &line.mistake) || !line.words.empty()) lines.push_back(std::move(line));
  }
  return true;
}

namespace {

// A file's name without its folder, a region after it, and its extensions.
std::string stemOf(const std::string& arg) {
  std::string name = std::filesystem::path(arg).filename().string();
  const std::size_t dot = name.find('.');
  if (dot != std::string::npos && dot > 0) name.erase(dot);
  return name.empty() ? "seq" : name;
}

std::string tame(std::string s) {
  for (char& c : s) {
    const bool plain = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '.' ||
                       c == '_' || c == '-';
    if (!plain) c = '_';
  }
  return s;
}

}  // namespace

std::string pairFolderName(int k, const std::string& longArg, const std::string& shortArg) {
  char number[16];
  std::snprintf(number, sizeof number, "%03d", k);
  return std::string(number) + "-" + tame(stemOf(longArg)) + "-" + tame(stemOf(shortArg));
}

}  // namespace trelvane::cli
