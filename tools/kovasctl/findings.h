// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_FINDINGS_H
#define KOVASCTL_FINDINGS_H

#include <string>
#include <vector>

/// One thing that an examination has brought to light.
struct Finding {
    enum class Level { Good, Note, Problem };

    std::string subject; // "adapter", or a port's name
    Level level;
    std::string text;
    std::string mend; // what to do, often a command; empty: nothing
};

class Findings {
  public:
    void Good(const std::string& subject, const std::string& text) {
        m_All.push_back({subject, Finding::Level::Good, text, ""});
    }
    void Note(const std::string& subject, const std::string& text, const std::string& mend = "") {
        m_All.push_back({subject, Finding::Level::Note, text, mend});
    }
    void Problem(const std::string& subject, const std::string& text, const std::string& mend) {
        m_All.push_back({subject, Finding::Level::Problem, text, mend});
    }

    const std::vector<Finding>& All() const { return m_All; }
    bool HasProblem() const;

    /// For people: under each subject its findings, with what mends them.
    std::string AsText() const;

    /// Writes them to standard output.
    /// @return the exit status: failed when there is a problem
    int Report(bool asJson) const;

  private:
    std::vector<Finding> m_All;
};

#endif
