// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_SOAK_FAR_ENDS_H
#define KOVASMGR_TESTS_PROOF_SOAK_FAR_ENDS_H

#include <poll.h>

#include <array>
#include <atomic>
#include <random>
#include <thread>

#include "tests/proof/soak/numbered_bytes.h"
#include "tests/proof/soak/soak_adapter.h"
#include "tests/proof/soak/stage.h"

/// What the devices do, on a thread of its own: reads and compares what the host sends, and sends
/// numbered bytes to the ports that stay, except while the stage is paused. What the devices that
/// come and go are sent is thrown away.
class FarEnds {
  public:
    FarEnds(const SoakAdapterControl& adapter, const Stage& stage);
    ~FarEnds();
    FarEnds(const FarEnds&) = delete;
    FarEnds& operator=(const FarEnds&) = delete;

    /// Whether nothing is on its way, in either direction.
    bool HasAllArrived() const;

    /// Bytes of both directions.
    uint64_t Bytes() const;

    /// Whether each port that stays has moved bytes in both directions.
    bool HasEachMoved() const;

  private:
    void Run();
    void ReceiveWhatIsThere();
    void Receive(std::size_t device);
    void SendToAll();

    const Stage& m_Stage;
    std::array<pollfd, kDevices> m_Ends;
    std::array<NumberedBytes, kStays> m_Sent;
    std::array<NumberedBytes, kStays> m_Received;
    std::minstd_rand m_Random; // the thread's
    std::atomic<bool> m_IsOver{false};
    std::thread m_Thread;
};

#endif
