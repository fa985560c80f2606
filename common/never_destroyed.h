// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_COMMON_NEVER_DESTROYED_H
#define KOVASMGR_COMMON_NEVER_DESTROYED_H

#include <new>

/// Holds an object of static lifetime whose destructor never runs: threads may still use it while
/// the process exits.
template <typename T> class NeverDestroyed {
  public:
    NeverDestroyed() { new (m_Storage) T(); }
    NeverDestroyed(const NeverDestroyed&) = delete;
    NeverDestroyed& operator=(const NeverDestroyed&) = delete;

    T& operator*() { return *std::launder(reinterpret_cast<T*>(m_Storage)); }
    T* operator->() { return &**this; }

  private:
    alignas(T) unsigned char m_Storage[sizeof(T)];
};

#endif
