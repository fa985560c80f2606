// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_CALLBACKS_SILENCE_TEST_H
#define KOVASMGR_TESTS_PROOF_CALLBACKS_SILENCE_TEST_H

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "tests/api/host_test.h"
#include "tests/harness/capture_stdout.h"
#include "tests/proof/callbacks/disturbance.h"
#include "tests/proof/callbacks/seed.h"
#include "tests/proof/callbacks/slot_callbacks.h"

/// A host with 64 ports, COM1 = 1 to COM64 = 64, where data arrives in every sweep: a byte each,
/// which is the number of the port from 0.
class SilenceTest : public HostTest {
  protected:
    static constexpr long kRounds = 25000;
    static constexpr long kSlowRounds = 10000; // where a round costs more

    SilenceTest() { Disturbance::Start(Seed()); }
    ~SilenceTest() override {
        StopOthers();
        KOVAMGR_Release(); // before what the adapter's hook uses is gone
    }

    /// Initialises; data flows for ports that are open.
    void InitWithData() {
        InitWith(FakeDevices::Many(4, 16));
        m_Fake->SetHook(FakeCall::kRead, [this] { FeedNextPort(); });
    }

    static int PortOf(std::size_t index) { return static_cast<int>(index) + 1; }
    static std::string NameOf(std::size_t index) { return "COM" + std::to_string(index + 1); }

    /// Repeats something on a thread of its own until the test has had enough.
    void MeanwhileRepeat(std::function<void()> turn) {
        m_Others.emplace_back([this, turn = std::move(turn)] {
            while (!m_HasEnough) {
                turn();
                Disturbance::Yield();
            }
        });
    }

    void StopOthers() {
        m_HasEnough = true;
        for (std::thread& other : m_Others) {
            other.join();
        }
        m_Others.clear();
    }

  private:
    // Once a sweep for each port; nothing piles up for a closed one.
    void FeedNextPort() {
        m_Fed = (m_Fed + 1) % SlotTable::kPorts;
        const std::string name = NameOf(m_Fed);
        if (m_Fake->PendingReads(name) == 0) {
            m_Fake->PushData(name, std::string(1, static_cast<char>(m_Fed)));
        }
    }

    CaptureStdout m_Output;
    std::size_t m_Fed = 0; // the read thread's
    std::atomic<bool> m_HasEnough{false};
    std::vector<std::thread> m_Others;
};

#endif
