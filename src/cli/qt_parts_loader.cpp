// qt_parts_loader.cpp -- trelvane-cli loads its Qt parts: the module beside the program, or the installed one.
#include <dlfcn.h>
#include <unistd.h>

#include <cstring>
#include <mutex>
#include <string>

#include "cli/qt_parts.h"

#ifndef TRELVANE_VERSION
#error "TRELVANE_VERSION comes from the CMake project version"
#endif
#ifndef TRELVANE_MODULE_DIR
#error "TRELVANE_MODULE_DIR is the installed module's folder relative to the program's"
#endif

namespace trelvane::cli {
namespace {

// The folder of the running program, with its final '/'; empty when the
// kernel does not tell (the module is then looked up by the loader's rules).
std::string programFolder() {
  std::string path(4096, '\0');
  ssize_t n = readlink("/proc/self/exe", path.data(), path.size());
  if (n <= 0 || static_cast<std::size_t>(n) >= path.size()) return {};
  path.resize(static_cast<std::size_t>(n));
  auto slash = path.rfind('/');
  return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

// The folder, with its final '/', that the installed module lies in: the
// program's folder, then TRELVANE_MODULE_DIR from there, each leading "../"
// taking a folder off ("/usr/bin/" and "../lib/x/trelvane" give "/usr/lib/x/trelvane/").
std::string installedFolder(std::string folder) {
  std::string rest = TRELVANE_MODULE_DIR;
  while (rest.compare(0, 3, "../") == 0 && folder.size() > 1) {
    folder.pop_back();
    folder.erase(folder.rfind('/') + 1);
    rest.erase(0, 3);
  }
  return folder + rest + "/";
}

// The module beside the program where there is one (a build folder, or the
// two files copied together), else the installed one. Where neither exists,
// the one beside the program is named.
std::string modulePath() {
  const std::string folder = programFolder();
  const std::string beside = folder + kQtPartsModule;
  if (folder.empty() || access(beside.c_str(), F_OK) == 0) return beside;
  const std::string installed = installedFolder(folder) + kQtPartsModule;
  return access(installed.c_str(), F_OK) == 0 ? installed : beside;
}

struct Loaded {
  const QtParts* parts = nullptr;
  std::string why;
};

Loaded load() {
  const std::string path = modulePath();
  const std::string cannot = "cannot load " + path + ", which draws pictures and checks for updates: ";
  // The module stays loaded until the process ends: Qt's application
  // object and its plugins live in it.
  void* module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!module) {
    const char* e = dlerror();
    return {nullptr, cannot + (e ? e : "unknown error")};
  }
  using Entry = const QtParts* (*)();
  auto entry = reinterpret_cast<Entry>(dlsym(module, kQtPartsEntry));
  const QtParts* parts = entry ? entry() : nullptr;
  if (!parts) return {nullptr, cannot + "it has no " + kQtPartsEntry};
  if (!parts->version || std::strcmp(parts->version, TRELVANE_VERSION) != 0)
    return {nullptr, cannot + "it belongs to version " + (parts->version ? parts->version : "?") +
                         ", not " + TRELVANE_VERSION};
  return {parts, {}};
}

}  // namespace

const QtParts* qtParts(std::string* why) {
  static std::once_flag once;
  static Loaded loaded;
  std::call_once(once, [] { loaded = load(); });
  if (!loaded.parts && why) *why = loaded.why;
  return loaded.parts;
}

}  // namespace trelvane::cli
