// SPDX-License-Identifier: MIT
#include "tests/adapters/simulated_host.h"

#include <stdlib.h>

#include <sstream>

#include "tests/harness/log_text.h"
#include "tests/harness/wait_until.h"

namespace {

constexpr std::chrono::seconds kBound{60};

// What stands behind a key in a line of JSON, up to the brace or comma that ends the line or value.
std::string Value(const std::string& line, const std::string& key) {
    const size_t at = line.find("\"" + key + "\":");
    if (at == std::string::npos) {
        return "";
    }
    const size_t start = at + key.size() + 3;
    if (line[start] != '"') {
        return line.substr(start, line.find_first_of(",}", start) - start);
    }
    std::string text;
    for (size_t i = start + 1; i < line.size() && line[i] != '"'; ++i) {
        i += line[i] == '\\' ? 1 : 0;
        text += line[i];
    }
    return text;
}

} // namespace

const char* const SimulatedHost::kTwoPorts = R"(
[[device]]
name = "modem"
[[device.port]]
name = "p1"
far = "scripted"
[[device.port]]
name = "p2"
far = "scripted"
)";

SimulatedHost::SimulatedHost() {
    setenv("KOVASMGR_VIRTUAL_EVENTS", (m_Scratch.Path() + "/events.jsonl").c_str(), 1);
    unsetenv("KOVASMGR_VIRTUAL_SEED");
    unsetenv("KOVASMGR_VIRTUAL_SPEED");
}

void SimulatedHost::Run(const std::string& events, const std::string& rest,
                        const std::string& keys) {
    UseScenario(keys + "\nevents = [" + events + "]\n" + rest);
    m_Adapter.Devices();
}

int SimulatedHost::Open(const std::string& port) const {
    const int handle = m_Adapter.OpenPort(port);
    EXPECT_GT(handle, 0) << port << "\n" << Log();
    return handle;
}

bool SimulatedHost::WaitForTime(double seconds) const {
    return WaitUntil([&] { return std::stod(Status("time")) >= seconds; }, kBound);
}

bool SimulatedHost::WaitForEnd() const {
    return WaitUntil([&] { return Status("state") == "ended"; }, kBound);
}

std::string SimulatedHost::Status(const std::string& key) const {
    std::istringstream lines(Command("status"));
    for (std::string line; std::getline(lines, line);) {
        if (line.compare(0, key.size() + 1, key + " ") == 0) {
            return line.substr(key.size() + 1);
        }
    }
    return "";
}

std::string SimulatedHost::Track(const std::string& track) const {
    std::istringstream lines(Command("events"));
    std::string text;
    for (std::string line; std::getline(lines, line);) {
        if (Value(line, "track") == track) {
            const std::string error = Value(line, "error");
            text += Value(line, "event") + (error.empty() ? "" : " (" + error + ")") + "\n";
        }
    }
    return text;
}

std::string SimulatedHost::EventFile() const {
    return FileText(m_Scratch.Path() + "/events.jsonl");
}
