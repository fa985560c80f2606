// SPDX-License-Identifier: MIT
//
// What a scenario lets happen, and when. README.md has the words that say it in a scenario file.
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_EVENT_H
#define KOVASMGR_ADAPTERS_VIRTUAL_EVENT_H

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

/// A time by a scenario's clock, which starts at the first use of the adapter, may run faster or
/// slower than others and can be stopped; also a span of such time.
using ScenarioTime = std::chrono::microseconds;

/// A call of the host.
enum class Operation { Open, Close, Write, Read, Enumerate };

enum class ActionKind {
    Plug,       // target: a device
    Pull,       // target: a device
    Replug,     // target: a device
    Switch,     // target: a device; to mode
    PlugPort,   // target: a port
    UnplugPort, // target: a port
    Send,       // target: a port; bytes, times over
    SendRandom, // target: a port; count bytes out of the scenario's seed, times over
    Stall,      // target: a port, whose far end takes nothing any more
    Resume,     // target: a port, whose far end takes again
    Break,      // target: a port that is listed and does not work any more
    Mend,       // target: a port
    Fail,       // operation (of the target port) fails, as often or as long as the extent says
    Shorten,    // the writes of the extent take count bytes at most
    Delay       // operation (of the target port) lasts so much longer
};

/// Which of the calls to come an action is about: a number of them, or those of a time.
struct Extent {
    size_t calls = 1;     // 0: as many as come in the time
    ScenarioTime time{0}; // with calls 0; 0 as well: all that ever come
};

struct Action {
    ActionKind kind = ActionKind::Plug;
    std::string target; // a device's or port's name; empty only with Operation::Enumerate
    std::string mode;
    std::string bytes;
    size_t count = 0;
    size_t times = 1;
    Operation operation = Operation::Open;
    Extent extent;
    ScenarioTime delay{0};
};

enum class TriggerKind {
    At,      // once, at time
    Every,   // at start + period, start + 2 periods ... up to end, if there is one
    OnBytes, // each time the host has sent these bytes to the port
    OnCall   // at the nth call of the operation on the port, or at each
};

struct Trigger {
    TriggerKind kind = TriggerKind::At;
    ScenarioTime time{0};                  // At: when; Every: the period, never 0
    ScenarioTime start{0};                 // Every
    std::optional<ScenarioTime> end;       // Every
    std::string bytes;                     // OnBytes, 1 to 1,024
    std::string port;                      // OnBytes, OnCall; empty only with Operation::Enumerate
    Operation operation = Operation::Open; // OnCall
    size_t nth = 0;                        // OnCall; 0: each
};

/// A fault (Fail, Shorten, Delay) whose trigger is OnCall and whose target is that same port and
/// operation is about the very call that triggers it.
struct Event {
    Trigger trigger;
    Action action;
    ScenarioTime after{0}; // so much later than its trigger; only OnBytes and OnCall
    std::string text;      // as it was written, without blanks around it
    size_t line = 0;       // in the scenario file, for messages
};

#endif
