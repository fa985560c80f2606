// SPDX-License-Identifier: MIT
#include "tests/proof/soak/verdict.h"

#include <atomic>
#include <cstdio>

namespace {

constexpr long kPrinted = 20;
std::atomic<long> g_Findings{0};

} // namespace

namespace verdict {

void Wrong(const std::string& finding) {
    if (++g_Findings <= kPrinted) {
        std::fprintf(stderr, "soak: %s\n", finding.c_str());
    }
}

long Count() { return g_Findings; }

} // namespace verdict
