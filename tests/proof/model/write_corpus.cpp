// SPDX-License-Identifier: MIT
//
// Writes what the fuzzer begins with: for each quirk the shortest of many random inputs that meets
// it, in a file of its name.
//
//     model_write_corpus tests/proof/fuzz/corpus/api_sequence
#include <array>
#include <cstdio>
#include <fstream>

#include "tests/proof/model/bare_run.h"
#include "tests/proof/model/decoder.h"

namespace {

using namespace model;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint64_t kTries = 20000;

QuirkCounts Met(BareRun& run, const Bytes& bytes) {
    QuirkCounts counts = run.Quirks();
    run.Compare(Decode(bytes));
    for (std::size_t i = 0; i < kQuirks; ++i) {
        counts[i] = run.Quirks()[i] - counts[i];
    }
    return counts;
}

// Without what comes after the quirk.
Bytes Cut(BareRun& run, Bytes bytes, std::size_t quirk) {
    Bytes shorter = bytes;
    while (!shorter.empty()) {
        shorter.pop_back();
        if (Met(run, shorter)[quirk] > 0) {
            bytes = shorter;
        }
    }
    return bytes;
}

std::array<Bytes, kQuirks> Shortest(BareRun& run) {
    std::array<Bytes, kQuirks> shortest;
    for (std::uint64_t seed = 0; seed < kTries; ++seed) {
        const Bytes bytes = RandomBytes(seed, 16, 100);
        const QuirkCounts met = Met(run, bytes);
        for (std::size_t i = 0; i < kQuirks; ++i) {
            const bool isShorter = shortest[i].empty() || bytes.size() < shortest[i].size();
            if (met[i] > 0 && isShorter) {
                shortest[i] = bytes;
            }
        }
    }
    return shortest;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: model_write_corpus <directory>\n", stderr);
        return 2;
    }
    const std::string directory = argv[1];
    BareRun run;
    const std::array<Bytes, kQuirks> shortest = Shortest(run);
    for (std::size_t i = 0; i < kQuirks; ++i) {
        const Bytes bytes = Cut(run, shortest[i], i);
        std::ofstream file(directory + "/" + NameOf(static_cast<Quirk>(i)), std::ios::binary);
        file.write(reinterpret_cast<const char*>(bytes.data()),
                   static_cast<std::streamsize>(bytes.size()));
    }
    return 0;
}
