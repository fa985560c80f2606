// SPDX-License-Identifier: MIT
#include "tests/proof/soak/far_ends.h"

#include <unistd.h>

#include <algorithm>
#include <string>

#include "tests/proof/soak/host.h"
#include "tests/proof/soak/verdict.h"

namespace {

constexpr int kWaitMs = 5;
constexpr auto kBetweenSends = std::chrono::milliseconds(10);
constexpr std::size_t kLongest = 256; // bytes sent at once

} // namespace

FarEnds::FarEnds(const SoakAdapterControl& adapter, const Stage& stage) : m_Stage(stage), m_Ends() {
    for (std::size_t i = 0; i < kDevices; ++i) {
        m_Ends[i] = {adapter.FarEnd(i), POLLIN, 0};
    }
    for (std::size_t i = 0; i < kStays; ++i) {
        m_Sent[i].SetStream(2 * i);
        host::Stay(i).received.SetStream(2 * i);
        m_Received[i].SetStream(2 * i + 1);
        host::Stay(i).sent.SetStream(2 * i + 1);
    }
    m_Thread = std::thread([this] { Run(); });
}

FarEnds::~FarEnds() {
    m_IsOver = true;
    m_Thread.join();
}

bool FarEnds::HasAllArrived() const {
    for (std::size_t i = 0; i < kStays; ++i) {
        if (host::Stay(i).received.Position() != m_Sent[i].Position() ||
            m_Received[i].Position() != host::Stay(i).sent.Position()) {
            return false;
        }
    }
    return true;
}

uint64_t FarEnds::Bytes() const {
    uint64_t bytes = 0;
    for (std::size_t i = 0; i < kStays; ++i) {
        bytes += m_Received[i].Position() + host::Stay(i).received.Position();
    }
    return bytes;
}

bool FarEnds::HasEachMoved() const {
    return std::all_of(m_Sent.begin(), m_Sent.end(),
                       [](const NumberedBytes& sent) { return sent.Position() > 0; }) &&
           std::all_of(m_Received.begin(), m_Received.end(),
                       [](const NumberedBytes& received) { return received.Position() > 0; });
}

void FarEnds::Run() {
    auto nextSend = Stage::Clock::now();
    while (!m_IsOver) {
        poll(m_Ends.data(), m_Ends.size(), kWaitMs);
        ReceiveWhatIsThere();
        if (Stage::Clock::now() >= nextSend && !m_Stage.IsPaused()) {
            SendToAll();
            nextSend = Stage::Clock::now() + kBetweenSends;
        }
    }
}

void FarEnds::ReceiveWhatIsThere() {
    for (std::size_t i = 0; i < kDevices; ++i) {
        if ((m_Ends[i].revents & POLLIN) != 0) {
            Receive(i);
        }
    }
}

void FarEnds::Receive(std::size_t device) {
    char bytes[4096];
    const ssize_t length = read(m_Ends[device].fd, bytes, sizeof bytes);
    if (length <= 0 || device >= kStays) {
        return;
    }
    const auto count = static_cast<std::size_t>(length);
    const uint64_t first = m_Received[device].Position();
    const std::size_t right = m_Received[device].Take(bytes, count);
    verdict::Expect(right == count, "port " + std::to_string(device) + ": byte " +
                                        std::to_string(first + right) + " from the host is wrong");
}

void FarEnds::SendToAll() {
    for (std::size_t i = 0; i < kStays; ++i) {
        char bytes[kLongest];
        const std::size_t count = 1 + m_Random() % kLongest;
        m_Sent[i].Peek(bytes, count);
        const ssize_t taken = write(m_Ends[i].fd, bytes, count);
        m_Sent[i].Advance(taken > 0 ? static_cast<std::size_t>(taken) : 0);
    }
}
