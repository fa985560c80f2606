// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_LINUX_UDEV_HANDLES_H
#define KOVASMGR_ADAPTERS_LINUX_UDEV_HANDLES_H

#include <libudev.h>

#include <memory>
#include <string>

struct UdevDeleter {
    void operator()(udev* context) const { udev_unref(context); }
    void operator()(udev_device* device) const { udev_device_unref(device); }
    void operator()(udev_enumerate* enumeration) const { udev_enumerate_unref(enumeration); }
    void operator()(udev_monitor* monitor) const { udev_monitor_unref(monitor); }
};

using UdevContext = std::unique_ptr<udev, UdevDeleter>;
using UdevDevice = std::unique_ptr<udev_device, UdevDeleter>;
using UdevEnumeration = std::unique_ptr<udev_enumerate, UdevDeleter>;
using UdevMonitor = std::unique_ptr<udev_monitor, UdevDeleter>;

/// A text of libudev, which gives null for what is not there.
inline std::string UdevText(const char* text) { return text == nullptr ? "" : text; }

#endif
