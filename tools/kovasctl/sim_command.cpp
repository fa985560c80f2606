// SPDX-License-Identifier: MIT
#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>

#include "tools/kovasctl/command.h"
#include "tools/kovasctl/failure.h"
#include "tools/kovasctl/sim/check.h"
#include "tools/kovasctl/sim/do.h"
#include "tools/kovasctl/sim/host.h"
#include "tools/kovasctl/sim/outputs.h"
#include "tools/kovasctl/sim/program.h"
#include "tools/kovasctl/sim/progress.h"
#include "tools/kovasctl/sim/scenarios.h"
#include "tools/kovasctl/sim/surroundings.h"
#include "tools/kovasctl/sim/workplace.h"
#include "tools/kovasctl/streams.h"

namespace {

constexpr const char* kSimulator = "virtual";
constexpr const char* kSpy = "spy";

// From a host's start to its first use of the devices.
constexpr double kPatienceInSeconds = 10;

struct SimOptions {
    SimSettings settings;
    std::string scenario;
    std::vector<std::string> rest; // a host's words, or more scenarios
    std::vector<std::string> sentence;
    std::string process;
    std::string directory;
    bool stop = false;
    bool check = false;
    bool list = false;
};

int List(const GlobalOptions& global) {
    const std::vector<ReadyScenario> scenarios = ReadyScenarios();
    WriteData(global.json ? ScenariosAsJson(scenarios) : ScenariosAsText(scenarios));
    return kDone;
}

int CheckOne(const ScenarioChecker& checker, const std::string& choice) {
    try {
        return CheckScenario(checker, FindScenario(choice));
    } catch (const WrongUse& reason) {
        Message(reason.what());
        return kFailed;
    }
}

int Check(const SimOptions& options) {
    const ScenarioChecker checker(FindAdapter(kSimulator).file);
    int status = CheckOne(checker, options.scenario);
    for (const std::string& choice : options.rest) {
        status = std::max(status, CheckOne(checker, choice));
    }
    return status;
}

int Do(const SimOptions& options) {
    std::vector<std::string> place;
    if (!options.process.empty()) {
        place = {"--pid", options.process};
    } else if (!options.directory.empty()) {
        place = {"--dir", options.directory};
    }
    return DoInSimulation(place, options.sentence);
}

bool HasEnded(SimProgress& progress) {
    const std::optional<SimStatus> status = progress.Ask();
    return progress.IsOutOfReach() || (status && status->hasEnded);
}

int RunUntilStopped(const GlobalOptions& global, const std::string& control,
                    const std::string& directory) {
    SimProgress progress(control, kPatienceInSeconds);
    const int status = RunProgram(global.behind, directory, [&] { return HasEnded(progress); });
    if (!progress.IsOutOfReach()) {
        return status;
    }
    Message(progress.Trouble() + ": --stop has ended a host that does not use the devices");
    return kFailed;
}

int RunHost(const GlobalOptions& global, const SimOutputs& outputs, bool stop) {
    const SimControl control;
    SimWorkplace workplace(global.logDirectory, FindAdapter(global.adapter));
    const int status =
        outputs.Look(stop ? RunUntilStopped(global, control.Path(), workplace.Path())
                          : RunProgram(global.behind, workplace.Path(), std::function<bool()>()));
    workplace.Look(status);
    return status;
}

void RefuseMistakes(const AdapterPlace& simulator, const std::string& file) {
    const std::string mistake = ScenarioChecker(simulator.file).MistakeIn(file);
    if (!mistake.empty()) {
        throw Failure(mistake);
    }
}

int Simulate(GlobalOptions global, const SimOptions& options) {
    const AdapterPlace simulator = FindAdapter(kSimulator);
    SimSettings settings = options.settings;
    settings.scenario = FindScenario(options.scenario);
    RefuseMistakes(simulator, settings.scenario);
    const SimOutputs outputs(settings);
    SetVariables(settings, simulator.directory);
    RaiseDescriptorLimit();
    if (global.adapter.empty()) {
        global.adapter = settings.recording.empty() ? kSimulator : kSpy;
    }
    if (!global.behind.empty()) {
        return RunHost(global, outputs, options.stop);
    }
    const SimControl control;
    return outputs.Look(RunSimHost(global, control.Path()));
}

// The host's words are those behind the mark, untouched: CLI11 takes brackets for lists.
int Run(const GlobalOptions& global, const SimOptions& options) {
    if (options.scenario.empty()) {
        throw WrongUse(options.check ? "--check needs scenarios" : "sim needs a SCENARIO");
    }
    if (options.check) {
        return Check(options);
    }
    if (!options.rest.empty() && global.behind.empty()) {
        throw WrongUse("a host stands behind '--': kovasctl sim SCENARIO -- HOST");
    }
    return Simulate(global, options);
}

void RefuseNonsense(const GlobalOptions& global, const SimOptions& options) {
    if (global.json) {
        throw WrongUse("--json has no meaning for sim, but for its --list");
    }
    if (options.stop && global.behind.empty()) {
        throw WrongUse("--stop needs a host behind '--'");
    }
    if (!global.adapter.empty() && global.adapter != kSimulator && global.adapter != kSpy) {
        throw WrongUse("sim takes --adapter virtual or --adapter spy, never real ports");
    }
    if (!options.settings.recording.empty() && !global.adapter.empty()) {
        throw WrongUse("--recording takes the spy, so --adapter has no meaning with it");
    }
}

int Dispatch(const GlobalOptions& global, const SimOptions& options) {
    if (options.list) {
        return List(global);
    }
    RefuseNonsense(global, options);
    return options.sentence.empty() ? Run(global, options) : Do(options);
}

bool IsNumber(const std::string& given, size_t digits) {
    return !given.empty() && given.size() <= digits &&
           given.find_first_not_of("0123456789") == std::string::npos;
}

std::string CheckSeed(const std::string& given) {
    const bool fits = IsNumber(given, 19) && std::stoull(given) <= INT64_MAX;
    return fits ? "" : "'" + given + "' is no number of 0 to 2^63 - 1";
}

std::string CheckSpeed(const std::string& given) {
    double value = 0;
    const bool isNumber = CLI::detail::lexical_cast(given, value);
    return isNumber && value >= 0.001 && value <= 1000 ? ""
                                                       : "'" + given + "' is not 0.001 to 1000";
}

void AddRunOptions(CLI::App& app, SimOptions& options) {
    app.add_option("SCENARIO", options.scenario,
                   "a ready scenario's name, or a file: a scenario, or a recording of the spy")
        ->type_name("");
    // As long as it can take something, CLI11 leaves the mark to this command.
    app.add_option("HOST", options.rest,
                   "behind '--': a program and its arguments; with --check: more scenarios")
        ->type_name("");
    app.add_option("--seed", options.settings.seed, "other random bytes; default: the scenario's")
        ->type_name("N")
        ->check(CheckSeed);
    app.add_option("--speed", options.settings.speed,
                   "how much faster its time goes: 0.001 to 1000; default: the scenario's")
        ->type_name("X")
        ->check(CheckSpeed);
    app.add_option("--events", options.settings.events, "write what happened to this file")
        ->type_name("FILE");
    app.add_flag("--stop", options.stop,
                 "end the host (SIGTERM, 0 when it dies of it) when the scenario has ended; a "
                 "failure (1) when it has not used the devices 10 seconds after its start");
    app.add_option("--recording", options.settings.recording,
                   "have the spy record the host's calls in this file, to be played as a scenario")
        ->type_name("FILE");
}

void AddOtherOptions(CLI::App& app, SimOptions& options) {
    CLI::Option* check = app.add_flag("--check", options.check, "only check scenarios");
    CLI::Option* list = app.add_flag("--list", options.list, "show the ready scenarios");
    CLI::Option* sentence =
        app.add_option("--do", options.sentence, "give a command to a running one: 'pull modem'")
            ->type_name("COMMAND ...");
    list->excludes(check);
    sentence->excludes(check)->excludes(list);
    CLI::Option* process =
        app.add_option("--pid", options.process, "with --do: the process of kovasctl or the host");
    process->type_name("PID")->needs(sentence);
    app.add_option("--dir", options.directory, "with --do: the control directory")
        ->type_name("DIR")
        ->needs(sentence)
        ->excludes(process);
}

} // namespace

Action SetUpSim(CLI::App& app) {
    const auto options = std::make_shared<SimOptions>();
    AddRunOptions(app, *options);
    AddOtherOptions(app, *options);
    return [=](const GlobalOptions& global) { return Dispatch(global, *options); };
}
