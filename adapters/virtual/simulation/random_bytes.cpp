// SPDX-License-Identifier: MIT
#include "adapters/virtual/simulation/random_bytes.h"

namespace {

// FNV-1a: every byte of the text counts.
uint64_t Hash(const std::string& text) {
    uint64_t hash = 0xcbf29ce484222325U;
    for (const char character : text) {
        hash ^= static_cast<unsigned char>(character);
        hash *= 0x100000001b3U;
    }
    return hash;
}

// The finishing steps of SplitMix64: neighbouring numbers come out far apart.
uint64_t Mix(uint64_t number) {
    number = (number ^ (number >> 30U)) * 0xbf58476d1ce4e5b9U;
    number = (number ^ (number >> 27U)) * 0x94d049bb133111ebU;
    return number ^ (number >> 31U);
}

} // namespace

RandomBytes::RandomBytes(uint64_t seed, const std::string& purpose)
    : m_State(Mix(seed) ^ Hash(purpose)) {}

// A byte of each number: how many are asked for at once makes no difference.
std::string RandomBytes::Next(size_t count) {
    std::string bytes;
    bytes.reserve(count);
    for (size_t i = 0; i < count; ++i) {
        bytes += static_cast<char>(NextNumber() >> 56U);
    }
    return bytes;
}

uint64_t RandomBytes::NextNumber() {
    m_State += 0x9e3779b97f4a7c15U;
    return Mix(m_State);
}
