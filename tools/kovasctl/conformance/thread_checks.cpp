// SPDX-License-Identifier: MIT
#include <pthread.h>
#include <time.h>

#include <atomic>
#include <thread>

#include "tools/kovasctl/conformance/checks.h"
#include "tools/kovasctl/conformance/notice_book.h"
#include "tools/kovasctl/conformance/stall.h"
#include "tools/kovasctl/conformance/timed.h"
#include "tools/kovasctl/conformance/trial.h"
#include "tools/kovasctl/conformance/verdict.h"

namespace {

int OnThread(const std::function<int()>& call) {
    int result = OS_ADAPT_FAILED;
    RunOnThread([&] { result = call(); });
    return result;
}

void Expect(Trial& trial, const std::string& call, const std::function<int()>& body) {
    trial.Step(call + " on a thread of its own");
    const int result = OnThread(body);
    if (result != OS_ADAPT_OK) {
        throw Broken(call + " on a thread of its own returned " + std::to_string(result));
    }
}

void UsePortFromThreads(Trial& trial, const std::string& port) {
    const Subject& adapter = trial.Adapter();
    int handle = OS_ADAPT_NO_HANDLE;
    long count = 0;
    char buffer[8192];
    Expect(trial, "OS_ADAPT_OpenPort", [&] { return adapter.Open(port.c_str(), &handle); });
    if (handle == OS_ADAPT_NO_HANDLE) {
        return; // R12a
    }
    Expect(trial, "OS_ADAPT_Write",
           [&] { return adapter.Write(handle, kLineEnd, sizeof kLineEnd, &count); });
    Expect(trial, "OS_ADAPT_Read", [&] { return adapter.Read(handle, buffer, 4096, &count); });
    Expect(trial, "OS_ADAPT_ClosePort", [&] { return adapter.Close(handle); });
}

int EnumerateOnce(const Subject& adapter) {
    const auto roomy = std::make_unique<RoomyList>();
    return adapter.Enumerate(OS_ADAPT_ENUM_ALL, &roomy->list);
}

/// Registers and un-registers again and again.
class Registrar {
  public:
    explicit Registrar(const Subject& adapter) : m_Thread([this, &adapter] { Run(adapter); }) {}
    ~Registrar() { m_Thread.join(); }
    Registrar(const Registrar&) = delete;
    Registrar& operator=(const Registrar&) = delete;

    bool HasEnded() const { return m_HasEnded; }
    int Failures() const { return m_Failures; }

  private:
    void Run(const Subject& adapter) {
        constexpr int kRounds = 20;
        for (int round = 0; round < kRounds; ++round) {
            m_Failures += adapter.Register(NoticeBook::OnNotice) == OS_ADAPT_OK ? 0 : 1;
            m_Failures += adapter.UnRegister(NoticeBook::OnNotice) == OS_ADAPT_OK ? 0 : 1;
        }
        m_HasEnded = true;
    }

    std::atomic<int> m_Failures{0};
    std::atomic<bool> m_HasEnded{false};
    std::thread m_Thread;
};

// A plain thread: what a cancellation unwinds must not be noexcept.
struct BlockedWrite {
    const Subject* adapter;
    int handle;
    std::string data = std::string(kStallPiece, '\n');
    long count = 0;
    std::atomic<bool> hasBegun{false};

    static void* Run(void* self) {
        auto* write = static_cast<BlockedWrite*>(self);
        write->hasBegun = true;
        write->adapter->Write(write->handle, write->data.data(), kStallPiece, &write->count);
        return nullptr;
    }
};

bool JoinWithin(double seconds, pthread_t thread, void** result) {
    timespec until{};
    clock_gettime(CLOCK_REALTIME, &until);
    until.tv_sec += static_cast<time_t>(seconds) + 1;
    return pthread_timedjoin_np(thread, result, &until) == 0;
}

/// @return whether the cancellation ended it; false: it ended before
bool CancelWrite(Trial& trial, int handle) {
    auto* write = new BlockedWrite{&trial.Adapter(), handle}; // a thread may be left behind
    pthread_t thread{};
    if (pthread_create(&thread, nullptr, BlockedWrite::Run, write) != 0) {
        throw NotTried("no thread to be had");
    }
    HoldsWithin(trial.Moment(), [&] { return write->hasBegun.load(); });
    std::this_thread::sleep_for(std::chrono::milliseconds(30)); // to be inside, not just before
    pthread_cancel(thread);
    void* result = nullptr;
    if (!JoinWithin(trial.Options().writeBound + trial.Moment(), thread, &result)) {
        throw Broken("a write that was cancelled did not end");
    }
    return result == PTHREAD_CANCELED;
}

void ExpectReturns(Trial& trial, const std::string& call, std::function<void()> body) {
    trial.Step(call + " after a cancelled write");
    if (!EndsWithin(trial.Moment(), std::move(body))) {
        throw Broken("after a write was cancelled, " + call + " does not return");
    }
}

} // namespace

std::string CheckThreadPerCall(Trial& trial) {
    const Subject& adapter = trial.Adapter();
    Expect(trial, "OS_ADAPT_EnumDevicePortInfo", [&] { return EnumerateOnce(adapter); });
    Expect(trial, "OS_ADAPT_RegisterDeviceStateProcessCallBack",
           [&] { return adapter.Register(NoticeBook::OnNotice); });
    for (const std::string& port : trial.Options().ports) {
        UsePortFromThreads(trial, port);
    }
    Expect(trial, "OS_ADAPT_UnRegisterDeviceStateProcessCallBack",
           [&] { return adapter.UnRegister(NoticeBook::OnNotice); });
    return "each call succeeded on a thread of its own, with " +
           std::to_string(trial.Options().ports.size()) + " ports";
}

std::string CheckRegistrationOverlap(Trial& trial) {
    const Subject& adapter = trial.Adapter();
    int enumerations = 0;
    int failures = 0;
    trial.Step("enumerating while another thread registers and un-registers");
    const Registrar registrar(adapter);
    while (!registrar.HasEnded()) {
        failures += EnumerateOnce(adapter) == OS_ADAPT_OK ? 0 : 1;
        ++enumerations;
    }
    if (failures + registrar.Failures() > 0) {
        throw Broken("of " + std::to_string(enumerations) + " enumerations " +
                     std::to_string(failures) + " failed, of 40 registrations and " +
                     "un-registrations meanwhile " + std::to_string(registrar.Failures()));
    }
    return std::to_string(enumerations) + " enumerations during 40 registrations and "
                                          "un-registrations";
}

std::string CheckCancelledWrite(Trial& trial) {
    constexpr int kAttempts = 5;
    const std::string& port = trial.Options().stalledPorts.front();
    const int handle = StallPort(trial, port).handle;
    trial.Step("cancelling a thread inside OS_ADAPT_Write");
    bool isCancelled = false;
    for (int attempt = 0; attempt < kAttempts && !isCancelled; ++attempt) {
        isCancelled = CancelWrite(trial, handle);
    }
    if (!isCancelled) {
        throw NotTried("a write to the full port '" + port + "' does not block, or not for long");
    }
    const Subject* adapter = &trial.Adapter();
    ExpectReturns(trial, "OS_ADAPT_EnumDevicePortInfo", [=] { EnumerateOnce(*adapter); });
    ExpectReturns(trial, "OS_ADAPT_Read", [=] {
        char buffer[8192];
        long count = 0;
        adapter->Read(handle, buffer, 4096, &count);
    });
    ExpectReturns(trial, "OS_ADAPT_ClosePort", [=] { adapter->Close(handle); });
    return "a write that blocked was cancelled; enumeration, read and close returned after it";
}
