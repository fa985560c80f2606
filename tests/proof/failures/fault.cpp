// SPDX-License-Identifier: MIT
#include "tests/proof/failures/fault.h"

#include <atomic>

namespace {

thread_local bool t_IsSpared = false;
std::atomic<unsigned> s_Trouble{0};
std::atomic<bool> s_IsLasting{false};
std::atomic<long> s_Nth{0};
std::atomic<long> s_Events{0};
std::atomic<long> s_Strikes{0};

const char* Name(Trouble trouble) {
    switch (trouble) {
    case kNoMemory:
        return "allocation";
    case kAdapterFails:
        return "adapter call";
    case kAdapterThrows:
        return "adapter call (exception)";
    case kAdapterBadAlloc:
        return "adapter call (bad_alloc)";
    case kAdapterReadFails:
        return "adapter read";
    case kAdapterReadThrows:
        return "adapter read (exception)";
    case kNoThread:
        return "thread start";
    case kLogNotOpened:
        return "opening of the log";
    case kLogNotWritten:
        return "writing of the log";
    }
    return "";
}

} // namespace

std::string Fault::Text() const {
    return std::string(Name(trouble)) + " " + std::to_string(nth) +
           (manner == Manner::kFromThenOn ? " and all later ones" : "");
}

void ArmFault(const Fault& fault) {
    s_Nth = fault.nth;
    s_IsLasting = fault.manner == Manner::kFromThenOn;
    s_Events = 0;
    s_Strikes = 0;
    s_Trouble = fault.trouble;
}

void DisarmFault() { s_Trouble = 0; }

bool Strikes(unsigned troubles) {
    if (t_IsSpared || (s_Trouble & troubles) == 0) {
        return false;
    }
    const long event = ++s_Events;
    const bool strikes = s_IsLasting ? event >= s_Nth : event == s_Nth;
    if (strikes) {
        ++s_Strikes;
    }
    return strikes;
}

Trouble ArmedTrouble() { return static_cast<Trouble>(s_Trouble.load()); }

long StrikeCount() { return s_Strikes; }

Spared::Spared() : m_Before(t_IsSpared) { t_IsSpared = true; }

Spared::~Spared() { t_IsSpared = m_Before; }

NotSpared::NotSpared() : m_Before(t_IsSpared) { t_IsSpared = false; }

NotSpared::~NotSpared() { t_IsSpared = m_Before; }
