// SPDX-License-Identifier: MIT
#include "tools/kovasctl/conformance/subject.h"

#include <dlfcn.h>

#include "tools/kovasctl/conformance/verdict.h"

namespace {

thread_local int s_Depth = 0;

// A destructor: a cancelled thread leaves by unwinding.
class InsideCall {
  public:
    InsideCall() { ++s_Depth; }
    ~InsideCall() { --s_Depth; }
    InsideCall(const InsideCall&) = delete;
    InsideCall& operator=(const InsideCall&) = delete;
};

} // namespace

Subject::Subject(const std::string& file) : m_Library(dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (m_Library == nullptr) {
        const char* reason = dlerror();
        throw NotTried(std::string("it does not load: ") + (reason == nullptr ? "" : reason));
    }
    Resolve(m_Register, "OS_ADAPT_RegisterDeviceStateProcessCallBack");
    Resolve(m_UnRegister, "OS_ADAPT_UnRegisterDeviceStateProcessCallBack");
    Resolve(m_Open, "OS_ADAPT_OpenPort");
    Resolve(m_Close, "OS_ADAPT_ClosePort");
    Resolve(m_Write, "OS_ADAPT_Write");
    Resolve(m_Read, "OS_ADAPT_Read");
    Resolve(m_Enumerate, "OS_ADAPT_EnumDevicePortInfo");
}

template <typename Function> void Subject::Resolve(Function& function, const char* name) {
    function = reinterpret_cast<Function>(dlsym(m_Library, name));
    if (function == nullptr) {
        throw NotTried(std::string("it lacks ") + name);
    }
}

void Subject::Unload() { dlclose(m_Library); }

bool Subject::IsLoaded(const std::string& file) {
    void* const library = dlopen(file.c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (library != nullptr) {
        dlclose(library);
    }
    return library != nullptr;
}

bool Subject::IsInside() { return s_Depth > 0; }

int Subject::Register(OS_ADAPT_STATUS_CALLBACK callback) const {
    const InsideCall inside;
    return m_Register(callback);
}

int Subject::UnRegister(OS_ADAPT_STATUS_CALLBACK callback) const {
    const InsideCall inside;
    return m_UnRegister(callback);
}

int Subject::Open(const char* portName, int* handle) const {
    const InsideCall inside;
    return m_Open(portName, handle);
}

int Subject::Close(int handle) const {
    const InsideCall inside;
    return m_Close(handle);
}

int Subject::Write(int handle, const void* data, long length, long* written) const {
    const InsideCall inside;
    return m_Write(handle, data, length, written);
}

int Subject::Read(int handle, void* buffer, long size, long* read) const {
    const InsideCall inside;
    return m_Read(handle, buffer, size, read);
}

int Subject::Enumerate(int which, _OS_ADAPT_DEVICEPORTLIST* list) const {
    const InsideCall inside;
    return m_Enumerate(which, list);
}
