// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_ELF_FACTS_H
#define KOVASCTL_ELF_FACTS_H

#include <string>

/// What a file says of itself.
struct ElfFacts {
    std::string kind;   // "ELF 64-bit shared object, x86-64"
    std::string wanted; // the same for libraries that this program can load
    std::string
        problem; // why it cannot be loaded by this program; empty: nothing is known against it
};

ElfFacts ReadElfFacts(const std::string& file);

#endif
