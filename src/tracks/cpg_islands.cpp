// cpg_islands.cpp -- CpG islands by the usual criteria, written as BED and GFF3.
#include "tracks/cpg_islands.h"

#include <algorithm>

#include "tracks/text.h"

namespace trelvane::tracks {
namespace {

// The counts of [a, b) of m0 (0-based); a CpG counts when both its bases lie inside.
Island countsOf(const ComparisonState& st, int64_t a, int64_t b) {
  Island is;
  is.runFrom = a + 1;
  is.runTo = b;
  for (int64_t i = a; i < b; ++i) {
    const uint8_t x = st.m0.get(i);
    is.c += x == kC;
    is.g += x == kG;
    is.cpg += i + 1 < b && x == kC && st.m0.get(i + 1) == kG;
  }
  return is;
}

bool passesContent(const Island& is, const IslandRule& rule) {
  const double len = static_cast<double>(is.length());
  return static_cast<double>(is.c + is.g) >= rule.minGc * len && is.c > 0 && is.g > 0 &&
         is.obsExp() > rule.minObsExp;
}

std::string percent(int64_t part, int64_t whole) { return fixed(100.0 * part / whole, 1); }

// The islands in the track's order, each with its 0-based half-open extent.
std::vector<std::pair<const Island*, Interval>> placed(const ComparisonState& st,
                                                       const std::vector<Island>& islands,
                                                       const TrackOptions& o) {
  std::vector<std::pair<const Island*, Interval>> out;
  for (const Island& is : islands) {
    const auto a = trackStart(st, o, is.runFrom), b = trackStart(st, o, is.runTo);
    if (a && b) out.push_back({&is, Interval{std::min(*a, *b), std::max(*a, *b) + 1, 0}});
  }
  std::stable_sort(out.begin(), out.end(), [](const auto& x, const auto& y) { return x.second.start < y.second.start; });
  return out;
}

}  // namespace

double Island::obsExp() const {
  if (c == 0 || g == 0) return 0;
  return static_cast<double>(cpg) * static_cast<double>(length()) / (static_cast<double>(c) * static_cast<double>(g));
}

std::vector<Island> findIslands(const ComparisonState& st, const IslandRule& rule) {
  std::vector<Island> out;
  // The bases read into m0: a stored result's nbbases need not be theirs.
  int64_t len = 0;
  for (int c = kN; c <= kG; ++c) len += st.basesfreq[c][0];
  len = std::min<int64_t>(len, st.m0.size());
  const int64_t L = rule.minLength;
  if (L < 2 || len < L) return out;
  auto base = [&st](int64_t i) { return st.m0.get(i); };
  auto check = [&](int64_t a, int64_t b) {
    // cut to the first C and the last G of a CpG
    while (a + 1 < b && !(base(a) == kC && base(a + 1) == kG)) ++a;
    while (b - 1 > a && !(base(b - 2) == kC && base(b - 1) == kG)) --b;
    const Island is = countsOf(st, a, b);
    if (is.length() > L && passesContent(is, rule)) out.push_back(is);
  };
  // The window [a, a + L), its counts kept as it slides.
  Island w = countsOf(st, 0, L);
  int64_t ns = 0;
  for (int64_t i = 0; i < L; ++i) ns += base(i) == kN;
  int64_t from = -1, to = -1;  // the stretch being merged, [from, to)
  for (int64_t a = 0;; ++a) {
    const int64_t b = a + L;
    w.runFrom = a + 1;
    w.runTo = b;
    if (ns == 0 && passesContent(w, rule)) {
      if (from >= 0 && a <= to) {
        to = b;
      } else {
        if (from >= 0) check(from, to);
        from = a;
        to = b;
      }
    }
    if (b >= len) break;
    // slide: base a leaves, base b enters
    const uint8_t out0 = base(a), in = base(b);
    w.c += (in == kC) - (out0 == kC);
    w.g += (in == kG) - (out0 == kG);
    ns += (in == kN) - (out0 == kN);
    w.cpg += (base(b - 1) == kC && in == kG) - (out0 == kC && base(a + 1) == kG);
  }
  if (from >= 0) check(from, to);
  return out;
}

std::string islandsBed(const ComparisonState& st, const std::vector<Island>& islands, const TrackOptions& o) {
  const std::string chrom = chromName(st, o);
  std::string out;
  for (const auto& [is, iv] : placed(st, islands, o)) {
    out += chrom + "\t" + std::to_string(iv.start) + "\t" + std::to_string(iv.end) + "\tCpG: " +
           std::to_string(is->cpg) + "\t" + std::to_string(is->length()) + "\t" + std::to_string(is->cpg) + "\t" +
           std::to_string(is->c + is->g) + "\t" + percent(2 * is->cpg, is->length()) + "\t" +
           percent(is->c + is->g, is->length()) + "\t" + fixed(is->obsExp(), 2) + "\n";
  }
  return out;
}

std::string islandsGff(const ComparisonState& st, const std::vector<Island>& islands, const TrackOptions& o) {
  const std::string chrom = chromName(st, o);
  const auto list = placed(st, islands, o);
  const int64_t size = chromSize(st, o, list.empty() ? 0 : list.back().second.end);
  std::string out = "##gff-version 3\n##sequence-region " + chrom + " 1 " + std::to_string(size) + "\n";
  int n = 0;
  for (const auto& [is, iv] : list) {
    out += chrom + "\ttrelvane\tCpG_island\t" + std::to_string(iv.start + 1) + "\t" + std::to_string(iv.end) +
           "\t" + fixed(is->obsExp(), 2) + "\t.\t.\tID=cpg" + std::to_string(++n) + ";Name=CpG: " +
           std::to_string(is->cpg) + ";cpg_count=" + std::to_string(is->cpg) + ";gc_count=" +
           std::to_string(is->c + is->g) + ";percent_cpg=" + percent(2 * is->cpg, is->length()) +
           ";percent_gc=" + percent(is->c + is->g, is->length()) + ";obs_exp=" + fixed(is->obsExp(), 2) + "\n";
  }
  return out;
}

}  // namespace trelvane::tracks
