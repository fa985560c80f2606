// SPDX-License-Identifier: MIT
//
// libserialport: a set of events on all ports, and non-blocking reads of those that have any. How it
// comes to open pseudo-terminals: pseudo_sysfs.cpp.
#include <libserialport.h>

#include <stdexcept>
#include <vector>

#include "bench/compare/pairs.h"

namespace {

int Need(int result, const char* what) {
    if (result < 0) {
        throw std::runtime_error(what);
    }
    return result;
}

class LibSerialPort : public PairSubject {
  public:
    LibSerialPort(size_t ports, Sink sink) : PairSubject(ports), m_Sink(sink) {
        Need(sp_new_event_set(&m_Events), "sp_new_event_set");
        for (size_t port = 0; port < ports; ++port) {
            m_Ports.push_back(Open(Name(port)));
            Need(sp_add_port_events(m_Events, m_Ports.back(), SP_EVENT_RX_READY),
                 "sp_add_port_events");
        }
    }
    ~LibSerialPort() override {
        sp_free_event_set(m_Events);
        for (sp_port* port : m_Ports) {
            sp_close(port);
            sp_free_port(port);
        }
    }

    void Write(size_t port, const void* data, size_t length) override {
        if (sp_blocking_write(m_Ports[port], data, length, 1000) != static_cast<int>(length)) {
            throw std::runtime_error("a write is short");
        }
    }

    // The library does not say whose event it was.
    void Run(const std::atomic<bool>& isEnding) override {
        while (!isEnding) {
            Need(sp_wait(m_Events, 0), "sp_wait");
            for (size_t port = 0; port < m_Ports.size(); ++port) {
                char buffer[4096];
                const int count = sp_nonblocking_read(m_Ports[port], buffer, sizeof buffer);
                if (count > 0) {
                    m_Sink(port, buffer, static_cast<size_t>(count));
                }
            }
        }
    }

    long Enumerate() override {
        sp_port** ports = nullptr;
        Need(sp_list_ports(&ports), "sp_list_ports");
        long count = 0;
        while (ports[count] != nullptr) {
            ++count;
        }
        sp_free_port_list(ports);
        return count;
    }

  private:
    static sp_port* Open(const std::string& name) {
        sp_port* port = nullptr;
        Need(sp_get_port_by_name(name.c_str(), &port), "sp_get_port_by_name");
        Need(sp_open(port, SP_MODE_READ_WRITE), "sp_open");
        Need(sp_set_flowcontrol(port, SP_FLOWCONTROL_NONE), "sp_set_flowcontrol");
        return port;
    }

    const Sink m_Sink;
    sp_event_set* m_Events = nullptr;
    std::vector<sp_port*> m_Ports;
};

} // namespace

std::unique_ptr<Subject> MakeSubject(size_t ports, Subject::Sink sink) {
    return std::make_unique<LibSerialPort>(ports, sink);
}
