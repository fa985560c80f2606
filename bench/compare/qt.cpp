// SPDX-License-Identifier: MIT
//
// Qt Serial Port: an event loop on the main thread, a slot for what has arrived.
#include <QCoreApplication>
#include <QSerialPort>
#include <QSerialPortInfo>
#include <stdexcept>
#include <vector>

#include "bench/compare/pairs.h"

namespace {

class QtSerialPort : public PairSubject {
  public:
    QtSerialPort(size_t ports, Sink sink) : PairSubject(ports), m_Sink(sink) {
        for (size_t port = 0; port < ports; ++port) {
            m_Ports.push_back(Open(port));
        }
    }

    // Otherwise it would be written by the event loop, later.
    void Write(size_t port, const void* data, size_t length) override {
        QSerialPort& serial = *m_Ports[port];
        serial.write(static_cast<const char*>(data), static_cast<qint64>(length));
        while (serial.bytesToWrite() > 0 && serial.flush()) {
        }
        if (serial.bytesToWrite() > 0) {
            throw std::runtime_error("a write is short");
        }
    }

    void Run(const std::atomic<bool>& isEnding) override {
        while (!isEnding) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
    }

    long Enumerate() override {
        return static_cast<long>(QSerialPortInfo::availablePorts().size());
    }

  private:
    std::unique_ptr<QSerialPort> Open(size_t port) {
        auto serial = std::make_unique<QSerialPort>(QString::fromStdString(Name(port)));
        if (!serial->open(QIODevice::ReadWrite)) {
            throw std::runtime_error(Name(port) + ": " + serial->errorString().toStdString());
        }
        QObject::connect(
            serial.get(), &QSerialPort::readyRead, serial.get(), [this, port, from = serial.get()] {
                char buffer[4096];
                for (qint64 count = 0; (count = from->read(buffer, sizeof buffer)) > 0;) {
                    m_Sink(port, buffer, static_cast<size_t>(count));
                }
            });
        return serial;
    }

    int m_ArgumentCount = 1;
    char m_Name[8] = "compare";
    char* m_Arguments[2] = {m_Name, nullptr};
    QCoreApplication m_Application{m_ArgumentCount, m_Arguments};
    const Sink m_Sink;
    std::vector<std::unique_ptr<QSerialPort>> m_Ports;
};

} // namespace

std::unique_ptr<Subject> MakeSubject(size_t ports, Subject::Sink sink) {
    return std::make_unique<QtSerialPort>(ports, sink);
}
