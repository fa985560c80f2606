// SPDX-License-Identifier: MIT
#include "tests/proof/soak/hands.h"

#include "tests/harness/wait_until.h"
#include "tests/proof/soak/host.h"
#include "tests/proof/soak/verdict.h"

namespace {

constexpr auto kPair = std::chrono::milliseconds(20);
constexpr std::size_t kMostOut = 8;

} // namespace

Hands::Hands(SoakAdapterControl& adapter) : m_Adapter(adapter) {
    for (std::size_t i = kStays; i < kDevices; ++i) {
        m_In.push_back(i);
    }
}

// A pair that is late is not made up for: the load never comes in bursts.
void Hands::Run(Stage& stage) {
    auto due = Stage::Clock::now();
    while (stage.Next(std::chrono::duration_cast<std::chrono::microseconds>(
        std::max(due - Stage::Clock::now(), Stage::Clock::duration::zero())))) {
        due = std::max(due + kPair, Stage::Clock::now());
        Step();
    }
}

void Hands::Step() {
    Move(m_In, m_Out, false);
    if (m_Out.size() > kMostOut) {
        Move(m_Out, m_In, true);
    }
    AwaitNotices();
}

void Hands::PutEverythingIn() {
    Move(m_In, m_Out, false);
    AwaitNotices();
    while (!m_Out.empty()) {
        Move(m_Out, m_In, true);
        AwaitNotices();
    }
}

void Hands::Move(std::vector<std::size_t>& from, std::vector<std::size_t>& to, bool isPlug) {
    const std::size_t place = m_Random() % from.size();
    const std::size_t device = from[place];
    from.erase(from.begin() + static_cast<std::ptrdiff_t>(place));
    to.push_back(device);
    ++(isPlug ? m_Plugs : m_Pulls);
    m_Adapter.SetPresent(device, isPlug);
}

// Exactly as many as there were moves: one too many would be seen as well, with the next pair.
void Hands::AwaitNotices() {
    const auto haveCome = [this] {
        return host::Insertions() >= m_Plugs && host::PullOuts() >= m_Pulls;
    };
    WaitUntil([&] { return haveCome() || verdict::Count() > 0; }, std::chrono::minutes(1));
    verdict::Expect(haveCome(), "a notice is missing");
    verdict::Expect(host::Insertions() <= m_Plugs && host::PullOuts() <= m_Pulls,
                    "a notice came twice");
}
