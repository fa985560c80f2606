// SPDX-License-Identifier: MIT
#include "tests/proof/model/trace_file.h"

#include <unistd.h>

#include <stdexcept>

namespace model {

TraceFile::TraceFile() : m_File(std::tmpfile()), m_Before(dup(STDOUT_FILENO)) {
    if (m_File == nullptr || m_Before == -1) {
        throw std::runtime_error("standard output cannot be led into a file");
    }
    std::fflush(stdout);
    dup2(fileno(m_File), STDOUT_FILENO);
}

TraceFile::~TraceFile() {
    std::fflush(stdout);
    dup2(m_Before, STDOUT_FILENO);
    close(m_Before);
    std::fclose(m_File);
}

// The offset is shared with standard output, so that the file can be used again from its start.
std::string TraceFile::Take() {
    std::fflush(stdout);
    const off_t size = lseek(STDOUT_FILENO, 0, SEEK_CUR);
    std::string text(static_cast<std::size_t>(size), '\0');
    if (size == 0) {
        return text;
    }
    const ssize_t count = pread(STDOUT_FILENO, &text[0], text.size(), 0);
    text.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
    if (ftruncate(STDOUT_FILENO, 0) != 0 || lseek(STDOUT_FILENO, 0, SEEK_SET) != 0) {
        throw std::runtime_error("the trace cannot be emptied");
    }
    return text;
}

} // namespace model
