// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_ADAPTERS_LINUX_PTY_PAIR_H
#define KOVASMGR_TESTS_ADAPTERS_LINUX_PTY_PAIR_H

#include <termios.h>

#include <string>

#include "adapters/linux/port_facts.h"

/// A pseudo-terminal of the kernel: the far end is held here, the node is for the adapter. As long
/// as this lives the terminal keeps its settings.
class PtyPair {
  public:
    PtyPair();
    ~PtyPair();
    PtyPair(const PtyPair&) = delete;
    PtyPair& operator=(const PtyPair&) = delete;

    const std::string& Node() const { return m_Node; }

    /// The node with its number, all else empty.
    PortFacts Facts() const;

    /// Sends all of it to the node's side.
    bool Send(const std::string& bytes) const;

    /// So many bytes from the node's side, or less when no more come.
    std::string Receive(size_t size) const;

    /// What the node's side is set to.
    termios Settings() const;
    void Set(const termios& settings) const;

    /// Takes the device away: whoever has the node open sees a hang-up.
    void PullOut();

  private:
    int m_Master;
    std::string m_Node;
};

#endif
