// SPDX-License-Identifier: MIT
#include "tests/proof/fuzz/scenario_text.h"

#include <algorithm>
#include <cstdio>
#include <tuple>

#include "adapters/virtual/language/action_text.h"
#include "adapters/virtual/language/event_values.h"
#include "adapters/virtual/language/event_words.h"

namespace {

// What the reader allows of a line.
constexpr size_t kMaxLine = 4096;
constexpr long kMaxDots = 64;

std::string NthText(size_t nth) {
    const size_t last = nth % 100 >= 11 && nth % 100 <= 13 ? 0 : nth % 10;
    const char* const endings[] = {"th", "st", "nd", "rd"};
    return std::to_string(nth) + (last < 4 ? endings[last] : "th");
}

std::string CallText(Operation operation, const std::string& port) {
    const char* const before[] = {" of ", " of ", " to ", " from "};
    return OperationText(operation) +
           (operation == Operation::Enumerate
                ? std::string()
                : before[static_cast<size_t>(operation)] + QuoteBytes(port));
}

std::string TriggerText(const Trigger& trigger) {
    switch (trigger.kind) {
    case TriggerKind::At:
        return "at " + TimeText(trigger.time);
    case TriggerKind::Every:
        return "every " + TimeText(trigger.time) + " from " + TimeText(trigger.start) +
               (trigger.end ? " until " + TimeText(*trigger.end) : "");
    case TriggerKind::OnBytes:
        return "on " + QuoteBytes(trigger.bytes) + " from " + QuoteBytes(trigger.port);
    case TriggerKind::OnCall:
        break;
    }
    return "on " + (trigger.nth == 0 ? "" : NthText(trigger.nth) + " ") +
           CallText(trigger.operation, trigger.port);
}

std::string ExtentText(const Extent& extent) {
    if (extent.calls != 0) {
        return " " + std::to_string(extent.calls) + " times";
    }
    return extent.time.count() == 0 ? " always" : " for " + TimeText(extent.time);
}

std::string TimesText(const Action& action) {
    return " to " + QuoteBytes(action.target) + " " + std::to_string(action.times) + " times";
}

std::string LongActionText(const Action& action) {
    const std::string count = std::to_string(action.count);
    const std::string call = CallText(action.operation, action.target);
    switch (action.kind) {
    case ActionKind::Send:
        return "send " + QuoteBytes(action.bytes) + TimesText(action);
    case ActionKind::SendRandom:
        return "send " + count + " random bytes" + TimesText(action);
    case ActionKind::Switch:
        return "switch " + QuoteBytes(action.target) + " " + QuoteBytes(action.mode);
    case ActionKind::Fail:
        return "fail " + call + ExtentText(action.extent);
    case ActionKind::Shorten:
        return "shorten " + call + " to " + count + " bytes" + ExtentText(action.extent);
    case ActionKind::Delay:
        return "delay " + call + " by " + TimeText(action.delay) + ExtentText(action.extent);
    default: // a word and a name
        break;
    }
    const std::string text = ActionText(action);
    return text.substr(0, text.find(' ') + 1) + QuoteBytes(action.target);
}

/// In TOML's double quotes. Only ASCII has to be escaped, all else is UTF-8 already.
std::string Quoted(const std::string& text) {
    std::string quoted = "\"";
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        char escaped[8] = {character, '\0'};
        if (byte < 0x20 || byte == 0x7f || character == '"' || character == '\\') {
            std::snprintf(escaped, sizeof escaped, "\\u%04x", unsigned{byte});
        }
        quoted += escaped;
    }
    return quoted + "\"";
}

class Writer {
  public:
    std::optional<std::string> Text(const Scenario& scenario) {
        PutIfThere("description", scenario.description);
        PutNumber("seed", std::to_string(scenario.seed));
        char speed[40] = "";
        std::snprintf(speed, sizeof speed, "%.17g", scenario.speed);
        PutNumber("speed", speed);
        PutIfThere("end", scenario.end ? TimeText(*scenario.end) : "");
        PutEvents(scenario.events);
        for (const DeviceSpec& device : scenario.devices) {
            PutDevice(device);
        }
        return m_IsWritable ? std::make_optional(m_Text) : std::nullopt;
    }

  private:
    void PutLine(const std::string& line) {
        m_IsWritable = m_IsWritable && line.size() <= kMaxLine &&
                       std::count(line.begin(), line.end(), '.') <= kMaxDots;
        m_Text += line + "\n";
    }
    void Put(const std::string& key, const std::string& text) {
        PutLine(key + " = " + Quoted(text));
    }
    void PutIfThere(const std::string& key, const std::string& text) {
        if (!text.empty()) {
            Put(key, text);
        }
    }
    void PutNumber(const std::string& key, const std::string& number) {
        PutLine(key + " = " + number);
    }
    void PutFlag(const std::string& key, bool flag) {
        PutLine(key + (flag ? " = true" : " = false"));
    }

    void PutEvents(const std::vector<Event>& events) {
        PutLine("events = [");
        for (const Event& event : events) {
            PutLine(Quoted(EventText(event)) + ",");
        }
        PutLine("]");
    }

    void PutDevice(const DeviceSpec& device) {
        PutLine("[[device]]");
        Put("name", device.name);
        PutIfThere("text", device.text);
        PutIfThere("mode", device.mode);
        PutFlag("present", device.present);
        for (const PortSpec& port : device.ports) {
            PutPort(port);
        }
    }

    void PutPort(const PortSpec& port) {
        PutLine("[[device.port]]");
        Put("name", port.name);
        PutIfThere("mode", port.mode);
        PutFlag("present", port.present);
        PutNumber("id", std::to_string(port.proposedId));
        if (port.baud) {
            PutNumber("baud", std::to_string(*port.baud));
        }
        PutFarEnd(port);
    }

    void PutFarEnd(const PortSpec& port) {
        const char* const names[] = {"external", "silent",   "echo",     "at",
                                     "periodic", "scripted", "recording"};
        Put("far", names[static_cast<size_t>(port.farEnd)]);
        m_IsWritable = m_IsWritable && port.farEnd != FarEndKind::Recording;
        if (port.farEnd == FarEndKind::Periodic) {
            Put("send", port.send);
            PutNumber("every_ms", std::to_string(port.everyMs));
        } else if (port.farEnd == FarEndKind::At) {
            PutFlag("echo", port.echo);
            PutLine("[device.port.replies]");
            for (const auto& [command, reply] : port.replies) {
                Put(Quoted(command), reply);
            }
        }
    }

    std::string m_Text;
    bool m_IsWritable = true;
};

auto Fields(const Trigger& trigger) {
    return std::tie(trigger.kind, trigger.time, trigger.start, trigger.end, trigger.bytes,
                    trigger.port, trigger.operation, trigger.nth);
}

auto Fields(const PortSpec& port) {
    return std::tie(port.name, port.mode, port.present, port.proposedId, port.farEnd, port.echo,
                    port.replies, port.send, port.everyMs, port.baud);
}

auto Fields(const DeviceSpec& device) {
    return std::tie(device.name, device.text, device.mode, device.present);
}

bool IsSamePiece(const RecordedPiece& one, const RecordedPiece& other) {
    return one.bytes == other.bytes && one.hostBytes == other.hostBytes && one.delay == other.delay;
}

template <typename Entry, typename Same>
bool AreSame(const std::vector<Entry>& ones, const std::vector<Entry>& others, Same isSame) {
    return std::equal(ones.begin(), ones.end(), others.begin(), others.end(), isSame);
}

bool IsSameOpening(const RecordedOpening& one, const RecordedOpening& other) {
    return one.fromHost == other.fromHost && AreSame(one.pieces, other.pieces, IsSamePiece);
}

bool IsSamePort(const PortSpec& one, const PortSpec& other) {
    return Fields(one) == Fields(other) && AreSame(one.openings, other.openings, IsSameOpening);
}

bool IsSameDevice(const DeviceSpec& one, const DeviceSpec& other) {
    return Fields(one) == Fields(other) && AreSame(one.ports, other.ports, IsSamePort);
}

} // namespace

std::string EventText(const Event& event) {
    const std::string text = TriggerText(event.trigger) + " " + LongActionText(event.action);
    return event.after.count() == 0 ? text : text + " after " + TimeText(event.after);
}

std::optional<std::string> ScenarioText(const Scenario& scenario) {
    return Writer().Text(scenario);
}

bool IsSame(const Action& one, const Action& other) {
    const auto fields = [](const Action& action) {
        return std::tie(action.kind, action.target, action.mode, action.bytes, action.count,
                        action.times, action.operation, action.extent.calls, action.extent.time,
                        action.delay);
    };
    return fields(one) == fields(other);
}

bool IsSame(const Event& one, const Event& other) {
    return Fields(one.trigger) == Fields(other.trigger) && IsSame(one.action, other.action) &&
           one.after == other.after;
}

bool IsSame(const Scenario& one, const Scenario& other) {
    const auto fields = [](const Scenario& scenario) {
        return std::tie(scenario.description, scenario.seed, scenario.speed, scenario.end);
    };
    return fields(one) == fields(other) && AreSame(one.devices, other.devices, IsSameDevice) &&
           AreSame(one.events, other.events,
                   [](const Event& event, const Event& same) { return IsSame(event, same); });
}
