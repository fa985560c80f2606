// SPDX-License-Identifier: MIT
#include "tests/real_kernel/guest/gadget.h"

#include <filesystem>
#include <stdexcept>

#include "tests/real_kernel/guest/kernel_file.h"

namespace fs = std::filesystem;

namespace {

void WriteText(const std::string& path, const std::string& text) {
    if (!text.empty()) {
        WriteKernelFile(path, text);
    }
}

template <typename Wanted> void RemoveEntries(const std::string& directory, Wanted wanted) {
    std::error_code ignored;
    std::vector<fs::path> entries;
    for (const auto& entry : fs::directory_iterator(directory, ignored)) {
        if (wanted(entry)) {
            entries.push_back(entry.path());
        }
    }
    for (const fs::path& entry : entries) {
        fs::remove(entry, ignored);
    }
}

// Whichever process has plugged it in, and whatever it has come to have.
void TakeApart(const std::string& gadget) {
    try {
        WriteKernelFile(gadget + "/UDC", "\n");
    } catch (const std::exception&) {
        // it is not plugged in
    }
    RemoveEntries(gadget + "/configs/c.1", [](const auto& entry) { return entry.is_symlink(); });
    RemoveEntries(gadget + "/functions", [](const auto& entry) { return entry.is_directory(); });
    std::error_code ignored;
    for (const char* part : {"/configs/c.1", "/strings/0x409", ""}) {
        fs::remove(gadget + part, ignored);
    }
}

} // namespace

Gadget::Gadget(int socket)
    : m_Socket(socket), m_Path("/sys/kernel/config/usb_gadget/socket" + std::to_string(socket)) {
    TakeApart(m_Path); // what a scenario that was ended from outside has left
    fs::create_directory(m_Path);
    fs::create_directory(m_Path + "/configs/c.1");
    fs::create_directory(m_Path + "/strings/0x409");
    Ids("1209", "0001");
}

Gadget::~Gadget() { TakeApart(m_Path); }

Gadget& Gadget::Ids(const std::string& vendor, const std::string& product,
                    const std::string& release) {
    WriteKernelFile(m_Path + "/idVendor", "0x" + vendor);
    WriteKernelFile(m_Path + "/idProduct", "0x" + product);
    WriteKernelFile(m_Path + "/bcdDevice", "0x" + release);
    return *this;
}

Gadget& Gadget::Texts(const std::string& maker, const std::string& product,
                      const std::string& serial) {
    WriteText(m_Path + "/strings/0x409/manufacturer", maker);
    WriteText(m_Path + "/strings/0x409/product", product);
    WriteText(m_Path + "/strings/0x409/serialnumber", serial);
    return *this;
}

Gadget& Gadget::AddPorts(const std::string& function, int count) {
    for (int i = 0; i < count; ++i) {
        const std::string name =
            function + "." + std::to_string(m_Socket) + std::to_string(m_Functions.size());
        fs::create_directory(m_Path + "/functions/" + name);
        fs::create_directory_symlink(m_Path + "/functions/" + name,
                                     m_Path + "/configs/c.1/" + name);
        m_Functions.push_back(name);
    }
    return *this;
}

void Gadget::PlugIn() { WriteKernelFile(m_Path + "/UDC", "dummy_udc." + std::to_string(m_Socket)); }

void Gadget::PullOut() { WriteKernelFile(m_Path + "/UDC", "\n"); }

std::string Gadget::FarNode(int port) const {
    const std::string& function = m_Functions.at(static_cast<size_t>(port));
    return "/dev/ttyGS" + ReadKernelFile(m_Path + "/functions/" + function + "/port_num");
}

std::string Gadget::SysPath() const {
    const std::string controller = "/sys/devices/platform/dummy_hcd." + std::to_string(m_Socket);
    for (const auto& bus : fs::directory_iterator(controller)) {
        const std::string name = bus.path().filename();
        if (name.compare(0, 3, "usb") == 0) {
            return bus.path().string() + "/" + name.substr(3) + "-1";
        }
    }
    throw std::runtime_error("no bus at " + controller);
}

std::string Gadget::Place() const { return fs::path(SysPath()).filename(); }

std::string Gadget::InterfaceName(int interface) const {
    return Place() + ":1." + std::to_string(interface);
}

void Gadget::Unbind(const std::string& driver, int interface) const {
    WriteKernelFile("/sys/bus/usb/drivers/" + driver + "/unbind", InterfaceName(interface));
}

void Gadget::Bind(const std::string& driver, int interface) const {
    WriteKernelFile("/sys/bus/usb/drivers/" + driver + "/bind", InterfaceName(interface));
}

void Gadget::Authorize(bool allowed) const {
    WriteKernelFile(SysPath() + "/authorized", allowed ? "1" : "0");
}
