// SPDX-License-Identifier: MIT
#include "tests/proof/model/file_tail.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <stdexcept>
#include <utility>

namespace model {
namespace {

// A digit stands for any digit.
constexpr char kStamp[] = "[0000-00-00 00:00:00:000]";
constexpr std::size_t kStampLength = sizeof kStamp - 1;

bool IsLike(char c, char shape) {
    return shape == '0' ? std::isdigit(static_cast<unsigned char>(c)) != 0 : c == shape;
}

bool IsStampAt(const std::string& text, std::size_t at) {
    if (text.size() - at < kStampLength) {
        return false;
    }
    for (std::size_t i = 0; i < kStampLength; ++i) {
        if (!IsLike(text[at + i], kStamp[i])) {
            return false;
        }
    }
    return true;
}

} // namespace

FileTail::FileTail(std::string path) : m_Path(std::move(path)) {
    // The log appends, wherever the end is.
    m_File = open(m_Path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (m_File == -1 || ftruncate(m_File, 0) != 0) {
        throw std::runtime_error("cannot read " + m_Path);
    }
}

FileTail::~FileTail() { close(m_File); }

std::string FileTail::Take() {
    std::string text;
    char buffer[16384];
    ssize_t count = sizeof buffer;
    while (count == sizeof buffer) {
        count = pread(m_File, buffer, sizeof buffer, m_Offset);
        text.append(buffer, static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        m_Offset = static_cast<long>(m_Offset + std::max<ssize_t>(count, 0));
    }
    return text;
}

std::string MaskStamps(const std::string& text) {
    std::string masked;
    std::size_t at = 0;
    while (at < text.size()) {
        if (IsStampAt(text, at)) {
            masked += "[TIME]";
            at += kStampLength;
        }
        const std::size_t end = std::min(text.find('\n', at), text.size() - 1);
        masked.append(text, at, end + 1 - at);
        at = end + 1;
    }
    return masked;
}

} // namespace model
