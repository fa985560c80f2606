// SPDX-License-Identifier: MIT
#include <CLI/CLI.hpp>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <system_error>

#include "KOVASMgrLog.h"
#include "tools/kovasctl/adapter_place.h"
#include "tools/kovasctl/command.h"
#include "tools/kovasctl/conformance/examination.h"
#include "tools/kovasctl/conformance/report.h"
#include "tools/kovasctl/failure.h"
#include "tools/kovasctl/log_directory.h"
#include "tools/kovasctl/option_types.h"
#include "tools/kovasctl/streams.h"

namespace {

struct CheckAdapterOptions {
    std::string directory;
    std::vector<std::string> rules;
    std::optional<double> timeout;
    std::optional<double> writeBound;
    std::string junit; // empty: none
    bool isToList = false;
    KitOptions kit;
};

void ExpectSense(const GlobalOptions& global, const CheckAdapterOptions& options) {
    if (!global.adapter.empty()) {
        throw WrongUse("--adapter has no meaning for check-adapter, which is given the DIR");
    }
    if (options.directory.empty() && !options.isToList) {
        throw WrongUse("DIR is required");
    }
    if (options.kit.plug.empty() != options.kit.unplug.empty()) {
        throw WrongUse("--plug and --unplug belong together");
    }
    if (options.timeout && *options.timeout < 1) {
        throw WrongUse("--timeout: a second at least");
    }
}

int List(const GlobalOptions& global, const Selection& selection) {
    std::string text;
    for (const Rule* rule : selection) {
        text += RuleAsText(*rule);
    }
    WriteData(global.json ? RulesAsJson(selection) : text);
    return kDone;
}

std::ofstream OpenReport(const std::string& file) {
    std::ofstream stream;
    if (!file.empty()) {
        stream.open(file, std::ios::binary | std::ios::trunc);
        if (!stream) {
            throw WrongUse("--junit: " + file + " cannot be written");
        }
    }
    return stream;
}

KitOptions Complete(const CheckAdapterOptions& options, const AdapterPlace& adapter) {
    KitOptions kit = options.kit;
    std::error_code error;
    kit.file = adapter.file;
    kit.home = std::filesystem::current_path(error).string();
    kit.timeout = options.timeout.value_or(kit.timeout);
    kit.writeBound = options.writeBound.value_or(kit.writeBound);
    return kit;
}

/// Tells what an adapter has said since it was asked last.
class AdaptersWord {
  public:
    explicit AdaptersWord(const std::string& directory) : m_Log(directory) {
        KOVASMGR_LOG_INIT(m_Log.Path().c_str());
    }

    std::string operator()() {
        std::string reason = m_Log.ReasonSince(m_Mark, "");
        m_Mark = m_Log.Mark();
        return reason;
    }

  private:
    LogDirectory m_Log;
    uint64_t m_Mark = 0;
};

Results Examine(const GlobalOptions& global, const KitOptions& kit, const Selection& selection) {
    AdaptersWord word(global.logDirectory);
    Examination examination(kit, selection, [&] { return word(); });
    Results results;
    for (const Rule* rule : selection) {
        results.push_back({rule, examination.OutcomeOf(*rule)});
        if (!global.json) {
            WriteData(ResultAsText(results.back()));
        }
    }
    return results;
}

int CheckAdapter(const GlobalOptions& global, const CheckAdapterOptions& options) {
    const Selection selection = SelectRules(options.rules);
    if (options.isToList) {
        return List(global, selection);
    }
    const AdapterPlace adapter = FindAdapter(options.directory);
    std::ofstream junit = OpenReport(options.junit);
    const KitOptions kit = Complete(options, adapter);
    EnterAdapterDirectory(adapter);
    const Results results = Examine(global, kit, selection);
    WriteData(global.json ? ResultsAsJson(kit.file, results) : SummaryAsText(results));
    if (junit.is_open() && !(junit << ResultsAsJunit(kit.file, results)).flush()) {
        throw Failure("--junit: " + options.junit + " cannot be written");
    }
    return HasFailure(results) ? kFailed : kDone;
}

void AddPortOptions(CLI::App& app, CheckAdapterOptions& options) {
    // Each takes one word, so that DIR may stand anywhere.
    app.add_option("--port", options.kit.ports,
                   "a port that may be opened, and written a line end to; may be repeated")
        ->type_name("NAME")
        ->allow_extra_args(false);
    app.add_option("--stalled", options.kit.stalledPorts,
                   "a port whose far end does not read, for the rules on waiting writes; it is "
                   "written to until it is full; may be repeated")
        ->type_name("NAME")
        ->allow_extra_args(false);
}

void AddCommandOptions(CLI::App& app, CheckAdapterOptions& options) {
    app.add_option("--unplug", options.kit.unplug,
                   "shell command that pulls a device out; KOVASMGR_HOST_PID is the process that "
                   "has the adapter loaded")
        ->type_name("COMMAND");
    app.add_option("--plug", options.kit.plug, "shell command that plugs it in again")
        ->type_name("COMMAND");
}

void AddReportOptions(CLI::App& app, CheckAdapterOptions& options) {
    app.add_option("--rule", options.rules, "only these rules: R9b, or R9 for all of that number")
        ->type_name("N[,N...]")
        ->delimiter(',')
        ->allow_extra_args(false);
    AddSeconds(app, "--timeout", options.timeout, "how long one rule may take; default 20");
    AddSeconds(app, "--write-bound", options.writeBound,
               "within what time the adapter promises to end a write; default 1");
    app.add_option("--junit", options.junit, "write a report as JUnit's XML too")
        ->type_name("FILE");
    app.add_flag("--list", options.isToList, "show the rules, and try nothing");
}

} // namespace

Action SetUpCheckAdapter(CLI::App& app) {
    const auto options = std::make_shared<CheckAdapterOptions>();
    app.add_option("DIR", options->directory, "an adapter's directory or name")->type_name("");
    AddPortOptions(app, *options);
    AddCommandOptions(app, *options);
    AddReportOptions(app, *options);
    return [=](const GlobalOptions& global) {
        ExpectSense(global, *options);
        return CheckAdapter(global, *options);
    };
}
