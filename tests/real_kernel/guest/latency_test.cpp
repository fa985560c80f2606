// SPDX-License-Identifier: MIT
// How soon a host is told.
#include "tests/real_kernel/guest/guest_host.h"
#include "tests/real_kernel/guest/latency.h"

namespace {

using Latency = GuestHost;

} // namespace

TEST_F(Latency, NoticesComeSoonAfterUdevsLastEvent) {
    Start();
    MeasureNotices("udev");
}
