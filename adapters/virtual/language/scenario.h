// SPDX-License-Identifier: MIT
//
// What the virtual devices are, as written in a scenario file (see README.md).
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_SCENARIO_H
#define KOVASMGR_ADAPTERS_VIRTUAL_SCENARIO_H

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "adapters/virtual/language/event.h"

enum class FarEndKind { External, Silent, Echo, At, Periodic, Scripted, Recording };

/// Bytes that a recorded far end sent.
struct RecordedPiece {
    std::string bytes; // never empty
    size_t hostBytes;  // goes out when the host has sent so many since it opened the port
    // and not sooner after its cause, by the scenario's clock. The cause is what came last: the
    // piece before, the last of the host's bytes that it needs, or the opening.
    ScenarioTime delay;
};

/// What went over a port from one opening by the host to the next.
struct RecordedOpening {
    std::string fromHost;
    std::vector<RecordedPiece> pieces; // in order; hostBytes never falls
};

struct PortSpec {
    std::string name;
    std::string mode;    // empty: the port is there in every mode of its device
    bool present = true; // plugged in whenever its device is, until it is unplugged
    int32_t proposedId = 0;
    FarEndKind farEnd = FarEndKind::External;
    bool echo = true;                           // At: sends commands back before the answer
    std::map<std::string, std::string> replies; // At: command in capitals to up to 1,024 bytes
    std::string send;                           // Periodic: "{n}" becomes a running number
    int everyMs = 1000;                         // Periodic
    std::vector<RecordedOpening> openings;      // Recording; after the last one it is silent
    std::optional<long> baud;                   // 10 bits a byte; missing: as fast as it goes
};

struct DeviceSpec {
    std::string name;
    std::string text;
    std::string mode; // the mode that the device starts in
    bool present = true;
    std::vector<PortSpec> ports;
};

struct Scenario {
    std::string description; // one line, for lists
    uint64_t seed = 1;
    double speed = 1;                // scenario time over real time
    std::optional<ScenarioTime> end; // from then on nothing happens by itself
    std::vector<DeviceSpec> devices;
    // In the order of their lines: those of the scenario, then those of the ports' scripts in
    // device order, with the ports' names filled in.
    std::vector<Event> events;
};

// What seed and speed may be.
constexpr uint64_t kMaxScenarioSeed = INT64_MAX;
constexpr double kMinScenarioSpeed = 0.001;
constexpr double kMaxScenarioSpeed = 1000;

struct ScenarioResult {
    Scenario scenario;              // empty when there is a mistake
    std::string error;              // "file:line: reason", empty when all is well
    std::vector<std::string> notes; // "file:line: ...", what of recordings was left out
};

/// Reads the text of a scenario or of a recording; which one, its first line says. The file's name
/// is for errors, and its folder for recordings that the scenario names. A line of a scenario has
/// at most 4,096 bytes and 64 dots, values are nested at most 16 deep: the text is read on a stack
/// of the host, which may be small.
ScenarioResult ReadScenario(const std::string& text, const std::string& fileName);

/// Reads a file: a scenario of at most 1 MiB or a recording of at most 64 MiB.
ScenarioResult ReadScenarioFile(const std::string& path);

/// The scenario of the file that KOVASMGR_VIRTUAL_SCENARIO names, or the built-in one, with the
/// seed and the speed of KOVASMGR_VIRTUAL_SEED and KOVASMGR_VIRTUAL_SPEED. Logs the notes.
ScenarioResult LoadScenario();

/// Whether a port belongs to a mode of its device.
bool IsInMode(const PortSpec& port, const std::string& mode);

/// The port's name with what may not stand in a file's name replaced by '_'.
std::string LinkName(const std::string& portName);

#endif
