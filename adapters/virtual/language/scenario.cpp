// SPDX-License-Identifier: MIT
#include "adapters/virtual/language/scenario.h"

#include <stdlib.h>

#include <cctype>
#include <charconv>

#include "adapters/shared/adapter_log.h"
#include "adapters/shared/text_file.h"
#include "adapters/virtual/language/builtin_scenario.h"
#include "adapters/virtual/language/scenario_bounds.h"
#include "adapters/virtual/recording/recording_reader.h"

namespace {

// Ignored in a process with raised privileges, as all variables here. Empty: not set.
std::string Variable(const char* name) {
    const char* value = secure_getenv(name);
    return value == nullptr ? "" : value;
}

ScenarioResult ReadChosen() {
    const std::string path = Variable("KOVASMGR_VIRTUAL_SCENARIO");
    return path.empty() ? ReadScenario(kBuiltinScenario, "built-in scenario")
                        : ReadScenarioFile(path);
}

// Overrides what the scenario says with a variable, which is read whatever the locale.
template <typename Number>
void Override(ScenarioResult& result, Number& value, const char* name, Number least, Number most,
              const char* range) {
    const std::string text = Variable(name);
    if (text.empty() || !result.error.empty()) {
        return;
    }
    const char* const end = text.data() + text.size();
    Number number{};
    const auto [stopped, error] = std::from_chars(text.data(), end, number);
    if (error == std::errc{} && stopped == end && number >= least && number <= most) {
        value = number;
        return;
    }
    result = {
        {}, std::string(name) + ":0: must be " + range + ", not '" + Printable(text) + "'", {}};
}

} // namespace

ScenarioResult ReadScenarioFile(const std::string& path) {
    const TextFile file = ReadTextFile(path, kMaxRecordingSize);
    std::string error = file.error;
    if (error.empty() && file.text.size() > kMebibyte && !IsRecording(file.text)) {
        error = TooLargeText(kMebibyte);
    }
    return error.empty() ? ReadScenario(file.text, path)
                         : ScenarioResult{{}, path + ":0: " + error, {}};
}

ScenarioResult LoadScenario() {
    ScenarioResult result = ReadChosen();
    Override<uint64_t>(result, result.scenario.seed, "KOVASMGR_VIRTUAL_SEED", 0, kMaxScenarioSeed,
                       "a whole number from 0 to 9223372036854775807");
    Override<double>(result, result.scenario.speed, "KOVASMGR_VIRTUAL_SPEED", kMinScenarioSpeed,
                     kMaxScenarioSpeed, "a number from 0.001 to 1000");
    for (const std::string& note : result.notes) {
        LogInfo(note);
    }
    return result;
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
