// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_PORT_SOURCE_H
#define KOVASMGR_ADAPTERS_PORT_SOURCE_H

#include <memory>
#include <string>

#include "adapters/shared/handle_table.h"
#include "adapters/shared/state_notifier.h"

/// Where the ports of an adapter come from: everything that lives from its first use to its
/// un-registration. It publishes what is attached to the notifier, and enters into the table of
/// handles what is opened.
///
/// Threads: any, except where stated.
class PortSource {
  public:
    PortSource() = default;
    virtual ~PortSource() = default;
    PortSource(const PortSource&) = delete;
    PortSource& operator=(const PortSource&) = delete;

    /// Opens a port for the host.
    /// @return the handle
    /// @throws std::runtime_error with the reason
    virtual int Open(const std::string& portName) = 0;

    /// Looks at the system anew, before an enumeration that nobody's notices keep up to date.
    /// @throws std::runtime_error with the reason
    virtual void Refresh() {}

    /// A handle was closed, or a notice has ended.
    virtual void Wake() {}

    /// Ends all threads and lets go of what is outside this process. Calls of the others may overlap
    /// with it; they find no ports. By one thread, which is not one of the source's own.
    virtual void Stop() = 0;
};

/// Each adapter has its own.
/// @throws std::runtime_error when there is no thread or descriptor to run it
std::shared_ptr<PortSource> StartPortSource(HandleTable& handles, StateNotifier& notifier);

#endif
