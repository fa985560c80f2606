// SPDX-License-Identifier: MIT
//
// Bytes as people write and read them.
#ifndef KOVASCTL_BYTE_TEXT_H
#define KOVASCTL_BYTE_TEXT_H

#include <string>
#include <string_view>

/// "41 54:0d" or "41540D": pairs of hexadecimal digits, with blanks, ':', ',' or "0x" between them.
/// @throws WrongUse
std::string FromHex(const std::string& text);

/// Replaces \r \n \t \0 \e \\ and \xHH.
/// @throws WrongUse
std::string FromEscapes(const std::string& text);

/// The bytes of "cr", "lf" or "crlf"; none of an empty name.
std::string LineEnd(const std::string& name);

/// "41 54 0d "
std::string ToHex(std::string_view bytes);

#endif
