// SPDX-License-Identifier: MIT
#include "adapters/virtual/session.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <stdexcept>
#include <thread>

#include "adapters/shared/adapter_log.h"
#include "adapters/virtual/simulation/call_gate.h"
#include "adapters/virtual/simulation/event_file.h"

namespace {

// How long the thread rests after an error that would only come again at once.
constexpr std::chrono::milliseconds kPause{100};

Scenario LoadOrLog() {
    ScenarioResult result = LoadScenario();
    if (!result.error.empty()) {
        LogError("no devices, the scenario has a mistake: " + result.error);
    }
    return std::move(result.scenario);
}

} // namespace

std::shared_ptr<PortSource> StartPortSource(HandleTable& handles, StateNotifier& notifier) {
    return std::make_shared<Session>(handles, notifier);
}

Session::Session(HandleTable& handles, StateNotifier& notifier)
    : m_Notifier(notifier), m_Wake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (!m_Wake.IsOpen()) {
        throw std::runtime_error("no event counter: " + ErrnoText(errno));
    }
    OpenControl();
    m_Simulation = std::make_shared<Simulation>(LoadOrLog());
    m_Ports = std::make_unique<VirtualPorts>(*m_Simulation, handles, notifier, m_Directory.get());
    m_Director = std::make_unique<Director>(m_Simulation, *m_Ports);
    if (const int error = m_Thread.Start("kova-virtual", Enter, this); error != 0) {
        m_Ports->RemoveAll();
        throw std::runtime_error("no thread: " + ErrnoText(error));
    }
    m_Simulation->Calls().SetWaker(WakeSelf, this);
    m_Simulation->Clock().Continue();
    GuardCalls(m_Simulation);
    Wake();
}

void Session::Stop() {
    if (m_Stop.exchange(true)) {
        return;
    }
    m_Simulation->Calls().SetWaker(nullptr, nullptr);
    m_Simulation->Calls().EndWaiting();
    Wake();
    m_Thread.Join();
    LeaveCalls();
    m_Ports->RemoveAll();
    m_Server.reset();
    m_Directory.reset();
    WriteEventFile(m_Simulation->Log());
}

int Session::Open(const std::string& portName) {
    const int handle = m_Ports->Open(portName);
    Wake();
    return handle;
}

void Session::Wake() {
    const uint64_t one = 1;
    // Fails only when the counter is full, and then the thread wakes all the same.
    [[maybe_unused]] const ssize_t written = write(m_Wake.Get(), &one, sizeof one);
}

void Session::WakeSelf(void* self) { static_cast<Session*>(self)->Wake(); }

void Session::OpenControl() {
    try {
        m_Directory = std::make_unique<ControlDirectory>();
        m_Server = std::make_unique<ControlServer>(m_Directory->Path());
    } catch (const std::runtime_error& error) {
        LogError(std::string("devices cannot be plugged and pulled: ") + error.what());
    }
}

void Session::Enter(void* self) { static_cast<Session*>(self)->Run(); }

void Session::Run() {
    while (!m_Stop) {
        try {
            ServeOnce();
        } catch (const std::exception& error) {
            LogErrorOnce(std::string("virtual devices: ") + error.what());
            Pause();
        }
    }
}

void Session::ServeOnce() {
    PollSet waiting;
    const size_t wake = waiting.Add(m_Wake.Get(), POLLIN);
    m_Ports->Watch(waiting);
    m_Director->Watch(waiting);
    if (m_Server != nullptr) {
        m_Server->Watch(waiting);
    }
    if (!waiting.Wait()) {
        LogErrorOnce("virtual devices react late, waiting failed: " + ErrnoText(errno));
        Pause();
    }
    if ((waiting.Seen(wake) & POLLIN) != 0) {
        DrainWake();
    }
    m_Director->Serve();
    m_Ports->Serve(waiting);
    if (m_Server != nullptr) {
        m_Server->Serve(waiting, *m_Director, m_Notifier);
    }
}

// Ends early when the thread is woken: Stop does not wait for it.
void Session::Pause() {
    pollfd wake{m_Wake.Get(), POLLIN, 0};
    const int seen = poll(&wake, 1, static_cast<int>(kPause.count()));
    if (seen > 0) {
        DrainWake();
    } else if (seen < 0 && errno != EINTR) {
        std::this_thread::sleep_for(kPause);
    }
}

void Session::DrainWake() {
    uint64_t count = 0;
    [[maybe_unused]] const ssize_t got = read(m_Wake.Get(), &count, sizeof count);
}
