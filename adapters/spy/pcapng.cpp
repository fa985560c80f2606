// SPDX-License-Identifier: MIT
#include "adapters/spy/pcapng.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr uint32_t kSection = 0x0a0d0d0a;
constexpr uint32_t kInterface = 1;
constexpr uint32_t kEnhancedPacket = 6;
constexpr uint32_t kByteOrder = 0x1a2b3c4d;
constexpr uint16_t kUser0 = 147;
constexpr size_t kFrame = 12; // of a block: its kind, and its length twice

enum Option : uint16_t {
    kEnd = 0,
    kComment = 1,
    kInterfaceName = 2,
    kPacketFlags = 2,
    kProgram = 4,
    kTimeResolution = 9
};

template <typename Value> Value ValueAt(std::string_view bytes, size_t place) {
    Value value{};
    if (place + sizeof value <= bytes.size()) {
        std::memcpy(&value, bytes.data() + place, sizeof value);
    }
    return value;
}

template <typename Value> std::string Bytes(Value value) {
    return {reinterpret_cast<const char*>(&value), sizeof value};
}

std::string Padded(std::string_view data) {
    return std::string(data) + std::string((4 - data.size() % 4) % 4, '\0');
}

std::string OptionText(Option option, std::string_view value) {
    const std::string_view cut = value.substr(0, UINT16_MAX);
    return Bytes(static_cast<uint16_t>(option)) + Bytes(static_cast<uint16_t>(cut.size())) +
           Padded(cut);
}

std::string Block(uint32_t kind, const std::string& body) {
    const std::string length = Bytes(static_cast<uint32_t>(body.size() + kFrame));
    return Bytes(kind) + length + body + length;
}

} // namespace

std::string SectionBlock(const std::string& comment) {
    constexpr int64_t kUnknownLength = -1;
    return Block(kSection, Bytes(kByteOrder) + Bytes(uint16_t{1}) + Bytes(uint16_t{0}) +
                               Bytes(kUnknownLength) + OptionText(kComment, comment) +
                               OptionText(kProgram, "KOVASMgr spy") + OptionText(kEnd, ""));
}

std::string InterfaceBlock(const std::string& name) {
    constexpr uint32_t kNoLimit = 0;
    constexpr uint8_t kNanoseconds = 9; // 10 to the power of -9
    return Block(kInterface, Bytes(kUser0) + Bytes(uint16_t{0}) + Bytes(kNoLimit) +
                                 OptionText(kInterfaceName, name) +
                                 OptionText(kTimeResolution, Bytes(kNanoseconds)) +
                                 OptionText(kEnd, ""));
}

std::string PacketBlock(uint32_t interface, uint64_t timeNs, Direction direction,
                        std::string_view data) {
    const std::string length = Bytes(static_cast<uint32_t>(data.size()));
    return Block(kEnhancedPacket,
                 Bytes(interface) + Bytes(static_cast<uint32_t>(timeNs >> 32U)) +
                     Bytes(static_cast<uint32_t>(timeNs)) + length + length + Padded(data) +
                     OptionText(kPacketFlags, Bytes(static_cast<uint32_t>(direction))) +
                     OptionText(kEnd, ""));
}

size_t BlockSize(std::string_view start) {
    const auto size = ValueAt<uint32_t>(start, 4);
    return size < kFrame || size % 4 != 0 ? 0 : size;
}

bool IsInterfaceBlock(std::string_view start) { return ValueAt<uint32_t>(start, 0) == kInterface; }

// The name is the first option, behind the link type, a gap and the limit.
std::string InterfaceName(std::string_view block) {
    constexpr size_t kLength = kBlockStart + 8 + 2;
    const size_t length = ValueAt<uint16_t>(block, kLength);
    return std::string(block.substr(std::min(block.size(), kLength + 2), length));
}
