// result_reader.cpp -- reads a result file: keyed lines up to "#", then raw profile bytes.
#include "input/result_reader.h"

#include <cmath>

#include "state/profile.h"
#include "input/sequence_reader.h"
#include "platform/linereader.h"
#include "platform/numtext.h"

namespace trelvane {
namespace {

// The values found in the head; a key that is missing leaves its property.
struct StoredResult {
  std::optional<int32_t> windgraph, nbbases, nbbases1;
  std::optional<float> maxgraph, omaxgraph, meangraph, omeangraph, sdgraph, osdgraph,
      sumu2bas, sumu2up;
  // The text of Bases= as it stands, for the message of a refused file.
  std::string basesText;
  // The origins of a run on records or regions; an older file has none.
  std::optional<SequenceOrigin> origin[2];
};

// Tests the line against every key, in this order; no key is a prefix of
// another, so at most one matches.
void readKeys(const std::string& line, StoredResult& r) {
  auto value = [&line](std::string_view key, std::string_view& rest) {
    if (!startsWithNoCase(line, key)) return false;
    rest = std::string_view(line).substr(key.size());
    return true;
  };
  std::string_view v;
  if (value("Window size=", v)) r.windgraph = toInt(Val(v));
  if (value("Max=", v)) r.maxgraph = toSingle(Val(v));
  if (value("Max H0=", v)) r.omaxgraph = toSingle(Val(v));
  if (value("Mean=", v)) r.meangraph = toSingle(CDbl(v));
  if (value("Mean H0=", v)) r.omeangraph = toSingle(CDbl(v));
  if (value("SD=", v)) r.sdgraph = toSingle(CDbl(v));
  if (value("SD H0=", v)) r.osdgraph = toSingle(CDbl(v));
  if (value("SD low=", v)) r.sumu2bas = toSingle(CDbl(v));
  if (value("SD up=", v)) r.sumu2up = toSingle(CDbl(v));
  if (value("Bases=", v)) {
    r.nbbases = toInt(Val(v));
    r.basesText = std::string(v.substr(0, 40));
  }
  if (value("Bases1=", v)) r.nbbases1 = toInt(Val(v));
  SequenceOrigin origin;
  if (value(kLongOriginKey, v) && parseOriginText(v, origin)) r.origin[0] = origin;
  if (value(kShortOriginKey, v) && parseOriginText(v, origin)) r.origin[1] = origin;
}

template <typename T>
void store(const std::optional<T>& v, T& property) {
  if (v) property = *v;
}

void plot(Form& form, const std::function<void()>& graph) {
  form.Message = "Plot the graph...";
  if (graph) graph();
  form.Message = "End...";
}

}  // namespace

std::string litprevious(ComparisonState& st, Form& form, const std::optional<std::string>& path,
                        const std::function<void()>& graph) {
  if (!path) return "";
  LineReader in;
  if (!in.open(*path)) {
    form.Message = cannotReadText(*path, in.error());
    return in.error();
  }
  return detail::readResult(st, form, in, *path, graph, kMaxBases);
}

namespace detail {

std::string readResult(ComparisonState& st, Form& form, LineReader& in, const std::string& path,
                       const std::function<void()>& graph, int64_t maxBases) {
  if (!isResultHead(in.readLine())) {
    plot(form, graph);
    return "";
  }

  form.Message = "Reading parameters...";
  StoredResult r;
  std::string line;
  do {
    line = in.readLine();
    readKeys(line, r);
  } while (line != "#" && !in.eof());

  // Bases= sizes the profile block: a count that cannot be one refuses the file.
  if (r.nbbases && (*r.nbbases < 0 || *r.nbbases > maxBases)) {
    const std::string why = "Bases=" + r.basesText + " is no count of bases";
    form.Message = cannotReadText(path, why);
    return why;
  }
  store(r.windgraph, st.windgraph);
  store(r.maxgraph, st.maxgraph);
  store(r.omaxgraph, st.omaxgraph);
  store(r.meangraph, st.meangraph);
  store(r.omeangraph, st.omeangraph);
  store(r.sdgraph, st.sdgraph);
  store(r.osdgraph, st.osdgraph);
  store(r.sumu2bas, st.sumu2bas);
  store(r.sumu2up, st.sumu2up);
  store(r.nbbases, st.nbbases);
  store(r.nbbases1, st.nbbases1);
  store(r.origin[0], st.origin[0]);
  store(r.origin[1], st.origin[1]);

  // A file that ends at or before its "#" line has no byte section: m2 stays.
  if (!in.eof()) {
    const int32_t n = st.nbbases;
    st.m2 = MemoryBlock(static_cast<std::ptrdiff_t>(n) + 410);
    // The start of the block is filled as by a run, with code 1 instead of 2.
    fillProfileStart(st.m2, n, kProfileN);
    form.Message = "Reading file...";
    st.m2.setBytes(0, in.readBytes(static_cast<std::size_t>(n)));
  }
  in.close();
  plot(form, graph);
  return "";
}

}  // namespace detail
}  // namespace trelvane
