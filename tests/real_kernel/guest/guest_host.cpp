// SPDX-License-Identifier: MIT
#include "tests/real_kernel/guest/guest_host.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>
#include <stdexcept>

#include "tests/harness/log_text.h"
#include "tests/harness/process_counts.h"
#include "tests/harness/wait_until.h"
#include "tests/real_kernel/guest/kernel_file.h"
#include "tests/real_kernel/guest/notices.h"
#include "tests/real_kernel/guest/steering.h"
#include "tests/system/settled_threads.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* kLog = "log/KOVASMgr.log";
constexpr size_t kPieceSize = 4096;

// A device takes half a second to appear, and the machine is emulated.
constexpr std::chrono::seconds kDeviceTime{15};

Device ToDevice(const _KOVAMGR_DEVICEINFO& info) {
    Device device{info.szDeviceName, info.szDeviceText, {}};
    for (uint32_t i = 0; i < info.nPortCount; ++i) {
        device.ports.push_back({info.stPort[i].nPortID, info.stPort[i].szPortName});
    }
    return device;
}

bool Holds(const Device& device, const std::string& part) {
    return device.name.find(part) != std::string::npos ||
           device.text.find(part) != std::string::npos;
}

// All but the log, which stays open.
std::size_t DescriptorsThatCount() {
    std::size_t count = 0;
    for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
        std::error_code ignored;
        count += fs::read_symlink(entry.path(), ignored).filename() == "KOVASMgr.log" ? 0 : 1;
    }
    return count;
}

std::size_t DescriptorsWithSteering() {
    OpenSteering();
    return DescriptorsThatCount();
}

// What each thread is called and where it is in the kernel.
std::string Threads() {
    std::string text;
    for (const auto& thread : fs::directory_iterator("/proc/self/task")) {
        std::ifstream stack(thread.path() / "stack");
        text += ReadKernelFile(thread.path() / "comm") + "\n" +
                std::string(std::istreambuf_iterator<char>(stack), {});
    }
    return text;
}

void Expect(int wanted, int result, const char* call) {
    if (result != wanted) {
        throw std::runtime_error(std::string(call) + " gave " + std::to_string(result) + "\n" +
                                 LogText(std::string(kLog)));
    }
}

} // namespace

GuestHost::GuestHost()
    : m_Descriptors(DescriptorsWithSteering()),
      m_Threads(std::min(SettledThreads(), RunningThreads())) {}

GuestHost::~GuestHost() { KOVAMGR_Release(); }

void GuestHost::TearDown() {
    notices::OnEach(nullptr);
    EXPECT_EQ(KOVAMGR_OK, KOVAMGR_Release());
    EXPECT_TRUE(WaitUntil([&] { return RunningThreads() <= m_Threads; })) << "a thread is left:\n"
                                                                          << Threads();
    EXPECT_EQ(m_Descriptors, DescriptorsThatCount()) << "a descriptor is left";
}

void GuestHost::Start() {
    Expect(KOVAMGR_OK, KOVAMGR_Init("log"), "KOVAMGR_Init");
    KOVAMGR_RegisterDeviceStateProcessCallback(notices::OnDevices);
}

std::vector<Device> GuestHost::Devices() {
    const auto list = std::make_unique<_KOVAMGR_DEVICEINFOLIST>();
    Expect(KOVAMGR_OK, KOVAMGR_EnumeratePortInfo(list.get()), "KOVAMGR_EnumeratePortInfo");
    std::vector<Device> devices;
    for (uint32_t i = 0; i < list->nDeviceCount && i < KOVAMGR_MAX_DEVICES; ++i) {
        devices.push_back(ToDevice(list->stDevice[i]));
    }
    return devices;
}

std::optional<Device> GuestHost::Find(const std::string& part) {
    for (const Device& device : Devices()) {
        if (Holds(device, part)) {
            return device;
        }
    }
    return std::nullopt;
}

Device GuestHost::WaitFor(const std::string& part) {
    std::optional<Device> device;
    const auto isThere = [&] { return (device = Find(part)).has_value(); };
    if (!WaitUntil(isThere, kDeviceTime)) {
        std::ostringstream text;
        text << "no device with \"" << part << "\" among";
        for (const Device& other : Devices()) {
            text << "\n  " << other;
        }
        throw std::runtime_error(text.str());
    }
    return *device;
}

bool GuestHost::WaitUntilGone(const std::string& part) {
    return WaitUntil([&] { return !Find(part).has_value(); }, kDeviceTime);
}

void GuestHost::Open(const Port& port) {
    ASSERT_EQ(KOVAMGR_OK, KOVAMGR_Open(port.id)) << port.name << "\n" << LogText();
}

bool GuestHost::Send(const Port& port, const std::string& bytes) {
    size_t sent = 0;
    int attemptsLeft = 20; // without progress; each takes up to a second
    while (sent < bytes.size() && attemptsLeft > 0) {
        const size_t size = std::min(kPieceSize, bytes.size() - sent);
        const int count =
            KOVAMGR_Write(port.id, bytes.data() + sent, static_cast<long>(size), 0, nullptr);
        if (count < 0 || count > static_cast<int>(size)) {
            return false;
        }
        attemptsLeft = count > 0 ? 20 : attemptsLeft - 1;
        sent += static_cast<size_t>(count);
    }
    return sent == bytes.size();
}

std::string GuestHost::LogText() { return ::LogText(std::string(kLog)); }

int GuestHost::DescriptorsOf(const std::string& nodes) {
    int count = 0;
    for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
        std::error_code ignored;
        const std::string target = fs::read_symlink(entry.path(), ignored);
        count += target.compare(0, nodes.size(), nodes) == 0 ? 1 : 0;
    }
    return count;
}

void TellFigure(const std::string& name, const std::string& text) {
    std::cout << "figure " << name << ": " << text << std::endl;
}

std::ostream& operator<<(std::ostream& out, const Device& device) {
    out << device.name << " (" << device.text << ")";
    for (const Port& port : device.ports) {
        out << " " << port.id << "=" << port.name;
    }
    return out;
}
