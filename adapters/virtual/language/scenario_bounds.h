// SPDX-License-Identifier: MIT
//
// How much a scenario may hold: far more than a host can list, and so little that no file makes the
// adapter take all memory or all time.
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_SCENARIO_BOUNDS_H
#define KOVASMGR_ADAPTERS_VIRTUAL_SCENARIO_BOUNDS_H

#include <cstddef>

constexpr size_t kMaxDevices = 1024;
constexpr size_t kMaxPortsOfDevice = 64;
constexpr size_t kMaxPorts = 4096; // of all devices together
constexpr size_t kMaxEvents = 65536;
constexpr size_t kMaxRecordingSize = size_t{64} * 1024 * 1024;
constexpr size_t kMaxFarEndBytes = size_t{64} * 1024 * 1024; // of all ports together

#endif
