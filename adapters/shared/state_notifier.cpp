// SPDX-License-Identifier: MIT
#include "adapters/shared/state_notifier.h"

#include <chrono>
#include <exception>
#include <string>
#include <utility>

#include "adapters/shared/adapter_log.h"

using Lock = std::unique_lock<std::mutex>;

namespace {

AnswerBook::Instant Now() { return std::chrono::steady_clock::now(); }

void CallHost(OS_ADAPT_STATUS_CALLBACK callback, _OS_ADAPT_DEVICESTATUS_TYPE status) {
    try {
        callback(status);
    } catch (const std::exception& error) {
        LogError(std::string("a device notice ended with an exception: ") + error.what());
    }
}

} // namespace

int StateNotifier::Register(OS_ADAPT_STATUS_CALLBACK callback) {
    const Lock lock(m_Mutex);
    if (!m_Running) {
        m_Thread.Join(); // of an earlier registration; it has left Run
        if (const int error = m_Thread.Start("kova-notice", Enter, this); error != 0) {
            return error;
        }
        m_Running = true;
    }
    // A thread that was told to stop by its own notice, and is still in it, simply goes on.
    m_Stop = false;
    m_Callback = callback;
    m_Book.StartTelling(Now());
    m_Changed.NotifyAll();
    return 0;
}

void StateNotifier::UnRegister() {
    Lock lock(m_Mutex);
    m_Callback = nullptr;
    m_Stop = true;
    m_Book.StopTelling();
    m_Changed.NotifyAll();
    if (m_Thread.IsSelf()) {
        return;
    }
    // A registration that comes meanwhile takes the thread over and ends this wait.
    while (m_Running && m_Stop) {
        m_Changed.Wait(lock);
    }
    if (!m_Running) {
        m_Thread.Join();
    }
}

void StateNotifier::Abandon() {
    Lock lock(m_Mutex);
    m_Callback = nullptr;
    m_Stop = true;
    m_Book.Clear();
    m_Changed.NotifyAll();
    while (m_Running && !m_Telling) {
        m_Changed.Wait(lock);
    }
    if (!m_Running) {
        m_Thread.Join();
    }
}

uint64_t StateNotifier::Publish(PortTable truth) {
    const Lock lock(m_Mutex);
    const uint64_t ticket = m_Book.SetTruth(std::move(truth), Now());
    m_Changed.NotifyAll();
    return ticket;
}

bool StateNotifier::IsTold(uint64_t ticket) {
    const Lock lock(m_Mutex);
    return m_Book.IsTold(ticket);
}

bool StateNotifier::IsListenedTo() {
    const Lock lock(m_Mutex);
    return m_Callback != nullptr;
}

void StateNotifier::Answer(_OS_ADAPT_DEVICEPORTLIST& list) {
    const Lock lock(m_Mutex);
    FillList(*m_Book.Answer(), list);
}

void StateNotifier::SetToldHook(void (*hook)(void*), void* argument) {
    m_ToldHook = hook;
    m_ToldHookArgument = argument;
}

void StateNotifier::Enter(void* self) { static_cast<StateNotifier*>(self)->Run(); }

void StateNotifier::Run() {
    Lock lock(m_Mutex);
    while (!m_Stop) {
        if (!m_Book.HasStep()) {
            m_Changed.Wait(lock);
        } else if (const auto due = m_Book.FirstStepDue(); Now() < due) {
            m_Changed.WaitUntil(lock, due);
        } else {
            TellFirstStep(lock);
        }
    }
    m_Running = false;
    m_Changed.NotifyAll();
}

void StateNotifier::TellFirstStep(Lock& lock) {
    const OS_ADAPT_STATUS_CALLBACK callback = m_Callback;
    const _OS_ADAPT_DEVICESTATUS_TYPE status = m_Book.BeginStep();
    m_Telling = true;
    lock.unlock();
    CallHost(callback, status);
    lock.lock();
    m_Telling = false;
    m_Book.EndStep();
    lock.unlock();
    if (m_ToldHook != nullptr) {
        m_ToldHook(m_ToldHookArgument);
    }
    lock.lock();
}
