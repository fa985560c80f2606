// SPDX-License-Identifier: MIT
//
// Gives each file of the folders named on the command line to a fuzz target once, in the order of
// their names: the corpus as an ordinary test, with any compiler. A file alone may be named as well.
#include <algorithm>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

#include "tests/proof/fuzz/fuzz_input.h"

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> FilesOf(const fs::path& place) {
    if (!fs::is_directory(place)) {
        return {place};
    }
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(place)) {
        files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

void Replay(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file),
                                  std::istreambuf_iterator<char>()};
    std::cerr << path.string() << ": " << bytes.size() << " bytes" << std::endl;
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
}

size_t ReplayAll(int count, char** places) {
    size_t replayed = 0;
    for (int i = 0; i < count; ++i) {
        for (const fs::path& path : FilesOf(places[i])) {
            Replay(path);
            ++replayed;
        }
    }
    return replayed;
}

} // namespace

int main(int argc, char** argv) {
    try {
        LLVMFuzzerInitialize(&argc, &argv);
        const size_t replayed = ReplayAll(argc - 1, argv + 1);
        std::cerr << replayed << " inputs" << std::endl;
        return replayed > 0 ? 0 : 1;
    } catch (const std::exception& error) {
        std::cerr << error.what() << std::endl;
        return 1;
    }
}
