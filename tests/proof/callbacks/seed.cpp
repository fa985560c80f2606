// SPDX-License-Identifier: MIT
#include "tests/proof/callbacks/seed.h"

#include <cstdio>
#include <cstdlib>
#include <random>

uint32_t Seed() {
    const char* given = std::getenv("KOVASMGR_SEED");
    const uint32_t seed = given != nullptr && *given != '\0'
                              ? static_cast<uint32_t>(std::strtoul(given, nullptr, 10))
                              : std::random_device{}();
    std::fprintf(stderr, "KOVASMGR_SEED=%u\n", seed);
    return seed;
}
