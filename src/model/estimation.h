// estimation.h -- the Apply button of the Model tab: matrice from two aligned texts, and its grid.
#pragma once

#include "state/form.h"
#include "state/state.h"

namespace trelvane {

// The models of PupModel, by ListIndex.
enum ModelIndex : int { kIdentity = 0, kTsTv = 1, kGeneral = 2 };

// The grid shows its rows and columns in the order A, T, C, G, but takes
// index 3 for G and 4 for C: kGridIndex[k] is the matrice index behind the
// k-th row or column of the screen. Screen cell (row r, column c) shows
// matrice[kGridIndex[c]][kGridIndex[r]]: the first index runs along the columns.
inline constexpr int kGridIndex[4] = {kA, kT, kG, kC};

// The names of the sixteen cell controls, column letter then row letter,
// in the order of Form::cells (row r, column c at 4 * r + c).
inline constexpr const char* kCellNames[16] = {"AA", "TA", "CA", "GA",  //
                                               "AT", "TT", "CT", "GT",  //
                                               "AC", "TC", "CC", "GC",  //
                                               "AG", "TG", "CG", "GG"};

// Apply: sets matrice from form.PupModelListIndex (Identity, TS/TV or the
// general model counted from form.SeqModel1 and form.SeqModel2), then writes
// the sixteen cell texts and the four Somme texts. No pair to count gives
// not-a-number cells, which flow on into the next run. Another ListIndex
// leaves matrice as it is and only redisplays it.
void Apply_Action(ComparisonState& st, Form& form);

// The grid and its sums from the present matrice (the display step of Apply).
void showMatrice(const ComparisonState& st, Form& form);

}  // namespace trelvane
