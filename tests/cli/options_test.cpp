// options_test.cpp -- the command line of compare and cpg: values kept as typed, usage errors.
#include "cli/options.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace trelvane::cli {
namespace {

ComparisonOptions parseOk(bool cpg, const std::vector<std::string>& args) {
  ComparisonOptions o;
  std::string error;
  EXPECT_TRUE(parseComparisonOptions(cpg, args, o, &error)) << error;
  return o;
}

std::string parseError(bool cpg, const std::vector<std::string>& args) {
  ComparisonOptions o;
  std::string error;
  EXPECT_FALSE(parseComparisonOptions(cpg, args, o, &error));
  return error;
}

TEST(ComparisonOptions, FieldValuesAreKeptAsTypedInBothForms) {
  ComparisonOptions o = parseOk(false, {"L.fa", "--window", "0300", "S.fa", "--from=abc",
                                        "--to", "MAX", "--resamplings", "", "--identities",
                                        "-5"});
  EXPECT_EQ(o.longPath, "L.fa");
  EXPECT_EQ(o.shortPath, "S.fa");
  EXPECT_EQ(*o.window, "0300");
  EXPECT_EQ(*o.from, "abc");
  EXPECT_EQ(*o.to, "MAX");
  EXPECT_EQ(*o.resamplings, "");
  EXPECT_EQ(*o.identities, "-5");  // a value may begin with a minus
  EXPECT_FALSE(o.cpg);
}

TEST(ComparisonOptions, FlagsOutputsAndModel) {
  ComparisonOptions o = parseOk(
      false, {"L", "S", "--long-complement", "--long-reverse", "--long-remove-n",
              "--short-complement", "--short-reverse", "--short-remove-n", "--show-long",
              "--show-short", "--quiet", "--report", "-", "--rows", "r.txt", "--result",
              "o.txt", "--svg", "p.svg", "--pdf", "p.pdf", "--png", "p.png", "--dotplot",
              "d.PNG", "--model", "general", "--aligned", "a1.txt", "a2.txt", "--seed", "42"});
  EXPECT_TRUE(o.longComplement && o.longReverse && o.longRemoveN);
  EXPECT_TRUE(o.shortComplement && o.shortReverse && o.shortRemoveN);
  EXPECT_TRUE(o.showLong && o.showShort && o.quiet);
  EXPECT_EQ(*o.report, "-");
  EXPECT_EQ(*o.rows, "r.txt");
  EXPECT_EQ(*o.result, "o.txt");
  EXPECT_EQ(*o.svg, "p.svg");
  EXPECT_EQ(*o.pdf, "p.pdf");
  EXPECT_EQ(*o.png, "p.png");
  EXPECT_EQ(*o.dotplot, "d.PNG");
  EXPECT_EQ(*o.model, 2);
  EXPECT_EQ(*o.aligned1, "a1.txt");
  EXPECT_EQ(*o.aligned2, "a2.txt");
  EXPECT_EQ(*o.seed, 42u);
}

TEST(ComparisonOptions, DefaultsLeaveEveryFieldUntouched) {
  ComparisonOptions o = parseOk(true, {"lambda.fa"});
  EXPECT_TRUE(o.cpg);
  EXPECT_EQ(o.longPath, "lambda.fa");
  EXPECT_TRUE(o.shortPath.empty());
  EXPECT_FALSE(o.window || o.from || o.to || o.resamplings || o.identities || o.seed);
  EXPECT_FALSE(o.report || o.rows || o.result || o.model);
}

TEST(ComparisonOptions, DoubleDashEndsOptions) {
  ComparisonOptions o = parseOk(false, {"--quiet", "--", "--odd-name.fa", "-"});
  EXPECT_EQ(o.longPath + " " + o.shortPath, "--odd-name.fa -");
}

TEST(ComparisonOptions, SeedTakesTheWholeUnsignedRange) {
  EXPECT_EQ(*parseOk(true, {"L", "--seed=18446744073709551615"}).seed, UINT64_MAX);
  EXPECT_EQ(*parseOk(true, {"L", "--seed", "0"}).seed, 0u);
  for (const char* bad : {"18446744073709551616", "-1", "12x", ""})
    EXPECT_NE(parseError(true, {"L", "--seed", bad}).find("invalid seed"), std::string::npos) << bad;
}

TEST(ComparisonOptions, UsageErrors) {
  struct Case { bool cpg; std::vector<std::string> args; const char* error; };
  const Case cases[] = {
      {false, {"L", "S", "--frobnicate"}, "unrecognized option '--frobnicate'"},
      {false, {"L", "S", "-q"}, "invalid option -- 'q'"},
      {false, {"L", "S", "--window"}, "option '--window' requires an argument"},
      {false, {"L", "S", "--quiet=yes"}, "option '--quiet' doesn't allow an argument"},
      {false, {}, "missing operand: LONG and SHORT"},
      {false, {"L"}, "missing operand: SHORT"},
      {true, {}, "missing operand: LONG"},
      {true, {"L", "S"}, "extra operand 'S'"},
      {false, {"L", "S", "T"}, "extra operand 'T'"},
      {false, {"L", "S", "--model", "jc69"}, "invalid model 'jc69': expected identity, tstv or general"},
      {false, {"L", "S", "--model", "tstv"}, "--model tstv and --model general need --aligned FILE1 FILE2"},
      {false, {"L", "S", "--aligned", "a", "b"}, "--aligned needs --model tstv or --model general"},
      {false, {"L", "S", "--model", "tstv", "--aligned", "a"}, "option '--aligned' requires 2 arguments"},
      {false, {"L", "S", "--dotplot", "dots.jpg"}, "--dotplot needs a file name ending in .svg, .pdf or .png"},
  };
  for (const Case& c : cases) EXPECT_EQ(parseError(c.cpg, c.args), c.error);
}

TEST(ComparisonOptions, HelpStopsTheParse) {
  ComparisonOptions o;
  std::string error;
  ASSERT_TRUE(parseComparisonOptions(false, {"--help", "--frobnicate"}, o, &error));
  EXPECT_TRUE(o.help);
  EXPECT_NE(comparisonHelp().find("Usage: trelvane-cli compare LONG SHORT"), std::string::npos);
}

TEST(ComparisonOptions, PictureFormatByExtension) {
  const std::pair<const char*, const char*> rows[] = {{"a.svg", "svg"},     {"dir.v2/A.PDF", "pdf"}, {"x.png", "png"},
                                                      {"dir.svg/plot", ""}, {"-", ""},             {"plot.svgz", ""}};
  for (auto [file, format] : rows) EXPECT_EQ(pictureFormatOf(file), format) << file;
}

}  // namespace
}  // namespace trelvane::cli
