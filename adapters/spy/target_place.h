// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_SPY_TARGET_PLACE_H
#define KOVASMGR_ADAPTERS_SPY_TARGET_PLACE_H

#include <string>

/// The file of the adapter to load, by what Target is told.
/// @throws std::runtime_error with the reason when there is none
std::string FindTargetFile(const std::string& choice);

#endif
