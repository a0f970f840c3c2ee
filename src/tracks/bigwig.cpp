// bigwig.cpp -- bigWig output through libBigWig, loaded when the first bigWig is written.
#include "tracks/bigwig.h"

#include <bigWig.h>
#include <dlfcn.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <mutex>

namespace trelvane::tracks {
namespace {

// Debian's libBigWig brings libcurl and its TLS, Kerberos and LDAP
// libraries: linked in, they took about 8 ms of every start of the
// program, for the few runs that write a bigWig. So it is opened here.
struct BigWigLibrary {
  decltype(&::bwInit) init = nullptr;
  decltype(&::bwOpen) open = nullptr;
  decltype(&::bwClose) close = nullptr;
  decltype(&::bwCreateChromList) createChromList = nullptr;
  decltype(&::bwCreateHdr) createHdr = nullptr;
  decltype(&::bwWriteHdr) writeHdr = nullptr;
  decltype(&::bwAddIntervals) addIntervals = nullptr;
  decltype(&::bwAppendIntervals) appendIntervals = nullptr;
  std::string failure;  // why it could not be loaded; empty once it is
};

template <typename F>
bool bind(void* handle, const char* name, F& to) {
  to = reinterpret_cast<F>(dlsym(handle, name));
  return to != nullptr;
}

// The library, loaded and given its global buffer size once, before any file.
const BigWigLibrary& library() {
  static const BigWigLibrary lib = [] {
    BigWigLibrary l;
    void* h = dlopen("libBigWig.so.0", RTLD_NOW | RTLD_LOCAL);
    if (!h || !bind(h, "bwInit", l.init) || !bind(h, "bwOpen", l.open) || !bind(h, "bwClose", l.close) ||
        !bind(h, "bwCreateChromList", l.createChromList) || !bind(h, "bwCreateHdr", l.createHdr) ||
        !bind(h, "bwWriteHdr", l.writeHdr) || !bind(h, "bwAddIntervals", l.addIntervals) ||
        !bind(h, "bwAppendIntervals", l.appendIntervals)) {
      const char* e = dlerror();
      l.failure = std::string("libBigWig could not be loaded (Debian's libbigwig0 holds it): ") +
                  (e ? e : "unknown error");
      return l;
    }
    if (l.init(1 << 17) != 0) l.failure = "libBigWig could not be initialised";
    return l;
  }();
  return lib;
}

struct Closer {
  void operator()(bigWigFile_t* fp) const { library().close(fp); }
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
  const BigWigLibrary& bw = library();
  if (!bw.failure.empty()) {
    *why = "cannot write the bigWig " + path + ": " + bw.failure;
    return false;
  }
  std::string mode = "w";
  std::unique_ptr<bigWigFile_t, Closer> fp(bw.open(path.c_str(), nullptr, mode.c_str()));
  if (!fp) {
    *why = "cannot write the bigWig " + path + ": " + std::strerror(errno);
    return false;
  }
  const char* names[] = {chrom.c_str()};
  const uint32_t lengths[] = {static_cast<uint32_t>(size)};
  fp->cl = bw.createChromList(names, lengths, 1);
  if (!fp->cl || bw.createHdr(fp.get(), 10) != 0 || bw.writeHdr(fp.get()) != 0) {
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
    const int rc = at == 0 ? bw.addIntervals(fp.get(), chroms.data(), starts.data(), ends.data(), values.data(),
                                             static_cast<uint32_t>(n))
                           : bw.appendIntervals(fp.get(), starts.data(), ends.data(), values.data(),
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
