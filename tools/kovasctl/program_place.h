// SPDX-License-Identifier: MIT
//
// Where this program stands, and what stands in the same tree: one that was installed and may have
// been moved since, or one that is built.
#ifndef KOVASCTL_PROGRAM_PLACE_H
#define KOVASCTL_PROGRAM_PLACE_H

#include <string>

/// The directory that the program is in.
std::string ProgramDirectory();

/// The build tree that the program runs from; empty when it is installed.
std::string BuildTree();

/// What an installed tree holds, by the program's own place so that the tree may be moved as a
/// whole; when nothing is there, where it was to be installed.
/// @param fromProgram  its path, relative to the program's directory
std::string InstalledDirectory(const std::string& fromProgram, const std::string& otherwise);

#endif
