// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_MODEL_MODEL_TEXT_H
#define KOVASMGR_TESTS_PROOF_MODEL_MODEL_TEXT_H

#include <cstddef>
#include <string>

namespace model {

/// A text of an adapter's record: up to its zero byte, and never the array's last byte.
template <std::size_t size> std::string Text(const char (&array)[size]) {
    std::string text;
    while (text.size() + 1 < size && array[text.size()] != '\0') {
        text += array[text.size()];
    }
    return text;
}

} // namespace model

#endif
