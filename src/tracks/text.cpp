// text.cpp -- numbers and names of the track files.
#include "tracks/text.h"

#include <charconv>
#include <cmath>

namespace trelvane::tracks {

std::string number(double v) {
  if (std::isnan(v)) return "NaN";
  char buf[64];
  // Fixed notation keeps every client happy; six digits are far beyond the
  // precision of a profile byte.
  auto res = std::to_chars(buf, buf + sizeof buf, v, std::chars_format::general, 6);
  std::string s(buf, res.ptr);
  if (s.find('e') != std::string::npos) {
    res = std::to_chars(buf, buf + sizeof buf, v, std::chars_format::fixed, 6);
    s.assign(buf, res.ptr);
    while (s.size() > 1 && s.back() == '0') s.pop_back();
    if (!s.empty() && s.back() == '.') s.pop_back();
  }
  if (s == "-0") s = "0";
  return s;
}

std::string fixed(double v, int places) {
  char buf[64];
  auto res = std::to_chars(buf, buf + sizeof buf, v, std::chars_format::fixed, places);
  return std::string(buf, res.ptr);
}

std::string baseName(const std::string& path) {
  std::string name = path.substr(path.find_last_of('/') == std::string::npos ? 0 : path.find_last_of('/') + 1);
  auto strip = [&name](const char* ext) {
    const std::string e = ext;
    if (name.size() > e.size() && name.compare(name.size() - e.size(), e.size(), e) == 0) {
      name.resize(name.size() - e.size());
      return true;
    }
    return false;
  };
  for (const char* ext : {".gz", ".bgz", ".bgzf"})
    if (strip(ext)) break;
  for (const char* ext : {".fa", ".fasta", ".fna", ".fas", ".seq", ".txt"})
    if (strip(ext)) break;
  return name;
}

std::string withoutBlanks(std::string name) {
  for (char& c : name)
    if (c == ' ' || c == '\t' || c == '\r' || c == '\n') c = '_';
  return name;
}

}  // namespace trelvane::tracks
