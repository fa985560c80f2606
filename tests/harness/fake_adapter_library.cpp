// SPDX-License-Identifier: MIT
#include "tests/harness/fake_adapter_library.h"

#include <dlfcn.h>

#include <stdexcept>

FakeAdapterLibrary::FakeAdapterLibrary(const std::string& path)
    : m_Handle(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)), m_Control(nullptr) {
    if (m_Handle == nullptr) {
        throw std::runtime_error(dlerror());
    }
    using GetControl = FakeAdapterControl* (*)();
    m_Control = reinterpret_cast<GetControl>(Resolve("FakeAdapter_Control"))();
}

FakeAdapterLibrary::~FakeAdapterLibrary() { dlclose(m_Handle); }

void* FakeAdapterLibrary::Resolve(const std::string& name) const {
    return dlsym(m_Handle, name.c_str());
}

bool FakeAdapterLibrary::IsLoaded(const std::string& path) {
    void* const handle = dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (handle != nullptr) {
        dlclose(handle);
    }
    return handle != nullptr;
}
