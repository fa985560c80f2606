// SPDX-License-Identifier: MIT
#include "tests/adapters/linux/mock_machine.h"

#include <fcntl.h>
#include <libudev.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

namespace {

std::string Uevent(const MockEntry& entry) {
    std::string text;
    for (const auto& [name, value] : entry.properties) {
        text.append(name).append("=").append(value).append("\n");
    }
    return entry.driver.empty() ? text : text + "DRIVER=" + entry.driver + "\n";
}

// "/devices/..."
std::string DevPath(const MockEntry& entry) { return entry.path.substr(4); }

std::string NodeName(const MockPort& port) { return port.node.substr(5); }

std::string ClassLink(const MockPort& port) { return "/sys/class/tty/" + NodeName(port); }

EventProperties Properties(EventSource source, const std::string& action, const MockEntry& entry,
                           uint64_t sequence) {
    EventProperties properties{
        {"ACTION", action}, {"DEVPATH", DevPath(entry)}, {"SUBSYSTEM", entry.subsystem}};
    properties.insert(properties.end(), entry.properties.begin(), entry.properties.end());
    properties.emplace_back("SEQNUM", std::to_string(sequence));
    if (source == EventSource::Udev) {
        properties.emplace_back("USEC_INITIALIZED", "1234");
    }
    return properties;
}

} // namespace

MockMachine::MockMachine(bool hasUdevd) : m_HasUdevd(hasUdevd) {
    m_System.WriteFile("/sys/kernel/uevent_seqnum", std::to_string(m_Sequence) + "\n");
    LookEverythingUp();
}

// The preloaded library finds the real functions at their first call. A thread of the adapter's that
// did so while the adapter is being unloaded would wait for the loader, which waits for the thread.
void MockMachine::LookEverythingUp() const {
    const MockEntry console{"/sys/devices/virtual/tty/console", "tty", "", {}, {}};
    udev* const context = udev_new();
    udev_monitor* const monitor = udev_monitor_new_from_netlink(context, "kernel");
    udev_monitor_enable_receiving(monitor);
    SendEvent(m_System.Root(), EventSource::Kernel,
              {{"ACTION", "change"}, {"DEVPATH", DevPath(console)}, {"SUBSYSTEM", "tty"}});
    udev_device_unref(udev_monitor_receive_device(monitor));
    udev_enumerate* const enumeration = udev_enumerate_new(context);
    udev_enumerate_scan_devices(enumeration);
    udev_enumerate_unref(enumeration);
    udev_monitor_unref(monitor);
    udev_unref(context);
    struct stat info {};
    stat("/", &info);
    lstat("/", &info);
    int value = access("/", F_OK);
    const int file = open("/proc/self/stat", O_RDONLY | O_CLOEXEC);
    [[maybe_unused]] ssize_t done = read(file, &value, sizeof value);
    fstat(file, &info);
    close(file);
    done = write(-1, &value, sizeof value);
    done = recv(-1, &value, sizeof value, 0);
    done = readlink("/proc/self/exe", reinterpret_cast<char*>(&value), 1);
    ioctl(-1, FIONREAD, &value);
    std::ifstream("/proc/self/stat") >> value;
}

void MockMachine::Plug(const MockDevice& device) {
    Appear(device);
    SayKernel("add", device.Device());
    for (const MockPort& port : device.Ports()) {
        SayKernel("add", port.Terminal());
    }
    Send();
    if (m_HasUdevd) {
        UdevSays("add", device);
    }
}

void MockMachine::Pull(const MockDevice& device) {
    Vanish(device);
    for (const MockPort& port : device.Ports()) {
        SayKernel("remove", port.Terminal());
    }
    SayKernel("remove", device.Device());
    Send();
    if (m_HasUdevd) {
        UdevSays("remove", device);
    }
}

void MockMachine::PlugPort(const MockDevice& device, const std::string& port) {
    AppearPort(device, port);
    KernelSays("add", device, port);
    if (m_HasUdevd) {
        UdevSays("add", device, port);
    }
}

void MockMachine::PullPort(const MockDevice& device, const std::string& port) {
    VanishPort(device, port);
    KernelSays("remove", device, port);
    if (m_HasUdevd) {
        UdevSays("remove", device, port);
    }
}

void MockMachine::Appear(const MockDevice& device) {
    for (const MockEntry& parent : device.Parents()) {
        if (!parent.subsystem.empty() && !m_System.Exists(parent.path + "/uevent")) {
            Write(parent);
        }
    }
    for (const MockPort& port : device.Ports()) {
        AppearPort(port);
    }
}

void MockMachine::AppearPort(const MockDevice& device, const std::string& port) {
    AppearPort(device.PortAt(port));
}

void MockMachine::AppearPort(const MockPort& port) {
    for (const MockEntry& entry : port.entries) {
        if (!m_System.Exists(entry.path + "/uevent")) {
            Write(entry);
        }
    }
    m_System.Link(ClassLink(port), port.Terminal().path);
    m_Terminals[port.node] = std::make_unique<MockTerminal>();
    m_System.MakeNode(port.node, m_Terminals[port.node]->NearEnd(), port.Number());
}

void MockMachine::Vanish(const MockDevice& device) {
    for (const MockPort& port : device.Ports()) {
        if (m_System.Exists(port.Terminal().path)) {
            VanishPort(port);
        }
    }
    if (!device.Device().subsystem.empty()) {
        m_System.Remove(device.Device().path);
    }
}

void MockMachine::VanishPort(const MockDevice& device, const std::string& port) {
    VanishPort(device.PortAt(port));
}

void MockMachine::VanishPort(const MockPort& port) {
    m_Terminals.erase(port.node);
    m_System.Remove(port.node);
    m_System.Remove(ClassLink(port));
    m_System.Remove(port.Terminal().path);
}

void MockMachine::KernelSays(const std::string& action, const MockDevice& device,
                             const std::string& port) {
    SayKernel(action, device.PortAt(port).Terminal());
    Send();
}

void MockMachine::KernelSays(const std::string& action, const MockDevice& device) {
    for (const MockPort& port : device.Ports()) {
        SayKernel(action, port.Terminal());
    }
    Send();
}

void MockMachine::UdevSays(const std::string& action, const MockDevice& device,
                           const std::string& port) {
    SayUdev(action, device.PortAt(port));
    Send();
}

void MockMachine::UdevSays(const std::string& action, const MockDevice& device) {
    for (const MockPort& port : device.Ports()) {
        SayUdev(action, port);
    }
    Send();
}

std::function<void()> MockMachine::UdevsWord(const std::string& action, const MockPort& port) {
    const uint64_t sequence = m_Sequences[port.Terminal().path];
    return [this, action, port, sequence] {
        SendEvent(m_System.Root(), EventSource::Udev,
                  Properties(EventSource::Udev, action, port.Terminal(), sequence));
    };
}

void MockMachine::KernelSaysBarely(const std::string& action, const MockDevice& device,
                                   const std::string& port) {
    MockEntry bare = device.PortAt(port).Terminal();
    bare.properties.clear();
    SayKernel(action, bare);
    Send();
}

void MockMachine::SetAttribute(const MockEntry& entry, const std::string& name,
                               const std::string& value) {
    m_System.WriteFile(entry.path + "/" + name, value.empty() ? "" : value + "\n");
}

void MockMachine::FailMonitors(int error) {
    FailNextReceive(EventSource::Kernel, error);
    FailNextReceive(EventSource::Udev, error);
    // Something to receive, about nothing that matters.
    const MockEntry console{"/sys/devices/virtual/tty/console", "tty", "", {}, {}};
    Say(EventSource::Kernel, "change", console, NextSequence());
    Say(EventSource::Udev, "change", console, m_Sequence);
    Send();
}

void MockMachine::Write(const MockEntry& entry) {
    m_System.WriteFile(entry.path + "/uevent", Uevent(entry));
    for (const auto& [name, value] : entry.attributes) {
        m_System.WriteFile(entry.path + "/" + name, value + "\n");
    }
    const std::string subsystem =
        (entry.subsystem == "tty" ? "/sys/class/" : "/sys/bus/") + entry.subsystem;
    m_System.Link(entry.path + "/subsystem", subsystem);
    if (!entry.driver.empty()) {
        m_System.Link(entry.path + "/driver", subsystem + "/drivers/" + entry.driver);
    }
}

void MockMachine::Initialize(const MockPort& port) {
    if (m_System.Exists(port.Terminal().path)) {
        m_System.WriteFile(port.Terminal().path + "/uevent",
                           Uevent(port.Terminal()) + "USEC_INITIALIZED=1234\n");
    }
}

void MockMachine::SayKernel(const std::string& action, const MockEntry& entry) {
    Say(EventSource::Kernel, action, entry, NextSequence());
}

void MockMachine::SayUdev(const std::string& action, const MockPort& port) {
    if (action == "add") {
        Initialize(port);
    }
    Say(EventSource::Udev, action, port.Terminal(), m_Sequences[port.Terminal().path]);
}

void MockMachine::Say(EventSource source, const std::string& action, const MockEntry& entry,
                      uint64_t sequence) {
    if (entry.subsystem.empty()) {
        return;
    }
    m_Sequences[entry.path] = sequence;
    m_Unsent.emplace_back(source, Properties(source, action, entry, sequence));
}

// Together, so that a pause of this thread does not come between them.
void MockMachine::Send() {
    for (const auto& [source, properties] : m_Unsent) {
        SendEvent(m_System.Root(), source, properties);
    }
    m_Unsent.clear();
}

// Written before the event goes out, as the kernel does.
uint64_t MockMachine::NextSequence() {
    m_System.WriteFile("/sys/kernel/uevent_seqnum", std::to_string(++m_Sequence) + "\n");
    return m_Sequence;
}
