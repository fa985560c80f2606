// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_API_CALLBACK_RECORDER_H
#define KOVASMGR_TESTS_API_CALLBACK_RECORDER_H

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "KOVASMgr.h"

/// What the callbacks below were told, in order. They are plain functions, so the record is one per
/// process. A test may let them do something.
class CallbackRecorder {
  public:
    using Lines = std::vector<std::string>;

    static CallbackRecorder& Get() {
        static CallbackRecorder recorder;
        return recorder;
    }

    /// "read 1: hello", "state 2: 20200".
    Lines Told() const {
        std::lock_guard<std::mutex> lock(m_Mutex);
        return m_Told;
    }
    size_t Count() const { return Told().size(); }

    /// The thread of the latest call.
    std::thread::id LastThread() const {
        std::lock_guard<std::mutex> lock(m_Mutex);
        return m_LastThread;
    }

    /// Runs in each call of this callback ("read 1", "state 2"), after it has been recorded.
    void During(const std::string& callback, std::function<void()> action) {
        std::lock_guard<std::mutex> lock(m_Mutex);
        m_Actions[callback] = std::move(action);
    }

    /// What was told and what the callbacks do.
    void Forget() {
        std::lock_guard<std::mutex> lock(m_Mutex);
        m_Told.clear();
        m_Actions.clear();
    }

    void Record(const std::string& callback, const std::string& what) {
        std::function<void()> action;
        {
            std::lock_guard<std::mutex> lock(m_Mutex);
            m_Told.push_back(callback + ": " + what);
            m_LastThread = std::this_thread::get_id();
            action = m_Actions[callback];
        }
        if (action) {
            action();
        }
    }

  private:
    mutable std::mutex m_Mutex;
    Lines m_Told;
    std::thread::id m_LastThread;
    std::map<std::string, std::function<void()>> m_Actions;
};

template <int n> void OnRead(void* data, int length) {
    CallbackRecorder::Get().Record(
        "read " + std::to_string(n),
        std::string(static_cast<const char*>(data), static_cast<size_t>(length)));
}

template <int n> void OnState(_KOVAMGR_DEV_STATE_TYPE_ state) {
    CallbackRecorder::Get().Record("state " + std::to_string(n),
                                   std::to_string(static_cast<int>(state)));
}

#endif
