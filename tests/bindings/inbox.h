// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_BINDINGS_INBOX_H
#define KOVASMGR_TESTS_BINDINGS_INBOX_H

#include <KOVASMgr.hpp>
#include <mutex>
#include <string>
#include <vector>

#include "tests/harness/wait_until.h"

/// What a receiver got.
class Inbox {
  public:
    /// A receiver that puts everything here; this object outlives it.
    kovasmgr::Receiver Receiver() {
        return [this](kovasmgr::ByteView bytes) { Add(bytes); };
    }

    void Add(kovasmgr::ByteView bytes) {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_Text += bytes.Text();
    }

    std::string Text() const {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        return m_Text;
    }

    bool WaitFor(const std::string& text) const {
        return WaitUntil([&] { return Text().find(text) != std::string::npos; });
    }

    bool WaitForSize(size_t size) const {
        return WaitUntil([&] { return Text().size() >= size; }, std::chrono::seconds(30));
    }

  private:
    mutable std::mutex m_Mutex;
    std::string m_Text;
};

/// What a watcher was told.
class ChangeBook {
  public:
    kovasmgr::Watcher Watcher() {
        return [this](const kovasmgr::Changes& changes) {
            const std::lock_guard<std::mutex> lock(m_Mutex);
            m_Changes.push_back(changes);
        };
    }

    std::vector<kovasmgr::Changes> All() const {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        return m_Changes;
    }

  private:
    mutable std::mutex m_Mutex;
    std::vector<kovasmgr::Changes> m_Changes;
};

#endif
