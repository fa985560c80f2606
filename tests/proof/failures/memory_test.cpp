// SPDX-License-Identifier: MIT
//
// Single parts that run out of memory.
#include <gtest/gtest.h>

#include <new>

#include "common/jdir.h"
#include "devices/port_book.h"
#include "tests/harness/scratch_directory.h"
#include "tests/proof/failures/fault.h"

namespace {

// Whether the call fails for want of memory when its nth allocation fails.
template <typename Call> bool RunsOut(Call call, long nth) {
    ArmFault({kNoMemory, Manner::kOnce, nth});
    bool hasThrown = false;
    try {
        call();
    } catch (const std::bad_alloc&) {
        hasThrown = true;
    }
    DisarmFault();
    return hasThrown;
}

_PORT_ LongNamedPort(const std::string& name) {
    _PORT_ port;
    port.strPortName = name + ", a name that needs memory of its own";
    port.strDeviceName = "a device, the name of which needs memory as well";
    return port;
}

} // namespace

TEST(WithoutMemory, APortThatIsAddedIsInNeitherList) {
    std::vector<_PORT_> ports;
    std::vector<_COMM_MGR_DEVICE_INFO_> devices;
    AddPort(LongNamedPort("first"), ports, devices);
    const _PORT_ second = LongNamedPort("second");
    long nth = 1;
    while (RunsOut([&] { AddPort(second, ports, devices); }, nth)) {
        EXPECT_EQ(1U, ports.size()) << nth;
        EXPECT_EQ(1U, devices.size()) << nth;
        EXPECT_EQ(1U, devices[0].vecPorts.size()) << nth;
        ++nth;
    }
    EXPECT_LT(1, nth);
    EXPECT_EQ(2U, ports.size());
    EXPECT_EQ(2U, devices[0].vecPorts.size());
}

TEST(WithoutMemory, TheCurrentDirectoryIsNotTakenForUnreadable) {
#ifdef KOVASMGR_TEST_WRAPPED_NEW
    GTEST_SKIP() << "what the C++ library allocates cannot be made to fail with this sanitizer";
#endif
    const ScratchDirectory scratch;
    long nth = 1;
    std::string path;
    while (RunsOut([&] { path = JDir::getCurrentPath(); }, nth)) {
        ++nth;
    }
    EXPECT_LT(1, nth);
    EXPECT_EQ(scratch.Path(), path);
}
