// SPDX-License-Identifier: MIT
#include "tests/unit/support/guarded_pages.h"

#include <sys/mman.h>
#include <unistd.h>

#include <stdexcept>

GuardedPages::GuardedPages()
    : m_PageSize(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))), m_Memory(nullptr) {
    void* const memory =
        mmap(nullptr, 3 * m_PageSize, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        throw std::runtime_error("no memory map");
    }
    m_Memory = static_cast<char*>(memory);
    if (mprotect(m_Memory + m_PageSize, m_PageSize, PROT_READ | PROT_WRITE) != 0) {
        throw std::runtime_error("the page cannot be opened");
    }
}

GuardedPages::~GuardedPages() { munmap(m_Memory, 3 * m_PageSize); }

const char* GuardedPages::AtEnd(const std::string& text) {
    char* const start = m_Memory + 2 * m_PageSize - text.size();
    text.copy(start, text.size());
    return start;
}

const char* GuardedPages::AtStart(const std::string& text) {
    char* const start = m_Memory + m_PageSize;
    text.copy(start, text.size());
    return start;
}
