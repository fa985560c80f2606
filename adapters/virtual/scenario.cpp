// SPDX-License-Identifier: MIT
#include "adapters/virtual/scenario.h"

#include <stdlib.h>

#include <cctype>

#include "adapters/shared/text_file.h"
#include "adapters/virtual/builtin_scenario.h"

ScenarioResult LoadScenario() {
    // Ignored in a process with raised privileges, as all variables here.
    const char* path = secure_getenv("KOVASMGR_VIRTUAL_SCENARIO");
    if (path == nullptr || *path == '\0') {
        return ReadScenario(kBuiltinScenario, "built-in scenario");
    }
    const TextFile file = ReadTextFile(path);
    if (!file.error.empty()) {
        return {{}, std::string(path) + ":0: " + file.error};
    }
    return ReadScenario(file.text, path);
}

bool IsInMode(const PortSpec& port, const std::string& mode) {
    return port.mode.empty() || port.mode == mode;
}

std::string LinkName(const std::string& portName) {
    std::string name = portName;
    for (char& character : name) {
        const auto byte = static_cast<unsigned char>(character);
        const bool plain = byte < 0x80 && std::isalnum(byte) != 0;
        if (!plain && character != '.' && character != '-') {
            character = '_';
        }
    }
    if (!name.empty() && name.front() == '.') {
        name.front() = '_';
    }
    return name;
}
