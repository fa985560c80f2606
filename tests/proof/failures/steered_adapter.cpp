// SPDX-License-Identifier: MIT
#include "tests/proof/failures/steered_adapter.h"

#include <new>
#include <stdexcept>

#include "tests/proof/failures/fault.h"

SteeredState g_SteeredAdapter;

namespace {

int Fail() {
    if ((ArmedTrouble() & (kAdapterThrows | kAdapterReadThrows)) != 0) {
        throw std::runtime_error("from the adapter");
    }
    if (ArmedTrouble() == kAdapterBadAlloc) {
        throw std::bad_alloc();
    }
    return OS_ADAPT_FAILED;
}

} // namespace

int PassAdapterCall() { return Strikes(kAdapterTroubles) ? Fail() : OS_ADAPT_OK; }

int PassAdapterRead() { return Strikes(kAdapterReadTroubles) ? Fail() : OS_ADAPT_OK; }
