// SPDX-License-Identifier: MIT
#include "adapters/spy/spy.h"

#include <exception>
#include <stdexcept>
#include <string>

#include "adapters/shared/adapter_log.h"
#include "adapters/shared/cancel_shield.h"

std::atomic<const AdapterFunctions*> Spy::s_Unwatched{nullptr};
std::atomic<Spy*> Spy::s_Spy{nullptr};

namespace {

FaultPlan PlanOf(const Settings& settings) {
    try {
        return FaultPlan(ReadFaults(settings.faults));
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(std::string("KOVASMGR_SPY_FAULTS: ") + error.what());
    }
}

} // namespace

Spy* Spy::Get() {
    static Spy* const spy = Make();
    return spy;
}

// Loading is no moment for a cancellation.
Spy* Spy::Make() {
    const CancelShield shield;
    PrepareLog();
    try {
        s_Spy = new Spy(ReadSettings());
    } catch (const std::exception& error) {
        LogError(std::string("the spy passes nothing on: ") + error.what());
    }
    return s_Spy;
}

Spy::Spy(const Settings& settings) : m_Faults(PlanOf(settings)), m_Target(settings.adapter) {
    const std::string& file = m_Target.File();
    if (!settings.record.empty()) {
        m_Recording = std::make_unique<Recording>(settings.record, file, settings.hasIdleReads);
    }
    if (!settings.capture.empty()) {
        m_Capture = std::make_unique<Capture>(settings.capture, file);
    }
    if (settings.hasStats) {
        m_Counters = std::make_unique<Counters>(file);
    }
    if (!m_Recording && !m_Capture && !m_Counters && m_Faults.IsEmpty()) {
        s_Unwatched = &m_Target.Functions();
    }
}

// A notice that came after this library has gone would run into the void.
Spy::~Spy() {
    if (m_IsRegistered) {
        try {
            m_Target.Functions().unRegisterCallback(OnNotice);
        } catch (const std::exception& error) {
            LogError(std::string("un-registration: ") + error.what());
        }
    }
    Rest();
}

void Spy::Unload() {
    const CancelShield shield;
    s_Unwatched = nullptr;
    delete s_Spy.exchange(nullptr);
    ForgetLoggedErrors();
}

void Spy::EndProcess() {
    Spy* const spy = s_Spy;
    // A forked child has the memory but not the threads; the files are its parent's.
    if (spy != nullptr && spy->m_Counters && spy->m_Owner == getpid()) {
        spy->m_Counters->End();
    }
}

void Spy::StartCounting() {
    m_IsResting = false;
    if (m_Counters) {
        m_Counters->Start();
    }
}

// In a destructor, so that nothing may escape. That a line is lost for lack of memory is no reason
// for the call to fail.
void Spy::Note(const Call& call) {
    try {
        if (m_Counters) {
            m_Counters->Add(call);
        }
        if (m_Recording) {
            m_Recording->Add(call);
        }
        if (m_Capture) {
            m_Capture->Add(call);
        }
        if (m_IsResting) {
            Rest();
        }
    } catch (const std::exception& error) {
        const CancelShield shield;
        LogErrorOnce(std::string("a call was not noted: ") + error.what());
    }
}

void Spy::Rest() {
    if (m_Recording) {
        m_Recording->Rest();
    }
    if (m_Capture) {
        m_Capture->Rest();
    }
    if (m_Counters) {
        m_Counters->End();
    }
}
