// SPDX-License-Identifier: MIT
#include "KOVASMgrWriteLog.h"

#include <cstdlib>

#include "KOVASMgrLog.h"
#include "KOVASMgrPaths.h"
#include "common/cancel_shield.h"
#include "common/jmutex_guard.h"

namespace {

constexpr int32_t kFreshStartAboveBytes = 102400;

// A log line may be followed by the host's fork and exec; its children have no use for the stream.
FILE* OpenCloseOnExec(const std::string& path, const std::string& mode) {
    return std::fopen(path.c_str(), (mode + "e").c_str());
}

const char* LevelName(LOG_LEVEL level) {
    switch (level) {
    case LOG_LEVEL_INFO:
        return "INFO:";
    case LOG_LEVEL_ERRO:
        return "ERRO:";
    case LOG_LEVEL_FATAL:
        return "FATAL:";
    }
    return "";
}

// The path is a host's text: what a shell would interpret inside double quotes is escaped, and a
// leading '-' must not be taken for an option.
std::string ChmodCommand(const std::string& path) {
    std::string command = "chmod 777 \"";
    if (!path.empty() && path[0] == '-') {
        command += "./";
    }
    for (const char c : path) {
        if (c == '\\' || c == '"' || c == '$' || c == '`') {
            command += '\\';
        }
        command += c;
    }
    return command + "\"";
}

} // namespace

CWRITE_LOG::CWRITE_LOG() : m_pFile(nullptr) { m_Mutex.Init(); }

CWRITE_LOG::~CWRITE_LOG() { Close(); }

bool CWRITE_LOG::init(const char* path, bool isFullPath) {
    CancelShield shield;
    JMutexGuard lock(m_Mutex);
    if (path == nullptr) {
        return false;
    }
    if (!isFullPath) {
        GetCurrentPath(); // keeps the exported path buffer up to date, as every relative init does
    }
    const std::string candidate = isFullPath ? std::string(path) : m_strLogPath + path;
    if (candidate == m_strLogPath) {
        return true;
    }
    m_strLogPath = candidate;
    CheckLogFileSize();
    m_pFile = OpenCloseOnExec(m_strLogPath, m_strOpenMode);
    // A file that keeps its mode is still a log, so the outcome does not matter.
    [[maybe_unused]] const int outcome = std::system(ChmodCommand(m_strLogPath).c_str());
    return m_pFile != nullptr;
}

// The stream that was open before is dropped here, not closed: lines that were flushed are in the
// file, and the descriptor stays with the process.
void CWRITE_LOG::CheckLogFileSize() {
    m_pFile = OpenCloseOnExec(m_strLogPath, "a+");
    if (m_pFile == nullptr) {
        std::puts("Log file open failed!");
        return;
    }
    std::fseek(m_pFile, 0, SEEK_SET);
    const long start = std::ftell(m_pFile);
    std::fseek(m_pFile, 0, SEEK_END);
    const auto size = static_cast<int32_t>(std::ftell(m_pFile) - start);
    std::fclose(m_pFile);
    m_pFile = nullptr;
    m_strOpenMode = size <= kFreshStartAboveBytes ? "a+" : "w+";
}

int CWRITE_LOG::PrintLog(LOG_LEVEL level, const char* text) {
    CancelShield shield;
    JMutexGuard lock(m_Mutex);
    if (text == nullptr || m_pFile == nullptr) {
        return 0;
    }
    char stamp[4500] = {};
    PelMgr_GetCurrentTime(stamp, nullptr);
    for (const char* piece :
         {"[", static_cast<const char*>(stamp), "] ", LevelName(level), text, "\n"}) {
        std::fputs(piece, m_pFile);
    }
    std::fflush(m_pFile);
    return 1;
}

void CWRITE_LOG::Close() {
    CancelShield shield;
    JMutexGuard lock(m_Mutex);
    if (m_pFile != nullptr) {
        std::fclose(m_pFile);
        m_pFile = nullptr;
    }
    std::string().swap(m_strLogPath);
    std::string().swap(m_strOpenMode);
}
