// SPDX-License-Identifier: MIT
#include <cstdio>
#include <cstring>
#include <ctime>
#include <limits>

#include "KOVASMgrLog.h"
#include "common/jmutex_guard.h"
#include "common/never_destroyed.h"

namespace {

// The calendar text of one second. Converting a second looks at the time-zone file; doing so for
// every line would cost more than the line.
class SecondText {
  public:
    SecondText() { m_Mutex.Init(); }

    /// Writes "2026-01-31 23:59:59" and its terminator to out.
    /// @return where the terminator stands
    char* CopyTo(char* out, time_t second) {
        JMutexGuard lock(m_Mutex);
        if (second != m_Second) {
            Convert(second);
        }
        std::memcpy(out, m_szText, m_nLength + 1);
        return out + m_nLength;
    }

  private:
    void Convert(time_t second) KOVASMGR_REQUIRES(m_Mutex) {
        tm fields{};
        tzset(); // follows a time zone that the host changes
        localtime_r(&second, &fields);
        const int length = std::snprintf(
            m_szText, sizeof(m_szText), "%04d-%02d-%02d %02d:%02d:%02d", fields.tm_year + 1900,
            fields.tm_mon + 1, fields.tm_mday, fields.tm_hour, fields.tm_min, fields.tm_sec);
        m_nLength = static_cast<size_t>(length);
        m_Second = second;
    }

    JMutex m_Mutex;
    // At first a second that no clock shows.
    time_t m_Second KOVASMGR_GUARDED_BY(m_Mutex) = std::numeric_limits<time_t>::min();
    size_t m_nLength KOVASMGR_GUARDED_BY(m_Mutex) = 0;
    char m_szText[80] KOVASMGR_GUARDED_BY(m_Mutex) = {}; // room for any int in every field
};

NeverDestroyed<SecondText> s_SecondText;

} // namespace

void PelMgr_GetCurrentTime(char* out, const char* format) {
    if (out == nullptr || format != nullptr) {
        return;
    }
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    char* const end = s_SecondText->CopyTo(out, now.tv_sec);
    std::snprintf(end, 5, ":%03d", static_cast<int>(now.tv_nsec / 1000000));
}
