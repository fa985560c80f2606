// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_REAL_KERNEL_GUEST_KERNEL_FILE_H
#define KOVASMGR_TESTS_REAL_KERNEL_GUEST_KERNEL_FILE_H

#include <string>

/// Writes a text to a file of the kernel's, in one call.
/// @throws std::runtime_error with path and reason
void WriteKernelFile(const std::string& path, const std::string& text);

/// The first line; empty when the file cannot be read.
std::string ReadKernelFile(const std::string& path);

#endif
