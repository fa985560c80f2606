// SPDX-License-Identifier: MIT
#include "tests/proof/model/byte_source.h"

#include <random>

namespace model {

// The engine's own numbers, without a distribution: those differ between standard libraries.
std::vector<std::uint8_t> RandomBytes(std::uint64_t seed, std::size_t least, std::size_t most) {
    std::mt19937_64 engine(seed);
    std::vector<std::uint8_t> bytes(least + engine() % (most - least + 1));
    for (std::uint8_t& byte : bytes) {
        byte = static_cast<std::uint8_t>(engine() >> 32);
    }
    return bytes;
}

} // namespace model
