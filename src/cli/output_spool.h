// output_spool.h -- a text output written as the run makes it, put into place once the run has succeeded.
#pragma once

#include <cstdio>
#include <functional>
#include <string>
#include <string_view>

#include "cli/console.h"
#include "engine/text_sink.h"

namespace trelvane::cli {

// The rows and the report of a long scan are far larger than the sequences:
// they go to a file beside their target as they come (an unnamed temporary
// file for '-' or a device), and only a run that succeeded puts them in
// place, so that a stopped or failed run leaves what stood there before.
class OutputSpool : public TextSink {
 public:
  // Rewrites whole lines on their way in, appending them to out.
  using Rewrite = std::function<void(std::string& out, std::string_view lines)>;

  // tag tells apart the spools of one target (--rows and --report alike).
  OutputSpool(std::string target, std::string tag, Rewrite rewrite = {});
  ~OutputSpool() override;
  OutputSpool(const OutputSpool&) = delete;
  OutputSpool& operator=(const OutputSpool&) = delete;

  // False with a sentence where the spool cannot be created.
  bool open(std::string* why);
  void write(std::string_view bytes) override;
  const std::string& failure() const override { return failure_; }
  // Writes head and then the spooled text to the target (standard output
  // for '-'); false with a sentence in *why.
  bool commit(const Console& c, std::string_view head, std::string* why);

 private:
  // Head and then the spooled text into `to` (named `name` in a failure),
  // or into a file created at path.
  bool copyInto(std::FILE* to, std::string_view head, const std::string& name, std::string* why);
  bool copyIntoFile(const std::string& path, std::string_view head, std::string* why);

  std::string target_;
  std::string path_;      // the spool beside the target; empty for a temporary file
  std::string headPath_;  // where head and spool are joined before the rename
  std::FILE* file_ = nullptr;
  Rewrite rewrite_;
  std::string rewritten_;
  std::string failure_;
};

}  // namespace trelvane::cli
