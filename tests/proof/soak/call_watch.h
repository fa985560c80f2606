// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_SOAK_CALL_WATCH_H
#define KOVASMGR_TESTS_PROOF_SOAK_CALL_WATCH_H

#include <cstddef>

/// How long a host's calls take. A call that does not come back within a minute ends the program:
/// whoever waits for it could say nothing more.
namespace call_watch {

/// Starts the thread that looks for calls which hang, for the rest of the process.
void Start();

/// The longest call so far, also of those under way.
double LongestMs();

/// What the longest call was.
const char* LongestCall();

/// One call of the host, for a scope. At most one at a time on each thread.
class Call {
  public:
    explicit Call(const char* name);
    ~Call();
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

  private:
    std::size_t m_Slot;
};

} // namespace call_watch

/// Calls a function of the library under the watch.
#define KOVASMGR_WATCHED(function, ...)                                                            \
    [&] {                                                                                          \
        const call_watch::Call call(#function);                                                    \
        return function(__VA_ARGS__);                                                              \
    }()

#endif
