// SPDX-License-Identifier: MIT
#include "adapters/virtual/simulation/guarded_calls.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "adapters/shared/adapter.h"
#include "adapters/shared/adapter_log.h"
#include "adapters/shared/cancel_shield.h"
#include "adapters/virtual/language/action_text.h"
#include "adapters/virtual/simulation/call_gate.h"

namespace {

// As long as a terminal that takes nothing is given.
constexpr std::chrono::seconds kWriteTime{1};

// A first call starts the session. Null when that fails: the adapter says why.
std::shared_ptr<Simulation> StartSimulation() {
    const CancelShield shield;
    try {
        Adapter::Instance().UseSource();
    } catch (const std::runtime_error&) {
        return nullptr;
    }
    return GuardingSimulation();
}

// @return whether the call is to fail.
bool WaitOut(const HostCall& call, HostCalls& calls) {
    calls.WaitOut(call);
    return call.faults.fails;
}

int Fail(const HostCall& call, HostCalls& calls) {
    const CancelShield shield;
    calls.EndFailed(call);
    const bool isPort = call.operation != Operation::Enumerate;
    LogErrorOnce((isPort ? "port '" + Printable(call.port->name) + "': " : std::string()) +
                 OperationText(call.operation) + " failed because the scenario says so");
    return OS_ADAPT_FAILED;
}

// What a line with a baud rate takes: its transmitter's buffer holds some, the rest waits.
int WritePaced(LinePace& pace, int handle, std::string_view data, long* written) {
    const auto until = std::chrono::steady_clock::now() + kWriteTime;
    size_t total = 0;
    do {
        const size_t room = pace.WriteRoom(data.size() - total);
        long count = 0;
        const int result =
            Adapter::Instance().Write(handle, data.data() + total, static_cast<long>(room), &count);
        if (result != OS_ADAPT_OK && total == 0) {
            return result;
        }
        pace.NoteWritten(static_cast<size_t>(count));
        total += static_cast<size_t>(count);
        if (static_cast<size_t>(count) < room || result != OS_ADAPT_OK) {
            break; // the far end takes no more
        }
    } while (total < data.size() && pace.WaitForRoom(data.size() - total, until));
    *written = static_cast<long>(total);
    return OS_ADAPT_OK;
}

int WriteSome(const HostCall& call, int handle, std::string_view data, long* written) {
    if (call.port->pace) {
        return WritePaced(*call.port->pace, handle, data, written);
    }
    return Adapter::Instance().Write(handle, data.data(), static_cast<long>(data.size()), written);
}

int ReadPaced(LinePace& pace, int handle, void* buffer, size_t size, long* read) {
    const size_t room = pace.ReadRoom(size);
    if (room == 0) {
        *read = 0;
        return OS_ADAPT_OK;
    }
    const int result = Adapter::Instance().Read(handle, buffer, static_cast<long>(room), read);
    if (result == OS_ADAPT_OK) {
        const auto count = static_cast<size_t>(*read);
        pace.NoteRead(count, count < room);
    }
    return result;
}

int ReadSome(const HostCall& call, int handle, void* buffer, long size, long* read) {
    return call.port->pace
               ? ReadPaced(*call.port->pace, handle, buffer, static_cast<size_t>(size), read)
               : Adapter::Instance().Read(handle, buffer, size, read);
}

} // namespace

int GuardedOpen(const char* portName, int* handle) {
    Adapter& adapter = Adapter::Instance();
    const auto simulation = portName == nullptr || handle == nullptr ? nullptr : StartSimulation();
    const auto call = simulation == nullptr
                          ? std::nullopt
                          : simulation->Calls().Begin(Operation::Open, std::string(portName));
    if (!call) {
        return adapter.Open(portName, handle);
    }
    HostCalls& calls = simulation->Calls();
    if (WaitOut(*call, calls)) {
        return Fail(*call, calls);
    }
    const CancelShield shield;
    const int result = adapter.Open(portName, handle);
    if (result == OS_ADAPT_OK) {
        calls.EndOpen(*call, *handle);
    } else {
        calls.EndOther(*call);
    }
    return result;
}

int GuardedClose(int handle) {
    const auto simulation = GuardingSimulation();
    const auto call =
        simulation == nullptr ? std::nullopt : simulation->Calls().Begin(Operation::Close, handle);
    if (!call) {
        return Adapter::Instance().Close(handle);
    }
    HostCalls& calls = simulation->Calls();
    if (WaitOut(*call, calls)) {
        return Fail(*call, calls);
    }
    const CancelShield shield;
    calls.EndClose(*call, handle);
    return Adapter::Instance().Close(handle);
}

int GuardedWrite(int handle, const void* data, long length, long* written) {
    const bool isUsable = data != nullptr && length >= 0 && written != nullptr;
    const auto simulation = isUsable ? GuardingSimulation() : nullptr;
    const auto call =
        simulation == nullptr ? std::nullopt : simulation->Calls().Begin(Operation::Write, handle);
    if (!call) {
        return Adapter::Instance().Write(handle, data, length, written);
    }
    HostCalls& calls = simulation->Calls();
    if (WaitOut(*call, calls)) {
        return Fail(*call, calls);
    }
    const auto wanted = static_cast<size_t>(length);
    const std::string_view bytes(static_cast<const char*>(data),
                                 std::min(wanted, call->faults.limit.value_or(wanted)));
    const int result = WriteSome(*call, handle, bytes, written);
    const CancelShield shield;
    if (result == OS_ADAPT_OK) {
        calls.EndWrite(*call, bytes.substr(0, static_cast<size_t>(*written)), wanted);
    } else {
        calls.EndOther(*call);
    }
    return result;
}

int GuardedRead(int handle, void* buffer, long size, long* read) {
    const bool isUsable = buffer != nullptr && size > 0 && read != nullptr;
    const auto simulation = isUsable ? GuardingSimulation() : nullptr;
    const auto call =
        simulation == nullptr ? std::nullopt : simulation->Calls().Begin(Operation::Read, handle);
    if (!call) {
        return Adapter::Instance().Read(handle, buffer, size, read);
    }
    HostCalls& calls = simulation->Calls();
    if (WaitOut(*call, calls)) {
        return Fail(*call, calls);
    }
    const int result = ReadSome(*call, handle, buffer, size, read);
    if (call->faults.delay || !call->triggered.empty()) {
        const CancelShield shield;
        calls.EndOther(*call);
    }
    return result;
}

int GuardedEnumerate(int which, _OS_ADAPT_DEVICEPORTLIST* list) {
    const bool isUsable = which == OS_ADAPT_ENUM_ALL && list != nullptr;
    const auto simulation = isUsable ? StartSimulation() : nullptr;
    if (simulation == nullptr) {
        return Adapter::Instance().Enumerate(which, list);
    }
    HostCalls& calls = simulation->Calls();
    const HostCall call = calls.BeginEnumeration();
    if (WaitOut(call, calls)) {
        return Fail(call, calls);
    }
    const CancelShield shield;
    const int result = Adapter::Instance().Enumerate(which, list);
    calls.EndOther(call);
    return result;
}
