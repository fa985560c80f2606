// SPDX-License-Identifier: MIT
#include "tools/kovasctl/port_choice.h"

#include <strings.h>

#include <algorithm>
#include <functional>

#include "tools/kovasctl/failure.h"
#include "tools/kovasctl/printable.h"

namespace {

using Rule = std::function<bool(const Device&, const Port&)>;

constexpr size_t kLongestIdentifierOnly = 3; // digits

std::vector<ChosenPort> Collect(const Snapshot& snapshot, const Rule& fits) {
    std::vector<ChosenPort> found;
    for (const Device& device : snapshot.devices) {
        for (size_t p = 0; p < device.ports.size(); ++p) {
            if (fits(device, device.ports[p])) {
                found.push_back({device.name, p, device.ports[p]});
            }
        }
    }
    return found;
}

std::vector<ChosenPort> FirstThatFits(const Snapshot& snapshot, const std::vector<Rule>& rules) {
    for (const Rule& rule : rules) {
        std::vector<ChosenPort> found = Collect(snapshot, rule);
        if (!found.empty()) {
            return found;
        }
    }
    return {};
}

bool IsNumber(const std::string& text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

bool Contains(const std::string& text, const std::string& part) {
    const auto isEqual = [](char left, char right) { return strncasecmp(&left, &right, 1) == 0; };
    return std::search(text.begin(), text.end(), part.begin(), part.end(), isEqual) != text.end();
}

std::vector<Rule> RulesFor(const std::string& wanted) {
    std::vector<Rule> rules = {
        [=](const Device&, const Port& port) { return std::to_string(port.id) == wanted; },
        [=](const Device&, const Port& port) { return port.name == wanted; },
        [=](const Device& device, const Port&) { return device.name == wanted; },
    };
    if (!wanted.empty() && (!IsNumber(wanted) || wanted.size() > kLongestIdentifierOnly)) {
        rules.emplace_back([=](const Device& device, const Port& port) {
            return Contains(port.name, wanted) || Contains(device.name, wanted) ||
                   Contains(device.text, wanted);
        });
    }
    return rules;
}

std::string ListOf(const std::vector<ChosenPort>& candidates) {
    std::string text;
    for (const ChosenPort& candidate : candidates) {
        text += "\n  " + std::to_string(candidate.port.id) + "  " + Printable(candidate.port.name) +
                "  (" + Printable(candidate.deviceName) + ")";
    }
    return text;
}

} // namespace

std::vector<ChosenPort> MatchPorts(const Snapshot& snapshot, const std::string& wanted) {
    return FirstThatFits(snapshot, RulesFor(wanted));
}

ChosenPort ChoosePort(const Snapshot& snapshot, const std::string& wanted) {
    const std::vector<ChosenPort> found = MatchPorts(snapshot, wanted);
    if (found.empty()) {
        throw Failure("no port fits '" + Printable(wanted) + "'" +
                      (snapshot.devices.empty() ? "; no device is there"
                                                : "; 'kovasctl list' shows "
                                                  "what is there"));
    }
    if (found.size() > 1) {
        FailAmbiguous(wanted, found);
    }
    return found.front();
}

void FailAmbiguous(const std::string& wanted, const std::vector<ChosenPort>& candidates) {
    throw Failure("'" + Printable(wanted) +
                  "' fits several ports; choose one:" + ListOf(candidates));
}

std::vector<ChosenPort> FindAgain(const Snapshot& snapshot, const ChosenPort& last,
                                  const std::string& wanted) {
    const std::vector<Rule> rules = {
        [&](const Device& device, const Port& port) {
            return device.name == last.deviceName && port.name == last.port.name;
        },
        [&](const Device& device, const Port& port) {
            return device.name == last.deviceName && device.ports.size() > last.index &&
                   device.ports[last.index].name == port.name;
        },
        [&](const Device&, const Port& port) {
            return port.name == last.port.name && !IsNumber(wanted) && Contains(port.name, wanted);
        },
    };
    return FirstThatFits(snapshot, rules);
}

bool IsPresent(const Snapshot& snapshot, const ChosenPort& wanted) {
    return !Collect(snapshot, [&](const Device& device, const Port& port) {
                return device.name == wanted.deviceName && port.id == wanted.port.id &&
                       port.name == wanted.port.name;
            }).empty();
}
