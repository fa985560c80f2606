// SPDX-License-Identifier: MIT
#include "tests/proof/model/state.h"

#include <tuple>

#include "tests/proof/model/operation.h"

namespace model {
namespace {

auto Fields(const Port& port) {
    return std::tie(port.id, port.type, port.name, port.device, port.handle, port.readCallbacks,
                    port.text);
}

auto Fields(const Device& device) { return std::tie(device.name, device.ports, device.text); }

auto Fields(const State& state) {
    return std::tie(state.exists, state.isInit, state.isRunning, state.lastID, state.ports,
                    state.devices, state.stateCallbacks);
}

std::string Describe(const std::vector<int>& callbacks) {
    std::string text;
    for (const int callback : callbacks) {
        text += " " + std::to_string(callback);
    }
    return text.empty() ? " none" : text;
}

std::string Describe(const Port& port) {
    return "    " + std::to_string(port.id) + " type " + std::to_string(port.type) + " " +
           Quoted(port.name) + " of " + Quoted(port.device) + " (" + Quoted(port.text) +
           ") handle " + std::to_string(port.handle) + " callbacks" + Describe(port.readCallbacks) +
           "\n";
}

} // namespace

bool operator==(const Port& left, const Port& right) { return Fields(left) == Fields(right); }
bool operator==(const Device& left, const Device& right) { return Fields(left) == Fields(right); }
bool operator==(const State& left, const State& right) { return Fields(left) == Fields(right); }

std::string Describe(const State& state) {
    std::string text = std::string(state.exists ? "a manager" : "no manager") +
                       (state.isInit ? ", initialised" : "") +
                       (state.isRunning ? ", running" : "") + ", last number " +
                       std::to_string(state.lastID) + ", state callbacks" +
                       Describe(state.stateCallbacks) + "\n";
    for (const Port& port : state.ports) {
        text += Describe(port);
    }
    for (const Device& device : state.devices) {
        text += "  device " + Quoted(device.name) + " (" + Quoted(device.text) + ")\n";
        for (const Port& port : device.ports) {
            text += "  " + Describe(port);
        }
    }
    return text;
}

} // namespace model
