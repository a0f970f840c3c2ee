// fasta_file.cpp -- FASTA files through htslib: bgzf streams, faidx records and regions, a read-through without index.
#include "input/fasta_file.h"

#include <htslib/bgzf.h>
#include <zlib.h>
#include <htslib/faidx.h>
#include <htslib/hts_log.h>

#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "platform/linereader.h"

namespace trelvane {
namespace {

// htslib speaks on stderr; its failures reach the user as our own sentences.
void quietHtslib() {
  static const bool once = [] {
    hts_set_log_level(HTS_LOG_OFF);
    return true;
  }();
  (void)once;
}

// 0 plain, 1 gzip, 2 BGZF; -1 where the file cannot be opened.
int compressionOf(const std::string& path) {
  quietHtslib();
  BGZF* fp = bgzf_open(path.c_str(), "r");
  if (!fp) return -1;
  const int kind = bgzf_compression(fp);
  bgzf_close(fp);
  return kind;
}

bool exists(const std::string& path) {
  struct stat st;
  return ::stat(path.c_str(), &st) == 0;
}

// A FASTA record's letters are the printable characters of its lines, as
// the index counts them.
bool isLetter(unsigned char c) { return c > ' ' && c < 127; }

// Letters fetched a piece at a time: a chromosome never sits whole in a
// second buffer beside the bases.
constexpr int64_t kPiece = int64_t{1} << 22;

}  // namespace

bool isCompressedFile(const std::string& path) {
  std::FILE* f = std::fopen(path.c_str(), "rb");
  if (!f) return false;
  unsigned char magic[2] = {};
  const bool gz = std::fread(magic, 1, 2, f) == 2 && magic[0] == 0x1f && magic[1] == 0x8b;
  std::fclose(f);
  return gz;
}

// gzip members one after the other (BGZF is such a chain) through zlib,
// which tells a stream that ends in the middle of a member.
bool openDecompressed(LineReader& in, const std::string& path, std::string& why,
                      std::shared_ptr<std::string> broken) {
  struct Inflater {
    std::FILE* file = nullptr;
    z_stream z{};
    std::vector<unsigned char> input = std::vector<unsigned char>(1 << 16);
    bool inMember = false, done = false;
    ~Inflater() {
      inflateEnd(&z);
      if (file) std::fclose(file);
    }
  };
  auto inf = std::make_shared<Inflater>();
  inf->file = std::fopen(path.c_str(), "rb");
  if (!inf->file || inflateInit2(&inf->z, 15 + 16) != Z_OK) {
    why = "cannot open it as a compressed file";
    return false;
  }
  broken->clear();
  in.openPull([inf, broken](char* p, std::size_t n) -> std::size_t {
    z_stream& z = inf->z;
    z.next_out = reinterpret_cast<Bytef*>(p);
    z.avail_out = static_cast<uInt>(n);
    while (z.avail_out == n && !inf->done) {
      if (z.avail_in == 0) {
        z.avail_in = static_cast<uInt>(std::fread(inf->input.data(), 1, inf->input.size(), inf->file));
        z.next_in = inf->input.data();
        if (z.avail_in == 0) {
          // the end of the file: sound only between two members
          if (inf->inMember) *broken = "the compressed data is truncated";
          inf->done = true;
          break;
        }
      }
      inf->inMember = true;
      const int status = inflate(&z, Z_NO_FLUSH);
      if (status == Z_STREAM_END) {
        inf->inMember = false;
        inflateReset(&z);
      } else if (status != Z_OK && status != Z_BUF_ERROR) {
        *broken = "the compressed data is corrupt";
        inf->done = true;
      }
    }
    return n - z.avail_out;
  });
  return true;
}

std::vector<std::string> recordNames(const std::string& path) {
  std::vector<std::string> names;
  LineReader in;
  auto broken = std::make_shared<std::string>();
  std::string why;
  const bool indexed = exists(path + ".fai");
  if (indexed ? !in.open(path + ".fai")
              : isCompressedFile(path) ? !openDecompressed(in, path, why, broken) : !in.open(path))
    return names;
  std::string line;
  while (!in.eof()) {
    in.readLine(line);
    if (indexed) {
      names.push_back(line.substr(0, line.find('\t')));
    } else if (!line.empty() && line[0] == '>') {
      const std::size_t end = line.find_first_of(" \t", 1);
      names.push_back(line.substr(1, end == std::string::npos ? end : end - 1));
    }
  }
  return names;
}

struct FastaFile::Index {
  faidx_t* fai = nullptr;
  ~Index() {
    if (fai) fai_destroy(fai);
  }
};

FastaFile::FastaFile() = default;
FastaFile::~FastaFile() = default;

bool FastaFile::open(const std::string& path, std::string& why) {
  quietHtslib();
  path_ = path;
  index_.reset();
  records_.clear();
  const int kind = compressionOf(path);
  if (kind < 0) {
    why = "cannot open it";
    return false;
  }
  // The index would take FASTQ for FASTA: said here, as a read-through does.
  {
    LineReader head;
    auto broken = std::make_shared<std::string>();
    if (kind == 0 ? head.open(path) : openDecompressed(head, path, why, broken)) {
      const std::string first = head.readLine();
      if (!first.empty() && first[0] == '@') {
        why = "it looks like FASTQ (reads with their qualities), not FASTA";
        return false;
      }
    }
  }
  // A gzip file that is no BGZF cannot be indexed; it is read through.
  if (kind != 1) {
    const bool hadIndex = exists(path + ".fai");
    auto index = std::make_unique<Index>();
    index->fai = fai_load3(path.c_str(), nullptr, nullptr, FAI_CREATE);
    if (index->fai) {
      const int n = faidx_nseq(index->fai);
      for (int i = 0; i < n; ++i) {
        const char* name = faidx_iseq(index->fai, i);
        records_.push_back({name, static_cast<int64_t>(faidx_seq_len(index->fai, name))});
      }
      index_ = std::move(index);
      return true;
    }
    if (hadIndex) {
      why = "its index " + std::filesystem::path(path).filename().string() +
            ".fai is broken or does not belong to it";
      return false;
    }
  }
  return scan(nullptr, 0, 0, nullptr, why);
}

const FastaRecord* FastaFile::find(const std::string& name) const {
  for (const FastaRecord& r : records_)
    if (r.name == name) return &r;
  return nullptr;
}

bool FastaFile::letters(const std::string& name, int64_t from, int64_t to, const Take& take,
                        std::string& why) {
  if (!index_) return scan(&name, from, to, &take, why);
  for (int64_t at = from; at <= to; at += kPiece) {
    const int64_t end = std::min(to, at + kPiece - 1);
    hts_pos_t got = 0;
    char* piece = faidx_fetch_seq64(index_->fai, name.c_str(), at - 1, end - 1, &got);
    const bool whole = piece && got == end - at + 1;
    // An index that is out of date hands out title lines and line ends.
    const bool clean = whole && std::find(piece, piece + got, '>') == piece + got;
    if (clean) take(piece, static_cast<std::size_t>(got));
    std::free(piece);
    if (!clean) {
      why = "its index " + std::filesystem::path(path_).filename().string() +
            ".fai does not match it (or the file is truncated)";
      return false;
    }
  }
  return true;
}

bool FastaFile::scan(const std::string* wanted, int64_t from, int64_t to, const Take* take,
                     std::string& why) {
  LineReader in;
  auto broken = std::make_shared<std::string>();
  if (isCompressedFile(path_)) {
    if (!openDecompressed(in, path_, why, broken)) return false;
  } else if (!in.open(path_)) {
    why = in.error();
    return false;
  }
  std::vector<FastaRecord> found;
  bool inWanted = false, seenWanted = false, first = true;
  int64_t pos = 0;  // letters of the present record so far
  std::string piece, line;
  while (!in.eof()) {
    in.readLine(line);
    if (first && !line.empty() && line[0] == '@') {
      why = "it looks like FASTQ (reads with their qualities), not FASTA";
      return false;
    }
    first = false;
    if (!line.empty() && line[0] == '>') {
      const std::size_t end = line.find_first_of(" \t\r", 1);
      const std::string name = line.substr(1, end == std::string::npos ? end : end - 1);
      found.push_back({name, 0});
      // A name given twice is the first record of that name, as in the index.
      inWanted = wanted && !seenWanted && name == *wanted;
      seenWanted = seenWanted || inWanted;
      pos = 0;
      continue;
    }
    piece.clear();
    for (unsigned char c : line) {
      if (c == 0 || (c < ' ' && c != '\t') || c == 127) {
        why = "it holds binary data, not text";
        return false;
      }
      if (!isLetter(c)) continue;
      ++pos;
      if (inWanted && pos >= from && pos <= to) piece += static_cast<char>(c);
    }
    if (!piece.empty()) (*take)(piece.data(), piece.size());
    if (!found.empty()) found.back().length = pos;
  }
  if (!broken->empty()) {
    why = *broken;
    return false;
  }
  if (!wanted) records_ = std::move(found);
  return true;
}

}  // namespace trelvane
