// robustness_measure.cpp -- how long the main thread's work takes on the largest inputs: reading, drawing, painting.
//
// Not a test: it prints milliseconds for docs/robustness.md. Run from the build
// folder with QT_QPA_PLATFORM=offscreen: bench/robustness_measure
#include <QImage>
#include <QPainter>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

#include "state/form.h"
#include "state/state.h"
#include "input/panel.h"
#include "plots/dotplot.h"
#include "plots/graph.h"
#include "plots/picture_qt.h"

using namespace trelvane;
namespace fs = std::filesystem;

namespace {

double millis(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

void line(const char* what, double ms) { std::printf("%-58s %9.1f ms\n", what, ms); }

// Bases from a fixed linear congruential generator.
std::string bases(std::size_t n, uint32_t seed) {
  std::string s(n, 'A');
  for (char& c : s) {
    seed = seed * 1664525u + 1013904223u;
    c = "ACGT"[seed >> 30];
  }
  return s;
}

void write(const fs::path& p, const std::string& bytes) {
  std::ofstream(p, std::ios::binary) << bytes;
}

// One paint of the picture into an image of w by h pixels, as an expose
// of that size paints it (the rest of the picture is clipped).
double paint(const plots::Picture& picture, int w, int h) {
  QImage image(w, h, QImage::Format_ARGB32_Premultiplied);
  return millis([&] {
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setClipRect(0, 0, w, h);
    plots::paintPicture(painter, picture);
  });
}

}  // namespace

int main() {
  plots::ensureGuiApplication();
  const fs::path dir = fs::temp_directory_path() / "trelvane-measure";
  fs::create_directories(dir);
  auto nothing = [] {};

  // reading: a 50 MB sequence on one line, as a drop reads it
  {
    write(dir / "long.fa", bases(50'000'000, 1));
    ComparisonState st;
    st.open();
    Form form;
    line("read a 50 MB single-line sequence (litlongue)",
         millis([&] { openFile(st, form, Route::GBLongDrop, (dir / "long.fa").string(), nothing); }));
  }

  // the profile of 2 Mb: a result file read back, drawn, painted
  {
    const int32_t n = 2'000'000;
    std::string profile(n, '\0');
    uint32_t seed = 7;
    for (char& c : profile) {
      seed = seed * 1664525u + 1013904223u;
      c = static_cast<char>(3 + (seed >> 24) % 250);
    }
    write(dir / "profile.txt", "Trelvane comparison\nWindow size=30\nMax=25\nMean=12\nSD=3\n"
                               "Mean H0=11\nSD H0=2\nMax H0=20\nSD low=2.9\nSD up=3.1\nBases=" +
                                   std::to_string(n) + "\nBases1=5000\n#\n" + profile);
    ComparisonState st;
    st.open();
    Form form;
    int graphs = 0;
    line("read a 2 Mb result file and draw it (litprevious + Graph)",
         millis([&] { openFile(st, form, Route::GBLongDrop, (dir / "profile.txt").string(), [&] {
                        ++graphs;
                        Graph(st, form);
                      }); }));
    line("draw the 2 Mb profile again (Graph)", millis([&] { Graph(st, form); }));
    if (st.pct) line("paint it on the canvas (Canvas1_Paint)", paint(*st.pct, form.Canvas1Width, form.Canvas1Height));
    form.Canvas1Width = 1600;
    form.Canvas1Height = 1000;
    line("draw it for a 1600 x 1000 canvas (Graph)", millis([&] { Graph(st, form); }));
    if (st.pct) line("paint it on a 1600 x 1000 canvas", paint(*st.pct, 1600, 1000));
  }

  // a result whose Bases= is the largest count the reader takes, with a
  // byte section of a few bytes
  {
    write(dir / "huge.txt", "Trelvane comparison\nWindow size=30\nBases=2000000000\n#\n\x05\x06");
    ComparisonState st;
    st.open();
    Form form;
    line("read and draw a result of Bases=2000000000 with 2 bytes",
         millis([&] { openFile(st, form, Route::GBLongDrop, (dir / "huge.txt").string(), [&] { Graph(st, form); }); }));
  }

  // the dot plot of 100 kb by 10 kb
  {
    write(dir / "dl.fa", ">l\n" + bases(100'000, 3));
    write(dir / "ds.fa", ">s\n" + bases(10'000, 4));
    ComparisonState st;
    st.open();
    Form form;
    openFile(st, form, Route::BevelButton0, (dir / "dl.fa").string(), nothing);
    openFile(st, form, Route::BevelButton1, (dir / "ds.fa").string(), nothing);
    plots::DotPlot dots;
    line("dot plot of 100 kb by 10 kb (PBDot_Action)", millis([&] { dots = plots::PBDot_Action(st, form); }));
    std::printf("  (window %d x %d)\n", dots.size.width, dots.size.height);
    if (dots.picture) {
      line("paint a 1600 x 1000 view of the dot plot", paint(*dots.picture, 1600, 1000));
      line("paint the whole dot plot canvas at once", paint(*dots.picture, dots.size.canvasWidth, dots.size.canvasHeight));
    }
  }

  fs::remove_all(dir);
  return 0;
}
