// SPDX-License-Identifier: MIT
#include "adapters/linux/serial_port.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>

#include "adapters/linux/bounded_call.h"
#include "adapters/linux/open_failure.h"
#include "adapters/shared/adapter_log.h"
#include "adapters/shared/cancel_shield.h"

namespace {

constexpr std::chrono::milliseconds kDrainTime{900};
constexpr std::chrono::milliseconds kCloseTime{100};

[[noreturn]] void Fail(int error) { throw std::system_error(error, std::generic_category()); }

// O_NOCTTY: a host that leads a session would be ended by the port's hang-up.
UniqueFd OpenNode(const std::string& node) {
    UniqueFd terminal(open(node.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    if (!terminal.IsOpen()) {
        Fail(errno);
    }
    return terminal;
}

void CheckNode(int terminal, const PortFacts& facts) {
    struct stat opened {};
    struct stat named {};
    if (fstat(terminal, &opened) != 0 || stat(facts.node.c_str(), &named) != 0) {
        Fail(errno);
    }
    if (!S_ISCHR(opened.st_mode)) {
        Fail(ENOTTY);
    }
    if (facts.number != 0 && named.st_rdev != facts.number) {
        Fail(ENODEV);
    }
}

// Two ways, because there are two kinds of other programs: flock() is asked by those that lock,
// exclusive mode keeps the rest out. Exclusive mode alone does not stop root.
void Occupy(int terminal) {
    if (flock(terminal, LOCK_EX | LOCK_NB) != 0) {
        Fail(errno);
    }
    int isExclusive = 0;
    if (ioctl(terminal, TIOCGEXCL, &isExclusive) == 0 && isExclusive != 0) {
        Fail(EBUSY);
    }
}

dev_t NumberOf(const PortFacts& facts) {
    struct stat info {};
    return facts.number == 0 && stat(facts.node.c_str(), &info) == 0 ? info.st_rdev : facts.number;
}

std::shared_ptr<SerialPort> OpenOccupied(const PortFacts& facts) {
    UniqueFd terminal = OpenNode(facts.node);
    CheckNode(terminal.Get(), facts);
    const TerminalState before = TerminalState::Of(terminal.Get());
    Occupy(terminal.Get());
    return std::make_shared<SerialPort>(std::move(terminal), before);
}

// Nothing can be sent or set any more, and nothing is waited for.
bool IsHungUp(int terminal) {
    int line = 0;
    return ioctl(terminal, TIOCGETD, &line) != 0 && errno == EIO;
}

[[noreturn]] void FailWithText(const std::system_error& error) {
    const int number = error.code().value();
    throw std::runtime_error(IsGone(number) ? GoneText() : ErrnoText(number));
}

std::string Advice() {
    return "; set the line otherwise (OSADAPT_LINE, linux.toml or OSADAPT_SetLine)";
}

// Says everything new, for a line that is set as a whole.
LineChange Everything(const LineSettings& all) {
    LineChange change;
    change.baudRate = all.baudRate;
    change.dtr = all.dtr;
    change.rts = all.rts;
    change.lowLatency = all.lowLatency;
    return change;
}

bool NamesFraming(const LineChange& change) {
    return change.baudRate || change.dataBits || change.parity || change.stopBits || change.flow;
}

} // namespace

std::shared_ptr<SerialPort> SerialPort::Open(const PortFacts& facts, const LineSettings& settings) {
    // A cancellation half-way would lose the descriptor.
    const CancelShield shield;
    try {
        std::shared_ptr<SerialPort> port = OpenOccupied(facts);
        port->ChangeWhole(settings, Everything(settings));
        return port;
    } catch (const std::system_error& error) {
        throw std::runtime_error(
            OpenFailureText(facts.node, NumberOf(facts), error.code().value()));
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(error.what() + Advice());
    }
}

SerialPort::SerialPort(UniqueFd terminal, const TerminalState& before)
    : OpenTerminal(std::move(terminal)), m_Before(before) {
    ioctl(Descriptor(), TIOCEXCL);
}

// In this order: restored earlier, the settings would garble what is still going out.
SerialPort::~SerialPort() {
    const CancelShield shield;
    if (IsHungUp(Descriptor())) {
        return; // closes at once, and the sooner, the likelier the device gets its node again
    }
    DrainWithin(Descriptor(), kDrainTime);
    m_Before.Restore(Descriptor());
    ioctl(Descriptor(), TIOCNXCL);
    flock(Descriptor(), LOCK_UN); // a child of the host's may have a copy of the descriptor
    LetGoWithin(Descriptor(), kCloseTime);
}

void SerialPort::Change(const LineSettings& all) { Change(all, Everything(all)); }

void SerialPort::Change(const LineSettings& all, const LineChange& change) {
    try {
        ChangeWhole(all, change);
    } catch (const std::system_error& error) {
        FailWithText(error);
    }
}

void SerialPort::SendBreak(std::chrono::milliseconds time) {
    try {
        ::SendBreak(Descriptor(), time);
    } catch (const std::system_error& error) {
        FailWithText(error);
    }
}

void SerialPort::ChangeWhole(const LineSettings& all, const LineChange& change) {
    const std::lock_guard<std::mutex> lock(m_ChangeMutex);
    const TerminalState before = TerminalState::Of(Descriptor());
    try {
        SetLine(all, change);
    } catch (const std::exception&) {
        before.Restore(Descriptor());
        before.RestoreModemLines(Descriptor());
        throw;
    }
    SetWriteTime(all.writeTime);
    m_Settings = all;
}

LineSettings SerialPort::Settings() {
    const std::lock_guard<std::mutex> lock(m_ChangeMutex);
    return m_Settings;
}

void SerialPort::SetLine(const LineSettings& all, const LineChange& change) {
    if (NamesFraming(change)) {
        SetFraming(Descriptor(), all);
    }
    SetLowLatency(Descriptor(), change.lowLatency.value_or(LineSwitch::Keep));
    SetModemLines(Descriptor(), change.dtr.value_or(LineSwitch::Keep),
                  change.rts.value_or(LineSwitch::Keep));
}
