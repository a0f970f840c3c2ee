// annotation.h -- gene models of a reference record read from GFF3 or BED, and what a stretch overlaps.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace trelvane::annotation {

// Bases [start, end) of the record, 0-based and half-open as in BED.
struct Span {
  int64_t start = 0, end = 0;
  bool operator==(const Span&) const = default;
};

// One transcript (or a gene without any): its extent, exons and coding part.
struct GeneModel {
  std::string name;
  char strand = '.';  // '+', '-' or '.'
  Span extent;
  std::vector<Span> exons;  // sorted, not overlapping
  std::vector<Span> cds;    // sorted, not overlapping; empty for a non-coding model
  std::vector<Span> utrs;   // sorted: given as such, or the exons' parts outside the CDS
};

// What a stretch overlaps, the first that applies: a coding exon (or an exon
// of a non-coding model), an UTR, else nothing of a gene model.
enum class Overlap { Exon, UTR, NonCoding };
Overlap overlapOf(const std::vector<GeneModel>& models, Span stretch);
const char* overlapName(Overlap o);  // "exon", "UTR", "non-coding"

// The models of record `seqid` in a GFF3 file (gene, mRNA or transcript,
// exon, CDS, five_prime_UTR, three_prime_UTR; by their ID and Parent) or a
// BED file (3 to 12 columns; blocks as exons, thickStart-thickEnd as the
// CDS), told apart by the extension (.gff, .gff3, .bed, with .gz no) and
// else by a "##gff-version" first line. An empty seqid takes the one
// sequence the file names (refused where it names several), told in *chosen. False with one line in *why: the
// file cannot be read, a line is malformed (its number and why), or no
// feature lies on seqid (naming those that the file holds).
bool readAnnotation(const std::string& path, const std::string& seqid, std::vector<GeneModel>& models,
                    std::string* why, std::string* chosen = nullptr);

namespace detail {

// The readers of the two formats over a text; line numbers in why.
bool readGff3(const std::string& text, const std::string& seqid, std::vector<GeneModel>& models,
              std::vector<std::string>& seqids, std::string* why);
bool readBed(const std::string& text, const std::string& seqid, std::vector<GeneModel>& models,
             std::vector<std::string>& seqids, std::string* why);

// Sorts and merges spans, and fills utrs from the exons outside the CDS when
// none were given; the extent covers every part.
void complete(GeneModel& m);

std::vector<std::string> splitTabs(const std::string& line);
bool wholeNumber(const std::string& text, int64_t& value);

}  // namespace detail
}  // namespace trelvane::annotation
