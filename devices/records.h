// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_DEVICES_RECORDS_H
#define KOVASMGR_DEVICES_RECORDS_H

#include <cstdint>
#include <string>
#include <vector>

#include "KOVASMgr.h"
#include "OSAdapt.h"

/// One communication port. A value: copying copies every field, destroying never closes the handle.
///
/// Each port exists twice. The copy in the prepared ports is the live one: only its hPort and
/// vecReadCallbacks ever change. The copy in the device tree is a description.
struct _PORT_ {
    int32_t nPortID = -1;                                ///< how the host names the port
    int32_t nPortType = KOVAMGR_PORT_TYPE_COMM;          ///< handed to the host, never read back
    std::string strPortName;                             ///< as the adapter reported it; unique key
    std::string strDeviceName;                           ///< the device that owns the port
    int32_t hPort = OS_ADAPT_NO_HANDLE;                  ///< the adapter's handle, -1 while closed
    std::vector<KOVAMGR_READ_CALLBACK> vecReadCallbacks; ///< in registration order, each once
    std::string strDeviceText;                           ///< the owning device's text
};

/// One attached device and its ports, of which it has at least one.
struct _COMM_MGR_DEVICE_INFO_ {
    char szDeviceName[KOVAMGR_DEVICE_TEXT_SIZE] = {}; ///< key, terminated
    std::vector<_PORT_> vecPorts;                     ///< in the order in which they were found
    char szDeviceText[KOVAMGR_DEVICE_TEXT_SIZE] = {}; ///< terminated
};

#endif
