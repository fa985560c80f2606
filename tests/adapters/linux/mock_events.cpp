// SPDX-License-Identifier: MIT
#include "tests/adapters/linux/mock_events.h"

#include <arpa/inet.h>
#include <dlfcn.h>
#include <libudev.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <map>
#include <mutex>

namespace {

struct Monitor {
    EventSource source = EventSource::Kernel;
    int error = 0; // of the next receive
};

std::mutex s_Mutex;

// By descriptor; one that was closed stays until its number is used again. Never destroyed: the
// adapter's thread may still be here when the process ends.
std::map<int, Monitor>& Monitors() {
    static auto* const s_Monitors = new std::map<int, Monitor>;
    return *s_Monitors;
}

// What libudev writes before the properties.
struct UdevHeader {
    char prefix[8] = "libudev";
    uint32_t magic = htonl(0xfeedcafe);
    uint32_t headerSize = sizeof(UdevHeader);
    uint32_t propertiesOffset = sizeof(UdevHeader);
    uint32_t propertiesLength = 0;
    uint32_t subsystemHash = 0;
    uint32_t devtypeHash = 0;
    uint32_t tagBloom[2] = {};
};

// MurmurHash2, by which monitors are filtered in the kernel.
uint32_t Hash(const std::string& text) {
    constexpr uint32_t kFactor = 0x5bd1e995;
    auto hash = static_cast<uint32_t>(text.size());
    size_t at = 0;
    for (; at + 4 <= text.size(); at += 4) {
        uint32_t block = 0;
        std::memcpy(&block, text.data() + at, sizeof block);
        block *= kFactor;
        block ^= block >> 24U;
        hash = hash * kFactor ^ block * kFactor;
    }
    if (at < text.size()) {
        uint32_t block = 0;
        std::memcpy(&block, text.data() + at, text.size() - at);
        hash = (hash ^ block) * kFactor;
    }
    hash ^= hash >> 13U;
    hash *= kFactor;
    return hash ^ hash >> 15U;
}

std::string ValueOf(const EventProperties& properties, const std::string& name) {
    for (const auto& [key, value] : properties) {
        if (key == name) {
            return value;
        }
    }
    return "";
}

std::string Body(const EventProperties& properties) {
    std::string body;
    for (const auto& [name, value] : properties) {
        body.append(name).append("=").append(value).push_back('\0');
    }
    return body;
}

std::string KernelMessage(const EventProperties& properties) {
    return ValueOf(properties, "ACTION") + "@" + ValueOf(properties, "DEVPATH") + '\0' +
           Body(properties);
}

std::string UdevMessage(const EventProperties& properties) {
    const std::string body = Body(properties);
    UdevHeader header;
    header.propertiesLength = static_cast<uint32_t>(body.size());
    header.subsystemHash = htonl(Hash(ValueOf(properties, "SUBSYSTEM")));
    const std::string devtype = ValueOf(properties, "DEVTYPE");
    header.devtypeHash = devtype.empty() ? 0 : htonl(Hash(devtype));
    return std::string(reinterpret_cast<const char*>(&header), sizeof header) + body;
}

// One that does not listen any more, or not yet, gets nothing.
void SendTo(const std::string& path, const std::string& message) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const int sender = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sendto(sender, message.data(), message.size(), 0, reinterpret_cast<sockaddr*>(&address),
           sizeof address);
    close(sender);
}

template <typename Function> Function* Next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

int TakeError(int descriptor) {
    const std::lock_guard<std::mutex> lock(s_Mutex);
    const auto monitor = Monitors().find(descriptor);
    return monitor == Monitors().end() ? 0 : std::exchange(monitor->second.error, 0);
}

std::vector<int> MonitorsOf(EventSource source) {
    const std::lock_guard<std::mutex> lock(s_Mutex);
    std::vector<int> descriptors;
    for (const auto& [descriptor, monitor] : Monitors()) {
        if (monitor.source == source) {
            descriptors.push_back(descriptor);
        }
    }
    return descriptors;
}

} // namespace

void SendEvent(const std::string& root, EventSource source, const EventProperties& properties) {
    const std::string message =
        source == EventSource::Kernel ? KernelMessage(properties) : UdevMessage(properties);
    for (const int monitor : MonitorsOf(source)) {
        SendTo(root + "/event" + std::to_string(monitor), message);
    }
}

void FailNextReceive(EventSource source, int error) {
    const std::lock_guard<std::mutex> lock(s_Mutex);
    for (auto& [descriptor, monitor] : Monitors()) {
        if (monitor.source == source) {
            monitor.error = error;
        }
    }
}

std::vector<int> OpenMonitors() {
    std::vector<int> open;
    const std::lock_guard<std::mutex> lock(s_Mutex);
    for (const auto& [descriptor, monitor] : Monitors()) {
        struct stat info {};
        if (fstat(descriptor, &info) == 0 && S_ISSOCK(info.st_mode)) {
            open.push_back(descriptor);
        }
    }
    return open;
}

// The program's own functions come before those of the libraries: the adapter's calls pass here.

extern "C" __attribute__((visibility("default"))) udev_monitor*
udev_monitor_new_from_netlink(udev* context, const char* name) {
    static auto* const s_Next =
        Next<decltype(udev_monitor_new_from_netlink)>("udev_monitor_new_from_netlink");
    udev_monitor* const monitor = s_Next(context, name);
    if (monitor != nullptr) {
        const std::lock_guard<std::mutex> lock(s_Mutex);
        const bool isUdev = std::strcmp(name, "udev") == 0;
        Monitors()[udev_monitor_get_fd(monitor)] = {
            isUdev ? EventSource::Udev : EventSource::Kernel, 0};
    }
    return monitor;
}

extern "C" __attribute__((visibility("default"))) ssize_t recvmsg(int descriptor, msghdr* message,
                                                                  int flags) {
    static auto* const s_Next = Next<decltype(recvmsg)>("recvmsg");
    const int error = TakeError(descriptor);
    if (error != 0) {
        errno = error;
        return -1;
    }
    return s_Next(descriptor, message, flags);
}
