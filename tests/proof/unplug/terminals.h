// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_UNPLUG_TERMINALS_H
#define KOVASMGR_TESTS_PROOF_UNPLUG_TERMINALS_H

#include <cstddef>
#include <map>
#include <set>
#include <string>

/// Descriptors of this process that are ends of pseudo-terminals.
std::size_t TerminalDescriptors();

/// The identifier of the port of this name; -1 when there is none.
int IdOf(const std::string& portName);

/// Names of devices, each with those of its ports, in whichever order the library has them.
using PortsOfDevices = std::map<std::string, std::multiset<std::string>>;

/// Asks for the library's list.
/// @return the result
int Enumerate(PortsOfDevices& devices);

#endif
