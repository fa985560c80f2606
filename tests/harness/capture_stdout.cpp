// SPDX-License-Identifier: MIT
#include "tests/harness/capture_stdout.h"

#include <unistd.h>

#include <stdexcept>

CaptureStdout::CaptureStdout() : m_File(std::tmpfile()), m_Before(dup(STDOUT_FILENO)) {
    if (m_File == nullptr || m_Before == -1) {
        throw std::runtime_error("standard output cannot be captured");
    }
    std::fflush(stdout);
    dup2(fileno(m_File), STDOUT_FILENO);
}

CaptureStdout::~CaptureStdout() {
    std::fflush(stdout);
    dup2(m_Before, STDOUT_FILENO);
    close(m_Before);
    std::fclose(m_File);
}

std::string CaptureStdout::Text() {
    std::fflush(stdout);
    std::string text;
    char buffer[4096];
    // pread: the offset is shared with standard output.
    ssize_t count = 0;
    while ((count = pread(fileno(m_File), buffer, sizeof buffer, static_cast<off_t>(text.size()))) >
           0) {
        text.append(buffer, static_cast<std::size_t>(count));
    }
    return text;
}
