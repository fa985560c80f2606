// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_UNPLUG_HANDLE_ACCOUNT_H
#define KOVASMGR_TESTS_PROOF_UNPLUG_HANDLE_ACCOUNT_H

#include <string>
#include <vector>

/// What became of the handles that the scripted adapter gave out, from its journal.
struct HandleAccount {
    std::vector<std::string> left;  ///< names of the ports whose handles were never closed
    std::vector<std::string> wrong; ///< lines that close a handle not open, or that failed
};

HandleAccount AccountOf(const std::vector<std::string>& journal);

#endif
