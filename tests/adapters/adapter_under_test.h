// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_ADAPTERS_ADAPTER_UNDER_TEST_H
#define KOVASMGR_TESTS_ADAPTERS_ADAPTER_UNDER_TEST_H

#include <memory>
#include <string>
#include <vector>

#include "OSAdapt.h"

/// An adapter loaded by its file, and its seven functions.
class AdapterUnderTest {
  public:
    /// Throws when it does not load or lacks a function.
    explicit AdapterUnderTest(const std::string& path = KOVASMGR_VIRTUAL_ADAPTER);
    ~AdapterUnderTest() { Unload(); }
    AdapterUnderTest(const AdapterUnderTest&) = delete;
    AdapterUnderTest& operator=(const AdapterUnderTest&) = delete;

    void Unload();

    /// Whether the file is loaded by anyone in this process.
    static bool IsLoaded(const std::string& path = KOVASMGR_VIRTUAL_ADAPTER);

    int Register(OS_ADAPT_STATUS_CALLBACK callback) const { return m_Register(callback); }
    int UnRegister(OS_ADAPT_STATUS_CALLBACK callback) const { return m_UnRegister(callback); }
    int Open(const char* name, int* handle) const { return m_Open(name, handle); }
    int Close(int handle) const { return m_Close(handle); }
    int Write(int handle, const void* data, long length, long* written) const {
        return m_Write(handle, data, length, written);
    }
    int Read(int handle, void* buffer, long size, long* read) const {
        return m_Read(handle, buffer, size, read);
    }
    int Enumerate(int which, _OS_ADAPT_DEVICEPORTLIST* list) const { return m_Enum(which, list); }

    /// -1 when it does not open.
    int OpenPort(const std::string& name) const;

    /// What one write took; -1 for a failure.
    long WriteText(int handle, const std::string& text) const;

    /// What one read gives; throws for a failure.
    std::string ReadText(int handle) const;

    /// Reads until a text has come, at most 10 s.
    /// @return everything that came
    std::string ReadUntil(int handle, const std::string& text) const;

    std::unique_ptr<_OS_ADAPT_DEVICEPORTLIST> Devices() const;

    /// "modem(at0 at1) sensor(s0)"
    std::string DevicesText() const;

  private:
    template <typename Function> void Resolve(Function& function, const char* name);

    void* m_Library;
    decltype(&OS_ADAPT_RegisterDeviceStateProcessCallBack) m_Register = nullptr;
    decltype(&OS_ADAPT_UnRegisterDeviceStateProcessCallBack) m_UnRegister = nullptr;
    decltype(&OS_ADAPT_OpenPort) m_Open = nullptr;
    decltype(&OS_ADAPT_ClosePort) m_Close = nullptr;
    decltype(&OS_ADAPT_Write) m_Write = nullptr;
    decltype(&OS_ADAPT_Read) m_Read = nullptr;
    decltype(&OS_ADAPT_EnumDevicePortInfo) m_Enum = nullptr;
};

#endif
