// SPDX-License-Identifier: MIT
#include "adapters/linux/terminal_settings.h"

// The kernel's own structure, which takes any baud rate. <termios.h> must not be included here.
#include <asm/termbits.h>
#include <linux/serial.h>
#include <sys/ioctl.h>

#include <cerrno>
#include <cstdlib>
#include <stdexcept>
#include <system_error>

#include "adapters/linux/open_failure.h"

namespace {

constexpr uint64_t kTolerancePercent = 3;
constexpr int kLowLatency = static_cast<int>(ASYNC_LOW_LATENCY);

// Beyond these codes a rate is given as a number. A code is preferred because the C library, and so
// other programs, cannot tell the number.
struct BaudCode {
    uint32_t rate;
    tcflag_t code;
};
constexpr BaudCode kBaudCodes[] = {
    {50, B50},           {75, B75},           {110, B110},         {134, B134},
    {150, B150},         {200, B200},         {300, B300},         {600, B600},
    {1200, B1200},       {1800, B1800},       {2400, B2400},       {4800, B4800},
    {9600, B9600},       {19200, B19200},     {38400, B38400},     {57600, B57600},
    {115200, B115200},   {230400, B230400},   {460800, B460800},   {500000, B500000},
    {576000, B576000},   {921600, B921600},   {1000000, B1000000}, {1152000, B1152000},
    {1500000, B1500000}, {2000000, B2000000}, {2500000, B2500000}, {3000000, B3000000},
    {3500000, B3500000}, {4000000, B4000000}};

constexpr tcflag_t kSizes[] = {CS5, CS6, CS7, CS8};
constexpr tcflag_t kParityFlags[] = {0, PARENB, PARENB | PARODD, PARENB | PARODD | CMSPAR,
                                     PARENB | CMSPAR}; // in the order of Parity
constexpr tcflag_t kAllParityFlags = PARENB | PARODD | CMSPAR;

int GetSettings(int terminal, termios2& settings) { return ioctl(terminal, TCGETS2, &settings); }

int PutSettings(int terminal, const termios2& settings) {
    return ioctl(terminal, TCSETS2, &settings);
}

[[noreturn]] void Refused(const std::string& what) {
    throw std::runtime_error("the driver refused " + what);
}

[[noreturn]] void Refused(const std::string& what, int error) {
    if (IsGone(error)) {
        throw std::system_error(error, std::generic_category());
    }
    Refused(what);
}

tcflag_t BaudCodeOf(uint32_t rate) {
    for (const BaudCode& baud : kBaudCodes) {
        if (baud.rate == rate) {
            return baud.code;
        }
    }
    return BOTHER;
}

// No input rate of its own: it is the same.
void AskForBaudRate(termios2& settings, uint32_t rate) {
    settings.c_cflag &= ~static_cast<tcflag_t>(CBAUD | (CBAUD << IBSHIFT));
    settings.c_cflag |= BaudCodeOf(rate);
    settings.c_ispeed = rate;
    settings.c_ospeed = rate;
}

void AskForRaw(termios2& settings) {
    settings.c_iflag = 0;
    settings.c_oflag = 0;
    settings.c_lflag = 0;
    settings.c_cflag |= CLOCAL | CREAD;
    // With these a non-blocking read tells an idle terminal (EAGAIN) from a hung-up one (0).
    settings.c_cc[VMIN] = 1;
    settings.c_cc[VTIME] = 0;
}

void AskForFraming(termios2& settings, const LineSettings& line) {
    settings.c_cflag &= ~static_cast<tcflag_t>(CSIZE | kAllParityFlags | CSTOPB);
    settings.c_cflag |= kSizes[line.dataBits - 5] | kParityFlags[static_cast<int>(line.parity)] |
                        (line.stopBits == 2 ? CSTOPB : 0);
}

void AskForFlow(termios2& settings, FlowControl flow) {
    settings.c_cflag &= ~static_cast<tcflag_t>(CRTSCTS);
    settings.c_cflag |= flow == FlowControl::RtsCts ? CRTSCTS : 0;
    settings.c_iflag |= flow == FlowControl::XonXoff ? IXON | IXOFF : 0;
    settings.c_cc[VSTART] = 0x11;
    settings.c_cc[VSTOP] = 0x13;
}

void CheckTaken(const termios2& got, const termios2& asked, const LineSettings& line) {
    const tcflag_t wrong = got.c_cflag ^ asked.c_cflag;
    if (!IsNear(line.baudRate, got.c_ospeed)) {
        Refused("baud rate " + std::to_string(line.baudRate) + " and would take " +
                std::to_string(got.c_ospeed));
    }
    if ((wrong & CSIZE) != 0) {
        Refused(std::to_string(line.dataBits) + " data bits");
    }
    if ((wrong & kAllParityFlags) != 0) {
        Refused(std::string("parity ") + NameOf(line.parity));
    }
    if ((wrong & CSTOPB) != 0) {
        Refused(std::to_string(line.stopBits) + " stop bits");
    }
    if ((wrong & CRTSCTS) != 0 || ((got.c_iflag ^ asked.c_iflag) & (IXON | IXOFF)) != 0) {
        Refused(std::string("flow=") + NameOf(line.flow));
    }
}

std::optional<bool> LowLatencyOf(int terminal) {
    serial_struct serial{};
    if (ioctl(terminal, TIOCGSERIAL, &serial) != 0) {
        return std::nullopt;
    }
    return (serial.flags & kLowLatency) != 0;
}

// @return 0, or an errno value.
int TrySetLowLatency(int terminal, bool on) {
    serial_struct serial{};
    if (ioctl(terminal, TIOCGSERIAL, &serial) != 0) {
        return errno;
    }
    serial.flags = on ? serial.flags | kLowLatency : serial.flags & ~kLowLatency;
    return ioctl(terminal, TIOCSSERIAL, &serial) == 0 ? 0 : errno;
}

void SetModemLine(int terminal, int line, const char* name, LineSwitch state) {
    if (state != LineSwitch::Keep &&
        ioctl(terminal, state == LineSwitch::On ? TIOCMBIS : TIOCMBIC, &line) != 0) {
        Refused(std::string(name) + "=" + NameOf(state), errno);
    }
}

} // namespace

bool IsNear(uint32_t asked, uint32_t got) {
    const uint64_t off = asked > got ? asked - got : got - asked;
    return off * 100 <= uint64_t{asked} * kTolerancePercent;
}

TerminalState TerminalState::Of(int terminal) {
    auto settings = std::make_shared<termios2>();
    if (GetSettings(terminal, *settings) != 0) {
        throw std::system_error(errno, std::generic_category());
    }
    TerminalState state;
    state.m_Settings = settings;
    state.m_LowLatency = LowLatencyOf(terminal);
    if (int lines = 0; ioctl(terminal, TIOCMGET, &lines) == 0) {
        state.m_ModemLines = lines;
    }
    return state;
}

void TerminalState::Restore(int terminal) const {
    PutSettings(terminal, *m_Settings);
    if (m_LowLatency && LowLatencyOf(terminal) != m_LowLatency) {
        TrySetLowLatency(terminal, *m_LowLatency);
    }
}

void TerminalState::RestoreModemLines(int terminal) const {
    if (m_ModemLines) {
        ioctl(terminal, TIOCMSET, &*m_ModemLines);
    }
}

void SetFraming(int terminal, const LineSettings& settings) {
    termios2 asked{};
    termios2 got{};
    if (GetSettings(terminal, asked) != 0) {
        throw std::system_error(errno, std::generic_category());
    }
    AskForRaw(asked);
    AskForBaudRate(asked, settings.baudRate);
    AskForFraming(asked, settings);
    AskForFlow(asked, settings.flow);
    if (PutSettings(terminal, asked) != 0 || GetSettings(terminal, got) != 0) {
        Refused(LineText(settings), errno);
    }
    CheckTaken(got, asked, settings);
}

void SetLowLatency(int terminal, LineSwitch state) {
    if (state == LineSwitch::Keep) {
        return;
    }
    const bool on = state == LineSwitch::On;
    const int error = TrySetLowLatency(terminal, on);
    if (error != 0 || LowLatencyOf(terminal) != on) {
        Refused(std::string("low_latency=") + NameOf(state), error);
    }
}

void SetModemLines(int terminal, LineSwitch dtr, LineSwitch rts) {
    SetModemLine(terminal, TIOCM_DTR, "dtr", dtr);
    SetModemLine(terminal, TIOCM_RTS, "rts", rts);
}
