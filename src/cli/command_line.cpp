// command_line.cpp -- walking a command line against its option table, and reading numbers.
#include "cli/command_line.h"

#include <charconv>
#include <cmath>

namespace trelvane::cli {

bool parseCommandLine(const std::vector<std::string>& args, const std::vector<Option>& table,
                      CommandLine& line, std::string* error) {
  bool optionsEnd = false;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    if (optionsEnd || arg.size() < 2 || arg[0] != '-') {
      line.operands.push_back(arg);
      line.places.push_back({"", i, false});
      continue;
    }
    if (arg == "--") {
      optionsEnd = true;
      continue;
    }
    if (arg[1] != '-') {
      *error = "invalid option -- '" + arg.substr(1, 1) + "'";
      return false;
    }
    std::string name = arg.substr(2);
    std::optional<std::string> inlineValue;
    if (std::size_t eq = name.find('='); eq != std::string::npos) {
      inlineValue = name.substr(eq + 1);
      name.erase(eq);
    }
    if (name == "help" || name == "version") {
      if (inlineValue) {
        *error = "option '--" + name + "' doesn't allow an argument";
        return false;
      }
      (name == "help" ? line.help : line.version) = true;
      return true;
    }
    const Option* option = nullptr;
    for (const Option& o : table)
      if (name == o.name) option = &o;
    if (!option) {
      *error = "unrecognized option '" + arg + "'";
      return false;
    }
    std::vector<std::string> values;
    if (option->values == 0 && inlineValue) {
      *error = "option '--" + name + "' doesn't allow an argument";
      return false;
    }
    if (option->values == 1 && inlineValue) {
      values.push_back(*inlineValue);
      line.places.push_back({name, i, true});
    } else if (option->values > 0) {
      if (inlineValue || i + option->values >= args.size()) {
        *error = option->values == 1 ? "option '--" + name + "' requires an argument"
                                     : "option '--" + name + "' requires " + std::to_string(option->values) +
                                           " arguments";
        return false;
      }
      for (int k = 0; k < option->values; ++k) {
        values.push_back(args[++i]);
        line.places.push_back({name, i, false});
      }
    }
    if (std::string why = option->take(values); !why.empty()) {
      *error = why;
      return false;
    }
  }
  return true;
}

bool checkOperands(const std::vector<std::string>& operands, std::initializer_list<const char*> names,
                   std::string* error) {
  if (operands.size() < names.size()) {
    std::string missing;
    std::size_t k = 0;
    for (const char* name : names) {
      if (k++ < operands.size()) continue;
      if (!missing.empty()) missing += " and ";
      missing += name;
    }
    *error = "missing operand: " + missing;
    return false;
  }
  if (operands.size() > names.size()) {
    *error = "extra operand '" + operands[names.size()] + "'";
    return false;
  }
  return true;
}

std::optional<uint64_t> wholeNumber(const std::string& text, uint64_t least, uint64_t most) {
  uint64_t v = 0;
  const char* end = text.data() + text.size();
  auto [at, ec] = std::from_chars(text.data(), end, v);
  if (text.empty() || text[0] == '+' || ec != std::errc() || at != end || v < least || v > most) return std::nullopt;
  return v;
}

std::optional<double> decimalNumber(const std::string& text, double above, double atMost) {
  double v = 0;
  const char* end = text.data() + text.size();
  auto [at, ec] = std::from_chars(text.data(), end, v, std::chars_format::fixed);
  if (text.empty() || text[0] == '-' || ec != std::errc() || at != end || !std::isfinite(v) || v <= above ||
      v > atMost)
    return std::nullopt;
  return v;
}

std::string oneOf(const char* option, const std::string& value, std::initializer_list<const char*> words) {
  std::string list;
  std::size_t k = 0;
  for (const char* word : words) {
    if (value == word) return "";
    list += k == 0 ? "" : (k + 1 == words.size() ? " or " : ", ");
    list += word;
    ++k;
  }
  return std::string("--") + option + " takes " + list + ", not '" + value + "'";
}

}  // namespace trelvane::cli
