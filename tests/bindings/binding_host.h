// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_BINDINGS_BINDING_HOST_H
#define KOVASMGR_TESTS_BINDINGS_BINDING_HOST_H

#include <gtest/gtest.h>

#include <KOVASMgr.hpp>
#include <string>
#include <system_error>
#include <vector>

#include "tests/adapters/far_program.h"
#include "tests/adapters/virtual_bench.h"
#include "tests/bindings/inbox.h"
#include "tests/harness/wait_until.h"

using Names = std::vector<std::string>;

/// A host on the virtual adapter, with real terminals:
///
///     modem(modem-at: answers AT)  sensor(sensor-0: a reading every 20 ms)
///     bench(far-0, far-1: another program is the far end; echo-0; silent-0)
class BindingHost : public VirtualBench {
  protected:
    BindingHost();

    kovasmgr::Library Init() const { return kovasmgr::Library(m_Scratch.LogDirectory()); }

    /// Opens a port by its name.
    static kovasmgr::Port Open(const kovasmgr::Library& library, const std::string& name,
                               kovasmgr::Receiver receiver = {});

    /// A port's identifier; -1 when it is not there.
    static int IdOf(const kovasmgr::Library& library, const std::string& name);
};

/// The code that a call throws; none when it throws nothing.
template <typename Call> std::error_code ErrorOf(Call call) {
    try {
        call();
    } catch (const std::system_error& error) {
        return error.code();
    }
    return {};
}

/// "modem(modem-at)" for each device.
Names NamesOf(const std::vector<kovasmgr::Device>& devices);

/// Bytes that show what was lost, doubled or swapped.
std::string Pattern(size_t size);

#endif
