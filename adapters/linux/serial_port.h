// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_LINUX_SERIAL_PORT_H
#define KOVASMGR_ADAPTERS_LINUX_SERIAL_PORT_H

#include <memory>
#include <mutex>

#include "adapters/linux/line_settings.h"
#include "adapters/linux/port_facts.h"
#include "adapters/linux/terminal_settings.h"
#include "adapters/shared/open_terminal.h"

/// A serial port that the host has open: raw, for itself alone, set as asked for.
///
/// When it is destroyed, what was written is given 0.9 s to go out, the settings that were found
/// are put back, and the port is closed, all within about a second.
///
/// Threads: any.
class SerialPort : public OpenTerminal {
  public:
    /// Opens a port and sets its line. What arrived or was left to send before is not thrown away.
    /// Works on whatever the facts' node is, also without a number; a node that has changed hands,
    /// so that it has another number, is gone.
    /// @throws std::runtime_error with a sentence that says why it did not open and what to do;
    ///         the terminal is as it was then
    static std::shared_ptr<SerialPort> Open(const PortFacts& facts, const LineSettings& settings);

    ~SerialPort() override;

    /// Changes the line at once.
    /// @param all     the settings that hold from now on
    /// @param change  what of them is new; the rest of the terminal is not touched. A break is not
    ///                sent.
    /// @throws std::runtime_error with the reason; the line is as it was then
    void Change(const LineSettings& all, const LineChange& change);

    /// The same with all settings new; a line that is to be kept is not touched.
    void Change(const LineSettings& all);

    /// Sends a break; ends early when the device goes. Other changes do not wait for it.
    /// @throws std::runtime_error with the reason
    void SendBreak(std::chrono::milliseconds time);

    /// The settings that hold.
    LineSettings Settings();

    /// For Open.
    SerialPort(UniqueFd terminal, const TerminalState& before);

  private:
    // Wholly or not at all. A std::system_error is one of the device, not of a setting.
    void ChangeWhole(const LineSettings& all, const LineChange& change);
    void SetLine(const LineSettings& all, const LineChange& change);

    std::mutex m_ChangeMutex; // one change at a time; guards the settings
    LineSettings m_Settings;
    const TerminalState m_Before;
};

#endif
