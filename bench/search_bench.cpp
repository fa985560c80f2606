// SPDX-License-Identifier: MIT
//
// The searches beside the plain loops and the C library's memmem. Names are
// "<search>/<data>/<haystack bytes>/<needle bytes>/<which>".
#include <benchmark/benchmark.h>

#include <random>
#include <string>

#include "KOVASMgrSearch.h"
#include "bench/plain_search.h"

namespace {

using Search = const char* (*)(const char*, int, const char*, int);

struct Texts {
    std::string hay;
    std::string needle;
};

// Bytes of all values, the needle not among them.
Texts Random(std::size_t hayLength, std::size_t needleLength) {
    std::mt19937 random(7);
    std::uniform_int_distribution<int> byte(0, 255);
    Texts texts;
    while (texts.hay.size() < hayLength) {
        texts.hay += static_cast<char>(byte(random));
    }
    do {
        texts.needle.clear();
        while (texts.needle.size() < needleLength) {
            texts.needle += static_cast<char>(byte(random));
        }
    } while (texts.hay.find(texts.needle) != std::string::npos);
    return texts;
}

// "ee...e" and a needle of the same letter with one other in it.
Texts Periodic(std::size_t hayLength, std::size_t needleLength, std::size_t other) {
    Texts texts{std::string(hayLength, 'e'), std::string(needleLength, 'e')};
    texts.needle[other] = 'f';
    return texts;
}

// The same in both cases, turn by turn.
Texts PeriodicInBothCases(std::size_t hayLength, std::size_t needleLength) {
    Texts texts = Periodic(hayLength, needleLength, needleLength - 1);
    for (std::size_t i = 0; i < hayLength; i += 2) {
        texts.hay[i] = 'E';
    }
    return texts;
}

// The needle ends the haystack and is nowhere else.
Texts PeriodicAtEnd(std::size_t hayLength, std::size_t needleLength) {
    Texts texts = Periodic(hayLength, needleLength, needleLength - 1);
    texts.hay.back() = 'f';
    return texts;
}

void Add(const std::string& name, Search search, const Texts& texts) {
    benchmark::RegisterBenchmark(name.c_str(), [search, texts](benchmark::State& state) {
        const auto hayLength = static_cast<int>(texts.hay.size());
        const auto needleLength = static_cast<int>(texts.needle.size());
        for (auto _ : state) {
            const char* hay = texts.hay.data();
            benchmark::DoNotOptimize(hay);
            benchmark::DoNotOptimize(search(hay, hayLength, texts.needle.data(), needleLength));
        }
    });
}

void AddAll(const std::string& data, const Texts& texts) {
    const std::string middle = "/" + data + "/" + std::to_string(texts.hay.size()) + "/" +
                               std::to_string(texts.needle.size()) + "/";
    Add("SubMem" + middle + "ours", SubMem, texts);
    Add("SubMem" + middle + "plain", PlainSubMem, texts);
    Add("SubMem" + middle + "memmem", LibrarySubMem, texts);
    Add("SubCaseMem" + middle + "ours", SubCaseMem, texts);
    Add("SubCaseMem" + middle + "plain", PlainSubCaseMem, texts);
}

const bool kAreAdded = [] {
    for (const std::size_t hay : {64U, 4096U, 1048576U}) {
        for (const std::size_t needle : {4U, 16U}) {
            AddAll("random", Random(hay, needle));
        }
        for (const std::size_t needle : {2U, 8U, 32U, 63U}) {
            AddAll("other_last", Periodic(hay, needle, needle - 1));
            AddAll("other_second", Periodic(hay, needle, 1));
            AddAll("other_middle", Periodic(hay, needle, needle / 2));
            AddAll("both_cases", PeriodicInBothCases(hay, needle));
            AddAll("at_end", PeriodicAtEnd(hay, needle));
        }
    }
    return true;
}();

} // namespace
