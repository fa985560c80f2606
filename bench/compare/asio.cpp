// SPDX-License-Identifier: MIT
//
// Boost.Asio: one io_context, a reading under way on every port.
#include <array>
#include <boost/asio/io_context.hpp>
#include <boost/asio/serial_port.hpp>
#include <boost/asio/write.hpp>
#include <deque>

#include "bench/compare/pairs.h"

namespace asio = boost::asio;

namespace {

struct Port {
    Port(asio::io_context& context, const std::string& name) : serial(context, name) {}

    asio::serial_port serial;
    std::array<char, 4096> buffer{};
};

class Asio : public PairSubject {
  public:
    Asio(size_t ports, Sink sink) : PairSubject(ports), m_Sink(sink) {
        for (size_t port = 0; port < ports; ++port) {
            m_Ports.emplace_back(m_Context, Name(port));
        }
    }

    void Write(size_t port, const void* data, size_t length) override {
        asio::write(m_Ports[port].serial, asio::buffer(data, length));
    }

    void Run(const std::atomic<bool>& isEnding) override {
        for (size_t port = 0; port < m_Ports.size(); ++port) {
            Read(port);
        }
        while (!isEnding) {
            m_Context.run_one();
        }
    }

  private:
    void Read(size_t port) {
        Port& reading = m_Ports[port];
        reading.serial.async_read_some(
            asio::buffer(reading.buffer),
            [this, port, &reading](const boost::system::error_code& error, size_t count) {
                if (!error) {
                    m_Sink(port, reading.buffer.data(), count);
                    Read(port);
                }
            });
    }

    const Sink m_Sink;
    asio::io_context m_Context{1};
    std::deque<Port> m_Ports;
};

} // namespace

std::unique_ptr<Subject> MakeSubject(size_t ports, Subject::Sink sink) {
    return std::make_unique<Asio>(ports, sink);
}
