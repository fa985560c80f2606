// SPDX-License-Identifier: MIT
//
// Options that several commands have in common.
#ifndef KOVASCTL_OPTION_TYPES_H
#define KOVASCTL_OPTION_TYPES_H

#include <CLI/CLI.hpp>

#include <cmath>
#include <cstdint>
#include <optional>
#include <string>

/// A time in seconds, fractions allowed.
inline CLI::Option* AddSeconds(CLI::App& app, const std::string& name,
                               std::optional<double>& seconds, const std::string& text) {
    constexpr double kMost = 1e9; // some thirty years
    return app.add_option(name, seconds, text)
        ->type_name("S")
        ->check([](const std::string& given) -> std::string {
            double value = 0;
            const bool isNumber = CLI::detail::lexical_cast(given, value) && std::isfinite(value);
            return isNumber && value >= 0 && value <= kMost
                       ? ""
                       : "'" + given + "' is no time in seconds";
        });
}

/// A number of 1 or more.
inline CLI::Option* AddCount(CLI::App& app, const std::string& name, std::optional<uint64_t>& count,
                             const std::string& type, const std::string& text) {
    return app.add_option(name, count, text)
        ->type_name(type)
        ->check([](const std::string& given) -> std::string {
            const bool isNumber = !given.empty() && given.size() < 19 &&
                                  given.find_first_not_of("0123456789") == std::string::npos;
            return isNumber && given.find_first_not_of('0') != std::string::npos
                       ? ""
                       : "'" + given + "' is no number of 1 or more";
        });
}

inline void AddPort(CLI::App& app, std::string& port, bool isRequired = true) {
    app.add_option("PORT", port,
                   "identifier, name, or a part of the device's name or text that fits no other")
        ->type_name("")
        ->required(isRequired);
}

/// For commands that send a text.
inline void AddTextOptions(CLI::App& app, bool& hasEscapes, std::string& lineEnd) {
    app.add_flag("-e,--escapes", hasEscapes, "texts have escapes: \\r \\n \\t \\0 \\e \\xHH \\\\");
    app.add_option("--eol", lineEnd, "end the sent text with cr, lf or crlf")
        ->type_name("EOL")
        ->check(CLI::IsMember({"cr", "lf", "crlf"}));
}

inline void AddLine(CLI::App& app, std::string& line) {
    app.add_option("--line", line, "settings of a serial line: 115200,8n1")->type_name("SETTINGS");
}

#endif
