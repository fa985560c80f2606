// SPDX-License-Identifier: MIT
#include "bench/terminal_host.h"

#include <dlfcn.h>
#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

#include "bench/descriptor_limit.h"
#include "bench/terminal_adapter.h"

namespace {

const char* const kAdapter = KOVASMGR_BENCH_ADAPTER;

MeasuredThread g_Caller;
std::atomic<bool> g_IsCalled{false};

void NoteCaller(void*, int) {
    g_Caller = MeasuredThread::This();
    g_IsCalled = true;
}

void Need(bool isDone, const char* what) {
    if (!isDone) {
        throw std::runtime_error(what);
    }
}

template <typename Function> Function Resolve(void* library, const char* name) {
    void* const found = dlsym(library, name);
    Need(found != nullptr, name);
    return reinterpret_cast<Function>(found);
}

void OpenPort(int port) {
    Need(KOVAMGR_Open(port) == KOVAMGR_OK, "a port does not open; see KOVASMgr.log");
}

} // namespace

MeasuredThread MeasuredThread::This() {
    MeasuredThread thread;
    pthread_getcpuclockid(pthread_self(), &thread.clock);
    return thread;
}

double MeasuredThread::Seconds() const {
    timespec used{};
    clock_gettime(clock, &used);
    return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) * 1e-9;
}

TerminalHost::TerminalHost(int ports) : m_Adapter(dlopen(kAdapter, RTLD_NOW)), m_Ports(ports) {
    Need(m_Adapter != nullptr, "the adapter does not load");
    RaiseDescriptorLimit();
    const int devices = ports <= 16 ? 1 : ports / 16;
    Resolve<decltype(&TerminalAdapter_SetTable)>(m_Adapter, "TerminalAdapter_SetTable")(
        devices, ports / devices);
    std::filesystem::current_path(std::filesystem::path(kAdapter).parent_path());
    Need(KOVAMGR_Init(KOVASMGR_BENCH_DIR) == KOVAMGR_OK, "the library does not start");
    OpenPort(1);
    OpenAllButFirst();
    CallBack(NoteCaller);
    Need(write(FarEnd(1), "?", 1) == 1, "a far end takes nothing");
    while (!g_IsCalled) {
        usleep(1000);
    }
    for (int port = 1; port <= ports; ++port) {
        KOVAMGR_UnRegisterCommDataReadCallback(NoteCaller, port);
    }
    m_ReadThread = g_Caller;
}

TerminalHost::~TerminalHost() {
    KOVAMGR_Release();
    dlclose(m_Adapter);
}

int TerminalHost::FarEnd(int port) const {
    return Resolve<decltype(&TerminalAdapter_FarEnd)>(m_Adapter,
                                                      "TerminalAdapter_FarEnd")(port - 1);
}

long TerminalHost::Reads() const {
    return Resolve<decltype(&TerminalAdapter_Reads)>(m_Adapter, "TerminalAdapter_Reads")();
}

void TerminalHost::CloseAllButFirst() const {
    for (int port = 2; port <= m_Ports; ++port) {
        KOVAMGR_Close(port);
    }
}

void TerminalHost::OpenAllButFirst() const {
    for (int port = 2; port <= m_Ports; ++port) {
        OpenPort(port);
    }
}

void TerminalHost::CallBack(KOVAMGR_READ_CALLBACK callback) const {
    for (int port = 1; port <= m_Ports; ++port) {
        Need(KOVAMGR_RegisterCommDataReadCallback(callback, port) == KOVAMGR_OK,
             "a callback is refused");
    }
}

int NumberArgument(int count, char** arguments, int index, int otherwise) {
    return index < count ? std::atoi(arguments[index]) : otherwise;
}
