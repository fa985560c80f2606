// SPDX-License-Identifier: MIT
//
// A host that only loads an adapter, given by its path, and lists its devices.
// Exit status: how many devices are missing from the two that are expected.
#include "tests/adapters/adapter_under_test.h"

int main(int, char** argv) {
    const AdapterUnderTest adapter(argv[1]);
    return 2 - adapter.Devices()->nDeviceCount;
}
