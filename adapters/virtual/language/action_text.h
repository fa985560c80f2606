// SPDX-License-Identifier: MIT
//
// Actions in the words of a scenario, always the same ones for the same action.
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_ACTION_TEXT_H
#define KOVASMGR_ADAPTERS_VIRTUAL_ACTION_TEXT_H

#include <string>

#include "adapters/virtual/language/event.h"

/// 'pull modem', 'send "OK\r\n" to modem-0', 'fail write to modem-0 2 times'. Long bytes are cut,
/// with a word on how many there are. Random bytes stand behind it once they are known.
std::string ActionText(const Action& action);

/// The same from a port's point of view: what it sends itself is 'sent "OK\r\n"'.
std::string ActionText(const Action& action, const std::string& portName);

/// Bytes in quotes, cut as above.
std::string BytesText(const std::string& bytes);

/// "open", "close", "write", "read", "enumeration"
const char* OperationText(Operation operation);

#endif
