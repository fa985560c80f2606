// SPDX-License-Identifier: MIT
#include "adapters/virtual/ports/at_far_end.h"

#include <cctype>

namespace {

constexpr size_t kMaxCommand = 512;
constexpr const char* kOk = "\r\nOK\r\n";
constexpr const char* kError = "\r\nERROR\r\n";

} // namespace

std::string AtFarEnd::Take(const std::string& bytes) {
    std::string answer;
    for (const char byte : bytes) {
        if (m_Echo) {
            answer += byte;
        }
        answer += TakeByte(byte);
    }
    return answer;
}

// The echo stays as it was switched, as in a modem that keeps its power.
void AtFarEnd::Restart() {
    m_Line.clear();
    m_TooLong = false;
}

std::string AtFarEnd::TakeByte(char byte) {
    if (byte == '\r') {
        std::string answer = m_TooLong ? kError : Answer(m_Line);
        Restart();
        return answer;
    }
    m_TooLong = m_TooLong || m_Line.size() == kMaxCommand;
    if (byte != '\n' && !m_TooLong) {
        m_Line += static_cast<char>(std::toupper(static_cast<unsigned char>(byte)));
    }
    return "";
}

std::string AtFarEnd::Answer(const std::string& command) {
    if (command.empty()) {
        return "";
    }
    const auto reply = m_Spec.replies.find(command);
    if (reply != m_Spec.replies.end()) {
        return reply->second.empty() ? kOk : "\r\n" + reply->second + "\r\n" + kOk;
    }
    if (command == "ATE0" || command == "ATE1") {
        m_Echo = command == "ATE1";
        return kOk;
    }
    return command == "AT" ? kOk : kError;
}
