// SPDX-License-Identifier: MIT
#include <CLI/CLI.hpp>

#include <memory>

#include "tools/kovasctl/command.h"
#include "tools/kovasctl/device_tree.h"
#include "tools/kovasctl/failure.h"
#include "tools/kovasctl/json_text.h"
#include "tools/kovasctl/library.h"
#include "tools/kovasctl/printable.h"
#include "tools/kovasctl/streams.h"

namespace {

std::string PortNames(const Snapshot& snapshot) {
    std::string names;
    for (const Device& device : snapshot.devices) {
        for (const Port& port : device.ports) {
            names += (IsDataOnTerminal() ? Printable(port.name) : port.name) + "\n";
        }
    }
    return names;
}

void TellOfMore(const Snapshot& snapshot) {
    if (snapshot.deviceCount > snapshot.devices.size()) {
        Message(std::to_string(snapshot.deviceCount - snapshot.devices.size()) +
                " more devices are attached than the library lists");
    }
}

int List(const GlobalOptions& global, bool namesOnly) {
    Library library(global);
    const Snapshot snapshot = TakeSnapshot();
    if (global.json) {
        WriteData(DevicesAsJson(snapshot));
    } else {
        WriteData(namesOnly ? PortNames(snapshot) : DeviceTree(snapshot));
    }
    if (snapshot.devices.empty()) {
        throw Failure(
            "no device is there; attach one, 'kovasctl watch' tells when it comes, or ask "
            "'kovasctl doctor'" +
            library.Reason(0));
    }
    TellOfMore(snapshot);
    return kDone;
}

} // namespace

Action SetUpList(CLI::App& app) {
    const auto namesOnly = std::make_shared<bool>(false);
    app.add_flag("--names", *namesOnly, "the names of the ports alone, one a line");
    return [=](const GlobalOptions& global) {
        if (global.json && *namesOnly) {
            throw WrongUse("--names and --json exclude each other");
        }
        return List(global, *namesOnly);
    };
}
