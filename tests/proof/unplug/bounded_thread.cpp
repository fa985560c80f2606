// SPDX-License-Identifier: MIT
#include "tests/proof/unplug/bounded_thread.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <utility>

#include "tests/harness/wait_until.h"

BoundedThread::BoundedThread(const char* name, std::function<void()> action)
    : m_Name(name), m_Thread([this, action = std::move(action)] {
          m_Id = syscall(SYS_gettid);
          action();
          m_HasEnded = true;
      }) {}

bool BoundedThread::IsAsleep() const {
    std::ifstream file("/proc/self/task/" + std::to_string(m_Id) + "/stat");
    std::string stat;
    std::getline(file, stat);
    const std::size_t end = stat.rfind(')'); // of the name; the state is the next word
    return end != std::string::npos && stat.compare(end, 3, ") S") == 0;
}

bool BoundedThread::WaitUntilAsleep() const {
    int looks = 0;
    WaitUntil([&] {
        looks = m_Id != 0 && IsAsleep() ? looks + 1 : 0;
        return looks >= 5 || m_HasEnded;
    });
    return looks >= 5 && !m_HasEnded;
}

void BoundedThread::Join() {
    if (!m_Thread.joinable()) {
        return;
    }
    if (!WaitUntil([this] { return m_HasEnded.load(); }, std::chrono::minutes(1))) {
        std::fprintf(stderr, "%s hangs\n", m_Name);
        std::abort();
    }
    m_Thread.join();
}
