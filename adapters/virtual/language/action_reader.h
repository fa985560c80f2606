// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_ACTION_READER_H
#define KOVASMGR_ADAPTERS_VIRTUAL_ACTION_READER_H

#include <string>

#include "adapters/virtual/language/event.h"
#include "adapters/virtual/language/sentence.h"

/// What a sentence need not say, because of where it stands.
struct Surroundings {
    std::string ownPort;              // meant where no port is named; empty: it must be
    const Trigger* trigger = nullptr; // of the action; null: it is given to a running scenario
};

/// A call of the host and its port.
struct OperationOfPort {
    Operation operation = Operation::Open;
    std::string port;
};

/// Whether an operation is next.
bool SeesOperation(const Sentence& sentence);

/// Reads "write to modem-0" and the like.
/// @throws std::runtime_error with the reason, as all here
OperationOfPort NeedOperation(Sentence& sentence, const std::string& ownPort);

/// Reads a port that may be left out in a script, after a word like "to".
std::string NeedPortAfter(Sentence& sentence, const std::string& word, const std::string& ownPort);

/// Reads an action from where the sentence stands.
Action NeedAction(Sentence& sentence, const Surroundings& surroundings);

/// Whether an action is about calls: Fail, Shorten, Delay.
bool IsFault(const Action& action);

#endif
