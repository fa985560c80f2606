// SPDX-License-Identifier: MIT
#include "adapters/spy/target.h"

#include <dlfcn.h>

#include <memory>
#include <stdexcept>

#include "adapters/shared/adapter_log.h"
#include "adapters/spy/target_place.h"

namespace {

struct CloseLibrary {
    void operator()(void* library) const { dlclose(library); }
};

std::string LoadingError() {
    const char* const reason = dlerror();
    return Printable(reason == nullptr ? "for no stated reason" : reason);
}

// The loader gives the same library for the same file, whatever its path: so does it with links.
bool IsThisLibrary(void* library) {
    return dlsym(library, "OS_ADAPT_Write") == reinterpret_cast<void*>(&OS_ADAPT_Write);
}

} // namespace

Target::Target(const std::string& choice)
    : m_File(FindTargetFile(choice)), m_Library(dlopen(m_File.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (m_Library == nullptr) {
        throw std::runtime_error("'" + Printable(m_File) + "' does not load: " + LoadingError());
    }
    std::unique_ptr<void, CloseLibrary> owner(m_Library);
    if (IsThisLibrary(m_Library)) {
        throw std::runtime_error("'" + Printable(m_File) +
                                 "' is the spy itself; name another by KOVASMGR_SPY_ADAPTER");
    }
    ResolveAll();
    static_cast<void>(owner.release()); // the destructor's from here on
}

Target::~Target() { dlclose(m_Library); }

void* Target::Find(const char* name) const { return dlsym(m_Library, name); }

void Target::ResolveAll() {
    Resolve(m_Functions.registerCallback, "OS_ADAPT_RegisterDeviceStateProcessCallBack");
    Resolve(m_Functions.unRegisterCallback, "OS_ADAPT_UnRegisterDeviceStateProcessCallBack");
    Resolve(m_Functions.open, "OS_ADAPT_OpenPort");
    Resolve(m_Functions.close, "OS_ADAPT_ClosePort");
    Resolve(m_Functions.write, "OS_ADAPT_Write");
    Resolve(m_Functions.read, "OS_ADAPT_Read");
    Resolve(m_Functions.enumerate, "OS_ADAPT_EnumDevicePortInfo");
}

template <typename Function> void Target::Resolve(Function& function, const char* name) {
    function = reinterpret_cast<Function>(Find(name));
    if (function == nullptr) {
        throw std::runtime_error("'" + Printable(m_File) + "' lacks " + name);
    }
}
