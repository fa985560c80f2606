// SPDX-License-Identifier: MIT
#include "adapters/linux/line_settings.h"

namespace {

constexpr const char* kParityNames[] = {"none", "even", "odd", "mark", "space"};
constexpr const char* kFlowNames[] = {"none", "rtscts", "xonxoff"};
constexpr const char* kSwitchNames[] = {"keep", "on", "off"};
constexpr char kParityLetters[] = "NEOMS";

template <typename Value, typename Target>
void Take(const std::optional<Value>& value, Target& target) {
    if (value) {
        target = *value;
    }
}

// LineSettings and LineChange name their fields alike.
template <typename Target> void TakeSettings(const LineChange& change, Target& target) {
    Take(change.baudRate, target.baudRate);
    Take(change.dataBits, target.dataBits);
    Take(change.parity, target.parity);
    Take(change.stopBits, target.stopBits);
    Take(change.flow, target.flow);
    Take(change.dtr, target.dtr);
    Take(change.rts, target.rts);
    Take(change.lowLatency, target.lowLatency);
    Take(change.writeTime, target.writeTime);
}

std::string SwitchText(const char* key, LineSwitch state) {
    return state == LineSwitch::Keep ? "" : std::string(" ") + key + "=" + NameOf(state);
}

} // namespace

void Apply(const LineChange& change, LineSettings& settings) { TakeSettings(change, settings); }

void Apply(const LineChange& later, LineChange& change) { TakeSettings(later, change); }

std::string LineText(const LineSettings& settings) {
    std::string text = std::to_string(settings.baudRate) + " " + std::to_string(settings.dataBits) +
                       kParityLetters[static_cast<int>(settings.parity)] +
                       std::to_string(settings.stopBits);
    if (settings.flow != FlowControl::None) {
        text += std::string(" flow=") + NameOf(settings.flow);
    }
    text += SwitchText("dtr", settings.dtr) + SwitchText("rts", settings.rts) +
            SwitchText("low_latency", settings.lowLatency);
    if (settings.writeTime != LineSettings().writeTime) {
        text += " write_timeout=" + std::to_string(settings.writeTime.count());
    }
    return text;
}

const char* NameOf(Parity parity) { return kParityNames[static_cast<int>(parity)]; }

const char* NameOf(FlowControl flow) { return kFlowNames[static_cast<int>(flow)]; }

const char* NameOf(LineSwitch state) { return kSwitchNames[static_cast<int>(state)]; }
