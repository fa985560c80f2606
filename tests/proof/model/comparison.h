// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_MODEL_COMPARISON_H
#define KOVASMGR_TESTS_PROOF_MODEL_COMPARISON_H

#include <optional>
#include <string>

#include "tests/proof/model/subject.h"

namespace model {

/// Where the manager and the model differ first, in words.
struct Difference {
    std::size_t step = 0; ///< of the sequence, from 0
    std::string what;
};

/// Runs a sequence on both, and compares after every step: result and what is stored through
/// pointers, the adapter's calls and the host's callbacks in their order, the lines of the log and of
/// the trace, both lists, and the enumeration record.
///
/// @return nothing when they agree to the end
std::optional<Difference> Compare(const Sequence& sequence, Subject& manager, Subject& model);

} // namespace model

#endif
