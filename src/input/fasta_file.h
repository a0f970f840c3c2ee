// fasta_file.h -- FASTA files through htslib: compressed bytes, the records and the letters of a region.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace trelvane {

class LineReader;

// True where the file begins as gzip does (plain gzip and BGZF alike).
bool isCompressedFile(const std::string& path);

// Opens the decompressed bytes of a gzip or BGZF file on in, for the reader's
// line rules. A stream that breaks off (a truncated or corrupt file) ends
// there, and *broken then tells why; it stays "" for a sound file.
bool openDecompressed(LineReader& in, const std::string& path, std::string& why,
                      std::shared_ptr<std::string> broken);

// The record names of a file, for a chooser: those of its .fai index where
// one stands beside it, else its title lines read through (none is built).
std::vector<std::string> recordNames(const std::string& path);

struct FastaRecord {
  std::string name;    // the first word of its title line
  int64_t length = 0;  // its letters, every printable character of its lines
};

// The records of a FASTA file (plain, gzip or BGZF) and the letters of any
// stretch of one. It uses the .fai index beside the file, built there where
// missing and the folder is writable; without one it reads the file through.
class FastaFile {
 public:
  FastaFile();
  ~FastaFile();
  FastaFile(const FastaFile&) = delete;
  FastaFile& operator=(const FastaFile&) = delete;

  // False with a sentence in why where the file is no FASTA to take records
  // from (FASTQ, binary, a truncated stream, a broken index).
  bool open(const std::string& path, std::string& why);
  const std::vector<FastaRecord>& records() const { return records_; }
  const FastaRecord* find(const std::string& name) const;

  // Gives take the letters of record name from `from` to `to` (1-based,
  // inclusive; checked by the caller against its length), in file order and
  // in pieces. False with why where the file no longer gives them.
  using Take = std::function<void(const char* letters, std::size_t n)>;
  bool letters(const std::string& name, int64_t from, int64_t to, const Take& take,
               std::string& why);

 private:
  bool scan(const std::string* wanted, int64_t from, int64_t to, const Take* take,
            std::string& why);

  struct Index;
  std::string path_;
  std::unique_ptr<Index> index_;
  std::vector<FastaRecord> records_;
};

}  // namespace trelvane
