// args.h -- walks GNU-style command-line options: "--name value" and "--name=value".
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace trelvane::cli {

class OptionWalker {
 public:
  explicit OptionWalker(const std::vector<std::string>& args) : args_(args) {}

  // Moves to the next argument; false past the last.
  bool next() {
    if (++k_ >= args_.size()) return false;
    name_ = args_[k_];
    inline_.reset();
    if (name_.rfind("--", 0) == 0) {
      auto eq = name_.find('=');
      if (eq != std::string::npos) {
        inline_ = name_.substr(eq + 1);
        name_.resize(eq);
      }
    }
    return true;
  }
  // The argument as given, its name (without a value after "="), that value.
  const std::string& arg() const { return args_[k_]; }
  const std::string& name() const { return name_; }
  const std::optional<std::string>& inlineValue() const { return inline_; }
  // The value of an option that takes one: after "=", or the next argument.
  bool value(std::string* out, std::string* error) {
    if (inline_) {
      *out = *inline_;
      return true;
    }
    if (k_ + 1 >= args_.size()) {
      *error = "option '" + name_ + "' requires an argument";
      return false;
    }
    *out = args_[++k_];
    return true;
  }

 private:
  const std::vector<std::string>& args_;
  std::size_t k_ = static_cast<std::size_t>(-1);
  std::string name_;
  std::optional<std::string> inline_;
};

}  // namespace trelvane::cli
