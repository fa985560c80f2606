// SPDX-License-Identifier: MIT
//
// Directories that nobody but the user can have prepared or can write to.
#ifndef KOVASMGR_ADAPTERS_PRIVATE_DIRECTORY_H
#define KOVASMGR_ADAPTERS_PRIVATE_DIRECTORY_H

#include <string>
#include <vector>

#include "adapters/shared/unique_fd.h"

/// Makes a directory of mode 0700 unless it is there, and opens it.
///
/// @param parent   a directory's descriptor, or AT_FDCWD for an absolute path
/// @param created  set when the directory was made now; may be null
/// @throws std::runtime_error when it is not a directory (a link is none), belongs to another user
///         or is open to others
UniqueFd OpenPrivateDirectory(int parent, const std::string& path, bool* created);

/// The names in a directory, without "." and "..". Empty when it cannot be read.
std::vector<std::string> NamesIn(int directory);

#endif
