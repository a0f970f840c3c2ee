// kernel_option_test.cpp -- --kernel and --threads: parsing, refusals, and the same bytes from every choice.
#include <string>
#include <vector>

#include "cli/options.h"
#include "cli_harness.h"
#include "engine/kernels/scan_kernels.h"

namespace trelvane::cli::testing {
namespace {

TEST(KernelOption, NamesAndThreadCountsAreTaken) {
  ComparisonOptions o;
  std::string error;
  ASSERT_TRUE(parseComparisonOptions(false, {"L", "S", "--kernel", "scalar", "--threads=1"}, o, &error)) << error;
  EXPECT_EQ(*o.kernel, "scalar");
  EXPECT_EQ(*o.threads, 1);
  ASSERT_TRUE(parseComparisonOptions(true, {"L", "--kernel=generic", "--threads", "0"}, o, &error));
  EXPECT_EQ(*o.kernel, "generic");
  EXPECT_EQ(*o.threads, 0);
  ASSERT_TRUE(parseComparisonOptions(false, {"L", "S"}, o, &error));
  EXPECT_FALSE(o.kernel.has_value());
  EXPECT_FALSE(o.threads.has_value());
}

TEST(KernelOption, BadNamesAndCountsAreUsageErrors) {
  ComparisonOptions o;
  std::string error;
  EXPECT_FALSE(parseComparisonOptions(false, {"L", "S", "--kernel", "neon"}, o, &error));
  EXPECT_EQ(error, "invalid kernel 'neon': expected auto, scalar, generic, sse2, avx2, avx512");
  EXPECT_FALSE(parseComparisonOptions(false, {"L", "S", "--kernel", "Scalar"}, o, &error));
  for (const char* bad : {"", "-1", "two", "1.5", "1025", "99999"}) {
    EXPECT_FALSE(parseComparisonOptions(false, {"L", "S", "--threads", bad}, o, &error)) << bad;
    EXPECT_EQ(error, std::string("invalid thread count '") + bad +
                         "': expected a whole number from 0 (every core) to 1024");
  }
  EXPECT_FALSE(parseComparisonOptions(false, {"L", "S", "--threads"}, o, &error));
  EXPECT_EQ(error, "option '--threads' requires an argument");
  EXPECT_NE(comparisonHelp().find("--kernel NAME"), std::string::npos);
  EXPECT_NE(comparisonHelp().find("--threads N"), std::string::npos);
}

class KernelRun : public CliTest {};

// The golden run with alignments listed, through every kernel this processor
// has, on one thread and on two: the same three files.
TEST_F(KernelRun, EveryKernelWritesTheGoldenBytes) {
  for (const ScanKernel& kernel : scanKernels()) {
    for (const char* threads : {"1", "2"}) {
      std::vector<std::string> args = s3Args();
      args.insert(args.end(), {"--kernel", kernel.name, "--threads", threads});
      for (const char* kind : {"report", "rows", "result"}) args.insert(args.end(), {std::string("--") + kind, path(kind)});
      Captured r = runCli(args);
      ASSERT_EQ(r.status, 0) << r.err;
      for (const char* kind : {"report", "rows", "result"})
        EXPECT_TRUE(readFile(path(kind)) == readFile(goldenFile(std::string("S3.") + kind)))
            << kernel.name << " on " << threads << " thread(s): S3." << kind << " differs";
    }
  }
}

}  // namespace
}  // namespace trelvane::cli::testing
