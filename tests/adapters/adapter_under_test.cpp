// SPDX-License-Identifier: MIT
#include "tests/adapters/adapter_under_test.h"

#include <dlfcn.h>

#include <stdexcept>
#include <utility>

#include "tests/harness/wait_until.h"

AdapterUnderTest::AdapterUnderTest(const std::string& path)
    : m_Library(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (m_Library == nullptr) {
        throw std::runtime_error(dlerror());
    }
    Resolve(m_Register, "OS_ADAPT_RegisterDeviceStateProcessCallBack");
    Resolve(m_UnRegister, "OS_ADAPT_UnRegisterDeviceStateProcessCallBack");
    Resolve(m_Open, "OS_ADAPT_OpenPort");
    Resolve(m_Close, "OS_ADAPT_ClosePort");
    Resolve(m_Write, "OS_ADAPT_Write");
    Resolve(m_Read, "OS_ADAPT_Read");
    Resolve(m_Enum, "OS_ADAPT_EnumDevicePortInfo");
}

template <typename Function> void AdapterUnderTest::Resolve(Function& function, const char* name) {
    function = reinterpret_cast<Function>(dlsym(m_Library, name));
    if (function == nullptr) {
        throw std::runtime_error(std::string("lacks ") + name);
    }
}

void AdapterUnderTest::Unload() {
    if (m_Library != nullptr) {
        dlclose(std::exchange(m_Library, nullptr));
    }
}

bool AdapterUnderTest::IsLoaded(const std::string& path) {
    void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (library != nullptr) {
        dlclose(library);
    }
    return library != nullptr;
}

int AdapterUnderTest::OpenPort(const std::string& name) const {
    int handle = OS_ADAPT_NO_HANDLE;
    return Open(name.c_str(), &handle) == OS_ADAPT_OK ? handle : OS_ADAPT_NO_HANDLE;
}

long AdapterUnderTest::WriteText(int handle, const std::string& text) const {
    long written = -2;
    const long length = static_cast<long>(text.size());
    return Write(handle, text.data(), length, &written) == OS_ADAPT_OK ? written : -1;
}

std::string AdapterUnderTest::ReadText(int handle) const {
    char buffer[4096];
    long count = -2;
    if (Read(handle, buffer, sizeof buffer, &count) != OS_ADAPT_OK) {
        throw std::runtime_error("a read failed");
    }
    return std::string(buffer, static_cast<size_t>(count));
}

std::string AdapterUnderTest::ReadUntil(int handle, const std::string& text) const {
    std::string all;
    WaitUntil([&] {
        all += ReadText(handle);
        return all.find(text) != std::string::npos;
    });
    return all;
}

std::unique_ptr<_OS_ADAPT_DEVICEPORTLIST> AdapterUnderTest::Devices() const {
    auto list = std::make_unique<_OS_ADAPT_DEVICEPORTLIST>();
    if (Enumerate(OS_ADAPT_ENUM_ALL, list.get()) != OS_ADAPT_OK) {
        throw std::runtime_error("an enumeration failed");
    }
    return list;
}

std::string AdapterUnderTest::DevicesText() const {
    const auto list = Devices();
    std::string text;
    for (int i = 0; i < list->nDeviceCount; ++i) {
        const _OS_ADAPT_DEVICEPORTINFO& device = list->stDevice[i];
        text += std::string(i == 0 ? "" : " ") + device.szDeviceName + "(";
        for (int k = 0; k < device.nPortCount; ++k) {
            text += std::string(k == 0 ? "" : " ") + device.stPort[k].szPortName;
        }
        text += ")";
    }
    return text;
}
