// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_CONFORMANCE_VERDICT_H
#define KOVASCTL_CONFORMANCE_VERDICT_H

#include <stdexcept>
#include <string>

enum class Verdict { Pass, Fail, NotApplicable };

/// What became of one rule.
struct Outcome {
    Verdict verdict = Verdict::NotApplicable;
    std::string seen; // what was seen, or why it was not tried
    double seconds = 0;
};

/// Ends a check: the adapter breaks the rule. The text is what was seen.
class Broken : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Ends a check: the rule cannot be tried here. The text is the reason.
class NotTried : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

#endif
