// export_tracks.cpp -- File > Export: genome-browser tracks and lists of the present result.
#include <QFileDialog>

#include <fstream>

#include "plots/graph_controls.h"
#include "shell/window1.h"
#include "tracks/bedgraph.h"
#include "tracks/bigwig.h"
#include "tracks/cpg_islands.h"
#include "tracks/segments.h"

namespace trelvane::shell {
namespace {

// The tracks in the drawing's unit, on the record's coordinates.
tracks::TrackOptions trackOptions(const Form& form) {
  tracks::TrackOptions o;
  o.unit = form.CBFreqIB ? tracks::Unit::Fraction : tracks::Unit::Score;
  o.cpg = form.CBCPG;
  return o;
}

bool writeText(const std::string& path, const std::string& text, std::string* why) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << text;
  out.close();
  if (out) return true;
  *why = "cannot write " + path;
  return false;
}

}  // namespace

void Window1::FileExport_Action(Export what) {
  const ComparisonState& st = *st_;
  const bool islands = what == Export::IslandsBed || what == Export::IslandsGff;
  if (islands ? st.nbbases == 0 || st.m0.size() == 0 : st.windgraph == 0 || st.m2.isNil()) {
    form_.Message = islands ? "Nothing to export: read a longest sequence first" : "Nothing to export: no result yet";
    refresh();
    return;
  }
  static const char* names[] = {"profile.bedGraph", "profile.bw", "random",      "segments.bed",
                                "segments.tsv",     "islands.bed", "islands.gff3"};
  std::optional<std::string> path;
  if (saveDialog) {
    path = saveDialog();
  } else {
    const QString chosen = QFileDialog::getSaveFileName(this, QStringLiteral("Export"),
                                                        QString::fromLatin1(names[static_cast<int>(what)]));
    if (!chosen.isEmpty()) path = chosen.toStdString();
  }
  if (!path) return;

  const tracks::TrackOptions o = trackOptions(form_);
  std::string why;
  bool ok = true;
  switch (what) {
    case Export::BedGraph: ok = writeText(*path, tracks::profileBedGraph(st, o), &why); break;
    case Export::BigWig: ok = tracks::writeProfileBigWig(*path, st, o, &why); break;
    case Export::RandomTracks:
      for (tracks::ExpectationLine line : tracks::kExpectationLines) {
        const auto text = tracks::expectationBedGraph(st, o, line);
        if (!text) {
          ok = false;
          why = "The result holds no random expectation (a CpG run)";
          break;
        }
        const std::string file = *path + "." + std::string(tracks::expectationSuffix(line)) + ".bedGraph";
        if (!(ok = writeText(file, *text, &why))) break;
      }
      break;
    case Export::SegmentsBed:
    case Export::SegmentsTsv: {
      // the rule of the Pref tab, as the shading calls them
      const std::optional<tracks::SegmentRule> rule = segmentRule(form_, &why);
      const std::optional<double> threshold = rule ? tracks::thresholdScore(st, *rule, &why) : std::nullopt;
      if (!threshold) {
        ok = false;
        break;
      }
      const auto found = tracks::callSegments(st, *rule, *threshold);
      ok = writeText(*path, what == Export::SegmentsBed ? tracks::segmentsBed(st, found, o)
                                                         : tracks::segmentsTsv(st, found, o), &why);
      break;
    }
    case Export::IslandsBed:
    case Export::IslandsGff: {
      const auto found = tracks::findIslands(st, tracks::IslandRule{});
      ok = writeText(*path, what == Export::IslandsBed ? tracks::islandsBed(st, found, o)
                                                        : tracks::islandsGff(st, found, o), &why);
      break;
    }
  }
  form_.Message = ok ? "Exported to " + *path : why;
  refresh();
}

}  // namespace trelvane::shell
