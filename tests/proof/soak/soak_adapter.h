// SPDX-License-Identifier: MIT
//
// An adapter of 64 devices with a pseudo-terminal each, the first half of which stay while the
// others come and go as the program says. The program loads the same file as the manager does, and
// asks it for this control.
#ifndef KOVASMGR_TESTS_PROOF_SOAK_SOAK_ADAPTER_H
#define KOVASMGR_TESTS_PROOF_SOAK_SOAK_ADAPTER_H

#include <cstddef>

#include "KOVASMgrExport.h"

constexpr std::size_t kDevices = 64;
constexpr std::size_t kStays = 32; // devices 0 to 31

/// Threads: any. SetPresent by one at a time, between the registration and the un-registration of
/// notices.
class SoakAdapterControl {
  public:
    virtual ~SoakAdapterControl() = default;

    /// Plugs a device or pulls it out: one notice each, on the adapter's own thread.
    virtual void SetPresent(std::size_t device, bool isPresent) = 0;

    /// The far end of a device's port, in non-blocking mode; open until the manager is released.
    virtual int FarEnd(std::size_t device) const = 0;

    virtual void SwitchFaults(bool isOn) = 0;
    virtual long FaultsInjected() const = 0;
};

extern "C" {
/// The devices are called "0" to "63", and their text says "stays" or "comes and goes".
KOVASMGR_API SoakAdapterControl* SoakAdapter_Control();
}

#endif
