// SPDX-License-Identifier: MIT
#include "adapters/virtual/control/control_commands.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <vector>

#include "adapters/shared/adapter_log.h"
#include "adapters/virtual/control/control_words.h"
#include "adapters/virtual/language/event_reader.h"

namespace {

using Words = std::vector<std::string>;

/// Moves a device or a port.
struct Move {
    const char* name;
    size_t arguments;
    const char* help;
    ActionKind kind;
};

constexpr Move kMoves[] = {
    {"plug", 1, "plug DEVICE", ActionKind::Plug},
    {"pull", 1, "pull DEVICE", ActionKind::Pull},
    {"replug", 1, "replug DEVICE", ActionKind::Replug},
    {"switch", 2, "switch DEVICE MODE", ActionKind::Switch},
    {"plug-port", 1, "plug-port PORT", ActionKind::PlugPort},
    {"unplug-port", 1, "unplug-port PORT", ActionKind::UnplugPort},
};

/// An action in a scenario's words.
struct Sentence {
    const char* name;
    const char* help;
};

constexpr Sentence kSentences[] = {
    {"send", "send \"BYTES\" to PORT [N times], send N random bytes to PORT [N times]"},
    {"stall", "stall PORT"},
    {"resume", "resume PORT"},
    {"break", "break PORT"},
    {"mend", "mend PORT"},
    {"fail", "fail CALL [N times | for TIME | always]"},
    {"delay", "delay CALL by TIME [N times | for TIME | always]"},
    {"shorten", "shorten write to PORT to N bytes [N times | for TIME | always]"},
};

/// About the scenario as a whole.
struct Command {
    const char* name;
    std::string (*run)(Director& director);
};

std::string Help(Director& director);

constexpr Command kCommands[] = {
    {"pause",
     [](Director& director) {
         director.Pause();
         return std::string();
     }},
    {"continue",
     [](Director& director) {
         director.Continue();
         return std::string();
     }},
    {"status", [](Director& director) { return director.Status(); }},
    {"events", [](Director& director) { return director.Events(); }},
    {"list", [](Director& director) { return director.List(); }},
    {"help", Help},
};

std::string Help(Director&) {
    std::string text;
    for (const Move& move : kMoves) {
        text += std::string(move.help) + "\n";
    }
    for (const Sentence& sentence : kSentences) {
        text += std::string(sentence.help) + "\n";
    }
    for (const Command& command : kCommands) {
        text += std::string(command.name) + "\n";
    }
    return text;
}

template <typename Entry, size_t Size>
const Entry* Find(const Entry (&entries)[Size], const std::string& name) {
    const auto* const found = std::find_if(std::begin(entries), std::end(entries),
                                           [&](const Entry& entry) { return name == entry.name; });
    return found == std::end(entries) ? nullptr : found;
}

Reply Error(const std::string& reason) { return {"error " + reason + "\n", std::nullopt}; }

Action MoveAction(const Move& move, const Words& words) {
    Action action;
    action.kind = move.kind;
    action.target = words[1];
    action.mode = words.size() > 2 ? words[2] : "";
    return action;
}

Reply RunWords(Director& director, const Words& words) {
    if (const Move* const move = Find(kMoves, words.front())) {
        if (words.size() != move->arguments + 1) {
            return Error(std::string("usage: ") + move->help);
        }
        return {"ok\n", director.Order(MoveAction(*move, words))};
    }
    const Command* const command = Find(kCommands, words.front());
    if (command == nullptr) {
        return Error("unknown command '" + Printable(words.front()) + "'; try help");
    }
    if (words.size() != 1) {
        return Error(std::string("usage: ") + command->name);
    }
    return {command->run(director) + "ok\n", std::nullopt};
}

Reply Run(Director& director, const std::string& line) {
    const auto words = SplitWords(line);
    if (!words) {
        return Error("a quote is not closed");
    }
    if (words->empty()) {
        return Error("no command; try help");
    }
    // A sentence has its own rules for quotes and backslashes.
    return Find(kSentences, words->front()) == nullptr
               ? RunWords(director, *words)
               : Reply{"ok\n", director.Order(ReadAction(line))};
}

} // namespace

Reply RunCommand(Director& director, const std::string& line) {
    try {
        return Run(director, line);
    } catch (const std::exception& error) {
        return Error(Printable(error.what()));
    }
}
