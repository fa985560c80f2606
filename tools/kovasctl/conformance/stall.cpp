// SPDX-License-Identifier: MIT
#include "tools/kovasctl/conformance/stall.h"

#include <algorithm>

#include "tools/kovasctl/conformance/timed.h"
#include "tools/kovasctl/conformance/trial.h"
#include "tools/kovasctl/conformance/verdict.h"

Stall StallPort(Trial& trial, const std::string& port) {
    constexpr long kMuch = 16L * 1024 * 1024;
    const std::string data(kStallPiece, '\n');
    Stall stall{trial.Open(port), 0, OS_ADAPT_OK};
    trial.Step("writing to '" + port + "' until its far end takes no more");
    const Stopwatch all;
    for (long total = 0; total < kMuch && all.Seconds() < trial.Patience();) {
        long count = 0;
        const Stopwatch one;
        stall.result = trial.Adapter().Write(stall.handle, data.data(), kStallPiece, &count);
        stall.longest = std::max(stall.longest, one.Seconds());
        if (stall.result != OS_ADAPT_OK || count < kStallPiece) {
            return stall;
        }
        total += count;
    }
    throw NotTried("the far end of '" + port + "' took everything: it reads");
}
