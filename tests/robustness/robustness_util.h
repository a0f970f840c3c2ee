// robustness_util.h -- temporary folders, files, and the CLI run as a separate process (optionally as another user).
#pragma once

#include <fcntl.h>
#include <grp.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

namespace trelvane::robustness {

namespace fs = std::filesystem;

// The uid and gid of the unprivileged user that the permission rows run as.
inline constexpr uid_t kNobody = 65534;

inline std::string readAll(const fs::path& p) {
  std::ifstream in(p, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

inline void writeAll(const fs::path& p, const std::string& bytes) {
  std::ofstream out(p, std::ios::binary | std::ios::trunc);
  out << bytes;
}

// A fresh folder under the system's temporary folder, open to every user,
// removed with everything in it at the end of the test.
class TempDir {
 public:
  TempDir() {
    std::string pattern = (fs::temp_directory_path() / "trelvane-rob-XXXXXX").string();
    path_ = ::mkdtemp(pattern.data());
    fs::permissions(path_, fs::perms::all);
  }
  ~TempDir() {
    std::error_code ec;
    fs::remove_all(path_, ec);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  fs::path operator/(const std::string& name) const { return path_ / name; }
  const fs::path& path() const { return path_; }
  // Writes a file and returns its path as text.
  std::string file(const std::string& name, const std::string& bytes) const {
    writeAll(path_ / name, bytes);
    return (path_ / name).string();
  }

 private:
  fs::path path_;
};

// What one run of a program left: how it ended and both of its streams.
struct ProcessResult {
  int status = -1;      // the exit status, or 128 + the signal that ended it
  std::string out, err;
};

// How the child is set up between fork and exec.
struct ChildSetup {
  bool asNobody = false;      // drop to the unprivileged user first
  rlim_t fileSizeLimit = 0;   // > 0: the largest file the child may write, as on a full disk
  fs::path cwd;
  bool noDisplay = false;     // no display and no platform named, as on a cluster node
};

inline std::string drainFd(int fd) {
  std::string s;
  char buf[65536];
  ssize_t n;
  while ((n = ::read(fd, buf, sizeof buf)) > 0) s.append(buf, static_cast<std::size_t>(n));
  ::close(fd);
  return s;
}

// Runs program with args in a child process and waits for it. Standard
// output and error go to files, so that nothing can block on a pipe.
inline ProcessResult runProgram(const std::string& program, const std::vector<std::string>& args,
                                const ChildSetup& setup = {}) {
  char outName[] = "/tmp/trelvane-rob-out-XXXXXX";
  char errName[] = "/tmp/trelvane-rob-err-XXXXXX";
  int outFd = ::mkstemp(outName);
  int errFd = ::mkstemp(errName);
  std::vector<std::string> argv0 = {program};
  argv0.insert(argv0.end(), args.begin(), args.end());
  std::vector<char*> argv;
  for (std::string& a : argv0) argv.push_back(a.data());
  argv.push_back(nullptr);

  pid_t pid = ::fork();
  if (pid == 0) {
    ::dup2(outFd, 1);
    ::dup2(errFd, 2);
    if (setup.noDisplay) {
      for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) ::unsetenv(name);
    } else {
      ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    }
    if (!setup.cwd.empty() && ::chdir(setup.cwd.c_str()) != 0) ::_exit(120);
    if (setup.fileSizeLimit > 0) {
      ::signal(SIGXFSZ, SIG_IGN);  // a write past the limit fails with EFBIG instead
      rlimit lim{setup.fileSizeLimit, setup.fileSizeLimit};
      if (::setrlimit(RLIMIT_FSIZE, &lim) != 0) ::_exit(121);
    }
    if (setup.asNobody && ::getuid() == 0) {
      if (::setgroups(0, nullptr) != 0 || ::setgid(kNobody) != 0 || ::setuid(kNobody) != 0)
        ::_exit(122);
    }
    ::execv(program.c_str(), argv.data());
    ::_exit(127);
  }
  int wstatus = 0;
  ::waitpid(pid, &wstatus, 0);
  ProcessResult r;
  r.status = WIFEXITED(wstatus) ? WEXITSTATUS(wstatus) : 128 + WTERMSIG(wstatus);
  ::lseek(outFd, 0, SEEK_SET);
  ::lseek(errFd, 0, SEEK_SET);
  r.out = drainFd(outFd);
  r.err = drainFd(errFd);
  ::unlink(outName);
  ::unlink(errName);
  return r;
}

// Runs fn in a child process as the unprivileged user (when running as root)
// and returns its exit status: the way to see what a user without the
// permission sees, since root reads every file.
inline int runAsNobody(const std::function<int()>& fn) {
  pid_t pid = ::fork();
  if (pid == 0) {
    if (::getuid() == 0 &&
        (::setgroups(0, nullptr) != 0 || ::setgid(kNobody) != 0 || ::setuid(kNobody) != 0))
      ::_exit(122);
    ::_exit(fn());
  }
  int wstatus = 0;
  ::waitpid(pid, &wstatus, 0);
  return WIFEXITED(wstatus) ? WEXITSTATUS(wstatus) : 128 + WTERMSIG(wstatus);
}

}  // namespace trelvane::robustness
