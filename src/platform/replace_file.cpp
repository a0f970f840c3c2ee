// replace_file.cpp -- a finished file moved onto its target in one step.
#include "platform/replace_file.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace trelvane {

std::error_code replaceFile(const std::string& from, const std::string& to) {
#if defined(__linux__) && defined(RENAME_EXCHANGE)
  // Only a regular file is exchanged: a directory or a special file at `to`
  // meets rename's own refusal below, a link is replaced, not followed.
  struct stat st;
  if (::lstat(to.c_str(), &st) == 0 && S_ISREG(st.st_mode) &&
      ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_EXCHANGE) == 0) {
    ::unlink(from.c_str());  // the old file, under the new one's name
    return {};
  }
  // No file there, or no exchange on this file system: rename.
#endif
  std::error_code ec;
  std::filesystem::rename(from, to, ec);
  return ec;
}

}  // namespace trelvane
