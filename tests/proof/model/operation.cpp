// SPDX-License-Identifier: MIT
#include "tests/proof/model/operation.h"

#include <cctype>
#include <cstdio>

namespace model {
namespace {

constexpr std::size_t kLongText = 40;

std::string Escaped(char c) {
    if (std::isprint(static_cast<unsigned char>(c)) != 0 && c != '\'') {
        return {c};
    }
    char text[5];
    std::snprintf(text, sizeof text, "\\x%02x",
                  static_cast<unsigned>(static_cast<unsigned char>(c)));
    return text;
}

template <typename Number> std::string Instead(const std::optional<Number>& number) {
    return number ? " reported as " + std::to_string(*number) : "";
}

std::string Describe(const Table& table) {
    std::string text = std::to_string(table.devices.size()) + " devices" + Instead(table.count);
    for (const DeviceEntry& device : table.devices) {
        text += "\n        " + Quoted(device.name) + " (" + Quoted(device.text) + ") " +
                std::to_string(device.ports.size()) + " ports" + Instead(device.count) + ":";
        for (const PortEntry& port : device.ports) {
            text += " " + Quoted(port.name) + " id " + std::to_string(port.id);
        }
    }
    return text;
}

std::string Describe(const ReadAnswer& read) {
    return Quoted(read.bytes) + Instead(read.count) +
           (read.isCountStored ? "" : ", its count not stored");
}

std::string Callback(int callback) {
    return callback == kNoCallback ? "null" : "callback " + std::to_string(callback);
}

std::string DescribeWrite(const Operation& operation) {
    return "write to " + std::to_string(operation.number) + " " +
           (operation.isNull ? "null" : Quoted(operation.text)) + Instead(operation.length) +
           (operation.isResultNull ? ", result null" : "");
}

std::string DescribeResult(const Operation& operation) {
    static const char* const kNames[kFunctions] = {"register", "unregister", "open",     "close",
                                                   "write",    "read",       "enumerate"};
    const std::string name = kNames[static_cast<int>(operation.function)];
    const std::string calls =
        operation.times == 0 ? "all calls" : std::to_string(operation.times) + " calls";
    return "adapter: " + name + " answers " + std::to_string(operation.number) + " to " + calls;
}

std::string DescribeAction(const Operation& operation) {
    const std::string action =
        operation.action.empty() ? "nothing" : model::Describe(operation.action.front());
    return (operation.number == 0 ? "read " : "state ") + Callback(operation.callback) +
           " will do: " + action;
}

std::string DescribeCall(const Operation& operation) {
    const std::string number = std::to_string(operation.number);
    switch (operation.kind) {
    case Kind::kInit:
        return "init in " + (operation.isNull ? "null" : Quoted(operation.text));
    case Kind::kRelease:
        return "release";
    case Kind::kOpen:
        return "open " + number;
    case Kind::kClose:
        return "close " + number;
    case Kind::kWrite:
        return DescribeWrite(operation);
    case Kind::kPortState:
        return "state of " + number;
    case Kind::kEnumerate:
        return operation.isNull ? "enumerate into null" : "enumerate";
    case Kind::kAddRead:
        return "register read " + Callback(operation.callback) + " for " + number;
    case Kind::kRemoveRead:
        return "unregister read " + Callback(operation.callback) + " for " + number;
    case Kind::kAddState:
        return "register state " + Callback(operation.callback);
    case Kind::kRemoveState:
        return "unregister state " + Callback(operation.callback);
    case Kind::kNotice:
        return "notice " + number;
    case Kind::kSweep:
        return "sweep";
    case Kind::kReadHandle:
        return "read from handle " + number;
    case Kind::kReleaseDevice:
        return "remove ports of device " + (operation.isNull ? "null" : Quoted(operation.text));
    case Kind::kDeletePort:
        return "delete port " + number;
    default:
        return "";
    }
}

std::string DescribeScript(const Operation& operation) {
    const std::string number = std::to_string(operation.number);
    switch (operation.kind) {
    case Kind::kTable:
        return "adapter: attached are " + Describe(operation.table);
    case Kind::kResult:
        return DescribeResult(operation);
    case Kind::kNextHandle:
        return "adapter: the next open " +
               (operation.isNull ? "stores nothing" : "gives " + number);
    case Kind::kWriteCount:
        return "adapter: writes " + (operation.isNull
                                         ? "store no count"
                                         : "report their count" + Instead(operation.length));
    case Kind::kData:
        return "adapter: the next read delivers " + Describe(operation.read);
    case Kind::kMissing:
        return "adapter: function " + number + " is missing (none if 7)";
    case Kind::kAction:
        return DescribeAction(operation);
    case Kind::kSetInit:
        return "the manager's init flag becomes " + number;
    case Kind::kSetRun:
        return "the manager's run flag becomes " + number;
    default:
        return "";
    }
}

} // namespace

bool IsScript(const Operation& operation) {
    return operation.kind >= Kind::kTable && operation.kind <= Kind::kAction;
}

std::string Describe(const Operation& operation) {
    return DescribeCall(operation) + DescribeScript(operation);
}

std::string Describe(const Sequence& sequence) {
    std::string text;
    for (std::size_t i = 0; i < sequence.size(); ++i) {
        text += "  " + std::to_string(i + 1) + ". " + Describe(sequence[i]) + "\n";
    }
    return text;
}

std::string Quoted(const std::string& text) {
    std::string quoted = "'";
    for (const char c : text.substr(0, kLongText)) {
        quoted += Escaped(c);
    }
    return quoted +
           (text.size() > kLongText ? "'... (" + std::to_string(text.size()) + " bytes)" : "'");
}

} // namespace model
