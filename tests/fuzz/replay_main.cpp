// replay_main.cpp -- runs a fuzz target over the files of corpus folders, for compilers without libFuzzer.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size);

namespace fs = std::filesystem;

namespace {

std::vector<uint8_t> bytesOf(const fs::path& p) {
  std::ifstream in(p, std::ios::binary);
  return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), {});
}

}  // namespace

// Each argument is a corpus folder or a single input. A broken rule aborts
// inside the target; an argument that names nothing, or folders that hold
// no input at all, fail the replay.
int main(int argc, char** argv) {
  std::size_t inputs = 0;
  for (int i = 1; i < argc; ++i) {
    const fs::path arg = argv[i];
    std::vector<fs::path> files;
    if (fs::is_directory(arg)) {
      for (const auto& e : fs::recursive_directory_iterator(arg))
        if (e.is_regular_file()) files.push_back(e.path());
    } else if (fs::is_regular_file(arg)) {
      files.push_back(arg);
    } else {
      std::fprintf(stderr, "no corpus at %s\n", argv[i]);
      return 2;
    }
    for (const fs::path& f : files) {
      // A buffer of exactly the input's size, so that a read past its end
      // is one that AddressSanitizer sees; an empty input gets a valid pointer.
      std::vector<uint8_t> bytes = bytesOf(f);
      static const uint8_t kNone = 0;
      LLVMFuzzerTestOneInput(bytes.empty() ? &kNone : bytes.data(), bytes.size());
      ++inputs;
    }
  }
  std::printf("%zu inputs replayed\n", inputs);
  return inputs > 0 ? 0 : 2;
}
