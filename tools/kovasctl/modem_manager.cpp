// SPDX-License-Identifier: MIT
#include "tools/kovasctl/modem_manager.h"

#include <sys/sysmacros.h>

#include <algorithm>
#include <fstream>
#include <map>

#include "tools/kovasctl/processes.h"

namespace {

using Properties = std::map<std::string, std::string>;

// What udevd has noted on the node: lines "E:NAME=value".
Properties ReadProperties(dev_t number) {
    std::ifstream file("/run/udev/data/c" + std::to_string(major(number)) + ":" +
                       std::to_string(minor(number)));
    Properties properties;
    for (std::string line; std::getline(file, line);) {
        const size_t equals = line.find('=');
        if (line.compare(0, 2, "E:") == 0 && equals != std::string::npos) {
            properties[line.substr(2, equals - 2)] = line.substr(equals + 1);
        }
    }
    return properties;
}

bool IsSet(const Properties& properties, const std::string& name) {
    const auto found = properties.find(name);
    return found != properties.end() && found->second == "1";
}

bool IsCandidate(const Properties& properties) {
    return IsSet(properties, "ID_MM_CANDIDATE") && !IsSet(properties, "ID_MM_DEVICE_IGNORE") &&
           !IsSet(properties, "ID_MM_PORT_IGNORE");
}

bool IsRunning() {
    const auto processes = OtherProcesses();
    return std::any_of(processes.begin(), processes.end(), [](const std::string& process) {
        return ProcessName(process) == "ModemManager";
    });
}

// Four hexadecimal digits; anything else is no part of a command.
std::string Identifier(const Properties& properties, const std::string& name) {
    const auto found = properties.find(name);
    const bool isFit = found != properties.end() && found->second.size() == 4 &&
                       found->second.find_first_not_of("0123456789abcdef") == std::string::npos;
    return isFit ? found->second : "";
}

std::string IgnoreCommand(const Properties& properties) {
    const std::string vendor = Identifier(properties, "ID_VENDOR_ID");
    const std::string product = Identifier(properties, "ID_MODEL_ID");
    if (vendor.empty() || product.empty()) {
        return "sudo systemctl stop ModemManager";
    }
    return "echo 'ATTRS{idVendor}==\"" + vendor + "\", ATTRS{idProduct}==\"" + product +
           "\", ENV{ID_MM_DEVICE_IGNORE}=\"1\"' | sudo tee /etc/udev/rules.d/78-kovasmgr-mm.rules "
           "&& sudo udevadm control --reload && sudo udevadm trigger --action=add "
           "--subsystem-match=tty";
}

} // namespace

void ExamineModemManager(const std::string& node, const struct stat& info, Findings& findings) {
    const Properties properties = ReadProperties(info.st_rdev);
    if (IsCandidate(properties) && IsRunning()) {
        findings.Note(
            node,
            "ModemManager runs and may grab it: it opens the port when it comes and sends "
            "AT commands",
            IgnoreCommand(properties));
    }
}
