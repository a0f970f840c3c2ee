// report_view.cpp -- the bound of a run's texts in the window, and the part of a long report that Results shows.
#include "shell/report_view.h"

#include <algorithm>

#include "platform/memory.h"

namespace trelvane::shell {

uint64_t runTextLimit() {
  const uint64_t usable = usableMemory();
  return usable > 0 ? usable / 16 : uint64_t{1} << 30;
}

std::string reportShown(std::string report, std::size_t listingEnd, std::size_t most) {
  if (report.size() <= most) return report;
  listingEnd = std::min(listingEnd, report.size());
  const std::size_t tail = report.size() - listingEnd;
  std::size_t cut = most > tail ? std::min(listingEnd, most - tail) : 0;
  // whole lines only
  const std::size_t lineEnd = cut > 0 ? report.rfind('\n', cut - 1) : std::string::npos;
  cut = lineEnd == std::string::npos ? 0 : lineEnd + 1;
  std::string shown = report.substr(0, cut);
  shown += "[... ";
  shown += bytesText(listingEnd - cut);
  shown += " of the listing are not shown here: raise \"Display alignements with more than\" to list fewer ...]\n\n";
  shown.append(report, listingEnd, std::string::npos);
  return shown;
}

}  // namespace trelvane::shell
