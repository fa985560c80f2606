// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_RECORDED_DATA_H
#define KOVASMGR_ADAPTERS_VIRTUAL_RECORDED_DATA_H

#include <optional>
#include <string>

/// The bytes of a base64 text, with '=' at its end up to a multiple of four characters; nothing when
/// it is none.
std::optional<std::string> DecodeBase64(const std::string& text);

#endif
