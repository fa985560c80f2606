// SPDX-License-Identifier: MIT
#include "tests/real_kernel/guest/tty_events.h"

#include <libudev.h>
#include <poll.h>

#include <array>
#include <cmath>
#include <memory>

#include "tests/harness/wait_until.h"

namespace {

constexpr std::array<const char*, 2> kSources{"kernel", "udev"};
constexpr int kLookMilliseconds = 20;

struct Unref {
    void operator()(udev* context) const { udev_unref(context); }
    void operator()(udev_monitor* monitor) const { udev_monitor_unref(monitor); }
    void operator()(udev_device* device) const { udev_device_unref(device); }
};

using Monitor = std::unique_ptr<udev_monitor, Unref>;

Monitor OpenMonitor(udev* context, const char* source) {
    Monitor monitor(udev_monitor_new_from_netlink(context, source));
    udev_monitor_filter_add_match_subsystem_devtype(monitor.get(), "tty", nullptr);
    udev_monitor_enable_receiving(monitor.get());
    return monitor;
}

TtyEvents::Event ToEvent(udev_device* device, const char* source, TtyEvents::Instant when) {
    return {source, udev_device_get_action(device), udev_device_get_sysname(device),
            udev_device_get_seqnum(device), when};
}

} // namespace

TtyEvents::TtyEvents() : m_Thread([this] { Listen(); }) {
    WaitUntil([&] { return m_Listening.load(); });
}

TtyEvents::~TtyEvents() {
    m_Ending = true;
    m_Thread.join();
}

std::optional<TtyEvents::Event> TtyEvents::Latest(const std::string& source,
                                                  const std::string& action, Instant since) const {
    const std::vector<Event> events = Select(source, action, since);
    return events.empty() ? std::nullopt : std::optional<Event>(events.back());
}

int TtyEvents::Groups(const std::string& source, const std::string& action, Instant since,
                      std::chrono::milliseconds quiet) const {
    const std::vector<Event> events = Select(source, action, since);
    int groups = events.empty() ? 0 : 1;
    for (size_t i = 1; i < events.size(); ++i) {
        groups += events[i].when - events[i - 1].when >= quiet ? 1 : 0;
    }
    return groups;
}

std::string TtyEvents::Timeline(const std::string& source, const std::string& action,
                                Instant since) const {
    std::string text;
    const std::vector<Event> events = Select(source, action, since);
    for (const Event& event : events) {
        const std::chrono::duration<double, std::milli> at = event.when - events.front().when;
        text += std::to_string(std::lround(at.count())) + " ";
    }
    return text + "ms";
}

std::vector<TtyEvents::Event> TtyEvents::Select(const std::string& source,
                                                const std::string& action, Instant since) const {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    std::vector<Event> events;
    for (const Event& event : m_Events) {
        if (event.source == source && event.action == action && event.when >= since) {
            events.push_back(event);
        }
    }
    return events;
}

bool TtyEvents::WaitFor(const std::string& source, const std::string& action, Instant since) const {
    return WaitUntil([&] { return Latest(source, action, since).has_value(); });
}

void TtyEvents::Take(const Event& event) {
    if (event.name.compare(0, 5, "ttyGS") != 0) {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_Events.push_back(event);
    }
}

void TtyEvents::Listen() {
    const std::unique_ptr<udev, Unref> context(udev_new());
    std::array<Monitor, 2> monitors;
    std::array<pollfd, 2> waiting{};
    for (size_t i = 0; i < monitors.size(); ++i) {
        monitors.at(i) = OpenMonitor(context.get(), kSources.at(i));
        waiting.at(i) = {udev_monitor_get_fd(monitors.at(i).get()), POLLIN, 0};
    }
    m_Listening = true;
    while (!m_Ending) {
        poll(waiting.data(), waiting.size(), kLookMilliseconds);
        const Instant now = std::chrono::steady_clock::now();
        for (size_t i = 0; i < monitors.size(); ++i) {
            const std::unique_ptr<udev_device, Unref> device(
                udev_monitor_receive_device(monitors.at(i).get()));
            if (device != nullptr) {
                Take(ToEvent(device.get(), kSources.at(i), now));
            }
        }
    }
}
