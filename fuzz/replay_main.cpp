// Runs a fuzz target over the files of a folder, without a fuzzer: replay <folder or file>...
//
// Each input is handed over in a block of exactly its size, so that a sanitizer sees the first byte read
// beyond it, and a short input is cut at every byte as well: most faults of a parser show where its text ends
// too early.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLongestCutInput = 512;

void RunBlock(const std::vector<char>& bytes, std::size_t size) {
    const auto block = std::make_unique<std::uint8_t[]>(size);
    std::copy_n(bytes.begin(), size, block.get());
    LLVMFuzzerTestOneInput(block.get(), size);
}

bool RunFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file.is_open()) {
        std::fprintf(stderr, "cannot read %s\n", path.string().c_str());
        return false;
    }
    // The name comes first: it stays the last line when the input brings the program down.
    std::printf("%s (%zu bytes)\n", path.filename().string().c_str(), bytes.size());
    std::fflush(stdout);
    if (bytes.size() <= kLongestCutInput) {
        for (std::size_t size = 0; size < bytes.size(); ++size) {
            RunBlock(bytes, size);
        }
    }
    RunBlock(bytes, bytes.size());
    return true;
}

std::vector<fs::path> FilesOf(const fs::path& start) {
    if (!fs::is_directory(start)) return {start};
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(start)) {
        if (entry.is_regular_file()) files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

}  // namespace

int main(int argc, char** argv) {
    std::size_t count = 0;
    for (int i = 1; i < argc; ++i) {
        for (const fs::path& path : FilesOf(argv[i])) {
            if (!RunFile(path)) return 1;
            ++count;
        }
    }
    std::printf("%zu inputs\n", count);
    // An empty corpus would pass for ever without testing anything.
    return count > 0 ? 0 : 1;
}
