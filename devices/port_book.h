// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_DEVICES_PORT_BOOK_H
#define KOVASMGR_DEVICES_PORT_BOOK_H

#include <string>
#include <vector>

#include "devices/records.h"

// The rules that keep the prepared ports and the device tree in step. No lock, no adapter, no log.

/// Gives the number for a port that the adapter proposes none for: the next one after lastPortID
/// that a single pass over the ports, front to back, does not meet.
///
/// @param lastPortID  the last number given out; becomes the new one
/// @note Numbers that are taken in descending order are not all skipped, so a number can repeat.
int32_t NextPortID(const std::vector<_PORT_>& ports, int32_t& lastPortID);

/// Appends a port to the prepared ports, and a copy of it to its device, which is made if it is not
/// in the tree. When memory runs out (std::bad_alloc), neither has it.
void AddPort(const _PORT_& port, std::vector<_PORT_>& ports,
             std::vector<_COMM_MGR_DEVICE_INFO_>& devices);

/// Deletes the first port with this identifier from each device, and every device that has no port
/// (left, or had none before).
///
/// @return the names of the ports deleted, in the order of the tree
std::vector<std::string> DeleteFromTree(int portID, std::vector<_COMM_MGR_DEVICE_INFO_>& devices);

/// Deletes the first prepared port with this identifier, with its callbacks; nothing when there is
/// none. The handle is not looked at.
void DeleteFromPorts(int portID, std::vector<_PORT_>& ports);

#endif
