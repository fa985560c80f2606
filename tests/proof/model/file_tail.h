// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_MODEL_FILE_TAIL_H
#define KOVASMGR_TESTS_PROOF_MODEL_FILE_TAIL_H

#include <string>

namespace model {

/// What is appended to a file, a piece at a time.
class FileTail {
  public:
    /// Empties the file, if it is there; what is appended from now on is taken.
    explicit FileTail(std::string path);
    ~FileTail();
    FileTail(const FileTail&) = delete;
    FileTail& operator=(const FileTail&) = delete;

    /// What was appended since the last time.
    std::string Take();

  private:
    std::string m_Path;
    int m_File = -1;
    long m_Offset = 0;
};

/// Every well-formed time stamp at the beginning of a line becomes "[TIME]".
std::string MaskStamps(const std::string& text);

} // namespace model

#endif
