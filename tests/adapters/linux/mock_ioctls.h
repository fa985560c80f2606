// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_ADAPTERS_LINUX_MOCK_IOCTLS_H
#define KOVASMGR_TESTS_ADAPTERS_LINUX_MOCK_IOCTLS_H

#include <poll.h>

#include <string>
#include <thread>
#include <vector>

/// Answers the preloaded library, which asks before each ioctl on a mocked node what is to be done:
/// what the terminal behind the node does.
class MockIoctls {
  public:
    explicit MockIoctls(const std::string& root);
    ~MockIoctls();
    MockIoctls(const MockIoctls&) = delete;
    MockIoctls& operator=(const MockIoctls&) = delete;

  private:
    void Serve();
    void Accept();

    int m_Listener;
    int m_End;
    std::vector<pollfd> m_Entries;
    std::thread m_Thread;
};

#endif
