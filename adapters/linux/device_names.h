// SPDX-License-Identifier: MIT
//
// What a device is called, from its facts. All texts are valid UTF-8 without control characters and
// fit their arrays with the terminator.
#ifndef KOVASMGR_ADAPTERS_LINUX_DEVICE_NAMES_H
#define KOVASMGR_ADAPTERS_LINUX_DEVICE_NAMES_H

#include <cstddef>
#include <string>

#include "adapters/linux/port_facts.h"

/// A text from a device made fit to be shown: '?' for what is no character or would steer a
/// terminal, no blanks at its ends, cut at a character to maxBytes.
std::string CleanText(const std::string& text, size_t maxBytes);

/// What a person would call it: "FTDI FT232R A50285BI".
std::string PlainName(const PortFacts& facts);

/// The same with the place: "QinHeng Electronics USB Serial @1-1.2".
std::string NameAtPlace(const PortFacts& facts);

/// The facts, for a host that wants to know a device again by identity or by place:
/// "bus=usb id=0403:6001 place=1-1.4 driver=ftdi_sio serial=A50285BI". In this order; what is not
/// known is left out, and what is too long is cut at the end, so the serial number first. Blanks in
/// a value become '_'.
std::string DeviceText(const PortFacts& facts);

#endif
