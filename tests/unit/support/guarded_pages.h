// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_UNIT_SUPPORT_GUARDED_PAGES_H
#define KOVASMGR_TESTS_UNIT_SUPPORT_GUARDED_PAGES_H

#include <cstddef>
#include <string>

/// A piece of memory with pages on both sides that must not be touched.
class GuardedPages {
  public:
    GuardedPages();
    ~GuardedPages();
    GuardedPages(const GuardedPages&) = delete;
    GuardedPages& operator=(const GuardedPages&) = delete;

    /// Puts a text of up to a page so that the page behind its last byte is forbidden.
    const char* AtEnd(const std::string& text);

    /// Puts a text of up to a page so that the page before its first byte is forbidden.
    const char* AtStart(const std::string& text);

  private:
    std::size_t m_PageSize;
    char* m_Memory; // three pages, the outer two forbidden
};

#endif
