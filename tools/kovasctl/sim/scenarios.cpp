// SPDX-License-Identifier: MIT
#include "tools/kovasctl/sim/scenarios.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <system_error>

#include "tools/kovasctl/failure.h"
#include "tools/kovasctl/printable.h"
#include "tools/kovasctl/program_place.h"

namespace {

namespace fs = std::filesystem;

constexpr int kSchema = 1;

fs::path Folder() {
    const std::string tree = BuildTree();
    return tree.empty() ? InstalledDirectory(KOVASCTL_SCENARIOS_FROM_PROGRAM, KOVASMGR_SCENARIO_DIR)
                        : tree + "/scenarios";
}

// The files are our own: the key stands on a line of its own, above the devices.
std::string DescriptionIn(const fs::path& file) {
    const std::string key = "description = \"";
    std::ifstream text(file);
    for (std::string line; std::getline(text, line) && line.compare(0, 2, "[[") != 0;) {
        const size_t end = line.rfind('"');
        if (line.compare(0, key.size(), key) == 0 && end >= key.size()) {
            return line.substr(key.size(), end - key.size());
        }
    }
    return "";
}

bool IsFile(const fs::path& path) {
    std::error_code error;
    return fs::exists(path, error) && !fs::is_directory(path, error);
}

} // namespace

std::vector<ReadyScenario> ReadyScenarios() {
    std::vector<ReadyScenario> scenarios;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(Folder(), error)) {
        const fs::path& file = entry.path();
        const std::string description = file.extension() == ".toml" ? DescriptionIn(file) : "";
        if (!description.empty()) { // samples have none
            scenarios.push_back({file.stem().string(), description, file.string()});
        }
    }
    std::sort(scenarios.begin(), scenarios.end(),
              [](const auto& left, const auto& right) { return left.name < right.name; });
    return scenarios;
}

std::string ScenariosAsText(const std::vector<ReadyScenario>& scenarios) {
    size_t width = 0;
    for (const ReadyScenario& scenario : scenarios) {
        width = std::max(width, ColumnsOf(scenario.name));
    }
    std::string text;
    for (const ReadyScenario& scenario : scenarios) {
        text += Padded(scenario.name, width) + "  " + Printable(scenario.description) + "\n";
    }
    return text;
}

std::string ScenariosAsJson(const std::vector<ReadyScenario>& scenarios) {
    using Json = nlohmann::ordered_json;
    Json list = Json::array();
    for (const ReadyScenario& scenario : scenarios) {
        list.push_back({{"name", scenario.name},
                        {"description", scenario.description},
                        {"file", scenario.file}});
    }
    const Json object = {{"schema", kSchema}, {"scenarios", list}};
    return object.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string FindScenario(const std::string& choice) {
    const bool isName = choice.find_first_of("/.") == std::string::npos;
    const fs::path file = isName ? Folder() / (choice + ".toml") : fs::path(choice);
    if (choice.empty() || !IsFile(file)) {
        throw WrongUse(isName ? "there is no scenario '" + Printable(choice) +
                                    "'; 'kovasctl sim --list' shows them, a file has a '/' or '.'"
                              : Printable(choice) + ": there is no such file");
    }
    return file.string();
}
