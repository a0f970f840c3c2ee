// command_line.h -- the one parser of every trelvane-cli command: a table of long options, GNU's words for each mistake, one reader of numbers.
#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

namespace trelvane::cli {

// One long option of a command. take gets its values (none for a flag) and
// returns "" or the usage error as a sentence.
struct Option {
  const char* name;  // without its "--"
  int values;        // 0 a flag; 1 "--name VALUE" or "--name=VALUE"; 2 "--name A B"
  std::function<std::string(const std::vector<std::string>& values)> take;
};

// What a command line held besides its options.
struct CommandLine {
  std::vector<std::string> operands;
  // Where each operand and each option value stood among the arguments, for
  // a caller that rewrites some of them (the paths of a batch line).
  struct Place {
    std::string option;  // "" for an operand
    std::size_t index;   // the argument that holds it
    bool inlineValue;    // the value follows "--option=" in that argument
  };
  std::vector<Place> places;
  bool help = false, version = false;  // --help and --version end the parse
};

// Options of the table in any order among the operands, "--" ending them;
// --help and --version are every command's. False with the mistake in
// GNU's words: "unrecognized option '--x'", "invalid option -- 'x'",
// "option '--x' requires an argument", "option '--x' doesn't allow an
// argument", or the sentence of the option's own take.
bool parseCommandLine(const std::vector<std::string>& args, const std::vector<Option>& table,
                      CommandLine& line, std::string* error);

// The operands a command needs, by name, and the extra ones it takes none of:
// "missing operand: LONG and SHORT", "extra operand 'x'".
bool checkOperands(const std::vector<std::string>& operands, std::initializer_list<const char*> names,
                   std::string* error);

// The one reader of numbers: all of text, plain digits (a point and more
// digits for a decimal one), no sign, no blank; nothing where it is not
// that or lies outside the range.
std::optional<uint64_t> wholeNumber(const std::string& text, uint64_t least, uint64_t most);
std::optional<double> decimalNumber(const std::string& text, double above, double atMost);

// A value among a few words: "" where it is one, else "--NAME takes a, b or c, not 'x'".
std::string oneOf(const char* option, const std::string& value, std::initializer_list<const char*> words);

}  // namespace trelvane::cli
