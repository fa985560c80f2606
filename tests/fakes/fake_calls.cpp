// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstring>

#include "tests/fakes/fake_state.h"

using Lock = std::lock_guard<std::mutex>;

// Counts the call, lets the test's trouble happen, and tells how the call ends.
int FakeState::Begin(FakeCall kind) {
    int result = OS_ADAPT_OK;
    std::function<void()> hook;
    {
        Lock lock(m_Mutex);
        Call& call = Of(kind);
        ++call.count;
        call.thread = std::this_thread::get_id();
        const bool fails = call.failFrom != 0 && call.count >= call.failFrom;
        result = fails ? call.failure : call.result;
        hook = call.hook;
    }
    if (hook) {
        hook();
    }
    m_Blocks.Pass(kind);
    return result;
}

void FakeState::Note(const std::string& line, int result) {
    const std::string end = result == OS_ADAPT_OK ? "" : " = " + std::to_string(result);
    m_Script.journal.push_back(line + end);
}

std::string FakeState::PortOf(int handle) const {
    const auto found = m_Script.openPorts.find(handle);
    return found == m_Script.openPorts.end() ? std::string() : found->second;
}

int FakeState::Register(OS_ADAPT_STATUS_CALLBACK cb) {
    const int result = Begin(FakeCall::kRegister);
    Lock lock(m_Mutex);
    if (result == OS_ADAPT_OK) {
        m_Script.callback = cb;
        m_Script.isRegistered = true;
    }
    Note("Register", result);
    return result;
}

int FakeState::UnRegister(OS_ADAPT_STATUS_CALLBACK) {
    const int result = Begin(FakeCall::kUnRegister);
    Lock lock(m_Mutex);
    m_Script.isRegistered = false;
    Note("UnRegister", result);
    return result;
}

int FakeState::Open(const char* portName, int* handle) {
    const int result = Begin(FakeCall::kOpen);
    Lock lock(m_Mutex);
    const auto scripted = m_Script.scriptedHandles.find(portName);
    if (scripted != m_Script.scriptedHandles.end()) {
        *handle = scripted->second;
    } else if (result == OS_ADAPT_OK) {
        *handle = ++m_Script.lastHandle;
    }
    if (result == OS_ADAPT_OK) {
        m_Script.openPorts[*handle] = portName;
    }
    Note("Open " + std::string(portName) + " -> " + std::to_string(*handle), result);
    return result;
}

int FakeState::Close(int handle) {
    const int result = Begin(FakeCall::kClose);
    Lock lock(m_Mutex);
    if (result == OS_ADAPT_OK) {
        m_Script.openPorts.erase(handle);
    }
    Note("Close " + std::to_string(handle), result);
    return result;
}

int FakeState::Write(int handle, const void* data, long length, long* written) {
    const int result = Begin(FakeCall::kWrite);
    Lock lock(m_Mutex);
    if (result == OS_ADAPT_OK) {
        m_Script.written[PortOf(handle)].emplace_back(static_cast<const char*>(data),
                                                      static_cast<std::size_t>(length));
        *written = m_Script.writeCount.value_or(length);
    }
    Note("Write " + std::to_string(handle) + " " + std::to_string(length), result);
    return result;
}

int FakeState::Read(int handle, void* buffer, long size, long* read) {
    const int result = Begin(FakeCall::kRead);
    Lock lock(m_Mutex);
    std::deque<FakeRead>& answers = m_Script.reads[PortOf(handle)];
    if (result != OS_ADAPT_OK) {
        return result;
    }
    if (answers.empty()) {
        *read = 0;
        return OS_ADAPT_OK;
    }
    const FakeRead answer = answers.front();
    const long count = TakeRead(answers, buffer, size);
    if (answer.isCountStored) {
        *read = answer.count.value_or(count);
    }
    return answer.result;
}

// Hands out the first answer, or as much of it as there is room for.
long FakeState::TakeRead(std::deque<FakeRead>& answers, void* buffer, long size) const {
    FakeRead& answer = answers.front();
    const std::size_t count = std::min(answer.bytes.size(), static_cast<std::size_t>(size));
    std::memcpy(buffer, answer.bytes.data(), count);
    if (count < answer.bytes.size() && !answer.count) {
        answer.bytes.erase(0, count);
    } else {
        answers.pop_front();
    }
    return static_cast<long>(count);
}

int FakeState::Enum(int which, _OS_ADAPT_DEVICEPORTLIST* list) {
    const int result = Begin(FakeCall::kEnum);
    Lock lock(m_Mutex);
    if (result == OS_ADAPT_OK && m_Script.devices) {
        std::memcpy(list, m_Script.devices.get(), sizeof *list);
    }
    Note("Enum " + std::to_string(which), result);
    return result;
}
