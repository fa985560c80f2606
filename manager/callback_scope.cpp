// SPDX-License-Identifier: MIT
#include "manager/callback_scope.h"

namespace {

// Initial-exec: the place is there from the thread's start, so that no allocation can fail later.
__attribute__((tls_model("initial-exec"))) thread_local int t_nDepth = 0;

} // namespace

CallbackScope::CallbackScope() { ++t_nDepth; }

CallbackScope::~CallbackScope() { --t_nDepth; }

bool CallbackScope::IsActive() { return t_nDepth > 0; }
