// memory_limit_test.cpp -- a window in a process of 3 GB of address space: a run that would list every window pair ends cleanly.
#include <sys/resource.h>

#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabWidget>

#include "platform/memory.h"
#include "shell/report_view.h"
#include "shell_fixture.h"

namespace trelvane::shell::test {
namespace {

constexpr uint64_t kLimit = uint64_t{3} << 30;

class MemoryLimit : public ShellTest {
 protected:
  // The example at window size ws, run to its end.
  void runExample(const char* ws) {
    w().runSeed = [] { return uint64_t{1}; };
    choose(0, examplePath("HUMHBB.fa"));
    choose(1, examplePath("V00508.fa"));
    typeInto("EFWS", ws);
    leave("EFWS");
    w().PBRUN_Action();
    ASSERT_TRUE(waitFor([&] { return !w().state().running && w().PBRUN->text() == "Run"; }));
  }
};

// The example at a window of 255 with the default threshold would list
// hundreds of gigabytes; the bound taken from the process's limit ends the
// run first, with its cause, and the window lives on.
TEST_F(MemoryLimit, AWideWindowEndsCleanlyWithinTheProcessLimit) {
  ASSERT_EQ(usableMemory(), kLimit);
  EXPECT_EQ(runTextLimit(), kLimit / 16);
  bool warned = false;
  w().confirmRun = [&](const std::string&) { return warned = true; };
  runExample("255");
  EXPECT_TRUE(warned);
  EXPECT_EQ(w().form().Message.rfind("The listing and rows outgrew 192 MB", 0), 0u) << w().form().Message;
  EXPECT_LE(w().Results->toPlainText().size(), static_cast<qsizetype>(kResultsShown + 4096));
  EXPECT_TRUE(w().TabPanel1->isEnabled());
}

// Without the bound the run meets the end of the address space: wherever
// an allocation fails, on the scan's threads or the run's own, the run ends
// with "Out of memory" and the program goes on.
TEST_F(MemoryLimit, OutOfMemoryOnAnyThreadEndsTheRun) {
  w().confirmRun = [](const std::string&) { return true; };
  w().textLimit = uint64_t{1} << 40;
  runExample("255");
  EXPECT_EQ(w().form().Message,
            "Out of memory: raise the listing's identities threshold (now 20) or narrow the analysis range");
  // and the next run works
  runExample("30");
  EXPECT_EQ(w().form().Message, "End...");
}

}  // namespace
}  // namespace trelvane::shell::test

int main(int argc, char** argv) {
  // The whole process, Qt included, lives within kLimit of address space.
  const rlimit limit{trelvane::shell::test::kLimit, trelvane::shell::test::kLimit};
  if (setrlimit(RLIMIT_AS, &limit) != 0) return 1;
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
