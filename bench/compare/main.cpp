// SPDX-License-Identifier: MIT
//
//     kovasmgr_compare_LIBRARY MEASURE [PORTS or BYTES] [HOW MUCH]
//
// The same measures for each library; see measures.h.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>

#include "bench/compare/measures.h"

namespace {

struct Measure {
    const char* name;
    void (*run)(size_t size, size_t howMuch);
    size_t size;
    size_t howMuch;
};

constexpr Measure kMeasures[] = {
    {"write", MeasureWrite, 16, 2000},
    {"delivery", MeasureDelivery, 1, 300},
    {"throughput", MeasureThroughput, 1, 2},
    {"paced", MeasurePaced, 1, 2},
    {"idle", MeasureIdle, 1, 2},
    {"enumeration", MeasureEnumeration, 1, 50},
};

size_t Number(int count, char** arguments, int index, size_t otherwise) {
    return index < count ? std::strtoul(arguments[index], nullptr, 10) : otherwise;
}

int Run(int count, char** arguments) {
    for (const Measure& measure : kMeasures) {
        if (count > 1 && std::strcmp(arguments[1], measure.name) == 0) {
            measure.run(Number(count, arguments, 2, measure.size),
                        Number(count, arguments, 3, measure.howMuch));
            return 0;
        }
    }
    std::fprintf(stderr, "usage: %s MEASURE [PORTS or BYTES] [HOW MUCH]; measures:", arguments[0]);
    for (const Measure& measure : kMeasures) {
        std::fprintf(stderr, " %s", measure.name);
    }
    std::fputc('\n', stderr);
    return 2;
}

} // namespace

int main(int count, char** arguments) {
    try {
        return Run(count, arguments);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
