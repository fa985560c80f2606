// SPDX-License-Identifier: MIT
//
// Line settings on an open terminal. The functions that set something throw std::runtime_error when
// the driver refused it, saying what, and std::system_error when the device is gone.
#ifndef KOVASMGR_ADAPTERS_LINUX_TERMINAL_SETTINGS_H
#define KOVASMGR_ADAPTERS_LINUX_TERMINAL_SETTINGS_H

#include <memory>
#include <optional>

#include "adapters/linux/line_settings.h"

struct termios2; // clashes with the C library's termios; known in one file only

/// All that line settings change, as it is at one moment.
class TerminalState {
  public:
    /// @throws std::system_error with the errno value, ENOTTY when it is no terminal
    static TerminalState Of(int terminal);

    /// Puts back what the terminal's settings were, and low latency. Errors are passed over: a
    /// device that is gone needs nothing.
    void Restore(int terminal) const;

    /// Puts back DTR and RTS. Not when a port is closed: the kernel drops the lines then, and a
    /// pulse on DTR resets some devices.
    void RestoreModemLines(int terminal) const;

  private:
    std::shared_ptr<const termios2> m_Settings;
    std::optional<int> m_ModemLines;  // none: the driver has none
    std::optional<bool> m_LowLatency; // the same
};

/// Makes the terminal raw, so that all 256 byte values pass (with XON/XOFF, all but those two), and
/// sets baud rate, framing and flow control. What has not gone out yet goes out in the new way;
/// nothing is flushed. The result is read back: a setting that the driver did not take is an error,
/// and so is a baud rate that is not near.
void SetFraming(int terminal, const LineSettings& settings);

/// Whether a baud rate may stand for another: 3 % off, which a receiver still follows.
bool IsNear(uint32_t asked, uint32_t got);

/// A state of Keep does nothing.
void SetLowLatency(int terminal, LineSwitch state);
void SetModemLines(int terminal, LineSwitch dtr, LineSwitch rts);

/// Sends a break; ends early with an error when the device goes. May be cancelled: the line is not
/// left in the break.
void SendBreak(int terminal, std::chrono::milliseconds time);

#endif
