// annotation_test.cpp -- gene models from GFF3 and BED agree, what stretches overlap, the readers'
// errors, and the stacked figure's placing of genes, segments and ticks.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "annotation/annotation.h"
#include "plots/stack.h"

namespace trelvane::testing {
namespace {

using annotation::GeneModel;
using annotation::Span;

std::string spans(const std::vector<Span>& v) {
  std::ostringstream out;
  for (Span s : v) out << s.start << "-" << s.end << " ";
  return out.str();
}

std::string describe(const std::vector<GeneModel>& models) {
  std::ostringstream out;
  for (const GeneModel& m : models)
    out << m.name << " " << m.strand << " " << m.extent.start << "-" << m.extent.end << " | exons " << spans(m.exons)
        << "| cds " << spans(m.cds) << "| utrs " << spans(m.utrs) << "\n";
  return out.str();
}

std::string fileWith(const std::string& name, const std::string& text) {
  const auto path = std::filesystem::temp_directory_path() / ("trelvane-annotation-" + name);
  std::ofstream(path, std::ios::binary) << text;
  return path.string();
}

// Two genes on chr1: HBB (two exons, coding from 151 to 1400, UTRs left to be
// derived) and HBD (given as CDS and UTR lines only, on the minus strand); a
// repeat and a feature of chr2 that must not show.
const char kGff[] =
    "##gff-version 3\n"
    "chr1\tx\tgene\t101\t1500\t.\t+\t.\tID=g1;Name=HBB\n"
    "chr1\tx\tmRNA\t101\t1500\t.\t+\t.\tID=t1;Parent=g1\n"
    "chr1\tx\texon\t101\t400\t.\t+\t.\tParent=t1\n"
    "chr1\tx\texon\t1001\t1500\t.\t+\t.\tParent=t1\n"
    "chr1\tx\tCDS\t151\t400\t.\t+\t0\tParent=t1\n"
    "chr1\tx\tCDS\t1001\t1400\t.\t+\t2\tParent=t1\n"
    "chr1\tx\trepeat_region\t1600\t1700\t.\t.\t.\tID=r1\n"
    "chr1\tx\tgene\t2001\t2600\t.\t-\t.\tID=g2;Name=HBD\n"
    "chr1\tx\tmRNA\t2001\t2600\t.\t-\t.\tID=t2;Parent=g2\n"
    "chr1\tx\tthree_prime_UTR\t2001\t2100\t.\t-\t.\tParent=t2\n"
    "chr1\tx\tCDS\t2101\t2500\t.\t-\t0\tParent=t2\n"
    "chr1\tx\tfive_prime_UTR\t2501\t2600\t.\t-\t.\tParent=t2\n"
    "chr2\tx\tgene\t1\t50\t.\t+\t.\tID=g3;Name=OTHER\n"
    "##FASTA\n>chr1\nACGT\n";

// The same two models as BED12 lines (0-based, blocks relative to the start).
const char kBed[] =
    "track name=genes\n"
    "chr1\t100\t1500\tHBB\t0\t+\t150\t1400\t0\t2\t300,500,\t0,900,\n"
    "chr1\t2000\t2600\tHBD\t0\t-\t2100\t2500\t0\t1\t600,\t0,\n"
    "chr2\t0\t50\tOTHER\t0\t+\n";

TEST(Annotation, Gff3AndBed12GiveTheSameModels) {
  // HBD's exons come from its touching CDS and UTR lines, joined.
  const std::string expected =
      "HBB + 100-1500 | exons 100-400 1000-1500 | cds 150-400 1000-1400 | utrs 100-150 1400-1500 \n"
      "HBD - 2000-2600 | exons 2000-2600 | cds 2100-2500 | utrs 2000-2100 2500-2600 \n";
  std::vector<GeneModel> gff, bed;
  std::string why;
  ASSERT_TRUE(annotation::readAnnotation(fileWith("a.gff3", kGff), "chr1", gff, &why)) << why;
  ASSERT_TRUE(annotation::readAnnotation(fileWith("a.bed", kBed), "chr1", bed, &why)) << why;
  EXPECT_EQ(describe(gff), expected);
  EXPECT_EQ(describe(bed), expected);
}

TEST(Annotation, StretchesAreNamedAfterWhatTheyOverlap) {
  std::vector<GeneModel> models;
  std::string why;
  ASSERT_TRUE(annotation::readAnnotation(fileWith("b.gff3", kGff), "chr1", models, &why)) << why;
  const std::pair<Span, const char*> table[] = {
      {{120, 140}, "UTR"},          // 5' UTR of HBB
      {{140, 160}, "exon"},         // across the start codon: the coding part wins
      {{400, 1000}, "non-coding"},  // the intron, up to the second exon's first base
      {{400, 1001}, "exon"},
      {{1450, 1460}, "UTR"},
      {{1500, 2000}, "non-coding"},  // between the genes, the repeat included
      {{2550, 2700}, "UTR"},
  };
  for (auto [span, name] : table)
    EXPECT_STREQ(annotation::overlapName(annotation::overlapOf(models, span)), name) << span.start << "-" << span.end;
  // A model without a coding part (a BED6 line) counts as exon throughout.
  ASSERT_TRUE(annotation::readAnnotation(fileWith("c.bed", "chr1 10 20 rna 0 +\n"), "chr1", models, &why)) << why;
  EXPECT_STREQ(annotation::overlapName(annotation::overlapOf(models, {15, 16})), "exon");
}

TEST(Annotation, BadFilesAreRefusedWithTheLineAndWhy) {
  std::vector<GeneModel> models;
  std::string why;
  const std::pair<std::string, std::string> table[] = {
      {fileWith("d.gff3", "##gff-version 3\nchr1\tx\tgene\t10\n"), ":2: a GFF3 line has 9 columns separated by tabs, this one 4"},
      {fileWith("e.gff3", "chr1\tx\tgene\t0\t5\t.\t+\t.\tID=a\n"),
       ":1: start and end are 1-based positions with start <= end, not '0' and '5'"},
      {fileWith("f.bed", "chr1\t10\t20\tx\t0\t+\t10\t20\t0\t2\t5,\t0,\n"), ":1: blockCount, blockSizes and blockStarts do not agree"},
      {fileWith("g.bed", "chrX\t1\t2\nchrY\t1\t2\n"), " has no feature on chr1 (it names chrX, chrY)"},
  };
  for (const auto& [path, tail] : table) {
    EXPECT_FALSE(annotation::readAnnotation(path, "chr1", models, &why));
    EXPECT_EQ(why.substr(why.size() - tail.size()), tail) << why;
  }
  EXPECT_FALSE(annotation::readAnnotation("/nonexistent/a.bed", "chr1", models, &why));
  EXPECT_EQ(why, "cannot read the annotation /nonexistent/a.bed");
}

// With 1000 bases over 1000 pixels from x = 120, base c lies at x = 120 + c.
TEST(StackFigure, GenesSegmentsAndTicksStandAtTheirPositions) {
  plots::StackFigure f;
  f.from = 0;
  f.to = 1000;
  f.annotated = true;
  f.genes.push_back({"HBB", '+', 100, 600, {{100, 200, 0}}, {{500, 600, 0}}});
  plots::StackPanel p;
  p.name = "mouse";
  p.values = {{0, 300, 0.5}, {300, 301, 1.0}, {700, 1000, 0.25}};
  p.expectations = {{0, 1000, 0.25, 0.5, 0.75}};
  p.segments = {{300, 400, plots::SegmentKind::NonCoding}};
  f.panels = {p};
  const plots::Picture pic = plots::drawStack(f, 1144);

  std::vector<std::string> rects, labels;
  int curve = 0;
  for (const plots::Shape& s : pic.Objects.items) {
    if (auto* r = std::get_if<plots::RectShape>(&s)) {
      std::ostringstream o;
      o << r->X << "+" << r->Width << "x" << r->Height << " " << int(r->FillColor.r) << "," << int(r->FillColor.g);
      rects.push_back(o.str());
    } else if (auto* t = std::get_if<plots::StringShape>(&s)) {
      labels.push_back(t->Text);
    } else if (auto* c = std::get_if<plots::CurveShape>(&s); c && c->BorderColor == plots::RGB{0, 0, 0} && c->X2 == c->X + 1) {
      ++curve;
    }
  }
  // background, the legend's three boxes, the exon, the UTR, the segment;
  // ticks every 200 bases, at most one a 110 pixels
  const std::vector<std::string> expectedRects = {"0+1144x" + std::to_string(pic.height) + " 255,255",
                                                  "621+16x10 140,140", "675+16x10 140,220", "722+16x10 255,165",
                                                  "220+100x16 40,40", "620+100x8 40,40", "420+100x96 255,165"};
  EXPECT_EQ(rects, expectedRects);
  // Columns 0 to 301 and 700 to 1000 hold values; the pen lifts between.
  EXPECT_EQ(curve, 301 + 300);
  for (const char* label : {"HBB", "mouse", "200", "600", "1,000", "random max"})
    EXPECT_NE(std::find(labels.begin(), labels.end(), label), labels.end()) << label;
  EXPECT_EQ(plots::groupedNumber(5225464), "5,225,464");
  EXPECT_EQ(plots::groupedNumber(999), "999");
}

}  // namespace
}  // namespace trelvane::testing
