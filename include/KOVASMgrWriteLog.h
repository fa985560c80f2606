// SPDX-License-Identifier: MIT
//
// The log writer behind KOVASMgrLog.h, for C++ hosts that want a log of their own in the same
// format.
#ifndef KOVASMGR_WRITE_LOG_H
#define KOVASMGR_WRITE_LOG_H

#include <cstdint>
#include <cstdio>
#include <string>

#include "KOVASMgrExport.h"
#include "common/jmutex.h"

/// The levels that have a name in the file: "INFO:", "ERRO:", "FATAL:". Any other value is written
/// without a name.
enum LOG_LEVEL : int32_t { LOG_LEVEL_INFO = 0, LOG_LEVEL_ERRO = 1, LOG_LEVEL_FATAL = 2 };

/// One log file and its lock.
///
/// Threads: all methods but construction and destruction may be called by any thread.
class KOVASMGR_API CWRITE_LOG {
  public:
    /// No path, no file; lines are dropped until init succeeds.
    CWRITE_LOG();

    /// Closes the file. Never throws.
    ~CWRITE_LOG();

    CWRITE_LOG(const CWRITE_LOG&) = delete;
    CWRITE_LOG& operator=(const CWRITE_LOG&) = delete;

    /// Sets the path and opens the file; sets its mode to 0777.
    ///
    /// @param path        borrowed for the call
    /// @param isFullPath  true: path is the file. False: path is appended to the path in use,
    ///                    without a separator.
    /// @return false when path is null; true when the path is unchanged (nothing is done, even if
    ///         no file is open); else whether the file is open now.
    /// @note The stream in use before is dropped without being closed.
    bool init(const char* path, bool isFullPath);

    /// Chooses how the file will be opened, from its size now: appended to up to 102,400 bytes,
    /// started afresh above. Creates the file if it is missing; leaves no stream open. Prints "Log
    /// file open failed!" to standard output when the file cannot be opened. Called by init with
    /// the lock held.
    void CheckLogFileSize();

    /// Writes one line: "[time] LEVEL:text" and a newline, flushed at once. text may have any
    /// length.
    ///
    /// @return 1 when it was handed to the stream, 0 when text is null or no file is open.
    int PrintLog(LOG_LEVEL level, const char* text);

  private:
    friend class ProcessLog;

    // Closes the file and forgets its path; lines are dropped from then on.
    void Close();

    std::string m_strLogPath;
    std::string m_strOpenMode;
    FILE* m_pFile;
    JMutex m_Mutex;
};

#endif
