// SPDX-License-Identifier: MIT
#include "adapters/virtual/language/scenario_scripts.h"

#include <stdexcept>
#include <utility>

#include "adapters/virtual/language/event_reader.h"
#include "adapters/virtual/language/scenario_bounds.h"

namespace {

Event ReadSentence(const TomlText& sentence, const Script& script, const ScenarioNames& names) {
    Event event = ReadEvent(sentence.text, script.port);
    event.line = sentence.where.begin.line;
    event.trigger.port = NameOfCopy(event.trigger.port, script.numbers);
    event.action.target = NameOfCopy(event.action.target, script.numbers);
    event.action.mode = NameOfCopy(event.action.mode, script.numbers);
    names.CheckEvent(event);
    return event;
}

} // namespace

Sentences ReadSentences(TomlTable& table, const char* key) {
    return std::make_shared<const std::vector<TomlText>>(table.TextList(key, kMaxEvents));
}

void ScenarioScripts::Add(const TomlTable& table, const char* key, Script script) {
    m_Sentences += script.sentences->size();
    if (m_Sentences > kMaxEvents) {
        m_Mistake.Note(table.Where(key),
                       "more than " + std::to_string(kMaxEvents) + " events in all");
    } else if (!script.sentences->empty()) {
        m_Scripts.push_back(std::move(script));
    }
}

std::vector<Event> ScenarioScripts::ReadEvents(const ScenarioNames& names) const {
    std::vector<Event> events;
    for (const Script& script : m_Scripts) {
        for (const TomlText& sentence : *script.sentences) {
            try {
                events.push_back(ReadSentence(sentence, script, names));
            } catch (const std::runtime_error& error) {
                m_Mistake.Note(sentence.where, error.what());
                return events;
            }
        }
    }
    return events;
}
