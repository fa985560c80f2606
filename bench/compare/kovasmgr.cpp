// SPDX-License-Identifier: MIT
//
// This library, on the adapter of pseudo-terminals.
#include <poll.h>
#include <unistd.h>

#include <stdexcept>
#include <string>

#include "bench/compare/subject.h"
#include "bench/port_callbacks.h"
#include "bench/terminal_host.h"

namespace {

class Manager : public Subject {
  public:
    Manager(size_t ports, Sink sink) : m_Host(static_cast<int>(ports)) {
        PortCallbacks::Register(ports, sink);
    }

    int FarEnd(size_t port) const override { return m_Host.FarEnd(ID(port)); }

    void Write(size_t port, const void* data, size_t length) override {
        const auto size = static_cast<long>(length);
        if (KOVAMGR_Write(ID(port), data, size, 0, nullptr) != size) {
            throw std::runtime_error("a write is short");
        }
    }

    // The library's read thread does it.
    void Run(const std::atomic<bool>& isEnding) override {
        while (!isEnding) {
            poll(nullptr, 0, 100);
        }
    }

    long Enumerate() override {
        const auto list = std::make_unique<_KOVAMGR_DEVICEINFOLIST>();
        KOVAMGR_EnumeratePortInfo(list.get());
        long ports = 0;
        for (uint32_t device = 0; device < list->nDeviceCount; ++device) {
            ports += list->stDevice[device].nPortCount;
        }
        return ports;
    }

  private:
    static int ID(size_t port) { return static_cast<int>(port) + 1; }

    TerminalHost m_Host;
};

} // namespace

std::unique_ptr<Subject> MakeSubject(size_t ports, Subject::Sink sink) {
    return std::make_unique<Manager>(ports, sink);
}
