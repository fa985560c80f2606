// SPDX-License-Identifier: MIT
#include <unistd.h>

#include <memory>

#include "tools/kovasctl/command.h"
#include "tools/kovasctl/failure.h"
#include "tools/kovasctl/option_types.h"
#include "tools/kovasctl/terminal_session.h"

namespace {

std::string CheckEscape(const std::string& given) {
    // Ctrl-I, -J and -M are the keys Tab and Enter.
    const bool isLetter = given.size() == 1 && given[0] >= 'a' && given[0] <= 'z';
    return isLetter && given != "i" && given != "j" && given != "m"
               ? ""
               : "the escape key is one of the letters a to z, but i, j and m";
}

int Term(const GlobalOptions& global, const TerminalOptions& options) {
    if (isatty(STDIN_FILENO) != 1) {
        throw WrongUse("term needs a terminal; scripts use send and receive");
    }
    TerminalSession(global, options).Run();
    return kDone;
}

} // namespace

Action SetUpTerm(CLI::App& app) {
    const auto options = std::make_shared<TerminalOptions>();
    AddPort(app, options->port);
    AddLine(app, options->line);
    app.add_flag("--echo", options->hasEcho, "show what is typed");
    app.add_flag("--hex", options->isHex, "show bytes as hexadecimal digits");
    app.add_option("--log", options->logFile, "append what is received to a file")
        ->type_name("FILE");
    app.add_option("--eol", options->lineEnd, "what Enter sends: cr, lf or crlf; default: cr")
        ->type_name("EOL")
        ->check(CLI::IsMember({"cr", "lf", "crlf"}));
    app.add_option("--escape", options->escape, "letter of the escape key; default: t, for Ctrl-T")
        ->type_name("LETTER")
        ->check(CheckEscape);
    app.add_flag("--no-reconnect", options->isOnce,
                 "end with the device, instead of waiting for it");
    return [=](const GlobalOptions& global) { return Term(global, *options); };
}
