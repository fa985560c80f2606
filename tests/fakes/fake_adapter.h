// SPDX-License-Identifier: MIT
//
// How a test steers the scripted adapter. The adapter is a real libOSAdapt.so that the manager
// loads from the current directory; a test loads the same file, asks it for its FakeAdapterControl
// through FakeAdapter_Control, and scripts what the seven functions do. The state is one per loaded
// module.
//
// As loaded: no devices, every call succeeds, handles are 1, 2, 3, ..., reads find nothing, writes
// take everything.
//
// Threads: all methods, from any thread; none holds a lock while a callback, a hook or a block
// runs.
#ifndef KOVASMGR_TESTS_FAKES_FAKE_ADAPTER_H
#define KOVASMGR_TESTS_FAKES_FAKE_ADAPTER_H

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "OSAdapt.h"

/// The seven functions.
enum class FakeCall { kRegister, kUnRegister, kOpen, kClose, kWrite, kRead, kEnum };
constexpr std::size_t kFakeCalls = 7;

/// How a call can hang until Unblock.
enum class FakeBlock {
    kNone,
    kInRead,  ///< in read(2) on a pipe: cancellation reaches it
    kInMutex, ///< waiting for a mutex: it does not
    kInSpin   ///< running: it does not
};

/// One answer of OS_ADAPT_Read.
struct FakeRead {
    std::string bytes;         ///< handed out up to the size asked for
    std::optional<long> count; ///< reported in place of the true count
    bool isCountStored = true; ///< false: success, but the count is left as it was
    int result = OS_ADAPT_OK;
};

class KOVASMGR_API FakeAdapterControl {
  public:
    virtual ~FakeAdapterControl() = default;

    /// Everything as loaded. No call may be inside.
    virtual void Reset() = 0;

    // What is attached.

    /// What enumerations copy to the manager, all 286,980 bytes, however wrong. See FakeDevices.
    virtual void SetDevices(const _OS_ADAPT_DEVICEPORTLIST& list) = 0;

    // How calls end.

    virtual void SetResult(FakeCall call, int result) = 0;

    /// From the nth call on (the next one is the first) the result is this one.
    virtual void FailFrom(FakeCall call, long nth, int result = OS_ADAPT_FAILED) = 0;

    /// The handle that opening this port stores, also when opening fails.
    virtual void SetHandle(const std::string& port, int handle) = 0;

    // Data.

    /// The next unread answer for this port, behind those already there. What a read has no room
    /// for is left for the next one, unless the answer's count is scripted.
    virtual void PushRead(const std::string& port, FakeRead answer) = 0;
    virtual void PushData(const std::string& port, const std::string& bytes) = 0;

    /// Answers that no read has taken yet.
    virtual std::size_t PendingReads(const std::string& port) const = 0;

    /// The count that successful writes report in place of the length; nothing: the length.
    virtual void SetWriteCount(std::optional<long> count) = 0;

    /// What was written to the port so far, one text for each call.
    virtual std::vector<std::string> Written(const std::string& port) const = 0;

    // What was called.

    /// The calls in order, each when it ends, except reads: "Register", "UnRegister", "Enum 4",
    /// "Open COM1 -> 7", "Write 7 5", "Close 7"; with " = 30001" behind it when it fails.
    virtual std::vector<std::string> Journal() const = 0;
    virtual void ClearJournal() = 0;

    /// Calls begun since loading.
    virtual long Calls(FakeCall call) const = 0;

    /// The thread of the latest call; the default id when there was none.
    virtual std::thread::id LastThread(FakeCall call) const = 0;

    /// Handles given and not closed.
    virtual std::size_t OpenHandles() const = 0;

    // Notices.

    virtual bool IsRegistered() const = 0;

    /// Tells the registered callback, on the calling thread.
    /// @return false when there is none.
    virtual bool Notify(int status) = 0;

    /// The same on a thread of its own, which has ended on return.
    virtual bool NotifyOnThread(int status) = 0;

    /// Whether Notify still reaches the last callback after its un-registration.
    virtual void KeepNotifyingAfterUnRegister(bool keep) = 0;

    // Trouble inside a call.

    /// Runs at the start of each such call, on its thread; may throw. Empty: nothing.
    virtual void SetHook(FakeCall call, std::function<void()> hook) = 0;

    /// Lets each such call hang. kInMutex: Unblock must be called on the same thread.
    virtual void Block(FakeCall call, FakeBlock how) = 0;

    /// Ends every block, now and for calls to come.
    virtual void Unblock() = 0;

    /// Calls that hang now.
    virtual int Blocked() const = 0;
};

extern "C" {
/// The module's one control; it lives until the module is unloaded.
KOVASMGR_API FakeAdapterControl* FakeAdapter_Control();
}

#endif
