// report.cpp -- the end of a run: tail rows, statistics, the result block and its destinations.
#include <cmath>
#include <filesystem>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "state/profile.h"
#include "engine/scan.h"
#include "platform/numtext.h"
#include "platform/replace_file.h"

namespace trelvane {

void appendSequenceText(std::string& report, std::string_view title, const MemoryBlock& m, int32_t n) {
  report += title;
  report += EndOfLine;
  report += Str(n);
  report += EndOfLine;
  int32_t shown = n < 1000 ? n : 1000;
  // The counter runs 0 to 30, so a line holds 31 letters.
  int counter = 0;
  for (int32_t k = 0; k < shown; ++k) {
    report += letterOf(m.get(k));
    if (counter == 30) {
      report += EndOfLine;
      counter = 0;
    } else {
      ++counter;
    }
  }
  if (n > 1000) {
    report += "Only the first 1000 bases are shown...";
    report += EndOfLine;
  }
  report += EndOfLine;
}

std::string scaleLimit(float maxgraph, int32_t W, bool CBFreqIB) {
  if (!CBFreqIB) return CStr(maxgraph);
  if (static_cast<double>(maxgraph) == static_cast<double>(W)) return "1";
  // The next tenth strictly above the fraction.
  double tenths = std::floor(static_cast<double>(maxgraph) / static_cast<double>(W) * 10.0);
  return CStr((tenths + 1.0) / 10.0);
}

namespace {

struct Statistics {
  float mean = 0, sd = 0;        // of the position scores
  float h0mean = 0, h0sd = 0;    // of the random maxima
  float sdlow = 0, sdup = 0;     // split SD: sumu2bas, sumu2up
};

// Population mean and SD of a series: mean = S / N; SD = sqrt(Q / N - mean²).
void meanAndSd(const ScoreSums& sums, float& mean, float& sd) {
  mean = toSingle(static_cast<double>(sums.sum) / static_cast<double>(sums.count));
  float meanSquare = mean * mean;
  double variance = static_cast<double>(sums.sumsq) / static_cast<double>(sums.count) -
                    static_cast<double>(meanSquare);
  sd = toSingle(std::sqrt(variance));
}

// SDs below and above the mean, from the profile bytes of the analysed range.
void splitSd(const RunContext& c, float mean, float& sdlow, float& sdup) {
  // A byte stands for one score: its square and its side are worked out
  // once. A position adds its square to its side's sum and +0 to the other,
  // which leaves that sum as it was (a sum of squares is never -0); bytes
  // without a score add +0 to both.
  float lowSquare[256], upSquare[256];
  int32_t isLow[256], isUp[256];
  for (int b = 0; b < 256; ++b) {
    lowSquare[b] = upSquare[b] = 0.0f;
    isLow[b] = isUp[b] = 0;
    if (b <= kProfileNoScore) continue;
    float s = toSingle(profileScore(static_cast<uint8_t>(b), c.W));
    float d = s - mean;
    float square = d * d;
    if (mean > s) {
      lowSquare[b] = square;
      isLow[b] = 1;
    } else {
      upSquare[b] = square;
      isUp[b] = 1;
    }
  }
  float sumu2bas = 0.0f, sumu2up = 0.0f;
  int32_t low = 0, up = 0;
  for (int64_t i = c.firstpos; i <= c.lastpos; ++i) {
    const uint8_t b = c.st.m2.get(i);
    sumu2bas = sumu2bas + lowSquare[b];
    sumu2up = sumu2up + upSquare[b];
    low += isLow[b];
    up += isUp[b];
  }
  float lowVariance = toSingle(static_cast<double>(sumu2bas) / static_cast<double>(low));
  float upVariance = toSingle(static_cast<double>(sumu2up) / static_cast<double>(up));
  sdlow = toSingle(std::sqrt(static_cast<double>(lowVariance)));
  sdup = toSingle(std::sqrt(static_cast<double>(upVariance)));
}

void line(std::string& out, std::string_view a, const std::string& b) {
  out += a;
  out += b;
  out += EndOfLine;
}

// Lines 1 to 12 of the result block.
std::string resultHead(const RunContext& c, const Statistics& t) {
  std::string out;
  out += kResultSignature;
  out += EndOfLine;
  line(out, "Window size=", Str(c.W));
  line(out, "Max=", Str(c.profile.highest));
  line(out, "Mean=", CStr(t.mean));
  line(out, "SD=", CStr(t.sd));
  line(out, "Mean H0=", CStr(t.h0mean));
  line(out, "SD H0=", CStr(t.h0sd));
  line(out, "Max H0=", CStr(c.h0.highest));
  line(out, "SD low=", CStr(t.sdlow));
  line(out, "SD up=", CStr(t.sdup));
  line(out, "Bases=", Str(c.nlong));
  line(out, "Bases1=", Str(c.nshort));
  return out;
}

// The composition rows of one side. The N count is taken off each base's
// count as well as off the length, so with Ns the fractions do not add to 1.
void appendComposition(std::string& out, const ComparisonState& st, int side, int32_t n) {
  int32_t c0 = st.basesfreq[0][side];
  out += "N\t";
  out += CStr(c0);
  out += TAB;
  out += CStr(static_cast<double>(c0) / static_cast<double>(n));
  out += EndOfLine;
  for (int x = 1; x <= 4; ++x) {
    int32_t cx = st.basesfreq[x][side];
    out += kLetters[x];
    out += TAB;
    out += CStr(cx);
    out += TAB;
    out += CStr(static_cast<double>(wrap32(static_cast<int64_t>(cx) - c0)) /
                static_cast<double>(wrap32(static_cast<int64_t>(n) - c0)));
    out += EndOfLine;
  }
}

// The histogram lines, bins 0 to W, and the composition of both sequences.
std::string resultTables(const RunContext& c) {
  std::string out;
  for (int32_t b = 0; b <= c.W; ++b) {
    float v = static_cast<std::size_t>(b) < c.histogram.size() ? c.histogram[b] : 0.0f;
    out += CStr(b);
    out += TAB;
    out += CStr(v);
    out += EndOfLine;
  }
  out += "Longest sequence";
  out += EndOfLine;
  appendComposition(out, c.st, 0, c.nlong);
  out += "Shortest sequence";
  out += EndOfLine;
  appendComposition(out, c.st, 1, c.nshort);
  // Where a side was read from a record or region, the block says which, so
  // that its positions can be told in the record's coordinates later; a
  // reader of older files passes over these lines.
  for (int side = 0; side < (c.s.CBCPG ? 1 : 2); ++side) {
    const SequenceOrigin& origin = c.st.origin[side];
    if (!origin.known() || origin.wholeFile) continue;
    line(out, side == 0 ? kLongOriginKey : kShortOriginKey, originText(origin));
  }
  return out;
}

// The reason of the last failed call, as the system words it.
std::string systemReason() { return std::strerror(errno); }

// Writes the result file; the reason where it could not be written, else "".
std::string writeResultFile(const std::string& path, const std::string& block, std::string_view profile) {
  // A regular file is written beside its place and renamed over it, so that
  // a write that fails (a full disk) leaves the file of before; a device or
  // a pipe is written in place.
  std::error_code ec;
  const auto status = std::filesystem::status(path, ec);
  const bool inPlace = std::filesystem::exists(status) && !std::filesystem::is_regular_file(status);
  const std::string target = inPlace ? path : path + ".part";
  std::FILE* file = std::fopen(target.c_str(), "wb");
  if (!file) return systemReason();
  const bool written = std::fwrite(block.data(), 1, block.size(), file) == block.size() &&
                       std::fwrite(profile.data(), 1, profile.size(), file) == profile.size() &&
                       std::fflush(file) == 0;
  std::string why = written ? "" : systemReason();
  if (std::fclose(file) != 0 && why.empty()) why = systemReason();
  if (!why.empty()) {
    if (!inPlace) std::filesystem::remove(target, ec);
    return why;
  }
  if (inPlace) return "";
  ec = replaceFile(target, path);
  if (!ec) return "";
  std::string renameWhy = ec.message();
  std::filesystem::remove(target, ec);
  return renameWhy;
}

}  // namespace

void finishRun(RunContext& c, RunOutcome& out) {
  c.host.message("Preparing the output...");

  // tail rows: the last positions, where no whole window fits
  for (int64_t i = static_cast<int64_t>(c.nlong) - c.W + 1; i <= static_cast<int64_t>(c.nlong) - 1; ++i) {
    c.rows.beginRow();
    c.rows.append(Str(i + 1));
    c.rows.append(TAB);
    c.rows.append(letterOf(c.st.m0.get(i)));
    c.rows.append(TAB);
    c.rows.append(EndOfLine);
    c.rows.endRow();
    c.st.m2.set(i, kProfileNoScore);
    c.st.m2.set(i + 1, kProfileUnwritten);
  }

  // statistics
  Statistics t;
  meanAndSd(c.profile, t.mean, t.sd);
  meanAndSd(c.h0, t.h0mean, t.h0sd);
  splitSd(c, t.mean, t.sdlow, t.sdup);

  // result block
  c.host.message("Writing the output...");
  const std::string block = resultHead(c, t) + resultTables(c);
  c.report += block;
  std::string head = block + "#";
  head += EndOfLine;
  out.noRows = c.rows.empty();
  // The rows are moved into the clipboard's text, not copied: megabytes. Rows
  // that went to a sink as they came are followed there by the last ones.
  if (c.s.CBClipboard && !out.noRows) {
    if (c.s.rowsSink) {
      c.rows.spill();
      out.rowsHead = head;
    } else {
      c.host.setClipboard(c.rows.take(head));
    }
  }
  if (c.s.CBFile && c.s.resultPath && !out.noRows) {
    out.resultError = writeResultFile(*c.s.resultPath, head, c.st.m2.cstringAt(0));
    out.resultWritten = out.resultError.empty();
  }

  // closing lines
  c.report += "Average identity:";
  c.report += Format(t.mean, "###.###");
  c.report += EndOfLine;
  c.report += "SD:";
  c.report += Format(t.sd, "###.###");
  c.report += EndOfLine;
  c.report += EndOfLine;
  if (c.s.CBClipboard) {
    c.report += "Result is copied into the clipboard";
    c.report += EndOfLine;
  }
  // On the check box alone: a cancelled Save dialog does not hold it back.
  if (c.s.CBFile) {
    c.report += "Result is saved";
    c.report += EndOfLine;
  }
  c.host.message("Drawing picture...");

  out.windgraph = c.W;
  out.maxgraph = c.profile.highest;
  out.meangraph = t.mean;
  out.sdgraph = t.sd;
  out.omeangraph = t.h0mean;
  out.osdgraph = t.h0sd;
  out.omaxgraph = c.h0.highest;
  out.sumu2bas = t.sdlow;
  out.sumu2up = t.sdup;
  out.EF_MaxX = scaleLimit(out.maxgraph, c.W, c.s.CBFreqIB);
}

}  // namespace trelvane
