// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_UNIT_COMMON_TASK_H
#define KOVASMGR_TESTS_UNIT_COMMON_TASK_H

#include <functional>
#include <utility>

#include "common/jthread.h"
#include "tests/harness/wait_until.h"

/// A thread that runs one function.
class Task : public JThread {
  public:
    explicit Task(std::function<void()> body) : m_Body(std::move(body)) {}
    ~Task() override { WaitForEnd(); }

    bool WaitForEnd() {
        return WaitUntil([this] { return !IsRunning(); });
    }

  protected:
    void* Thread() override {
        ThreadStarted();
        m_Body();
        return nullptr;
    }

  private:
    std::function<void()> m_Body;
};

#endif
