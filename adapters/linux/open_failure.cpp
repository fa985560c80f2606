// SPDX-License-Identifier: MIT
#include "adapters/linux/open_failure.h"

#include <cerrno>

#include "adapters/linux/permission_text.h"
#include "adapters/linux/port_holder.h"
#include "adapters/shared/adapter_log.h"

bool IsGone(int error) {
    return error == ENOENT || error == ENODEV || error == ENXIO || error == EIO;
}

std::string GoneText() { return "the device is gone; open the port again when it is back"; }

std::string NotATerminalText() { return "it is not a terminal; take the node of a serial port"; }

std::string BusyText(const std::string& node, dev_t number) {
    const std::string holders = PortHolders(number);
    if (holders.empty()) {
        return "it is in use by another program, which this user cannot look into; 'sudo fuser "
               "-v " +
               Printable(node) + "' names it";
    }
    return "it is in use by " + holders + "; close it there first";
}

std::string OpenFailureText(const std::string& node, dev_t number, int error) {
    if (error == EACCES || error == EPERM) {
        return PermissionText(Printable(node));
    }
    if (error == EBUSY || error == EWOULDBLOCK) {
        return BusyText(node, number);
    }
    if (error == ENOTTY) {
        return NotATerminalText();
    }
    if (IsGone(error)) {
        return GoneText();
    }
    const bool isUsedUp = error == EMFILE || error == ENFILE;
    return ErrnoText(error) +
           (isUsedUp ? "; the host has too many descriptors open, raise its limit (ulimit -n)"
                     : "");
}
