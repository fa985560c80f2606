// SPDX-License-Identifier: MIT
#include "adapters/virtual/language/action_text.h"

#include <algorithm>
#include <cctype>

#include "adapters/virtual/language/event_values.h"
#include "adapters/virtual/language/event_words.h"

namespace {

constexpr size_t kMaxBytes = 256;

const char* Verb(ActionKind kind) {
    switch (kind) {
    case ActionKind::Plug:
        return "plug ";
    case ActionKind::Pull:
        return "pull ";
    case ActionKind::Replug:
        return "replug ";
    case ActionKind::Switch:
        return "switch ";
    case ActionKind::PlugPort:
        return "plug-port ";
    case ActionKind::UnplugPort:
        return "unplug-port ";
    case ActionKind::Stall:
        return "stall ";
    case ActionKind::Resume:
        return "resume ";
    case ActionKind::Break:
        return "break ";
    case ActionKind::Mend:
        return "mend ";
    case ActionKind::Fail:
        return "fail ";
    case ActionKind::Shorten:
        return "shorten ";
    case ActionKind::Delay:
        return "delay ";
    case ActionKind::Send:
    case ActionKind::SendRandom:
        break;
    }
    return "send ";
}

std::string NameText(const std::string& name) {
    const bool isPlain = !name.empty() && std::all_of(name.begin(), name.end(), [](char character) {
        return std::isgraph(static_cast<unsigned char>(character)) != 0 && character != '"';
    });
    return isPlain ? name : QuoteBytes(name);
}

std::string CallText(const Action& action) {
    std::string text = OperationText(action.operation);
    switch (action.operation) {
    case Operation::Open:
    case Operation::Close:
        return text + " of " + NameText(action.target);
    case Operation::Write:
        return text + " to " + NameText(action.target);
    case Operation::Read:
        return text + " from " + NameText(action.target);
    case Operation::Enumerate:
        break;
    }
    return text;
}

std::string TimesText(size_t times) {
    return times == 1 ? "" : " " + std::to_string(times) + " times";
}

std::string ExtentText(const Extent& extent) {
    if (extent.calls != 0) {
        return TimesText(extent.calls);
    }
    return extent.time.count() == 0 ? " always" : " for " + TimeText(extent.time);
}

std::string SendText(const Action& action) {
    const bool isRandom = action.kind == ActionKind::SendRandom;
    const std::string what =
        isRandom ? std::to_string(action.count) + " random bytes" : BytesText(action.bytes);
    const std::string which =
        isRandom && !action.bytes.empty() ? ": " + BytesText(action.bytes) : "";
    return what + " to " + NameText(action.target) + TimesText(action.times) + which;
}

} // namespace

std::string ActionText(const Action& action) {
    const std::string verb = Verb(action.kind);
    switch (action.kind) {
    case ActionKind::Send:
    case ActionKind::SendRandom:
        return verb + SendText(action);
    case ActionKind::Switch:
        return verb + NameText(action.target) + " " + NameText(action.mode);
    case ActionKind::Fail:
        return verb + CallText(action) + ExtentText(action.extent);
    case ActionKind::Shorten:
        return verb + CallText(action) + " to " + std::to_string(action.count) + " bytes" +
               ExtentText(action.extent);
    case ActionKind::Delay:
        return verb + CallText(action) + " by " + TimeText(action.delay) +
               ExtentText(action.extent);
    default:
        return verb + NameText(action.target);
    }
}

std::string ActionText(const Action& action, const std::string& portName) {
    return action.kind == ActionKind::Send && action.target == portName
               ? "sent " + BytesText(action.bytes) + TimesText(action.times)
               : ActionText(action);
}

std::string BytesText(const std::string& bytes) {
    if (bytes.size() <= kMaxBytes) {
        return QuoteBytes(bytes);
    }
    return QuoteBytes(bytes.substr(0, kMaxBytes)) + " and " +
           std::to_string(bytes.size() - kMaxBytes) + " bytes more";
}

const char* OperationText(Operation operation) {
    switch (operation) {
    case Operation::Open:
        return "open";
    case Operation::Close:
        return "close";
    case Operation::Write:
        return "write";
    case Operation::Read:
        return "read";
    case Operation::Enumerate:
        break;
    }
    return "enumeration";
}
