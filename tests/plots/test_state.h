// test_state.h -- comparison states with a hand-made profile, and reading the shapes of a drawing back.
#pragma once

#include <string>
#include <vector>

#include "state/form.h"
#include "state/state.h"
#include "plots/picture.h"

namespace trelvane::testing {

// Sets st as after a stored result on a new window: nbbases positions,
// window w, m2 of nbbases + 410 bytes holding bytes from offset 0 on, the rest 0.
void setProfile(ComparisonState& st, int32_t nbbases, int32_t w, const std::vector<uint8_t>& bytes);

// The profile byte of a score s with window w, as a run encodes it.
uint8_t scoreByte(double s, int32_t w);

// m0 of a longest sequence given as letters (N, A, T, C, G), 100 zero bytes behind.
MemoryBlock sequenceCodes(const std::string& letters);

// The shapes of the last drawing (none for a nil picture).
const std::vector<plots::Shape>& shapes(const ComparisonState& st);
// The lines of the drawing in one colour, in order.
std::vector<plots::CurveShape> linesIn(const ComparisonState& st, plots::RGB color);
// The texts of the drawing, in order.
std::vector<plots::StringShape> texts(const ComparisonState& st);

// The lines drawn after the last text (curve, columns, N bars), the red,
// green and blue reference lines left out, as "x y x2 y2 c" joined by "; ",
// c the colour: k black, m the maximum-minimum grey, b the band grey.
std::string curve(const ComparisonState& st);

std::string readFile(const std::string& path);

}  // namespace trelvane::testing
