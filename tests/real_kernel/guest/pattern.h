// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_REAL_KERNEL_GUEST_PATTERN_H
#define KOVASMGR_TESTS_REAL_KERNEL_GUEST_PATTERN_H

#include <cstddef>
#include <string>

constexpr std::size_t kMebibyte = 1024U * 1024U;

/// The byte at each place depends on the place, so that a lost, doubled or moved one is seen. The
/// machine's far ends send and expect the same.
inline std::string Pattern(std::size_t size) {
    std::string bytes(size, '\0');
    for (std::size_t at = 0; at < size; ++at) {
        bytes[at] = static_cast<char>((at ^ (at >> 8U) * 7 ^ (at >> 16U) * 13) & 0xffU);
    }
    return bytes;
}

/// "all", or how many bytes there are and where the first wrong one stands.
inline std::string Compared(const std::string& received, const std::string& sent) {
    if (received == sent) {
        return "all";
    }
    std::size_t at = 0;
    while (at < received.size() && at < sent.size() && received[at] == sent[at]) {
        ++at;
    }
    return std::to_string(received.size()) + " of " + std::to_string(sent.size()) +
           " bytes, wrong from " + std::to_string(at);
}

#endif
