// estimation.cpp -- Identity, TS/TV and general substitution models, and the grid that shows matrice.
#include "model/estimation.h"

#include <cstdint>
#include <string>

#include "platform/numtext.h"

namespace trelvane {

namespace {

// Letter to base code for the aligned texts: A, T, C, G in either case;
// everything else (N, U, gaps, blanks, line ends) is 0 and is not counted.
constexpr uint8_t pairCode(unsigned char ch) {
  switch (ch) {
    case 'A': case 'a': return kA;
    case 'T': case 't': return kT;
    case 'C': case 'c': return kC;
    case 'G': case 'g': return kG;
    default: return kN;
  }
}

// Products of the 32-bit counter wrap around as the counter itself does.
int32_t timesInt(int32_t n, uint32_t k) {
  return static_cast<int32_t>(static_cast<uint32_t>(n) * k);
}

// The count table and the pair counter n, by the length of SeqModel1 alone.
// A SeqModel2 shorter than that gives code 0 where it has no character.
int32_t countPairs(const std::string& s1, const std::string& s2, float count[5][5]) {
  int32_t n = 0;
  for (std::size_t p = 0; p < s1.size(); ++p) {
    uint8_t c1 = pairCode(static_cast<unsigned char>(s1[p]));
    uint8_t c2 = p < s2.size() ? pairCode(static_cast<unsigned char>(s2[p])) : uint8_t{kN};
    if (c1 != kN && c2 != kN) {
      count[c1][c2] += 1.0f;
      n = static_cast<int32_t>(static_cast<uint32_t>(n) + 1u);
    }
  }
  return n;
}

void estimateTsTv(float count[5][5], int32_t n, float matrice[5][5]) {
  float ts = toSingle((static_cast<double>(count[1][4]) + count[2][3] + count[3][2] + count[4][1]) /
                      static_cast<double>(timesInt(n, 4)));
  float tv = toSingle((static_cast<double>(count[1][2]) + count[1][3] + count[2][1] + count[2][4] +
                       count[3][1] + count[3][4] + count[4][2] + count[4][3]) /
                      static_cast<double>(timesInt(n, 8)));
  for (int i = 1; i <= 4; ++i) count[i][i] = toSingle(count[i][i] / static_cast<double>(n));

  // Each row is divided by its own d, so that it sums to 1 over the second index.
  // The ts cells are A with G and T with C: codes 1-4 and 2-3.
  for (int i = 1; i <= 4; ++i) {
    double d = static_cast<double>(count[i][i]) + 2.0 * tv + ts;
    for (int j = 1; j <= 4; ++j) {
      float v;
      if (i == j) v = count[i][i];
      else if (i + j == 5) v = ts;
      else v = tv;
      matrice[i][j] = toSingle(v / d);
    }
  }
}

// All sixteen cells over the one divisor n: the whole table sums to 1, and
// the first index stays that of SeqModel1.
void estimateGeneral(float count[5][5], int32_t n, float matrice[5][5]) {
  for (int i = 1; i <= 4; ++i)
    for (int j = 1; j <= 4; ++j) {
      count[i][j] = toSingle(count[i][j] / static_cast<double>(n));
      matrice[i][j] = count[i][j];
    }
}

}  // namespace

void Apply_Action(ComparisonState& st, Form& form) {
  int model = form.PupModelListIndex;
  if (model == kIdentity) {
    for (int i = 1; i <= 4; ++i)
      for (int j = 1; j <= 4; ++j) st.matrice[i][j] = i == j ? 1.0f : 0.0f;
  } else if (model == kTsTv || model == kGeneral) {
    float count[5][5] = {};
    int32_t n = countPairs(form.SeqModel1, form.SeqModel2, count);
    if (model == kTsTv)
      estimateTsTv(count, n, st.matrice);
    else
      estimateGeneral(count, n, st.matrice);
  }
  showMatrice(st, form);
}

void showMatrice(const ComparisonState& st, Form& form) {
  for (int r = 0; r < 4; ++r)
    for (int c = 0; c < 4; ++c)
      form.cells[4 * r + c] = Format(st.matrice[kGridIndex[c]][kGridIndex[r]], "#.###");

  // The sums are those of the texts, so of values already rounded to three places.
  for (int r = 0; r < 4; ++r) {
    double sum = 0.0;
    for (int c = 0; c < 4; ++c) sum += CDbl(form.cells[4 * r + c]);
    form.Somme[r] = Format(sum, "#.###");
  }
}

}  // namespace trelvane
