// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_SOAK_VERDICT_H
#define KOVASMGR_TESTS_PROOF_SOAK_VERDICT_H

#include <string>

/// What was found wrong. The first findings are printed at once on standard error.
///
/// Threads: any.
namespace verdict {

void Wrong(const std::string& finding);

inline void Expect(bool isRight, const std::string& finding) {
    if (!isRight) {
        Wrong(finding);
    }
}

long Count();

} // namespace verdict

#endif
