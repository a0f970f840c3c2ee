// desk.h -- a window's form and comparison state driven by a script of steps, and every field each step changed.
//
// A script is the inputs of a case (support/cases.h), one step a line:
//   file NAME BYTES     a file of the case's folder ("NAME" quoted where it holds a blank)
//   append NAME N UNIT  UNIT appended N times to a file
//   folder NAME         a folder in the case's folder
//   copy NAME SOURCE N [OLD|NEW]  the first N bytes of a file, every OLD replaced by NEW
//   noise NAME N SEED   N bytes of a fixed generator: every byte value, many times over
//   set FIELD=VALUE     a field of the form or the state ("f0=NAME" a file of the folder, "-" none)
//   reset               a new window on the same folder
//   cd                  into the case's folder, for names relative to it
//   sh COMMAND          a shell command in the case's folder (bgzip, samtools faidx ...); its
//                       status where it fails
// and the steps of the test that reads it. The transcript echoes each step and
// lists the fields it changed, "FIELD=VALUE", each in one line of text as
// support/cases.h writes bytes, the folder written as $DIR. A step writes its
// own results through show(). A name
// "@data/..." or "@examples/..." is a file of the tests' data or of the examples.
#pragma once

#include <stdlib.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "state/form.h"
#include "state/state.h"
#include "platform/numtext.h"
#include "support/cases.h"
#include "support/files.h"

namespace trelvane::testing {

#define TRELVANE_FORM_FIELDS(X)                                                                                    \
  X(EFWS) X(EFAnaFrom) X(EFAnaTo) X(display0) X(Display1) X(CBCPG) X(CBFile) X(CBClipboard) X(Comp0) X(Reverse0)     \
  X(CBRemoveN0) X(Comp1) X(Reverse1) X(CBRemoveN1) X(Region0) X(Region1) X(Message) X(EditField0) X(EditField1) X(GBLongCaption)         \
  X(GBShortCaption) X(GBShortVisible) X(PBRUNCaption) X(PBRUNEnabled) X(PBRUNVisible) X(ProgressBar1Visible)      \
  X(ProgressBar1Value) X(ProgressBar1Maximum) X(TabPanel1Enabled) X(TabPanel1Value) X(SeqModel1) X(SeqModel2)      \
  X(PupModelListIndex) X(PupModelEnabled) X(messModel) X(cells) X(Somme) X(Results) X(EFFrom) X(EFTo)              \
  X(ST_messGraph) X(PBDotEnabled) X(Canvas1Width) X(Canvas1Height) X(EFHeight) X(EFwidth) X(CBMovingShort)         \
  X(EFIdentities) X(EFSD) X(CBMaxIdent) X(CBUsePoint) X(CBUsePoint1) X(CBSymetrie) X(CBSymetrieEnabled) X(CBHOSD) \
  X(RadioButton1) X(CBFreqIB) X(CBFreqIB1) X(CBMaxMin) X(EF_MinX) X(EF_MaxX) X(CBShadeSegments) X(EFSegThreshold)      \
  X(EFSegLength) X(Width) X(Height)
#define TRELVANE_STATE_FIELDS(X)                                                                                   \
  X(maxgraph) X(windgraph) X(m2) X(meangraph) X(sdgraph) X(nbbases) X(sumu2up) X(sumu2bas) X(m0) X(nbbases1) X(m1)  \
  X(osdgraph) X(omaxgraph) X(omeangraph) X(matrice) X(basesfreq) X(changegraph)

struct Desk;
using Step = std::function<void(Desk&, const std::string& value, std::ostream& out)>;

struct Desk {
  Desk() : dir(makeDir()) { st.open(); }
  ~Desk() {
    std::error_code ec;
    std::filesystem::current_path(home, ec);
    std::filesystem::remove_all(dir, ec);
  }
  std::string path(const std::string& name) const {
    if (name.rfind("@data/", 0) == 0) return TRELVANE_TEST_DATA + name.substr(5);
    if (name.rfind("@examples/", 0) == 0) return TRELVANE_EXAMPLES + name.substr(9);
    return name.rfind("./", 0) == 0 ? name : (dir / name).string();
  }

  static std::filesystem::path makeDir() { return makeScratchDir("desk"); }

  std::filesystem::path home = std::filesystem::current_path(), dir;
  ComparisonState st;
  Form form;
  int graphs = 0;
  std::string messageAtGraph;
  std::function<void()> graph = [this] { ++graphs, messageAtGraph = form.Message; };
  // further fields of the test's own, written after the others
  std::function<void(std::vector<std::pair<std::string, std::string>>&)> more;
};

// A step's result, in one line.
inline void show(std::ostream& out, const std::string& text) { out << "  = " << cases::escaped(text, true) << "\n"; }

inline std::string fieldText(const std::string& v) { return v; }
inline std::string fieldText(bool v) { return v ? "1" : "0"; }
inline std::string fieldText(int v) { return std::to_string(v); }
inline std::string fieldText(float v) {  // nine digits: every Single apart
  char buf[32];
  std::snprintf(buf, sizeof buf, "%.9g", static_cast<double>(v));
  return buf;
}
inline std::string fieldText(const MemoryBlock& m) {
  if (m.isNil()) return "nil";
  const std::size_t n = static_cast<std::size_t>(m.size());
  uint64_t hash = 1469598103934665603u;
  for (std::size_t i = 0; i < n; ++i) hash = (hash ^ m.data()[i]) * 1099511628211u;
  return std::to_string(n) + ": " + cases::bytesText(m.data(), std::min<std::size_t>(n, 64)) +
         (n > 64 ? " ... #" + std::to_string(hash % 1000000) : "");
}
template <class T, std::size_t N>
std::string fieldText(const T (&a)[N]) {
  std::string out;
  for (const auto& v : a) out += (out.empty() ? "" : " ") + fieldText(v);
  return out;
}
template <class T, std::size_t N>
std::string fieldText(const std::array<T, N>& a) {
  std::string out;
  for (const auto& v : a) out += (out.empty() ? "" : " ") + fieldText(v);
  return out;
}

inline void assign(std::string& f, const std::string& v) { f = v; }
inline void assign(bool& f, const std::string& v) { f = v == "1"; }
inline void assign(int& f, const std::string& v) { f = std::stoi(v); }
inline void assign(float& f, const std::string& v) { f = static_cast<float>(CDbl(v)); }
inline void assign(MemoryBlock& f, const std::string& v) { f = MemoryBlock(std::stoi(v)); }  // zeros
template <class T>
void assign(T&, const std::string&) { ADD_FAILURE() << "this field is not set by a script"; }

inline std::vector<std::pair<std::string, std::string>> fieldsOf(Desk& d) {
  std::vector<std::pair<std::string, std::string>> out;
#define TRELVANE_FIELD_OF(x) out.emplace_back(#x, fieldText(d.form.x));
  TRELVANE_FORM_FIELDS(TRELVANE_FIELD_OF)
#undef TRELVANE_FIELD_OF
#define TRELVANE_FIELD_OF(x) out.emplace_back(#x, fieldText(d.st.x));
  TRELVANE_STATE_FIELDS(TRELVANE_FIELD_OF)
#undef TRELVANE_FIELD_OF
  for (int side : {0, 1}) out.emplace_back("f" + std::to_string(side), d.st.f[side].value_or("-"));
  out.emplace_back("graphs", std::to_string(d.graphs) + " " + d.messageAtGraph);
  if (d.more) d.more(out);
  return out;
}

// Runs the steps of the case; steps of the test's own come in `steps`.
inline std::string runDesk(const cases::Case& c, const std::map<std::string, Step>& steps, Desk* given = nullptr) {
  std::unique_ptr<Desk> owned(given ? nullptr : new Desk);
  Desk* d = given ? given : owned.get();
  std::ostringstream out;
  for (const auto& [key, value] : c.in) {
    const auto before = fieldsOf(*d);
    out << "> " << key << (value.empty() ? "" : " ") << cases::escaped(value.substr(0, 60), true)
        << (value.size() > 60 ? "..." : "") << "\n";
    if (key == "file") {
      const bool quoted = value.rfind('"', 0) == 0;
      const std::size_t end = std::min(value.find(quoted ? '"' : ' ', quoted), value.size());
      std::ofstream(d->path(value.substr(quoted, end - quoted)), std::ios::binary)
          << value.substr(std::min(value.size(), end + 1 + quoted));
    } else if (key == "append") {
      const std::size_t a = value.find(' '), b = value.find(' ', a + 1);
      std::ofstream file(d->path(value.substr(0, a)), std::ios::binary | std::ios::app);
      for (int n = std::stoi(value.substr(a + 1, b - a - 1)); n > 0; --n) file << value.substr(b + 1);
    } else if (key == "folder") {
      std::filesystem::create_directory(d->path(value));
    } else if (key == "copy") {
      const std::size_t a = value.find(' '), b = value.find(' ', a + 1), c = std::min(value.find(' ', b + 1), value.size());
      std::ifstream source(d->path(value.substr(a + 1, b - a - 1)), std::ios::binary);
      std::string bytes(std::istreambuf_iterator<char>(source), {});
      bytes.resize(std::min<std::size_t>(std::stoull(value.substr(b + 1, c - b - 1)), bytes.size()));
      const std::string swap = value.substr(std::min(c + 1, value.size())), old = swap.substr(0, swap.find('|'));
      for (std::size_t at = 0; !old.empty() && (at = bytes.find(old, at)) != std::string::npos; at += swap.size() - old.size())
        bytes.replace(at, old.size(), swap.substr(old.size() + 1));
      std::ofstream(d->path(value.substr(0, a)), std::ios::binary) << bytes;
    } else if (key == "noise") {
      std::istringstream v(value);
      std::string name, bytes;
      uint32_t n = 0, x = 0;
      v >> name >> n >> x;
      while (n-- > 0) x = x * 1103515245u + 12345u, bytes += static_cast<char>(x >> 23);
      std::ofstream(d->path(name), std::ios::binary) << bytes;
    } else if (key == "set") {
      const std::string name = value.substr(0, value.find('=')), v = value.substr(value.find('=') + 1);
      if (name == "f0" || name == "f1") d->st.f[name[1] - '0'] = v == "-" ? std::nullopt : std::optional(d->path(v));
#define TRELVANE_SET(x) else if (name == #x) assign(d->form.x, v);
      TRELVANE_FORM_FIELDS(TRELVANE_SET)
#undef TRELVANE_SET
#define TRELVANE_SET(x) else if (name == #x) assign(d->st.x, v);
      TRELVANE_STATE_FIELDS(TRELVANE_SET)
#undef TRELVANE_SET
      else ADD_FAILURE() << "no field " << name;
    } else if (key == "sh") {
      // A shell line in the case's folder: what it prints, and its status where it failed.
      std::ofstream(d->path(".step.sh")) << "cd '" << d->dir.string() << "' && rm .step.sh && { " << value << "\n} 2>&1\n";
      FILE* p = ::popen(("bash '" + d->path(".step.sh") + "'").c_str(), "r");
      std::string text;
      for (int ch; (ch = std::fgetc(p)) != EOF;) text += static_cast<char>(ch);
      const int status = ::pclose(p);
      std::istringstream in(text);
      for (std::string line; std::getline(in, line);) out << "  | " << cases::escaped(line, true) << "\n";
      if (status != 0) out << "  failed " << WEXITSTATUS(status) << "\n";
    } else if (key == "cd") {
      std::filesystem::current_path(d->dir);
    } else if (key == "reset") {
      std::destroy_at(&d->st);
      std::construct_at(&d->st)->open();
      d->form = Form(), d->graphs = 0, d->messageAtGraph.clear();
    } else if (steps.count(key)) {
      steps.at(key)(*d, value, out);
    } else {
      ADD_FAILURE() << "no step " << key;
    }
    std::map<std::string, std::string> gone(before.begin(), before.end());
    for (const auto& [name, value] : fieldsOf(*d)) {
      const auto was = gone.find(name);
      if (was == gone.end() || was->second != value) out << "  " << name << "=" << cases::escaped(value, true) << "\n";
      if (was != gone.end()) gone.erase(was);
    }
    for (const auto& [name, value] : gone) out << "  " << name << " gone\n";
  }
  std::string t = out.str();
  for (auto [root, shown] : {std::pair{d->dir.string(), "$DIR"}, {TRELVANE_TEST_DATA, "@data"}, {TRELVANE_EXAMPLES, "@examples"}})
    for (std::size_t at; (at = t.find(root)) != std::string::npos;) t.replace(at, root.size(), shown);
  return t;
}

}  // namespace trelvane::testing
