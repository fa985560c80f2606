// SPDX-License-Identifier: MIT
#include "adapters/virtual/language/action_reader.h"

#include <algorithm>
#include <stdexcept>

namespace {

constexpr size_t kMaxTimes = 1000000;
constexpr size_t kMaxSent = size_t{1024} * 1024; // by one action
constexpr ScenarioTime kMaxDelay = std::chrono::hours(1);

struct OperationName {
    const char* name;
    Operation operation;
    const char* beforePort; // empty: it has none
};

constexpr OperationName kOperations[] = {{"open", Operation::Open, "of"},
                                         {"close", Operation::Close, "of"},
                                         {"write", Operation::Write, "to"},
                                         {"read", Operation::Read, "from"},
                                         {"enumeration", Operation::Enumerate, ""}};

bool IsOnCall(const Surroundings& surroundings) {
    return surroundings.trigger != nullptr && surroundings.trigger->kind == TriggerKind::OnCall;
}

bool IsOnSomething(const Surroundings& surroundings) {
    return IsOnCall(surroundings) ||
           (surroundings.trigger != nullptr && surroundings.trigger->kind == TriggerKind::OnBytes);
}

void ReadDevice(Sentence& sentence, const Surroundings&, Action& action) {
    action.target = sentence.NeedName("the name of a device");
}

void ReadSwitch(Sentence& sentence, const Surroundings& surroundings, Action& action) {
    ReadDevice(sentence, surroundings, action);
    action.mode = sentence.NeedName("a mode of the device");
}

void ReadPort(Sentence& sentence, const Surroundings& surroundings, Action& action) {
    const bool isLeftOut =
        sentence.IsAtEnd() || (surroundings.trigger != nullptr && sentence.Sees("after"));
    action.target = isLeftOut ? surroundings.ownPort : sentence.NeedName("the name of a port");
    if (action.target.empty()) {
        sentence.Expected("the name of a port");
    }
}

void ReadTimes(Sentence& sentence, size_t& times) {
    if (sentence.SeesCount()) {
        times = sentence.NeedCount(1, kMaxTimes);
        sentence.NeedEither("times", "time");
    }
}

void ReadRandom(Sentence& sentence, const Surroundings& surroundings, Action& action) {
    action.kind = ActionKind::SendRandom;
    action.count = sentence.NeedCount(1, kMaxSent);
    if (IsOnSomething(surroundings)) {
        // When the host does something would decide over what it gets.
        sentence.Expected("a text in double quotes; random bytes come with 'at' and 'every' only");
    }
    sentence.Need("random");
    sentence.NeedEither("bytes", "byte");
}

void ReadSend(Sentence& sentence, const Surroundings& surroundings, Action& action) {
    if (sentence.SeesCount() && sentence.Sees("random", 1)) {
        ReadRandom(sentence, surroundings, action);
    } else {
        action.bytes = sentence.NeedBytes();
    }
    action.target = NeedPortAfter(sentence, "to", surroundings.ownPort);
    ReadTimes(sentence, action.times);
    const size_t sent = (action.bytes.size() + action.count) * action.times;
    if (sent > kMaxSent) {
        throw std::runtime_error("'send' of " + std::to_string(sent) + " bytes: expected at most " +
                                 std::to_string(kMaxSent));
    }
}

void ReadReply(Sentence& sentence, const Surroundings& surroundings, Action& action) {
    if (!IsOnSomething(surroundings) || surroundings.trigger->port.empty()) {
        throw std::runtime_error(
            "'reply': expected 'send'; only what a port does with 'on' is replied to");
    }
    action.target = surroundings.trigger->port;
    action.bytes = sentence.NeedBytes();
}

void ReadExtent(Sentence& sentence, Action& action) {
    if (sentence.Take("always")) {
        action.extent.calls = 0;
    } else if (sentence.Take("for")) {
        action.extent = {0, sentence.NeedTime(ScenarioTime(1))};
    } else {
        ReadTimes(sentence, action.extent.calls);
    }
}

void SetOperation(Action& action, const OperationOfPort& operation) {
    action.operation = operation.operation;
    action.target = operation.port;
}

// An operation, or none after "on" and a call: that call.
void ReadFaulty(Sentence& sentence, const Surroundings& surroundings, Action& action) {
    if (!SeesOperation(sentence) && IsOnCall(surroundings)) {
        SetOperation(action, {surroundings.trigger->operation, surroundings.trigger->port});
    } else {
        SetOperation(action, NeedOperation(sentence, surroundings.ownPort));
    }
}

void ReadFail(Sentence& sentence, const Surroundings& surroundings, Action& action) {
    ReadFaulty(sentence, surroundings, action);
    ReadExtent(sentence, action);
}

void ReadDelay(Sentence& sentence, const Surroundings& surroundings, Action& action) {
    ReadFaulty(sentence, surroundings, action);
    sentence.Need("by");
    action.delay = sentence.NeedTime(ScenarioTime(1), kMaxDelay);
    ReadExtent(sentence, action);
}

// In "write to 3 bytes" there is no port "3".
std::string ReadShortenedPort(Sentence& sentence, const Surroundings& surroundings) {
    const bool isCount = sentence.Sees("bytes", 2) || sentence.Sees("byte", 2);
    if (isCount && !surroundings.ownPort.empty()) {
        return surroundings.ownPort;
    }
    return NeedPortAfter(sentence, "to", surroundings.ownPort);
}

void ReadShortened(Sentence& sentence, const Surroundings& surroundings, Action& action) {
    const bool isOnWrite =
        IsOnCall(surroundings) && surroundings.trigger->operation == Operation::Write;
    action.operation = Operation::Write;
    if (sentence.Take("write")) {
        action.target = ReadShortenedPort(sentence, surroundings);
    } else if (isOnWrite) {
        action.target = surroundings.trigger->port;
    } else if (!surroundings.ownPort.empty() && !IsOnCall(surroundings)) {
        action.target = surroundings.ownPort;
    } else {
        sentence.Expected("'write'");
    }
}

void ReadShorten(Sentence& sentence, const Surroundings& surroundings, Action& action) {
    ReadShortened(sentence, surroundings, action);
    sentence.Need("to");
    action.count = sentence.NeedCount(0, kMaxSent);
    sentence.NeedEither("bytes", "byte");
    ReadExtent(sentence, action);
}

struct Verb {
    const char* name;
    ActionKind kind;
    void (*read)(Sentence& sentence, const Surroundings& surroundings, Action& action);
};

constexpr Verb kVerbs[] = {{"plug", ActionKind::Plug, ReadDevice},
                           {"pull", ActionKind::Pull, ReadDevice},
                           {"replug", ActionKind::Replug, ReadDevice},
                           {"switch", ActionKind::Switch, ReadSwitch},
                           {"plug-port", ActionKind::PlugPort, ReadPort},
                           {"unplug-port", ActionKind::UnplugPort, ReadPort},
                           {"send", ActionKind::Send, ReadSend},
                           {"reply", ActionKind::Send, ReadReply},
                           {"stall", ActionKind::Stall, ReadPort},
                           {"resume", ActionKind::Resume, ReadPort},
                           {"break", ActionKind::Break, ReadPort},
                           {"mend", ActionKind::Mend, ReadPort},
                           {"fail", ActionKind::Fail, ReadFail},
                           {"delay", ActionKind::Delay, ReadDelay},
                           {"shorten", ActionKind::Shorten, ReadShorten}};

template <typename Named, size_t kCount> std::string Names(const Named (&all)[kCount]) {
    std::string text = all[0].name;
    for (size_t i = 1; i < kCount; ++i) {
        text += (i + 1 == kCount ? " or " : ", ") + std::string(all[i].name);
    }
    return text;
}

} // namespace

bool SeesOperation(const Sentence& sentence) {
    return std::any_of(std::begin(kOperations), std::end(kOperations),
                       [&](const OperationName& each) { return sentence.Sees(each.name); });
}

OperationOfPort NeedOperation(Sentence& sentence, const std::string& ownPort) {
    for (const OperationName& each : kOperations) {
        if (sentence.Take(each.name)) {
            const bool hasPort = *each.beforePort != '\0';
            return {each.operation,
                    hasPort ? NeedPortAfter(sentence, each.beforePort, ownPort) : ""};
        }
    }
    sentence.Expected(Names(kOperations));
}

std::string NeedPortAfter(Sentence& sentence, const std::string& word, const std::string& ownPort) {
    if (sentence.Take(word)) {
        return sentence.NeedName("the name of a port");
    }
    if (ownPort.empty()) {
        sentence.Expected("'" + word + "' and the name of a port");
    }
    return ownPort;
}

Action NeedAction(Sentence& sentence, const Surroundings& surroundings) {
    for (const Verb& verb : kVerbs) {
        if (sentence.Take(verb.name)) {
            Action action;
            action.kind = verb.kind;
            verb.read(sentence, surroundings, action);
            return action;
        }
    }
    sentence.Expected(Names(kVerbs));
}

bool IsFault(const Action& action) {
    return action.kind == ActionKind::Fail || action.kind == ActionKind::Shorten ||
           action.kind == ActionKind::Delay;
}
