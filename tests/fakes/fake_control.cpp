// SPDX-License-Identifier: MIT
#include <utility>

#include "tests/fakes/fake_state.h"

using Lock = std::lock_guard<std::mutex>;

void FakeState::Reset() {
    m_Blocks.Unblock();
    Lock lock(m_Mutex);
    m_Script = Script();
}

void FakeState::SetDevices(const _OS_ADAPT_DEVICEPORTLIST& list) {
    Lock lock(m_Mutex);
    m_Script.devices = std::make_unique<_OS_ADAPT_DEVICEPORTLIST>(list);
}

void FakeState::SetResult(FakeCall call, int result) {
    Lock lock(m_Mutex);
    Of(call).result = result;
    Of(call).failFrom = 0;
}

void FakeState::FailFrom(FakeCall call, long nth, int result) {
    Lock lock(m_Mutex);
    Of(call).failFrom = Of(call).count + nth;
    Of(call).failure = result;
}

void FakeState::SetHandle(const std::string& port, int handle) {
    Lock lock(m_Mutex);
    m_Script.scriptedHandles[port] = handle;
}

void FakeState::PushRead(const std::string& port, FakeRead answer) {
    Lock lock(m_Mutex);
    m_Script.reads[port].push_back(std::move(answer));
}

void FakeState::PushData(const std::string& port, const std::string& bytes) {
    FakeRead answer;
    answer.bytes = bytes;
    PushRead(port, std::move(answer));
}

std::size_t FakeState::PendingReads(const std::string& port) const {
    Lock lock(m_Mutex);
    const auto found = m_Script.reads.find(port);
    return found == m_Script.reads.end() ? 0 : found->second.size();
}

void FakeState::SetWriteCount(std::optional<long> count) {
    Lock lock(m_Mutex);
    m_Script.writeCount = count;
}

std::vector<std::string> FakeState::Written(const std::string& port) const {
    Lock lock(m_Mutex);
    const auto found = m_Script.written.find(port);
    return found == m_Script.written.end() ? std::vector<std::string>() : found->second;
}

std::vector<std::string> FakeState::Journal() const {
    Lock lock(m_Mutex);
    return m_Script.journal;
}

void FakeState::ClearJournal() {
    Lock lock(m_Mutex);
    m_Script.journal.clear();
}

long FakeState::Calls(FakeCall call) const {
    Lock lock(m_Mutex);
    return Of(call).count;
}

std::thread::id FakeState::LastThread(FakeCall call) const {
    Lock lock(m_Mutex);
    return Of(call).thread;
}

std::size_t FakeState::OpenHandles() const {
    Lock lock(m_Mutex);
    return m_Script.openPorts.size();
}

bool FakeState::IsRegistered() const {
    Lock lock(m_Mutex);
    return m_Script.isRegistered;
}

bool FakeState::Notify(int status) {
    OS_ADAPT_STATUS_CALLBACK callback = nullptr;
    {
        Lock lock(m_Mutex);
        if (m_Script.isRegistered || m_Script.keepNotifying) {
            callback = m_Script.callback;
        }
    }
    if (callback == nullptr) {
        return false;
    }
    callback(static_cast<_OS_ADAPT_DEVICESTATUS_TYPE>(status));
    return true;
}

bool FakeState::NotifyOnThread(int status) {
    bool told = false;
    std::thread([&] { told = Notify(status); }).join();
    return told;
}

void FakeState::KeepNotifyingAfterUnRegister(bool keep) {
    Lock lock(m_Mutex);
    m_Script.keepNotifying = keep;
}

void FakeState::SetHook(FakeCall call, std::function<void()> hook) {
    Lock lock(m_Mutex);
    Of(call).hook = std::move(hook);
}
