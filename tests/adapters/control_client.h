// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_ADAPTERS_CONTROL_CLIENT_H
#define KOVASMGR_TESTS_ADAPTERS_CONTROL_CLIENT_H

#include <chrono>
#include <string>

/// A connection to the control socket in a directory.
class ControlClient {
  public:
    /// Throws when there is no connection.
    explicit ControlClient(const std::string& directory);
    ~ControlClient();
    ControlClient(const ControlClient&) = delete;
    ControlClient& operator=(const ControlClient&) = delete;

    /// Sends a line and receives its reply.
    std::string Ask(const std::string& line);

    void Send(const std::string& bytes) const;

    /// Says that nothing more will be sent.
    void EndInput() const;

    /// Receives up to a line that begins with "ok" or "error", or the end of the connection.
    std::string Reply(std::chrono::milliseconds bound = std::chrono::seconds(20));

    /// Whether the other side has closed, waiting for it up to 10 s.
    bool IsClosed();

  private:
    bool Receive(std::chrono::milliseconds bound);

    int m_Socket;
    std::string m_Received;
};

#endif
