// SPDX-License-Identifier: MIT
//
// An adapter that hangs when it is loaded.
#include <unistd.h>

namespace {

struct Hang {
    Hang() {
        for (;;) {
            pause();
        }
    }
};

const Hang kHang;

} // namespace
