// SPDX-License-Identifier: MIT
#include "tools/kovasctl/stats/stats.h"

const char* NameOf(OSADAPT_SPY_KIND kind) {
    constexpr const char* kNames[OSADAPT_SPY_KINDS] = {
        "register", "unregister", "open", "close", "write", "read", "enumerate", "notice"};
    return kNames[kind];
}

std::vector<OSADAPT_SPY_KIND> AllCalls() {
    return {OSADAPT_SPY_REGISTER,  OSADAPT_SPY_UNREGISTER, OSADAPT_SPY_OPEN,
            OSADAPT_SPY_CLOSE,     OSADAPT_SPY_WRITE,      OSADAPT_SPY_READ,
            OSADAPT_SPY_ENUMERATE, OSADAPT_SPY_NOTICE};
}
