// SPDX-License-Identifier: MIT
//
// What adapters of this project have beyond the seven functions. A host looks for these in the
// adapter that is loaded, which is the spy, so that the spy has all of them and passes them on.
#include <cstdio>
#include <string>

#include "OSAdaptLine.h"
#include "OSAdaptScenario.h"
#include "adapters/shared/guarded.h"
#include "adapters/spy/spy.h"

namespace {

// Null when the adapter has none, which is one line in the log.
template <typename Function> Function FindIn(Spy* spy, const char* name) {
    void* const found = spy == nullptr ? nullptr : spy->Find(name);
    if (found == nullptr && spy != nullptr) {
        LogErrorOnce(std::string("the adapter behind the spy has no ") + name);
    }
    return reinterpret_cast<Function>(found);
}

} // namespace

int OSADAPT_SetLine(const char* portName, const char* settings) {
    return Guarded(__func__, [&] {
        const auto setLine = FindIn<OSADAPT_SET_LINE>(Spy::Get(), OSADAPT_SET_LINE_NAME);
        return setLine == nullptr ? OS_ADAPT_FAILED : setLine(portName, settings);
    });
}

int OSADAPT_CheckScenario(const char* file, char* reason, long size) {
    return Guarded(__func__, [&] {
        const auto check = FindIn<OSADAPT_CHECK_SCENARIO>(Spy::Get(), OSADAPT_CHECK_SCENARIO_NAME);
        if (check != nullptr) {
            return check(file, reason, size);
        }
        if (reason != nullptr && size > 0) {
            std::snprintf(reason, static_cast<size_t>(size),
                          "the adapter behind the spy checks no scenarios");
        }
        return OS_ADAPT_FAILED;
    });
}
