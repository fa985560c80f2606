// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_UNPLUG_TERMINALS_H
#define KOVASMGR_TESTS_PROOF_UNPLUG_TERMINALS_H

#include <cstddef>
#include <string>

/// Descriptors of this process that are ends of pseudo-terminals.
std::size_t TerminalDescriptors();

/// The identifier of the port of this name; -1 when there is none.
int IdOf(const std::string& portName);

#endif
