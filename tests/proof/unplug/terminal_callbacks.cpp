// SPDX-License-Identifier: MIT
#include "tests/proof/unplug/terminal_callbacks.h"

#include "tests/proof/unplug/start_line.h"

TerminalNotices& TerminalNotices::Get() {
    static TerminalNotices notices;
    return notices;
}

void OnNotice(_KOVAMGR_DEV_STATE_TYPE_ state) {
    TerminalNotices& notices = TerminalNotices::Get();
    ++(state == KOVAMGR_DEVICE_INSERT ? notices.insertions : notices.pullOuts);
}

void OnSecondNotice(_KOVAMGR_DEV_STATE_TYPE_ /*state*/) {}

void OnNeighbourData(void* /*data*/, int length) { TerminalNotices::Get().bytes += length; }

void OnData(void* /*data*/, int /*length*/) {
    TerminalNotices& notices = TerminalNotices::Get();
    ++notices.deliveries;
    StartLine::Pass(StartLine::Time(notices.lasting));
}

void OnSecondData(void* /*data*/, int /*length*/) {}
