#!/bin/sh
# SPDX-License-Identifier: MIT
# Tests modem_host in simulations; docs/test-your-host.md explains it.
set -eu
cc -o modem_host modem_host.c $(pkg-config --cflags --libs kovasmgr) -lpthread

# It finds the modem, and again after the modem's restart; the same bytes each time.
kovasctl sim modem --speed 2 --stop --events events.jsonl -- ./modem_host 2
grep '"track":"modem-at"' events.jsonl | diff modem-at.expected -

# It tries again when the port does not open at first.
KOVASMGR_SPY_FAULTS='open@modem-at:1=fail' \
    kovasctl --adapter spy sim modem --stop -- ./modem_host 2
