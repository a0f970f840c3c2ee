// stack_window_test.cpp -- the stacked figure's window: what the pointer reads on a panel, and a
// request that cannot be drawn opens nothing.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include <QApplication>
#include <QMouseEvent>

#include "shell/stack_window.h"
#include "shell/widgets.h"
#include "shell_fixture.h"

namespace trelvane::testing {
namespace {

std::string write(const std::string& name, const std::string& text) {
  const auto path = std::filesystem::temp_directory_path() / ("trelvane-stack-" + name);
  std::ofstream(path, std::ios::binary) << text;
  return path.string();
}

// A profile track of 1000 positions (0.5, then 0.9 over [400, 600)) with
// its random expectation (mean 0.5, mean + 2 SD 0.6), one gene on it.
TEST(StackWindow, ThePointerReadsPositionIdentityAndDistanceFromTheRandomMean) {
  shell::test::qtApp();
  const std::string track = write("p.bedGraph", "chr1\t0\t400\t0.5\nchr1\t400\t600\t0.9\nchr1\t600\t1000\t0.5\n");
  write("p.mean.bedGraph", "chr1\t0\t1000\t0.5\n");
  write("p.upper.bedGraph", "chr1\t0\t1000\t0.6\n");
  write("p.max.bedGraph", "chr1\t0\t1000\t0.62\n");
  stack::StackRequest request;
  request.panels = {{track, "mouse"}};
  request.annotation = write("g.bed", "chr1\t450\t550\tGENE\t0\t+\n");
  request.rule.minLength = 50;
  QString why;
  shell::StackWindow* w = shell::StackWindow::open(request, &why);
  ASSERT_NE(w, nullptr) << why.toStdString();
  EXPECT_EQ(w->windowTitle(), "Identity along chr1");
  EXPECT_EQ(w->canvas()->size(), QSize(w->picture().width, w->picture().height));
  // 1000 positions over 856 pixels from x = 120; the panel lies below the
  // title (52) and the genes (74).
  EXPECT_EQ(w->readOut({120 + 428, 130 + 40}),
            "mouse: position 501, identity 0.900, 8.0 SD above the random mean");
  EXPECT_EQ(w->readOut({121, 130 + 40}), "mouse: position 2, identity 0.500, 0.0 SD above the random mean");
  EXPECT_EQ(w->readOut({60, 130 + 40}), "");   // the panel's name and scale
  EXPECT_EQ(w->readOut({500, 100}), "");       // the genes
  // The line under the figure follows the pointer.
  QMouseEvent move(QEvent::MouseMove, QPointF(548, 170), QPointF(548, 170), Qt::NoButton, Qt::NoButton, Qt::NoModifier);
  QApplication::sendEvent(w->canvas(), &move);
  EXPECT_EQ(w->statusText(), "mouse: position 501, identity 0.900, 8.0 SD above the random mean");
  w->close();

  request.panels = {{write("empty.bedGraph", "track name=x\n"), ""}};
  EXPECT_EQ(shell::StackWindow::open(request, &why), nullptr);
  EXPECT_EQ(why, "the panels hold no scored position");
}

}  // namespace
}  // namespace trelvane::testing
