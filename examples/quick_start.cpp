// SPDX-License-Identifier: MIT
// Lists the devices, opens the first port, sends a line, shows what comes back and what comes and goes.
#include <KOVASMgr.hpp>

#include <chrono>
#include <iostream>
#include <thread>

int main() {
    try {
        // KOVASMgr.log goes to this directory, libOSAdapt.so is loaded from the current one.
        const kovasmgr::Library library(".");
        const kovasmgr::Watch watch = library.WatchDevices([](const kovasmgr::Changes& changes) {
            std::cout << changes.came.size() << " came, " << changes.went.size() << " went\n";
        });
        const kovasmgr::Snapshot snapshot = library.List();
        for (const kovasmgr::Device& device : snapshot.devices) {
            std::cout << device.name << " (" << device.text << ")\n";
            for (const kovasmgr::PortInfo& port : device.ports) {
                std::cout << "  " << port.id << ": " << port.name << '\n';
            }
        }
        const kovasmgr::Port port = library.Open(
            snapshot.devices.at(0).ports.at(0).id, // what it receives runs on the read thread
            [](kovasmgr::ByteView bytes) { std::cout << bytes.Text() << std::flush; });
        if (const kovasmgr::Written written = port.Write("ATI\r"); !written.Whole()) {
            std::cerr << written.count << " bytes sent, " << written.error.message() << '\n';
        }
        std::this_thread::sleep_for(std::chrono::seconds(1)); // the answer arrives meanwhile
    } catch (const std::exception& error) {
        std::cerr << "quick_start: " << error.what() << '\n';
        return 1;
    }
}
