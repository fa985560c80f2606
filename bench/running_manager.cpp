// SPDX-License-Identifier: MIT
#include "bench/running_manager.h"

#include <dlfcn.h>

#include <filesystem>
#include <stdexcept>

#include "KOVASMgr.h"
#include "bench/null_adapter.h"

std::string BenchDirectory() { return KOVASMGR_BENCH_DIR; }

NullAdapter::NullAdapter(int devices, int portsEach)
    : m_Handle(dlopen((BenchDirectory() + "/adapter/libOSAdapt.so").c_str(), RTLD_NOW)) {
    if (m_Handle == nullptr) {
        throw std::runtime_error(dlerror());
    }
    Resolve<decltype(&NullAdapter_SetTable)>("NullAdapter_SetTable")(devices, portsEach);
}

NullAdapter::~NullAdapter() { dlclose(m_Handle); }

void* NullAdapter::Find(const char* name) const {
    void* const found = dlsym(m_Handle, name);
    if (found == nullptr) {
        throw std::runtime_error(dlerror());
    }
    return found;
}

RunningManager::RunningManager(int devices, int portsEach) : m_Adapter(devices, portsEach) {
    std::filesystem::current_path(BenchDirectory() + "/adapter");
    if (KOVAMGR_Init(BenchDirectory().c_str()) != KOVAMGR_OK) {
        throw std::runtime_error("the library does not start");
    }
    for (int port = 1; port <= devices * portsEach; ++port) {
        if (KOVAMGR_Open(port) != KOVAMGR_OK) {
            throw std::runtime_error("a port does not open");
        }
    }
}

RunningManager::~RunningManager() { KOVAMGR_Release(); }
