// SPDX-License-Identifier: MIT
//
// How the watch listens. The table that it keeps is in device_watch.cpp.
#include <poll.h>
#include <stdlib.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>

#include "adapters/linux/device_watch.h"
#include "adapters/shared/adapter_log.h"

using Lock = std::lock_guard<std::mutex>;

namespace {

// Without events the system is looked at this often.
constexpr std::chrono::milliseconds kLookEvery{1000};

// After a comparison that failed, before the next.
constexpr std::chrono::milliseconds kPause{100};

// One event after the other, but a storm must not keep everybody else from the lock.
constexpr int kMaxEvents = 64;

// OSADAPT_EVENTS, for systems where udevd runs but its word does not come through, as in most
// containers.
bool IsUdevdToBeHeard() {
    const char* wish = secure_getenv("OSADAPT_EVENTS");
    const std::string source = wish == nullptr ? "" : wish;
    if (source == "udev" || source == "kernel") {
        return source == "udev";
    }
    if (!source.empty() && source != "auto") {
        LogErrorOnce("OSADAPT_EVENTS is '" + Printable(source) +
                     "', which is none of auto, udev and kernel; taken as auto");
    }
    return access("/run/udev/control", F_OK) == 0;
}

} // namespace

DeviceWatch::DeviceWatch(HandleTable& handles, StateNotifier& notifier)
    : m_Handles(handles), m_Notifier(notifier), m_Wake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      m_Context(udev_new()) {
    if (!m_Wake.IsOpen() || m_Context == nullptr) {
        throw std::runtime_error("no event counter or no memory: " + ErrnoText(errno));
    }
    OpenMonitors(); // first, so that what happens during the scan is not lost
    Compare();
    // Also when there is nothing: it replaces what an earlier watch has published.
    m_Notifier.Publish(m_Table.Reported());
    m_Unpublished.reset();
    m_Started = std::chrono::steady_clock::now();
    if (const int error = m_Thread.Start("kova-devices", Enter, this); error != 0) {
        throw std::runtime_error("no thread to watch devices: " + ErrnoText(error));
    }
}

void DeviceWatch::Stop() {
    m_Stop = true;
    Wake();
    m_Thread.Join();
    const Lock lock(m_Mutex); // whoever is entering a port has entered it; nobody else will
}

void DeviceWatch::OpenMonitors() {
    m_Kernel = OpenMonitor(EventMonitor::Source::Kernel);
    ListenToUdevd();
}

// A host that is started with the machine may be there before udevd.
void DeviceWatch::ListenToUdevd() {
    if (m_Udev == nullptr && IsUdevdToBeHeard()) {
        m_Udev = OpenMonitor(EventMonitor::Source::Udev);
    }
    m_AwaitWord = m_Udev != nullptr;
}

std::unique_ptr<EventMonitor> DeviceWatch::OpenMonitor(EventMonitor::Source source) {
    try {
        return std::make_unique<EventMonitor>(m_Context.get(), source);
    } catch (const std::runtime_error& error) {
        LogErrorOnce(std::string(error.what()) +
                     "; without them the devices are looked at once a second");
        return nullptr;
    }
}

void DeviceWatch::FetchEvents(std::unique_ptr<EventMonitor>& monitor, bool isWord) {
    DeviceEvent event;
    for (int i = 0; monitor != nullptr && i < kMaxEvents; ++i) {
        switch (monitor->Receive(event)) {
        case EventMonitor::Outcome::Event:
            OnEvent(event, isWord);
            break;
        case EventMonitor::Outcome::Nothing:
            return;
        case EventMonitor::Outcome::Lost:
            m_Lost = true;
            break;
        case EventMonitor::Outcome::Broken:
            LogErrorOnce("device events broke off: " + ErrnoText(errno) + "; listened to anew");
            m_Lost = true;
            monitor = OpenMonitor(&monitor == &m_Udev ? EventMonitor::Source::Udev
                                                      : EventMonitor::Source::Kernel);
            return;
        }
    }
}

void DeviceWatch::OnLost() {
    LogInfo("device events were lost; compared with the system");
    Compare();
    m_Lost = false;
}

void DeviceWatch::Enter(void* self) { static_cast<DeviceWatch*>(self)->Run(); }

void DeviceWatch::Run() {
    while (!m_Stop) {
        Wait();
        const Lock lock(m_Mutex);
        try {
            ServeOnce();
        } catch (const std::exception& error) {
            LogErrorOnce(std::string("watching devices: ") + error.what());
            m_Lost = true;
        }
    }
}

// The kernel's events first: they say what udevd is going to speak of.
void DeviceWatch::ServeOnce() {
    m_IsFresh = false;
    ListenToUdevd();
    FetchEvents(m_Kernel, !m_AwaitWord);
    FetchEvents(m_Udev, true);
    if (m_Lost) {
        OnLost();
    } else if (m_Kernel == nullptr) {
        Compare();
    }
    Settle();
    Publish();
}

// Without the lock: only this thread exchanges the monitors.
void DeviceWatch::Wait() {
    const int time = TimeToWait();
    pollfd entries[] = {{m_Wake.Get(), POLLIN, 0},
                        {m_Kernel == nullptr || m_Lost ? -1 : m_Kernel->Descriptor(), POLLIN, 0},
                        {m_Udev == nullptr || m_Lost ? -1 : m_Udev->Descriptor(), POLLIN, 0}};
    poll(entries, std::size(entries), time);
    uint64_t count = 0;
    [[maybe_unused]] const ssize_t got = read(m_Wake.Get(), &count, sizeof count);
}

// In milliseconds, as poll takes it.
int DeviceWatch::TimeToWait() {
    const Lock lock(m_Mutex);
    if (m_Lost) {
        return static_cast<int>(kPause.count());
    }
    const auto now = std::chrono::steady_clock::now();
    auto due = m_Arrivals.Due();
    if (m_Kernel == nullptr) {
        due = std::min(due.value_or(now + kLookEvery), now + kLookEvery);
    }
    if (!due) {
        return -1;
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*due - now);
    return static_cast<int>(std::max<int64_t>(left.count(), 0));
}

void DeviceWatch::Wake() {
    const uint64_t one = 1;
    // Fails only when the counter is full, and then the thread wakes all the same.
    [[maybe_unused]] const ssize_t written = write(m_Wake.Get(), &one, sizeof one);
}
