// SPDX-License-Identifier: MIT
//
// The blocks of a capture file in the pcapng format, in the byte order of the machine, and how to read
// again what was written so.
#ifndef KOVASMGR_ADAPTERS_SPY_PCAPNG_H
#define KOVASMGR_ADAPTERS_SPY_PCAPNG_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

enum class Direction : uint32_t { Inbound = 1, Outbound = 2 }; // as in epb_flags

/// Begins a file.
std::string SectionBlock(const std::string& comment);

/// Describes the next interface, which are numbered from 0: link type USER0, times in nanoseconds.
std::string InterfaceBlock(const std::string& name);

/// @param timeNs  since 1970
std::string PacketBlock(uint32_t interface, uint64_t timeNs, Direction direction,
                        std::string_view data);

constexpr size_t kBlockStart = 8; // bytes that tell a block's kind and size

/// How many bytes a block has, by its first 8; 0 when that cannot be.
size_t BlockSize(std::string_view start);
bool IsInterfaceBlock(std::string_view start);

/// @param block  one that InterfaceBlock has made
std::string InterfaceName(std::string_view block);

#endif
