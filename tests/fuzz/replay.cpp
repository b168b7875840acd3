// Runs a fuzz target on recorded inputs without the fuzzer: on every file of the directories on the
// command line, in the order of their paths.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv) {
    std::vector<std::filesystem::path> files;
    for (int i = 1; i < argc; ++i) {
        if (std::filesystem::is_directory(argv[i])) {
            for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
                files.push_back(entry.path());
            }
        }
    }
    std::ranges::sort(files);
    for (const auto& path : files) {
        std::ifstream file(path, std::ios::binary);
        const std::vector<char> input{std::istreambuf_iterator<char>(file), {}};
        std::printf("%s\n", path.c_str());
        std::fflush(stdout);  // so that the last line names the input that ends the process
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
    }
    if (files.empty()) {
        std::fputs("replay: no inputs\n", stderr);
        return 1;
    }
    std::printf("%zu inputs\n", files.size());
}
