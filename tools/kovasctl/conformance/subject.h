// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_CONFORMANCE_SUBJECT_H
#define KOVASCTL_CONFORMANCE_SUBJECT_H

#include <string>

#include "OSAdapt.h"

/// An adapter, loaded as the manager loads it, and its seven functions.
///
/// Threads: any, but for loading and unloading.
class Subject {
  public:
    /// @throws NotTried when it does not load or lacks a function
    explicit Subject(const std::string& file);
    Subject(const Subject&) = delete;
    Subject& operator=(const Subject&) = delete;

    /// Nothing may be called afterwards. Without this it stays loaded to the end of the process: what
    /// a broken adapter has left running must not fail another rule.
    void Unload();

    /// Whether a file is loaded by anyone in this process.
    static bool IsLoaded(const std::string& file);

    /// Whether the calling thread is inside one of the seven.
    static bool IsInside();

    int Register(OS_ADAPT_STATUS_CALLBACK callback) const;
    int UnRegister(OS_ADAPT_STATUS_CALLBACK callback) const;
    int Open(const char* portName, int* handle) const;
    int Close(int handle) const;
    int Write(int handle, const void* data, long length, long* written) const;
    int Read(int handle, void* buffer, long size, long* read) const;
    int Enumerate(int which, _OS_ADAPT_DEVICEPORTLIST* list) const;

  private:
    template <typename Function> void Resolve(Function& function, const char* name);

    void* m_Library;
    decltype(&OS_ADAPT_RegisterDeviceStateProcessCallBack) m_Register = nullptr;
    decltype(&OS_ADAPT_UnRegisterDeviceStateProcessCallBack) m_UnRegister = nullptr;
    decltype(&OS_ADAPT_OpenPort) m_Open = nullptr;
    decltype(&OS_ADAPT_ClosePort) m_Close = nullptr;
    decltype(&OS_ADAPT_Write) m_Write = nullptr;
    decltype(&OS_ADAPT_Read) m_Read = nullptr;
    decltype(&OS_ADAPT_EnumDevicePortInfo) m_Enumerate = nullptr;
};

#endif
