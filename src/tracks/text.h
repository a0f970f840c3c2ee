// text.h -- the numbers and names of the track files, written the same way whatever the locale.
#pragma once

#include <cstdint>
#include <string>

namespace trelvane::tracks {

// Six significant digits at most, "." as the point, no exponent for the
// values of a profile: 0.7, 0.666667, 21.
std::string number(double v);

// v with exactly `places` digits after the point.
std::string fixed(double v, int places);

// The file's name without its folders and without the extensions of a
// sequence file (".fa.gz" and the like): "data/chr11.fa.gz" gives "chr11".
std::string baseName(const std::string& path);

// A name usable as a BED chromosome or a track name: blanks become "_".
std::string withoutBlanks(std::string name);

}  // namespace trelvane::tracks
