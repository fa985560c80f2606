// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_FAKES_FAKE_STATE_H
#define KOVASMGR_TESTS_FAKES_FAKE_STATE_H

#include <array>
#include <deque>
#include <map>
#include <memory>
#include <mutex>

#include "tests/fakes/blocks.h"
#include "tests/fakes/fake_adapter.h"

/// The script and the record of one loaded fake, and its seven operations. Calls may be ended by
/// cancellation: locks by RAII only, and none is held where a call can be cancelled.
class FakeState : public FakeAdapterControl {
  public:
    // The seven operations.
    int Register(OS_ADAPT_STATUS_CALLBACK cb);
    int UnRegister(OS_ADAPT_STATUS_CALLBACK cb);
    int Open(const char* portName, int* handle);
    int Close(int handle);
    int Write(int handle, const void* data, long length, long* written);
    int Read(int handle, void* buffer, long size, long* read);
    int Enum(int which, _OS_ADAPT_DEVICEPORTLIST* list);

    // What a test does.
    void Reset() override;
    void SetDevices(const _OS_ADAPT_DEVICEPORTLIST& list) override;
    void SetResult(FakeCall call, int result) override;
    void FailFrom(FakeCall call, long nth, int result) override;
    void SetHandle(const std::string& port, int handle) override;
    void PushRead(const std::string& port, FakeRead answer) override;
    void PushData(const std::string& port, const std::string& bytes) override;
    std::size_t PendingReads(const std::string& port) const override;
    void SetWriteCount(std::optional<long> count) override;
    std::vector<std::string> Written(const std::string& port) const override;
    std::vector<std::string> Journal() const override;
    void ClearJournal() override;
    long Calls(FakeCall call) const override;
    std::thread::id LastThread(FakeCall call) const override;
    std::size_t OpenHandles() const override;
    bool IsRegistered() const override;
    bool Notify(int status) override;
    bool NotifyOnThread(int status) override;
    void KeepNotifyingAfterUnRegister(bool keep) override;
    void SetHook(FakeCall call, std::function<void()> hook) override;
    void Block(FakeCall call, FakeBlock how) override { m_Blocks.Block(call, how); }
    void Unblock() override { m_Blocks.Unblock(); }
    int Blocked() const override { return m_Blocks.Blocked(); }

  private:
    // How calls of one function end, and what is known of them.
    struct Call {
        int result = OS_ADAPT_OK;
        long failFrom = 0; // the number of the first call that fails; 0: none
        int failure = OS_ADAPT_FAILED;
        long count = 0;
        std::thread::id thread;
        std::function<void()> hook;
    };

    // All that Reset forgets.
    struct Script {
        std::array<Call, kFakeCalls> calls;
        std::unique_ptr<_OS_ADAPT_DEVICEPORTLIST> devices;
        int lastHandle = 0;
        std::map<std::string, int> scriptedHandles;
        std::map<int, std::string> openPorts; // names by handle
        std::map<std::string, std::deque<FakeRead>> reads;
        std::map<std::string, std::vector<std::string>> written;
        std::optional<long> writeCount;
        std::vector<std::string> journal;
        OS_ADAPT_STATUS_CALLBACK callback = nullptr;
        bool isRegistered = false;
        bool keepNotifying = false;
    };

    int Begin(FakeCall call);
    void Note(const std::string& line, int result);
    std::string PortOf(int handle) const;
    long TakeRead(std::deque<FakeRead>& answers, void* buffer, long size) const;

    Call& Of(FakeCall call) { return m_Script.calls[static_cast<std::size_t>(call)]; }
    const Call& Of(FakeCall call) const { return m_Script.calls[static_cast<std::size_t>(call)]; }

    mutable std::mutex m_Mutex; // guards m_Script
    Script m_Script;
    Blocks m_Blocks;
};

#endif
