// SPDX-License-Identifier: MIT
//
// A text has a running number.
#include <atomic>
#include <cstdio>

#include "tests/conformance/good_adapter.h"

namespace {

std::atomic<int> s_Answers{0};

} // namespace

int OS_ADAPT_EnumDevicePortInfo(int which, _OS_ADAPT_DEVICEPORTLIST* list) {
    const int result = good::Enumerate(which, list);
    if (result == OS_ADAPT_OK) {
        std::snprintf(list->stDevice[0].szDeviceText, OS_ADAPT_DEVICE_TEXT_SIZE, "answer %d",
                      ++s_Answers);
    }
    return result;
}
