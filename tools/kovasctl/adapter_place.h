// SPDX-License-Identifier: MIT
//
// Where adapters are. The library loads the one in the current directory, so the tool changes into
// the chosen adapter's directory and never uses what lies where a person happens to stand.
#ifndef KOVASCTL_ADAPTER_PLACE_H
#define KOVASCTL_ADAPTER_PLACE_H

#include <string>
#include <vector>

struct AdapterPlace {
    std::string directory; // absolute
    std::string file;      // what the library loads from there; empty: there is nothing
    std::string origin;    // how it was chosen: "--adapter virtual"
};

/// The first regular file of the directory that the library would take; empty when it has none.
std::string AdapterFileIn(const std::string& directory);

/// Names of files that the library would take, in its order.
const std::vector<std::string>& AdapterFileNames();

/// The directory that the library falls back to.
std::string LibrarysOwnDirectory();

/// @param choice  a name like "virtual", looked for beside the installed adapters (or in the build
///                tree that the program runs from); a directory; or empty for the default
/// @throws WrongUse when there is no such name or directory
AdapterPlace FindAdapter(const std::string& choice);

/// Makes the adapter's directory the current one. File names in variables that adapters read stay
/// what they were.
/// @throws Failure when it holds no adapter, or cannot be entered
void EnterAdapterDirectory(const AdapterPlace& adapter);

#endif
