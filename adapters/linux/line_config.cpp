// SPDX-License-Identifier: MIT
#include "adapters/linux/line_config.h"

#include <stdlib.h>

#include <stdexcept>

#include "adapters/linux/line_file.h"
#include "adapters/shared/adapter_log.h"
#include "adapters/shared/text_file.h"

namespace {

constexpr const char* kSystemFile = "/etc/kovasmgr/linux.toml";
constexpr const char* kUserFile = "/kovasmgr/linux.toml";

// Not believed in a process with raised privileges.
std::string Variable(const char* name) {
    const char* value = secure_getenv(name);
    return value == nullptr ? "" : value;
}

// A path in these variables counts only when it is absolute.
std::string UserFile() {
    if (const std::string folder = Variable("XDG_CONFIG_HOME"); folder.substr(0, 1) == "/") {
        return folder + kUserFile;
    }
    const std::string home = Variable("HOME");
    return home.substr(0, 1) == "/" ? home + "/.config" + kUserFile : "";
}

void ApplyEnvironment(LineSettings& settings) {
    try {
        Apply(ParseConfiguredLine(Variable("OSADAPT_LINE")), settings);
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(std::string("OSADAPT_LINE: ") + error.what());
    }
}

void ApplyFile(const std::string& path, const PortFacts& facts, const std::string& deviceName,
               LineSettings& settings) {
    const TextFile file = ReadTextFile(path);
    if (path.empty() || file.isMissing) {
        return;
    }
    if (!file.error.empty()) {
        throw std::runtime_error(Printable(path) + ":0: " + file.error);
    }
    LineFile(file.text, Printable(path)).Apply(facts, deviceName, settings);
}

} // namespace

LineFiles StandardLineFiles() { return {kSystemFile, UserFile()}; }

LineSettings ConfiguredLine(const PortFacts& facts, const std::string& deviceName) {
    return ConfiguredLine(facts, deviceName, StandardLineFiles());
}

LineSettings ConfiguredLine(const PortFacts& facts, const std::string& deviceName,
                            const LineFiles& files) {
    LineSettings settings;
    ApplyEnvironment(settings);
    ApplyFile(files.system, facts, deviceName, settings);
    ApplyFile(files.user, facts, deviceName, settings);
    return settings;
}
