// SPDX-License-Identifier: MIT
#include "tools/kovasctl/progress_bar.h"

#include <algorithm>
#include <string>

#include "tools/kovasctl/streams.h"

namespace {

constexpr std::chrono::milliseconds kRefresh{100};
constexpr uint64_t kWidth = 40;

std::string Right(const std::string& text, size_t width) {
    return std::string(width - std::min(width, text.size()), ' ') + text;
}

} // namespace

ProgressBar::ProgressBar(uint64_t total) : m_Total(IsMessageOnTerminal() ? total : 0) {}

ProgressBar::~ProgressBar() {
    if (m_Total != 0) {
        WriteMessage("\n");
    }
}

void ProgressBar::Show(uint64_t done) {
    const auto now = Clock::now();
    if (m_Total == 0 || (now < m_Next && done < m_Total)) {
        return;
    }
    m_Next = now + kRefresh;
    const uint64_t shown = std::min(done, m_Total); // a file may grow meanwhile
    const uint64_t filled = shown * kWidth / m_Total;
    const double seconds = std::chrono::duration<double>(now - m_Start).count();
    const auto rate = static_cast<uint64_t>(static_cast<double>(done) / std::max(seconds, 0.001));
    WriteMessage("\r[" + std::string(filled, '#') + std::string(kWidth - filled, '.') + "]" +
                 Right(std::to_string(shown * 100 / m_Total), 4) + " %" +
                 Right(std::to_string(rate), 9) + " bytes/s");
}
