// SPDX-License-Identifier: MIT
#include <filesystem>
#include <memory>
#include <system_error>

#include "tools/kovasctl/adapter_section.h"
#include "tools/kovasctl/command.h"
#include "tools/kovasctl/failure.h"
#include "tools/kovasctl/library.h"
#include "tools/kovasctl/node_examination.h"
#include "tools/kovasctl/open_port.h"
#include "tools/kovasctl/option_types.h"
#include "tools/kovasctl/port_choice.h"

namespace {

struct DoctorOptions {
    std::string port; // empty: all
    bool isToOpen = false;
};

bool IsNode(const std::string& portName) { return portName.compare(0, 1, "/") == 0; }

std::string CurrentDirectory() {
    std::error_code error;
    return std::filesystem::current_path(error).string();
}

// Which adapter other hosts would load, when they are started where the person stands.
void DescribeOtherHosts(Findings& findings) {
    const std::string here = CurrentDirectory();
    const std::string file = AdapterFileIn(here);
    if (!file.empty()) {
        findings.Note("other hosts", "a host that is started in " + here + " loads " + file);
        return;
    }
    const std::string fallback = AdapterFileIn(LibrarysOwnDirectory());
    if (fallback.empty()) {
        findings.Note("other hosts",
                      "a host that is started in " + here + " finds no adapter, there nor in " +
                          LibrarysOwnDirectory(),
                      "start it in an adapter's directory, or install an adapter");
    } else {
        findings.Good("other hosts", "a host that is started in " + here + " loads " + fallback);
    }
}

void TryToOpen(Library& library, const ChosenPort& port, Findings& findings) {
    try {
        const OpenPort open(library, port);
        findings.Good(port.port.name, "opens");
    } catch (const Failure& failure) {
        findings.Problem(port.port.name, failure.what(), "");
    }
}

void ExaminePort(Library& library, const ChosenPort& port, bool isToOpen, Findings& findings) {
    findings.Good(port.port.name,
                  "identifier " + std::to_string(port.port.id) + ", of " + port.deviceName);
    if (IsNode(port.port.name)) {
        ExamineNode(port.port.name, findings);
    }
    if (isToOpen || !IsNode(port.port.name)) {
        TryToOpen(library, port, findings);
    }
}

// A port that was there yesterday is asked for by its node.
void ExamineMissing(const std::string& wanted, const std::string& reason, Findings& findings) {
    findings.Problem(wanted, reason, "attach its device; 'kovasctl watch' tells when it comes");
    if (IsNode(wanted)) {
        ExamineNode(wanted, findings);
    }
}

std::vector<ChosenPort> PortsToExamine(const DoctorOptions& options, const Snapshot& snapshot,
                                       Findings& findings) {
    if (!options.port.empty()) {
        try {
            return {ChoosePort(snapshot, options.port)};
        } catch (const Failure& failure) {
            ExamineMissing(options.port, failure.what(), findings);
            return {};
        }
    }
    std::vector<ChosenPort> ports;
    for (const Device& device : snapshot.devices) {
        for (size_t p = 0; p < device.ports.size(); ++p) {
            ports.push_back({device.name, p, device.ports[p]});
        }
    }
    return ports;
}

void ExaminePorts(const GlobalOptions& global, const DoctorOptions& options, Findings& findings) {
    Library library(global);
    findings.Good("library", "initialises");
    const Snapshot snapshot = TakeSnapshot();
    if (snapshot.devices.empty()) {
        findings.Problem("devices", "no device is there" + library.Reason(0),
                         "attach one; 'kovasctl watch' tells when it comes");
    }
    for (const ChosenPort& port : PortsToExamine(options, snapshot, findings)) {
        ExaminePort(library, port, options.isToOpen, findings);
    }
}

int Doctor(const GlobalOptions& global, const DoctorOptions& options) {
    Findings findings;
    DescribeOtherHosts(findings);
    if (ExamineAdapter(FindAdapter(global.adapter), findings)) {
        try {
            ExaminePorts(global, options, findings);
        } catch (const Failure& failure) {
            findings.Problem("library", failure.what(), "");
        }
    }
    return findings.Report(global.json);
}

} // namespace

Action SetUpDoctor(CLI::App& app) {
    const auto options = std::make_shared<DoctorOptions>();
    AddPort(app, options->port, false);
    app.add_flag("--open", options->isToOpen, "really open the ports");
    return [=](const GlobalOptions& global) { return Doctor(global, *options); };
}
