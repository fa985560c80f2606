// SPDX-License-Identifier: MIT
#include "adapters/spy/capture.h"

#include <time.h>

#include <algorithm>
#include <utility>

#include "adapters/shared/cancel_shield.h"
#include "adapters/spy/pcapng.h"

namespace {

constexpr size_t kMaxPacket = 65536; // programs refuse much larger ones
constexpr const char* kUnknownPort = "(a port that was not opened)";

int64_t RealNs() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return int64_t{now.tv_sec} * 1000000000 + now.tv_nsec;
}

} // namespace

Capture::Capture(std::string path, const std::string& adapterFile)
    : m_Section(SectionBlock("process " + ProcessIdentity() + ", adapter " + adapterFile)),
      m_File(std::move(path), m_Section) {}

void Capture::Add(const Call& call) {
    if (call.BytesMoved() == 0) {
        return;
    }
    const CancelShield shield;
    const std::lock_guard<std::mutex> lock(m_Mutex);
    uint32_t interface = 0;
    if (BeReady() && FindInterface(call.port, interface)) {
        AddPackets(interface, call);
    }
}

void Capture::Rest() {
    const CancelShield shield;
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_File.Close();
}

bool Capture::BeReady() {
    if (m_File.IsOpen()) {
        return true;
    }
    m_RealAheadNs = RealNs() - MonotonicNs();
    if (m_File.Open() && m_File.IsBegun()) {
        return GoOn();
    }
    m_Interfaces.clear();
    return m_File.IsOpen() && m_File.Append(m_Section);
}

// A second section would do as well, but not all programs tell the interfaces of two apart.
bool Capture::GoOn() {
    if (!m_Interfaces.empty()) {
        return true;
    }
    uint64_t place = 0;
    while (true) {
        const std::string start = m_File.ReadAt(place, kBlockStart);
        const size_t size = BlockSize(start);
        if (size == 0) {
            return true;
        }
        if (IsInterfaceBlock(start)) {
            const std::string name = InterfaceName(m_File.ReadAt(place, size));
            m_Interfaces.emplace(name, static_cast<uint32_t>(m_Interfaces.size()));
        }
        place += size;
    }
}

bool Capture::FindInterface(const KnownPort* port, uint32_t& interface) {
    const std::string name = port == nullptr ? std::string(kUnknownPort) : port->name;
    const auto added = m_Interfaces.emplace(name, static_cast<uint32_t>(m_Interfaces.size()));
    interface = added.first->second;
    return !added.second || m_File.Append(InterfaceBlock(name));
}

// What was sent has the time at which the write began, what was received that at which the read
// ended.
void Capture::AddPackets(uint32_t interface, const Call& call) {
    const bool isWrite = call.kind == OSADAPT_SPY_WRITE;
    const int64_t time = m_RealAheadNs + (isWrite ? call.startNs : call.endNs);
    std::string_view rest(static_cast<const char*>(call.data), call.BytesMoved());
    std::string packets;
    while (!rest.empty()) {
        const std::string_view piece = rest.substr(0, kMaxPacket);
        packets += PacketBlock(interface, static_cast<uint64_t>(time),
                               isWrite ? Direction::Outbound : Direction::Inbound, piece);
        rest.remove_prefix(piece.size());
    }
    m_File.Append(packets);
}
