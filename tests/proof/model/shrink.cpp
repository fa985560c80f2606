// SPDX-License-Identifier: MIT
#include "tests/proof/model/shrink.h"

#include <algorithm>

namespace model {
namespace {

using Fails = std::function<bool(const Sequence&)>;

Sequence Without(const Sequence& sequence, std::size_t at, std::size_t count) {
    const auto first = sequence.begin() + static_cast<std::ptrdiff_t>(at);
    const auto last = first + static_cast<std::ptrdiff_t>(std::min(count, sequence.size() - at));
    Sequence shorter(sequence.begin(), first);
    shorter.insert(shorter.end(), last, sequence.end());
    return shorter;
}

bool LeaveOutPieces(Sequence& sequence, std::size_t size, const Fails& fails) {
    bool isShorter = false;
    for (std::size_t at = 0; at < sequence.size();) {
        Sequence shorter = Without(sequence, at, size);
        if (fails(shorter)) {
            sequence.swap(shorter);
            isShorter = true;
        } else {
            at += size;
        }
    }
    return isShorter;
}

} // namespace

Sequence Shrink(Sequence sequence, const Fails& fails) {
    std::size_t size = std::max<std::size_t>(sequence.size() / 2, 1);
    while (true) {
        const bool isShorter = LeaveOutPieces(sequence, size, fails);
        if (size > 1) {
            size /= 2;
        } else if (!isShorter) {
            return sequence;
        }
    }
}

} // namespace model
