// SPDX-License-Identifier: MIT
//
// One of the seven is not exported. Without the header, which would export it.

extern "C" __attribute__((visibility("hidden"))) int OS_ADAPT_Read(int, void*, long, long*) {
    return 30001;
}
