// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_PORT_CHOICE_H
#define KOVASCTL_PORT_CHOICE_H

#include <string>
#include <vector>

#include "tools/kovasctl/snapshot.h"

/// A port with its place: enough to find it again when its device comes back.
struct ChosenPort {
    std::string deviceName;
    size_t index = 0; // among the ports of the device
    Port port;
};

/// The ports that a person may mean. The first of these that fits any: a port's identifier; a port's
/// name; a device's name; a part of a port's name, or of a device's name or text, in any case. A
/// number of up to three digits is an identifier or a whole name only: the port of a device that has
/// gone is not to be mistaken for a part of another's name.
std::vector<ChosenPort> MatchPorts(const Snapshot& snapshot, const std::string& wanted);

/// @throws Failure when there is none, or more than one; they are listed then
ChosenPort ChoosePort(const Snapshot& snapshot, const std::string& wanted);

/// @throws Failure
[[noreturn]] void FailAmbiguous(const std::string& wanted,
                                const std::vector<ChosenPort>& candidates);

/// The same port of the same device, if it is there: by its name, else by its place. If the device is
/// not there, the port of the same name of another one, if it is what the person asked for and not
/// an identifier, which may be anything's today: a device that has been switched may call itself
/// otherwise. Never a port of another name: what is typed must not reach another device.
std::vector<ChosenPort> FindAgain(const Snapshot& snapshot, const ChosenPort& port,
                                  const std::string& wanted);

bool IsPresent(const Snapshot& snapshot, const ChosenPort& port);

#endif
