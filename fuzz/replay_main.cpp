// Runs a fuzz target over the files of corpus folders, so that the inputs that once found
// a fault, and the seeds, stay regression tests in ordinary builds.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int argc, char** argv) {
  long files = 0;
  for (int i = 1; i < argc; ++i) {
    std::error_code error;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(argv[i], error)) {
      if (!entry.is_regular_file()) continue;
      std::ifstream in(entry.path(), std::ios::binary);
      std::vector<char> bytes((std::istreambuf_iterator<char>(in)), {});
      LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
      ++files;
    }
    if (error) {
      std::fprintf(stderr, "replay: cannot read %s: %s\n", argv[i], error.message().c_str());
      return 1;
    }
  }
  std::printf("replayed %ld inputs\n", files);
  return files > 0 ? 0 : 1;
}
