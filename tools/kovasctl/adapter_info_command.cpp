// SPDX-License-Identifier: MIT
#include <CLI/CLI.hpp>

#include <memory>

#include "tools/kovasctl/adapter_section.h"
#include "tools/kovasctl/command.h"
#include "tools/kovasctl/failure.h"

Action SetUpAdapterInfo(CLI::App& app) {
    const auto directory = std::make_shared<std::string>();
    app.add_option("DIR", *directory, "an adapter's directory or name")->type_name("")->required();
    return [=](const GlobalOptions& global) {
        if (directory->empty()) {
            throw WrongUse("DIR is empty");
        }
        if (!global.adapter.empty()) {
            throw WrongUse("--adapter has no meaning for adapter-info, which is given the DIR");
        }
        Findings findings;
        ExamineAdapter(FindAdapter(*directory), findings);
        return findings.Report(global.json);
    };
}
