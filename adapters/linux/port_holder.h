// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_LINUX_PORT_HOLDER_H
#define KOVASMGR_ADAPTERS_LINUX_PORT_HOLDER_H

#include <sys/types.h>

#include <string>

/// Who has a terminal open, as far as this user may see: "picocom (process 4711)", three of them at
/// most. Empty when nobody is seen; the processes of other users cannot be looked into. Takes a
/// quarter of a second at most.
/// @param number  of the terminal's node
std::string PortHolders(dev_t number);

#endif
