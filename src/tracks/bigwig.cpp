// bigwig.cpp -- bigWig output through libBigWig.
#include "tracks/bigwig.h"

#include <bigWig.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <mutex>

namespace trelvane::tracks {
namespace {

// libBigWig keeps a global buffer size, set once before any file.
void initialiseOnce() {
  static std::once_flag once;
  std::call_once(once, [] { bwInit(1 << 17); });
}

struct Closer {
  void operator()(bigWigFile_t* fp) const { bwClose(fp); }
};

}  // namespace

bool writeBigWig(const std::string& path, const std::string& chrom, int64_t size,
                 const std::vector<Interval>& intervals, std::string* why) {
  constexpr int64_t kMaxSize = std::numeric_limits<uint32_t>::max();
  if (size <= 0 || size > kMaxSize || (!intervals.empty() && intervals.back().end > size)) {
    *why = "cannot write the bigWig " + path + ": chromosome " + chrom + " of " + std::to_string(size) +
           " bases is outside what the format holds";
    return false;
  }
  initialiseOnce();
  std::string mode = "w";
  std::unique_ptr<bigWigFile_t, Closer> fp(bwOpen(path.c_str(), nullptr, mode.c_str()));
  if (!fp) {
    *why = "cannot write the bigWig " + path + ": " + std::strerror(errno);
    return false;
  }
  const char* names[] = {chrom.c_str()};
  const uint32_t lengths[] = {static_cast<uint32_t>(size)};
  fp->cl = bwCreateChromList(names, lengths, 1);
  if (!fp->cl || bwCreateHdr(fp.get(), 10) != 0 || bwWriteHdr(fp.get()) != 0) {
    *why = "cannot write the bigWig " + path + ": its header could not be written";
    return false;
  }
  // In blocks: the first adds the chromosome, the others append to it.
  constexpr std::size_t kBlock = 1 << 16;
  std::vector<uint32_t> starts, ends;
  std::vector<float> values;
  for (std::size_t at = 0; at < intervals.size(); at += kBlock) {
    const std::size_t n = std::min(kBlock, intervals.size() - at);
    starts.resize(n);
    ends.resize(n);
    values.resize(n);
    for (std::size_t k = 0; k < n; ++k) {
      starts[k] = static_cast<uint32_t>(intervals[at + k].start);
      ends[k] = static_cast<uint32_t>(intervals[at + k].end);
      values[k] = static_cast<float>(intervals[at + k].value);
    }
    std::vector<const char*> chroms(n, names[0]);
    const int rc = at == 0 ? bwAddIntervals(fp.get(), chroms.data(), starts.data(), ends.data(), values.data(),
                                            static_cast<uint32_t>(n))
                           : bwAppendIntervals(fp.get(), starts.data(), ends.data(), values.data(),
                                               static_cast<uint32_t>(n));
    if (rc != 0) {
      *why = "cannot write the bigWig " + path + ": libBigWig refused the intervals";
      return false;
    }
  }
  return true;
}

bool writeProfileBigWig(const std::string& path, const ComparisonState& st, const TrackOptions& o,
                        std::string* why) {
  const std::vector<Interval> intervals = profileIntervals(st, o);
  const int64_t reached = intervals.empty() ? 0 : intervals.back().end;
  return writeBigWig(path, chromName(st, o), chromSize(st, o, reached), intervals, why);
}

}  // namespace trelvane::tracks
