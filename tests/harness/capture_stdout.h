// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_HARNESS_CAPTURE_STDOUT_H
#define KOVASMGR_TESTS_HARNESS_CAPTURE_STDOUT_H

#include <cstdio>
#include <string>

/// Collects what the process, its children included, writes to standard output.
class CaptureStdout {
  public:
    CaptureStdout();
    ~CaptureStdout();
    CaptureStdout(const CaptureStdout&) = delete;
    CaptureStdout& operator=(const CaptureStdout&) = delete;

    /// Everything so far.
    std::string Text();

  private:
    std::FILE* m_File;
    int m_Before;
};

#endif
