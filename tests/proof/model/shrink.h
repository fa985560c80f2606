// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_MODEL_SHRINK_H
#define KOVASMGR_TESTS_PROOF_MODEL_SHRINK_H

#include <functional>

#include "tests/proof/model/operation.h"

namespace model {

/// Leaves out whatever can be left out while the sequence still fails: halves, then smaller pieces,
/// then single operations, until none can go any more.
Sequence Shrink(Sequence sequence, const std::function<bool(const Sequence&)>& fails);

} // namespace model

#endif
