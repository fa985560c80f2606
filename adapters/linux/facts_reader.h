// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_LINUX_FACTS_READER_H
#define KOVASMGR_ADAPTERS_LINUX_FACTS_READER_H

#include <string>

#include "adapters/linux/port_facts.h"
#include "adapters/linux/udev_handles.h"

struct FactsRead {
    enum class Kind {
        Port,       // facts are complete
        NoPort,     // a terminal that belongs to no device (virtual console), or a UART that is not
                    // there; or it has gone
        Incomplete, // what it belongs to cannot be seen: it is just coming or just going
    };
    Kind kind = Kind::NoPort;
    PortFacts facts;
    bool isInitialized = false; // udevd has finished with it: group and mode are set
};

/// Reads the facts of a device of subsystem tty as they are now, whatever an event said of it.
/// @param sysPath  may have gone
FactsRead ReadFacts(udev* context, const std::string& sysPath);

/// The number of a path in sysfs, by which a device that came back is told from one that stayed.
/// @return 0 when it is not there
ino_t SysInode(const std::string& sysPath);

#endif
