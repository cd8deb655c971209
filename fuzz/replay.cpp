// replay.cpp
//
// Runs a target on stored inputs: the files and the files in the folders that the arguments name. A target
// that finds something ends the program; the last name printed is that of the input.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv) {
    namespace fs = std::filesystem;
    std::vector<fs::path> inputs;
    for (int i = 1; i < argc; ++i) {
        if (!fs::is_directory(argv[i])) {
            inputs.emplace_back(argv[i]);
            continue;
        }
        for (const auto& entry : fs::directory_iterator(argv[i])) inputs.push_back(entry.path());
    }
    std::sort(inputs.begin(), inputs.end());
    for (const fs::path& input : inputs) {
        std::printf("%s\n", input.c_str());
        std::fflush(stdout);
        std::ifstream file(input, std::ios::binary);
        const std::vector<char> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        if (!file) {
            std::fputs("cannot be read\n", stderr);
            return 1;
        }
        // A copy of its own size: a sanitizer sees where it ends.
        const std::vector<std::uint8_t> data(bytes.begin(), bytes.end());
        LLVMFuzzerTestOneInput(data.data(), data.size());
    }
    if (inputs.empty()) std::fputs("there are no inputs\n", stderr);
    return inputs.empty() ? 1 : 0;
}
