// SPDX-License-Identifier: MIT
#include "tests/proof/soak/log_keeper.h"

#include <filesystem>

namespace {
constexpr uint64_t kLarge = 32 * 1024 * 1024;
}

void LogKeeper::EmptyWhenLarge() {
    const uint64_t size = std::filesystem::file_size(m_File);
    if (size > kLarge) {
        std::filesystem::resize_file(m_File, 0);
        m_Emptied += size;
    }
}

uint64_t LogKeeper::Written() const { return m_Emptied + std::filesystem::file_size(m_File); }
