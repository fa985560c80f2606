// SPDX-License-Identifier: MIT
#include "tools/kovasctl/command_line.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <string>

#include "KOVASMgr.h"
#include "tools/kovasctl/command.h"
#include "tools/kovasctl/failure.h"
#include "tools/kovasctl/streams.h"

namespace {

struct CommandLine {
    CLI::App app{"Shows, watches and talks to the communication ports of attached devices.",
                 "kovasctl"};
    GlobalOptions options;
    std::vector<Action> actions; // as Commands()
};

std::string Version() {
    return "kovasctl " + std::to_string(KOVASMGR_VERSION_MAJOR) + "." +
           std::to_string(KOVASMGR_VERSION_MINOR) + "." + std::to_string(KOVASMGR_VERSION_PATCH);
}

void AddGlobalOptions(CommandLine& line) {
    CLI::App& app = line.app;
    app.set_help_flag("-h,--help", "show this help, or that of a command");
    app.set_version_flag("--version", Version(), "show the version");
    app.add_option("--adapter", line.options.adapter,
                   "linux, virtual or a directory; default: the installed adapter")
        ->type_name("NAME|DIR");
    app.add_option("--log-dir", line.options.logDirectory,
                   "where KOVASMgr.log goes, made if needed; default: a private directory, removed "
                   "when nothing went wrong")
        ->type_name("DIR");
    app.add_flag("--json", line.options.json,
                 "for programs: list, watch, doctor, adapter-info, check-adapter, stats");
    app.footer("Examples:\n"
               "  kovasctl list\n"
               "  kovasctl --adapter virtual term virtual-modem-0\n"
               "  kovasctl COMMAND --help\n"
               "Exit status: 0 done, 1 failed, 2 wrong use, 128 and more ended by a signal.");
    app.require_subcommand(1);
}

void AddCommand(CommandLine& line, const Command& command) {
    CLI::App* app = line.app.add_subcommand(command.name, command.summary);
    app->fallthrough(); // global options may stand behind the command
    app->set_help_flag("-h,--help", "show this help");
    line.actions.push_back(command.setUp(*app));
    app->footer(std::string(command.description) + (*command.description == '\0' ? "" : "\n") +
                "Global options: kovasctl --help\n\nExamples:\n" + command.example);
}

std::vector<std::string> WordsBehindMark(int argc, char** argv) {
    const std::vector<std::string> words(argv, argv + argc);
    const auto mark = std::find(words.begin(), words.end(), "--");
    return mark == words.end() ? std::vector<std::string>()
                               : std::vector<std::string>(mark + 1, words.end());
}

[[noreturn]] void FailParsing(const CommandLine& line, const std::string& reason) {
    const auto chosen = line.app.get_subcommands();
    const auto left = line.app.remaining();
    const bool isUnknown = chosen.empty() && !left.empty() && left.front().compare(0, 1, "-") != 0;
    const std::string what = isUnknown ? "there is no command '" + left.front() + "'" : reason;
    const std::string command = chosen.empty() ? "" : chosen.front()->get_name() + " ";
    throw WrongUse(what + "; 'kovasctl " + command + "--help' explains");
}

/// @return false when the answer was help or the version
bool Parse(CommandLine& line, int argc, char** argv) {
    try {
        line.app.parse(argc, argv);
        return true;
    } catch (const CLI::CallForHelp&) {
        WriteData(line.app.help());
    } catch (const CLI::CallForVersion& version) {
        WriteData(std::string(version.what()) + "\n");
    } catch (const CLI::ParseError& error) {
        FailParsing(line, error.what());
    }
    return false;
}

int RunChosen(const CommandLine& line) {
    for (size_t c = 0; c < Commands().size(); ++c) {
        const Command& command = Commands()[c];
        if (!line.app.got_subcommand(command.name)) {
            continue;
        }
        if (line.options.json && !command.hasJson) {
            throw WrongUse(std::string("--json has no meaning for ") + command.name);
        }
        return line.actions[c](line.options);
    }
    return kWrongUse;
}

} // namespace

int RunCommandLine(int argc, char** argv) {
    CommandLine line;
    line.options.behind = WordsBehindMark(argc, argv);
    AddGlobalOptions(line);
    for (const Command& command : Commands()) {
        AddCommand(line, command);
    }
    return Parse(line, argc, argv) ? RunChosen(line) : kDone;
}
