// SPDX-License-Identifier: MIT
//
// A host of the virtual adapter that ends in the way its argument names. It has functions of its
// own that are called like the log's.
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

#include "KOVASMgr.h"
#include "KOVASMgrLog.h"
#include "tests/adapters/adapter_under_test.h"
#include "tests/adapters/control_client.h"
#include "tests/harness/wait_until.h"

namespace {

std::atomic<int> s_Captured{0};
std::atomic<bool> s_Inside{false};

// Never destroyed: threads use it until the very end.
AdapterUnderTest& Adapter() {
    static auto* const adapter = new AdapterUnderTest;
    return *adapter;
}

std::string Command(const std::string& line) {
    return ControlClient(getenv("KOVASMGR_VIRTUAL_DIR")).Ask(line);
}

[[noreturn]] void UseForEver() {
    int handle = Adapter().OpenPort("virtual-modem-0");
    while (true) {
        char buffer[64];
        long count = 0;
        Adapter().Write(handle, "AT\r", 3, &count);
        Adapter().Read(handle, buffer, sizeof buffer, &count);
        static thread_local _OS_ADAPT_DEVICEPORTLIST list;
        Adapter().Enumerate(OS_ADAPT_ENUM_ALL, &list);
        s_Inside = true;
    }
}

int EndBusy() {
    Adapter().Register([](_OS_ADAPT_DEVICESTATUS_TYPE) {});
    std::thread(UseForEver).detach();
    WaitUntil([] { return s_Inside.load(); });
    return 0;
}

int EndInsideNotice() {
    Adapter().Register([](_OS_ADAPT_DEVICESTATUS_TYPE) { exit(0); });
    Command("pull virtual-modem");
    pause();
    return 1;
}

int EndWithStuckNotice() {
    Adapter().Register([](_OS_ADAPT_DEVICESTATUS_TYPE) {
        s_Inside = true;
        pause();
    });
    ControlClient(getenv("KOVASMGR_VIRTUAL_DIR")).Send("pull virtual-modem\n");
    WaitUntil([] { return s_Inside.load(); });
    return 0;
}

int EndWithManager() {
    if (KOVAMGR_Init("log") != KOVAMGR_OK || KOVAMGR_Open(1) != KOVAMGR_OK ||
        KOVAMGR_Open(3) != KOVAMGR_OK) {
        return 1;
    }
    return 0;
}

int EndAfterFork() {
    Adapter().Register([](_OS_ADAPT_DEVICESTATUS_TYPE) {});
    const pid_t child = fork();
    if (child == 0) {
        exit(0);
    }
    int status = 1;
    waitpid(child, &status, 0);
    return status == 0 && Command("pull virtual-modem") == "ok" ? 0 : 1;
}

int EndWithNamesakes() {
    KOVASMGR_LOG_INIT("log");
    return Adapter().OpenPort("nobody") == OS_ADAPT_NO_HANDLE ? s_Captured.load() : 99;
}

} // namespace

extern "C" {

__attribute__((visibility("default"))) int INFO_LOG(const char*, ...) { return ++s_Captured; }
__attribute__((visibility("default"))) int ERRO_LOG(const char*, ...) { return ++s_Captured; }

} // extern "C"

int main(int, char** argv) {
    const std::string mode = argv[1];
    if (mode == "busy") {
        return EndBusy();
    }
    if (mode == "inside-notice") {
        return EndInsideNotice();
    }
    if (mode == "stuck-notice") {
        return EndWithStuckNotice();
    }
    if (mode == "manager") {
        return EndWithManager();
    }
    if (mode == "fork") {
        return EndAfterFork();
    }
    return mode == "namesakes" ? EndWithNamesakes() : 98;
}
