// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_MODEL_STATE_H
#define KOVASMGR_TESTS_PROOF_MODEL_STATE_H

#include <string>
#include <vector>

namespace model {

/// A port, as it stands in either list.
struct Port {
    int id = -1;
    int type = 20100;
    std::string name;
    std::string device;
    int handle = -1;
    std::vector<int> readCallbacks;
    std::string text;
};

struct Device {
    std::string name;
    std::vector<Port> ports;
    std::string text;
};

/// All that a manager knows, in the simplest form; made by the model, and copied from the real one.
struct State {
    bool exists = false;
    bool isInit = false;
    bool isRunning = false; ///< the flag of the read thread
    int lastID = 0;
    std::vector<Port> ports;
    std::vector<Device> devices;
    std::vector<int> stateCallbacks;
};

bool operator==(const Port& left, const Port& right);
bool operator==(const Device& left, const Device& right);
bool operator==(const State& left, const State& right);

std::string Describe(const State& state);

} // namespace model

#endif
