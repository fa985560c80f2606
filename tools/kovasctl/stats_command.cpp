// SPDX-License-Identifier: MIT
#include <CLI/CLI.hpp>
#include <sys/ioctl.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>

#include "tools/kovasctl/command.h"
#include "tools/kovasctl/failure.h"
#include "tools/kovasctl/option_types.h"
#include "tools/kovasctl/processes.h"
#include "tools/kovasctl/stats/file.h"
#include "tools/kovasctl/stats/text.h"
#include "tools/kovasctl/streams.h"
#include "tools/kovasctl/waiting.h"

namespace {

constexpr double kShortest = 0.05; // seconds
constexpr size_t kUnlimited = SIZE_MAX;

struct StatsOptions {
    std::optional<uint64_t> process;
    std::optional<double> interval;
    bool once = false;
};

std::string Listed(const std::vector<int>& processes) {
    std::string text;
    for (const int process : processes) {
        const std::string number = std::to_string(process);
        text += (text.empty() ? "" : ", ") + number + " " + ProcessName(number);
    }
    return text;
}

int ChosenProcess(const StatsOptions& options) {
    if (options.process) {
        return static_cast<int>(std::min<uint64_t>(*options.process, INT32_MAX));
    }
    const std::vector<int> processes = SpiedProcesses();
    if (processes.empty()) {
        throw Failure("no host of yours runs with a spy; its adapter must be the one in the "
                      "directory 'spy', and KOVASMGR_SPY_STATS not be off");
    }
    if (processes.size() > 1) {
        throw Failure("several hosts run with a spy: " + Listed(processes) +
                      "; choose one by --pid");
    }
    return processes.front();
}

bool IsRefreshed() {
    const char* const terminal = std::getenv("TERM");
    return IsDataOnTerminal() && terminal != nullptr && std::strcmp(terminal, "dumb") != 0;
}

size_t WindowRows() {
    winsize window{};
    const bool isKnown = ioctl(DataDescriptor(), TIOCGWINSZ, &window) == 0 && window.ws_row > 0;
    return isKnown ? window.ws_row : kUnlimited;
}

class Stats {
  public:
    Stats(const GlobalOptions& global, const StatsOptions& options)
        : m_Options(options), m_AsJson(global.json), m_File(ChosenProcess(options)),
          m_IsRefreshed(!global.json && !options.once && IsRefreshed()) {}

    int Run() {
        std::optional<HostStats> before;
        while (std::optional<HostStats> now = m_File.Read()) {
            Show(*now, before && before->since == now->since ? &*before : nullptr);
            if (m_Options.once) {
                return kDone;
            }
            before = std::move(now);
            WaitForInput({}, After(m_Options.interval.value_or(1)));
        }
        if (!before) {
            throw Failure("the host has just let its adapter go");
        }
        Message("the host has let its adapter go");
        return kDone;
    }

  private:
    void Show(const HostStats& stats, const HostStats* before) const {
        if (m_AsJson) {
            WriteData(StatsAsJson(stats));
        } else if (m_IsRefreshed) {
            WriteData("\x1b[H\x1b[2J" + StatsTable(stats, before, WindowRows()));
        } else {
            WriteData(StatsTable(stats, before, kUnlimited) + (m_Options.once ? "" : "\n"));
        }
    }

    StatsOptions m_Options;
    bool m_AsJson;
    StatsFile m_File;
    bool m_IsRefreshed;
};

} // namespace

Action SetUpStats(CLI::App& app) {
    const auto options = std::make_shared<StatsOptions>();
    AddCount(app, "--pid", options->process, "P", "the host; needed when several run with a spy");
    CLI::Option* const interval = AddSeconds(app, "--interval", options->interval,
                                             "show anew after so many seconds; default: 1");
    app.add_flag("--once", options->once, "show once and end")->excludes(interval);
    return [=](const GlobalOptions& global) {
        if (!global.adapter.empty()) {
            throw WrongUse("--adapter has no meaning for stats, which looks at a host that runs");
        }
        if (options->interval && *options->interval < kShortest) {
            throw WrongUse("--interval is 0.05 seconds at least");
        }
        return Stats(global, *options).Run();
    };
}
