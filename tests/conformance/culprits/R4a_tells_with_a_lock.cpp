// SPDX-License-Identifier: MIT
//
// A notice is told with a lock held that enumerations take.
#include <mutex>

#include "tests/conformance/good_adapter.h"

namespace {

std::mutex s_Mutex;

} // namespace

void good::Tell(OS_ADAPT_STATUS_CALLBACK callback, _OS_ADAPT_DEVICESTATUS_TYPE status) {
    const std::lock_guard<std::mutex> lock(s_Mutex);
    callback(status);
}

int OS_ADAPT_EnumDevicePortInfo(int which, _OS_ADAPT_DEVICEPORTLIST* list) {
    const std::lock_guard<std::mutex> lock(s_Mutex);
    return good::Enumerate(which, list);
}
