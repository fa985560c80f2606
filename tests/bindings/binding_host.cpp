// SPDX-License-Identifier: MIT
#include "tests/bindings/binding_host.h"

#include <cstdint>
#include <filesystem>

BindingHost::BindingHost() {
    std::filesystem::create_symlink(KOVASMGR_VIRTUAL_ADAPTER, "libOSAdapt.so");
    UseScenario(R"(
[[device]]
name = "modem"
text = "A modem"
[[device.port]]
name = "modem-at"
far = "at"
replies = { "ATI" = "Virtual modem" }

[[device]]
name = "sensor"
[[device.port]]
name = "sensor-0"
far = "periodic"
send = "reading {n}\r\n"
every_ms = 20

[[device]]
name = "bench"
[[device.port]]
name = "far-0"
id = 4711
[[device.port]]
name = "far-1"
[[device.port]]
name = "echo-0"
far = "echo"
[[device.port]]
name = "silent-0"
far = "silent"
)");
}

kovasmgr::Port BindingHost::Open(const kovasmgr::Library& library, const std::string& name,
                                 kovasmgr::Receiver receiver) {
    return library.Open(IdOf(library, name), std::move(receiver));
}

int BindingHost::IdOf(const kovasmgr::Library& library, const std::string& name) {
    return library.List().FindPort(name).value_or(kovasmgr::PortInfo()).id;
}

Names NamesOf(const std::vector<kovasmgr::Device>& devices) {
    Names names;
    for (const kovasmgr::Device& device : devices) {
        std::string ports;
        for (const kovasmgr::PortInfo& port : device.ports) {
            ports += (ports.empty() ? "" : " ") + port.name;
        }
        names.push_back(device.name + "(" + ports + ")");
    }
    return names;
}

std::string Pattern(size_t size) {
    std::string bytes(size, '\0');
    uint32_t state = 1;
    for (char& byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}
