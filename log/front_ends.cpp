// SPDX-License-Identifier: MIT
#include "KOVASMgrLog.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "log/process_log.h"

NeverDestroyed<CWRITE_LOG> g_INFO_LOG;

/// Closes the file when the process exits or the library is unloaded. The log itself stays usable:
/// the read thread may be alive then, and other static destructors may log.
class ProcessLog {
  public:
    ProcessLog() = default;
    ~ProcessLog() { g_INFO_LOG->Close(); }
    ProcessLog(const ProcessLog&) = delete;
    ProcessLog& operator=(const ProcessLog&) = delete;
};

namespace {

const ProcessLog kCloseAtExit;

int Print(LOG_LEVEL level, const char* fmt, va_list arguments) {
    if (fmt == nullptr) {
        return 0;
    }
    char message[KOVASMGR_LOG_MESSAGE_SIZE] = {};
    std::vsnprintf(message, sizeof(message), fmt, arguments);
    return g_INFO_LOG->PrintLog(level, message);
}

} // namespace

int INFO_LOG(const char* fmt, ...) {
    va_list arguments;
    va_start(arguments, fmt);
    const int written = Print(LOG_LEVEL_INFO, fmt, arguments);
    va_end(arguments);
    return written;
}

int ERRO_LOG(const char* fmt, ...) {
    va_list arguments;
    va_start(arguments, fmt);
    const int written = Print(LOG_LEVEL_ERRO, fmt, arguments);
    va_end(arguments);
    return written;
}

int FATAL_LOG(const char* fmt, ...) {
    va_list arguments;
    va_start(arguments, fmt);
    const int written = Print(LOG_LEVEL_FATAL, fmt, arguments);
    va_end(arguments);
    return written;
}

int INIT_LOG(const char* path, bool isFullPath) {
    return g_INFO_LOG->init(path, isFullPath) ? 1 : 0;
}

int KOVASMGR_LOG_INIT(const char* dir) {
    if (dir == nullptr) {
        return INIT_LOG("KOVASMgr.log", false);
    }
    const size_t length = std::strlen(dir);
    const bool isSeparated = length > 0 && (dir[length - 1] == '\\' || dir[length - 1] == '/');
    const char* fileName = isSeparated ? "KOVASMgr.log" : "/KOVASMgr.log";
    char path[4500] = {};
    if (length + std::strlen(fileName) >= sizeof(path)) {
        return 0;
    }
    std::snprintf(path, sizeof(path), "%s%s", dir, fileName);
    return INIT_LOG(path, true);
}
