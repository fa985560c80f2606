// SPDX-License-Identifier: MIT
#include "adapters/virtual/control_commands.h"

#include <stdexcept>
#include <vector>

#include "adapters/shared/adapter_log.h"
#include "adapters/virtual/control_words.h"

namespace {

using Words = std::vector<std::string>;

struct Command {
    const char* name;
    size_t arguments;
    const char* help;
    uint64_t (*run)(VirtualPorts& ports, const Words& words); // null: answers without a change
};

constexpr Command kCommands[] = {
    {"plug", 1, "plug DEVICE",
     [](VirtualPorts& ports, const Words& words) { return ports.Plug(words[1]); }},
    {"pull", 1, "pull DEVICE",
     [](VirtualPorts& ports, const Words& words) { return ports.Pull(words[1]); }},
    {"replug", 1, "replug DEVICE",
     [](VirtualPorts& ports, const Words& words) { return ports.Replug(words[1]); }},
    {"switch", 2, "switch DEVICE MODE",
     [](VirtualPorts& ports, const Words& words) { return ports.SwitchMode(words[1], words[2]); }},
    {"plug-port", 1, "plug-port PORT",
     [](VirtualPorts& ports, const Words& words) { return ports.PlugPort(words[1]); }},
    {"unplug-port", 1, "unplug-port PORT",
     [](VirtualPorts& ports, const Words& words) { return ports.UnplugPort(words[1]); }},
    {"list", 0, "list", nullptr},
    {"help", 0, "help", nullptr},
};

Reply Error(const std::string& reason) { return {"error " + reason + "\n", std::nullopt}; }

const Command* FindCommand(const std::string& name) {
    for (const Command& command : kCommands) {
        if (name == command.name) {
            return &command;
        }
    }
    return nullptr;
}

std::string Help() {
    std::string text;
    for (const Command& command : kCommands) {
        text += std::string(command.help) + "\n";
    }
    return text;
}

Reply Run(VirtualPorts& ports, const Command& command, const Words& words) {
    if (command.run != nullptr) {
        const uint64_t ticket = command.run(ports, words);
        return {"ok\n", ticket};
    }
    const bool isList = std::string(command.name) == "list";
    return {(isList ? ports.List() : Help()) + "ok\n", std::nullopt};
}

} // namespace

Reply RunCommand(VirtualPorts& ports, const std::string& line) {
    const auto words = SplitWords(line);
    if (!words) {
        return Error("a quote is not closed");
    }
    if (words->empty()) {
        return Error("no command; try help");
    }
    const Command* command = FindCommand(words->front());
    if (command == nullptr) {
        return Error("unknown command '" + Printable(words->front()) + "'; try help");
    }
    if (words->size() != command->arguments + 1) {
        return Error(std::string("usage: ") + command->help);
    }
    try {
        return Run(ports, *command, *words);
    } catch (const std::exception& error) {
        return Error(error.what());
    }
}
