// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_HARNESS_LOG_TEXT_H
#define KOVASMGR_TESTS_HARNESS_LOG_TEXT_H

#include <string>

#include "tests/harness/scratch_directory.h"

/// A whole file; throws when it cannot be opened.
std::string FileText(const std::string& path);

/// The text with every well-formed "[2026-01-31 23:59:59:123]" replaced by "[TIME]".
std::string MaskTimes(const std::string& text);

/// A log file with its times masked, so that whole files can be compared.
std::string LogText(const std::string& path);
std::string LogText(const ScratchDirectory& scratch);

/// How often a text occurs in another.
int CountOf(const std::string& text, const std::string& part);

#endif
