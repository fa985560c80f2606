// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_SOAK_HANDS_H
#define KOVASMGR_TESTS_PROOF_SOAK_HANDS_H

#include <atomic>
#include <random>
#include <vector>

#include "tests/proof/soak/soak_adapter.h"
#include "tests/proof/soak/stage.h"

/// Pulls devices out and plugs them in again: a pull and a plug every 20 ms, as far as the notices
/// of the pair before have come.
class Hands {
  public:
    explicit Hands(SoakAdapterControl& adapter);

    /// Works until the stage is over.
    void Run(Stage& stage);

    /// Plugs in whatever is out, after one more pull. No thread may be inside Run's steps.
    void PutEverythingIn();

    /// Plugs and pulls so far.
    long Moves() const { return m_Plugs + m_Pulls; }

  private:
    void Step();
    void Move(std::vector<std::size_t>& from, std::vector<std::size_t>& to, bool isPlug);
    void AwaitNotices();

    SoakAdapterControl& m_Adapter;
    std::vector<std::size_t> m_In;
    std::vector<std::size_t> m_Out;
    std::minstd_rand m_Random;
    std::atomic<long> m_Plugs{0};
    std::atomic<long> m_Pulls{0};
};

#endif
