// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_CONFORMANCE_RULE_H
#define KOVASCTL_CONFORMANCE_RULE_H

#include <string>
#include <vector>

class Trial;

/// What the person must allow, besides the adapter itself.
enum class Needs { Nothing, Port, StalledPort, Commands, CommandsAndPort };

/// Tries one rule, in a process of its own.
/// @return what was seen of a rule that is kept
/// @throws Broken, NotTried
using Check = std::string (*)(Trial& trial);

struct Rule {
    const char* number; // that of OSAdapt.h and a letter; R0 is what stands before its rules
    const char* text;
    const char* broken; // what happens to a host
    Needs needs;
    std::vector<const char*> after; // without these it cannot be tried
    Check check;
};

/// All of them, in the order of their numbers. Numbers stay what they are: new ones get new letters.
const std::vector<Rule>& Rules();

/// "--port", or what else is needed; empty for nothing.
const char* NeedsText(Needs needs);

#endif
