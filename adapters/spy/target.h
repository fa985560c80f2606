// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_SPY_TARGET_H
#define KOVASMGR_ADAPTERS_SPY_TARGET_H

#include <string>

#include "OSAdapt.h"
#include "OSAdaptLine.h"

/// The functions of an adapter.
struct AdapterFunctions {
    decltype(&OS_ADAPT_RegisterDeviceStateProcessCallBack) registerCallback = nullptr;
    decltype(&OS_ADAPT_UnRegisterDeviceStateProcessCallBack) unRegisterCallback = nullptr;
    decltype(&OS_ADAPT_OpenPort) open = nullptr;
    decltype(&OS_ADAPT_ClosePort) close = nullptr;
    decltype(&OS_ADAPT_Write) write = nullptr;
    decltype(&OS_ADAPT_Read) read = nullptr;
    decltype(&OS_ADAPT_EnumDevicePortInfo) enumerate = nullptr;
};

/// The adapter that calls are passed on to, loaded for as long as this lives.
class Target {
  public:
    /// @param choice  a directory's absolute path, or the name of an adapter that lies beside this
    ///                one or beside the installed ones; empty: the library's default adapter
    /// @throws std::runtime_error with the reason: nothing there, this library itself, a file that
    ///         does not load, a missing function
    explicit Target(const std::string& choice);
    ~Target();
    Target(const Target&) = delete;
    Target& operator=(const Target&) = delete;

    const AdapterFunctions& Functions() const { return m_Functions; }
    const std::string& File() const { return m_File; }

    /// A function beyond the seven; null when the adapter has none of this name.
    void* Find(const char* name) const;

  private:
    void ResolveAll();
    template <typename Function> void Resolve(Function& function, const char* name);

    std::string m_File;
    void* m_Library;
    AdapterFunctions m_Functions;
};

#endif
