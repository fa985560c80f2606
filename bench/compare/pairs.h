// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_BENCH_COMPARE_PAIRS_H
#define KOVASMGR_BENCH_COMPARE_PAIRS_H

#include <string>
#include <vector>

#include "bench/compare/subject.h"

/// A subject on pairs of pseudo-terminals that the program itself makes.
class PairSubject : public Subject {
  public:
    explicit PairSubject(size_t ports);
    ~PairSubject() override;

    int FarEnd(size_t port) const override { return m_FarEnds[port]; }

  protected:
    size_t Ports() const { return m_FarEnds.size(); }

    /// "/dev/pts/3"
    const std::string& Name(size_t port) const { return m_Names[port]; }

  private:
    std::vector<int> m_FarEnds;
    std::vector<std::string> m_Names;
};

/// Throws what with the text of errno.
[[noreturn]] void FailWithErrno(const std::string& what);

#endif
