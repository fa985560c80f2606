// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_HARNESS_FAKE_ADAPTER_LIBRARY_H
#define KOVASMGR_TESTS_HARNESS_FAKE_ADAPTER_LIBRARY_H

#include <string>

#include "tests/fakes/fake_adapter.h"

/// The test's own hold on a scripted adapter; the manager that loads the same file shares its
/// state, which lasts as long as one of the two holds it.
class FakeAdapterLibrary {
  public:
    /// Loads the file, by default the one in the current directory. Throws when it does not load.
    explicit FakeAdapterLibrary(const std::string& path = "./libOSAdapt.so");
    ~FakeAdapterLibrary();
    FakeAdapterLibrary(const FakeAdapterLibrary&) = delete;
    FakeAdapterLibrary& operator=(const FakeAdapterLibrary&) = delete;

    FakeAdapterControl& operator*() const { return *m_Control; }
    FakeAdapterControl* operator->() const { return m_Control; }

    /// An exported function or null; for calling the adapter as the manager does.
    void* Resolve(const std::string& name) const;

    /// Whether the file is loaded by anyone in this process.
    static bool IsLoaded(const std::string& path = "./libOSAdapt.so");

  private:
    void* m_Handle;
    FakeAdapterControl* m_Control;
};

#endif
