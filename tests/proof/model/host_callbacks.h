// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_MODEL_HOST_CALLBACKS_H
#define KOVASMGR_TESTS_PROOF_MODEL_HOST_CALLBACKS_H

#include <vector>

#include "KOVASMgr.h"
#include "tests/proof/model/subject.h"

namespace model {

/// The functions that stand for the callbacks of a sequence; null for kNoCallback. They and the
/// adapter's functions reach the subject that was named last.
KOVAMGR_READ_CALLBACK ReadCallback(int callback);
KOVAMGR_DEV_STATE_CALLBACK StateCallback(int callback);

/// Which ones these are; -2 for an unknown function.
std::vector<int> NumbersOf(const std::vector<KOVAMGR_READ_CALLBACK>& callbacks);
std::vector<int> NumbersOf(const std::vector<KOVAMGR_DEV_STATE_CALLBACK>& callbacks);

/// Who is called from now on; null: nobody may be.
void SetCalled(Subject* subject);
Subject& Called();

} // namespace model

#endif
