// output_spool.cpp -- spooling an output beside its target, then renaming it or copying it out.
#include "cli/output_spool.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <utility>
#include <vector>

#include "platform/replace_file.h"

namespace trelvane::cli {

namespace {

std::string cannotWrite(const std::string& name) {
  return (name == "-" ? std::string("cannot write to standard output") : "cannot write " + name) +
         ": " + std::strerror(errno);
}

// A target written in place through a temporary spool: standard output, or
// something that exists and is no regular file (a device, a pipe).
bool writtenInPlace(const std::string& target) {
  if (target == "-") return true;
  std::error_code ec;
  const auto status = std::filesystem::status(target, ec);
  return std::filesystem::exists(status) && !std::filesystem::is_regular_file(status);
}

}  // namespace

OutputSpool::OutputSpool(std::string target, std::string tag, Rewrite rewrite)
    : target_(std::move(target)), rewrite_(std::move(rewrite)) {
  if (writtenInPlace(target_)) return;
  path_ = stagingPathFor(target_) + "." + tag;
  headPath_ = path_ + "-head";
}

OutputSpool::~OutputSpool() {
  if (file_) std::fclose(file_);
  if (!path_.empty()) removeQuietly(path_);
  if (!headPath_.empty()) removeQuietly(headPath_);
}

bool OutputSpool::open(std::string* why) {
  if (!path_.empty()) removeQuietly(path_);
  file_ = path_.empty() ? std::tmpfile() : std::fopen(path_.c_str(), "w+b");
  if (file_) return true;
  *why = path_.empty() ? std::string("cannot create a temporary file for ") + target_ + ": " +
                             std::strerror(errno)
                       : cannotWrite(target_);
  return false;
}

void OutputSpool::write(std::string_view bytes) {
  if (!failure_.empty() || !file_) return;
  if (rewrite_) {
    rewritten_.clear();
    rewrite_(rewritten_, bytes);
    bytes = rewritten_;
  }
  if (!bytes.empty() && std::fwrite(bytes.data(), 1, bytes.size(), file_) != bytes.size())
    failure_ = cannotWrite(target_);
}

bool OutputSpool::copyInto(std::FILE* to, std::string_view head, const std::string& name,
                           std::string* why) {
  // An empty head may have no storage at all: fwrite takes no null pointer.
  bool ok = head.empty() || std::fwrite(head.data(), 1, head.size(), to) == head.size();
  ok = ok && std::fflush(to) == 0;
  // The kernel copies between the files itself where it can (the rows of a
  // long run are hundreds of megabytes); through a buffer where it cannot
  // (a pipe, a terminal, another file system on an old kernel).
  loff_t from = 0;
  bool copied = false;
  for (ssize_t n; ok; copied = true) {
    n = ::copy_file_range(::fileno(file_), &from, ::fileno(to), nullptr, std::size_t{1} << 30, 0);
    if (n == 0) break;
    if (n < 0) {
      ok = copied ? false : (errno == EXDEV || errno == EINVAL || errno == ENOSYS || errno == EOPNOTSUPP ||
                             errno == EBADF);
      break;
    }
  }
  if (ok && !copied) {
    std::vector<char> buf(std::size_t{1} << 20);
    std::size_t n;
    std::fseek(file_, 0, SEEK_SET);
    while (ok && (n = std::fread(buf.data(), 1, buf.size(), file_)) > 0)
      ok = std::fwrite(buf.data(), 1, n, to) == n;
    ok = ok && !std::ferror(file_) && std::fflush(to) == 0;
  }
  if (!ok) *why = cannotWrite(name);
  return ok;
}

bool OutputSpool::copyIntoFile(const std::string& path, std::string_view head, std::string* why) {
  std::FILE* to = std::fopen(path.c_str(), "wb");
  if (!to) {
    *why = cannotWrite(target_);
    return false;
  }
  bool ok = copyInto(to, head, target_, why);
  if (std::fclose(to) != 0 && ok) {
    *why = cannotWrite(target_);
    ok = false;
  }
  return ok;
}

bool OutputSpool::commit(const Console& c, std::string_view head, std::string* why) {
  if (!failure_.empty()) {
    *why = failure_;
    return false;
  }
  if (std::fflush(file_) != 0) {
    *why = cannotWrite(target_);
    return false;
  }
  if (path_.empty()) {
    // Standard output, or a device opened as any output is.
    if (target_ == "-") return copyInto(c.out, head, "-", why);
    return copyIntoFile(target_, head, why);
  }
  std::string from = path_;
  if (!head.empty()) {
    // The head is known at the end of the run only: it and the spool are
    // joined into a second file beside the target.
    if (!copyIntoFile(headPath_, head, why)) return false;
    from = headPath_;
  }
  std::fclose(file_);
  file_ = nullptr;
  const std::error_code ec = replaceFile(from, target_);
  if (ec) {
    *why = "cannot write " + target_ + ": " + ec.message();
    return false;
  }
  // The spool joined behind the head is of no more use.
  if (from != path_) removeQuietly(path_);
  return true;
}

}  // namespace trelvane::cli
