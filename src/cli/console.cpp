// console.cpp -- error lines, and output files or standard output for '-'.
#include "cli/console.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string>

#include "plots/picture_qt.h"

namespace trelvane::cli {

Console Console::standard() {
  Console c;
  c.errIsTerminal = ::isatty(::fileno(stderr)) != 0;
  return c;
}

int badInput(const Console& c, std::string_view text) {
  std::fprintf(c.err, "%s: %.*s\n", kProgram, static_cast<int>(text.size()), text.data());
  std::fflush(c.err);
  return kExitBadInput;
}

int usageError(const Console& c, std::string_view text, std::string_view command) {
  const std::string help = command.empty() ? std::string(kProgram) : std::string(kProgram) + " " + std::string(command);
  std::fprintf(c.err, "%s: %.*s\nTry '%s --help' for more information.\n", kProgram,
               static_cast<int>(text.size()), text.data(), help.c_str());
  std::fflush(c.err);
  return kExitUsage;
}

int helpOrVersion(const Console& c, bool help, std::string_view helpText) {
  if (help) std::fwrite(helpText.data(), 1, helpText.size(), c.out);
  else std::fprintf(c.out, "%s\n", versionLine().c_str());
  std::fflush(c.out);
  return kExitOk;
}

bool writeOutput(const Console& c, const std::string& path, std::string_view bytes,
                 std::string* why) {
  if (path == "-") {
    if (std::fwrite(bytes.data(), 1, bytes.size(), c.out) != bytes.size() ||
        std::fflush(c.out) != 0) {
      *why = std::string("cannot write to standard output: ") + std::strerror(errno);
      return false;
    }
    return true;
  }
  std::FILE* f = std::fopen(path.c_str(), "wb");
  if (!f) {
    *why = "cannot write " + path + ": " + std::strerror(errno);
    return false;
  }
  bool ok = std::fwrite(bytes.data(), 1, bytes.size(), f) == bytes.size();
  ok = (std::fclose(f) == 0) && ok;
  if (!ok) *why = "cannot write " + path + ": " + std::strerror(errno);
  return ok;
}

// The result file goes first to a file of its own beside the target and is
// renamed into place after the run, so that a stopped or failed run leaves
// what stood there before. For "-" it is a temporary file copied to stdout.
std::string stagingPathFor(const std::string& target) {
  std::string suffix = ".trelvane-" + std::to_string(::getpid()) + ".part";
  if (target == "-") {
    std::error_code ec;
    std::filesystem::path dir = std::filesystem::temp_directory_path(ec);
    if (ec) dir = "/tmp";
    return (dir / ("trelvane-cli-result" + suffix)).string();
  }
  return target + suffix;
}

void removeQuietly(const std::string& path) {
  std::error_code ec;
  std::filesystem::remove(path, ec);
}

bool writePictureOutput(const Console& c, const plots::Picture& picture, plots::ImageFormat format,
                        const std::string& path, std::string* why) {
  if (path != "-") return plots::writePicture(picture, format, path, why);
  std::string staging = stagingPathFor("-") + ".picture";
  bool ok = plots::writePicture(picture, format, staging, why) && copyFileToOut(c, staging, why);
  removeQuietly(staging);
  return ok;
}

bool copyFileToOut(const Console& c, const std::string& from, std::string* why) {
  std::FILE* f = std::fopen(from.c_str(), "rb");
  if (!f) {
    *why = "cannot read back " + from + ": " + std::strerror(errno);
    return false;
  }
  char buf[65536];
  bool ok = true;
  std::size_t n;
  while ((n = std::fread(buf, 1, sizeof buf, f)) > 0)
    if (std::fwrite(buf, 1, n, c.out) != n) ok = false;
  std::fclose(f);
  if (std::fflush(c.out) != 0) ok = false;
  if (!ok) *why = std::string("cannot write to standard output: ") + std::strerror(errno);
  return ok;
}

bool canCreateFile(const std::string& path, std::string* why) {
  if (path == "-") return true;
  if (path.empty()) {
    *why = "an output file name is empty";
    return false;
  }
  struct stat st;
  if (::stat(path.c_str(), &st) == 0) {
    if (S_ISDIR(st.st_mode)) {
      *why = "cannot write " + path + ": it is a folder";
      return false;
    }
    if (::access(path.c_str(), W_OK) != 0) {
      *why = "cannot write " + path + ": permission denied";
      return false;
    }
  }
  std::filesystem::path dir = std::filesystem::path(path).parent_path();
  if (dir.empty()) dir = ".";
  if (::stat(dir.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) {
    *why = "cannot write " + path + ": the folder " + dir.string() + " does not exist";
    return false;
  }
  if (::access(dir.c_str(), W_OK) != 0) {
    *why = "cannot write " + path + ": permission denied";
    return false;
  }
  return true;
}

}  // namespace trelvane::cli
