// SPDX-License-Identifier: MIT
#include "adapters/virtual/language/event_reader.h"

#include <stdexcept>

#include "adapters/virtual/language/action_reader.h"
#include "adapters/virtual/language/sentence.h"

namespace {

// More often would keep the adapter from all else.
constexpr ScenarioTime kShortestPeriod{100};

std::string Trimmed(const std::string& text) {
    const size_t start = text.find_first_not_of(" \t");
    return start == std::string::npos
               ? ""
               : text.substr(start, text.find_last_not_of(" \t") + 1 - start);
}

Trigger ReadEvery(Sentence& sentence) {
    Trigger trigger;
    trigger.kind = TriggerKind::Every;
    trigger.time = sentence.NeedTime(kShortestPeriod);
    if (sentence.Take("from")) {
        trigger.start = sentence.NeedTime();
    }
    if (sentence.Take("until")) {
        trigger.end = sentence.NeedTime(trigger.start);
    }
    return trigger;
}

Trigger ReadOnBytes(Sentence& sentence, const std::string& ownPort) {
    Trigger trigger;
    trigger.kind = TriggerKind::OnBytes;
    trigger.bytes = sentence.NeedBytes();
    trigger.port = NeedPortAfter(sentence, "from", ownPort);
    return trigger;
}

Trigger ReadOn(Sentence& sentence, const std::string& ownPort) {
    if (sentence.SeesQuoted()) {
        return ReadOnBytes(sentence, ownPort);
    }
    Trigger trigger;
    trigger.kind = TriggerKind::OnCall;
    trigger.nth = sentence.TakeNth();
    if (!SeesOperation(sentence) && trigger.nth == 0) {
        sentence.Expected("a text in double quotes, a number such as 2nd, or open, close, write, "
                          "read or enumeration");
    }
    const OperationOfPort operation = NeedOperation(sentence, ownPort);
    trigger.operation = operation.operation;
    trigger.port = operation.port;
    return trigger;
}

Trigger ReadTrigger(Sentence& sentence, const std::string& ownPort) {
    if (sentence.Take("at")) {
        Trigger trigger;
        trigger.time = sentence.NeedTime();
        return trigger;
    }
    if (sentence.Take("every")) {
        return ReadEvery(sentence);
    }
    if (sentence.Take("on")) {
        return ReadOn(sentence, ownPort);
    }
    sentence.Expected("'at', 'every' or 'on'");
}

bool IsAboutItsTrigger(const Event& event) {
    return event.trigger.kind == TriggerKind::OnCall && IsFault(event.action) &&
           event.action.operation == event.trigger.operation &&
           event.action.target == event.trigger.port;
}

void ReadAfter(Sentence& sentence, Event& event) {
    const bool isOn =
        event.trigger.kind == TriggerKind::OnBytes || event.trigger.kind == TriggerKind::OnCall;
    if (!isOn || !sentence.Sees("after")) {
        return;
    }
    if (IsAboutItsTrigger(event)) {
        sentence.Expected("the end of the sentence: the call itself is meant, not one after it");
    }
    sentence.Need("after");
    event.after = sentence.NeedTime();
}

} // namespace

Event ReadEvent(const std::string& text, const std::string& ownPort) {
    Sentence sentence(text, Sentence::Quotes::Matter);
    Event event;
    event.text = Trimmed(text);
    event.trigger = ReadTrigger(sentence, ownPort);
    event.action = NeedAction(sentence, {ownPort, &event.trigger});
    ReadAfter(sentence, event);
    sentence.NeedEnd();
    return event;
}

Action ReadAction(const std::string& text) {
    Sentence sentence(text, Sentence::Quotes::DoNotMatter);
    Action action = NeedAction(sentence, {});
    sentence.NeedEnd();
    return action;
}
