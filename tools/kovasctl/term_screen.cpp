// SPDX-License-Identifier: MIT
#include "tools/kovasctl/term_screen.h"

#include <fcntl.h>

#include <cerrno>
#include <cstring>

#include "tools/kovasctl/byte_text.h"
#include "tools/kovasctl/failure.h"
#include "tools/kovasctl/streams.h"

namespace {

constexpr size_t kHexColumns = 16;
constexpr mode_t kLogMode = 0666; // less the user's mask
constexpr const char* kLineEnd = "\r\n";

UniqueFd OpenLog(const std::string& file) {
    if (file.empty()) {
        return UniqueFd();
    }
    UniqueFd log(
        open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOCTTY, kLogMode));
    if (!log.IsOpen()) {
        throw WrongUse("--log: " + file + ": " + std::strerror(errno));
    }
    return log;
}

// Echoed as it is, a cursor key would move the cursor.
std::string Echoed(const std::string& bytes) {
    std::string text;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '\r' || c == '\n') {
            text += kLineEnd;
        } else if (byte < 0x20 || byte == 0x7f) {
            text += {'^', static_cast<char>(byte ^ 0x40)};
        } else {
            text += c;
        }
    }
    return text;
}

std::string WithLineEnds(const std::string& text) {
    std::string lines;
    for (const char c : text) {
        lines += c == '\n' ? std::string(kLineEnd) : std::string(1, c);
    }
    return lines;
}

} // namespace

TermScreen::TermScreen(const std::string& logFile, bool hasEcho, bool isHex)
    : m_Log(OpenLog(logFile)), m_HasEcho(hasEcho), m_IsHex(isHex) {}

TermScreen::~TermScreen() {
    if (!m_IsAtLineStart) {
        WriteMessage(kLineEnd);
    }
}

void TermScreen::ShowReceived(const std::string& bytes) {
    Log(bytes);
    Show(m_IsHex ? AsHex(bytes) : bytes);
}

void TermScreen::ShowTyped(const std::string& bytes) {
    if (m_HasEcho) {
        Show(m_IsHex ? AsHex(bytes) : Echoed(bytes));
    }
}

void TermScreen::Tell(const std::string& message) {
    WriteMessage((m_IsAtLineStart ? "" : kLineEnd) + WithLineEnds("kovasctl: " + message + "\n"));
    m_IsAtLineStart = true;
    m_HexColumn = 0;
}

void TermScreen::Show(const std::string& text) {
    if (!text.empty()) {
        m_IsAtLineStart = text.back() == '\n';
        WriteData(text);
    }
}

std::string TermScreen::AsHex(const std::string& bytes) {
    std::string text;
    for (const char byte : bytes) {
        text += ToHex(std::string_view(&byte, 1));
        if (++m_HexColumn == kHexColumns || byte == '\n') {
            text += kLineEnd;
            m_HexColumn = 0;
        }
    }
    return text;
}

// A full disk ends the recording, and not the conversation.
void TermScreen::Log(std::string_view bytes) {
    while (m_Log.IsOpen() && !bytes.empty()) {
        const ssize_t count = write(m_Log.Get(), bytes.data(), bytes.size());
        if (count > 0) {
            bytes.remove_prefix(static_cast<size_t>(count));
        } else if (errno != EINTR) {
            const std::string reason = std::strerror(errno);
            m_Log.Reset();
            Tell("the log file takes no more: " + reason);
        }
    }
}
