// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_TOML_TEXT_H
#define KOVASMGR_ADAPTERS_TOML_TEXT_H

#include <string>

#include "adapters/shared/toml_table.h"

/// Parses a TOML text from anywhere: a line has at most 4,096 bytes and 64 dots, values are nested
/// at most 16 deep, because the text is read on a stack of the host, which may be small.
/// @param fileName  for the message only
/// @throws std::runtime_error "file:line: reason"
toml::table ParseToml(const std::string& text, const std::string& fileName);

#endif
