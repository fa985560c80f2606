// SPDX-License-Identifier: MIT
//
// How a serial line is to work, and the text form that people write it in.
#ifndef KOVASMGR_ADAPTERS_LINUX_LINE_SETTINGS_H
#define KOVASMGR_ADAPTERS_LINUX_LINE_SETTINGS_H

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

enum class Parity { None, Even, Odd, Mark, Space };
enum class FlowControl { None, RtsCts, XonXoff };
enum class LineSwitch { Keep, On, Off }; // Keep: as the kernel leaves it

struct LineSettings {
    uint32_t baudRate = 115200;
    int dataBits = 8;
    Parity parity = Parity::None;
    int stopBits = 1; // 2 is what the hardware makes 1.5 of with 5 data bits
    FlowControl flow = FlowControl::None;
    LineSwitch dtr = LineSwitch::Keep;
    LineSwitch rts = LineSwitch::Keep;
    LineSwitch lowLatency = LineSwitch::Keep;
    std::chrono::milliseconds writeTime{1000};
};

/// What a text names; nothing else is changed.
struct LineChange {
    std::optional<uint32_t> baudRate;
    std::optional<int> dataBits;
    std::optional<Parity> parity;
    std::optional<int> stopBits;
    std::optional<FlowControl> flow;
    std::optional<LineSwitch> dtr;
    std::optional<LineSwitch> rts;
    std::optional<LineSwitch> lowLatency;
    std::optional<std::chrono::milliseconds> writeTime;
    std::optional<std::chrono::milliseconds> breakTime; // an event, not a setting
};

/// Reads "9600,7E2 flow=rtscts": words as OSAdaptLine.h lists them, at most 256 bytes. Later words
/// win; a text without words changes nothing.
/// @throws std::runtime_error saying which word is wrong and what is allowed
LineChange ParseLineChange(const std::string& text);

/// The same for a text that stands in a configuration, where a break is a mistake.
LineChange ParseConfiguredLine(const std::string& text);

/// Sets what the change names.
void Apply(const LineChange& change, LineSettings& settings);

/// Makes one change of two, of which the later wins. A break is not carried over.
void Apply(const LineChange& later, LineChange& change);

/// "9600 7E2 flow=rtscts": the baud rate, the framing and whatever else is not the default.
std::string LineText(const LineSettings& settings);

/// "even", "rtscts", "on": the words of the text form.
const char* NameOf(Parity parity);
const char* NameOf(FlowControl flow);
const char* NameOf(LineSwitch state);

#endif
