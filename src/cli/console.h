// console.h -- the streams trelvane-cli writes to, and its error and output helpers.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

#include "plots/picture.h"

namespace trelvane::cli {

inline constexpr const char* kProgram = "trelvane-cli";

// Exit statuses.
inline constexpr int kExitOk = 0;
inline constexpr int kExitBadInput = 1;
inline constexpr int kExitUsage = 2;
inline constexpr int kExitInterrupted = 130;  // 128 + SIGINT, as a shell reports it

// Standard output takes only the outputs named '-'; everything else, the
// progress included, goes to err. Tests hand in files of their own.
struct Console {
  std::FILE* out = stdout;
  std::FILE* err = stderr;
  bool errIsTerminal = false;

  // The process's own streams; progress only where stderr is a terminal.
  static Console standard();
};

// "trelvane-cli: <text>" on err, one line; returns kExitBadInput.
int badInput(const Console& c, std::string_view text);
// The GNU usage error: the sentence and a pointer to the --help of the
// command (of the program where none is named); returns kExitUsage.
int usageError(const Console& c, std::string_view text, std::string_view command = {});
// --help's text, or the --version line, on c.out; returns kExitOk.
int helpOrVersion(const Console& c, bool help, std::string_view helpText);
// "trelvane-cli (Trelvane) VERSION".
std::string versionLine();

// Writes bytes to path, or to c.out for "-". False with a sentence in *why.
bool writeOutput(const Console& c, const std::string& path, std::string_view bytes,
                 std::string* why);
// A drawing in the format of its option, whatever the extension; through a
// temporary file of that format when path is "-".
bool writePictureOutput(const Console& c, const plots::Picture& picture, plots::ImageFormat format,
                        const std::string& path, std::string* why);
// Where an output is written before it is renamed into place: beside the
// target, or a temporary file for "-".
std::string stagingPathFor(const std::string& target);
void removeQuietly(const std::string& path);
// Copies the bytes of the file at from to c.out.
bool copyFileToOut(const Console& c, const std::string& from, std::string* why);
// True where a file can be created at path ("-" always can); else a sentence.
bool canCreateFile(const std::string& path, std::string* why);

}  // namespace trelvane::cli
