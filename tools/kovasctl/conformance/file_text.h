// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_CONFORMANCE_FILE_TEXT_H
#define KOVASCTL_CONFORMANCE_FILE_TEXT_H

#include <unistd.h>

#include <string>

/// The first 64 KiB of an open file.
inline std::string TextOfFile(int descriptor) {
    constexpr size_t kMuch = 65536;
    std::string text(kMuch, '\0');
    const ssize_t count = pread(descriptor, text.data(), text.size(), 0);
    text.resize(count < 0 ? 0 : static_cast<size_t>(count));
    return text;
}

#endif
