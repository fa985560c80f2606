// SPDX-License-Identifier: MIT
//
// What holds of the manager's two containers whatever an adapter enumerates. A rule that is broken
// ends the process.
#ifndef KOVASMGR_TESTS_PROOF_FUZZ_CONTAINER_RULES_H
#define KOVASMGR_TESTS_PROOF_FUZZ_CONTAINER_RULES_H

#include <vector>

#include "KOVASMgr.h"
#include "devices/records.h"

using Ports = std::vector<_PORT_>;
using Devices = std::vector<_COMM_MGR_DEVICE_INFO_>;

/// Whether no two ports have one number. An adapter may propose a number that is taken, and then a
/// removal by this number drops one port here and several there.
bool HasUniqueNumbers(const Ports& ports);

/// Of the prepared ports alone: names are there once, texts fit, handles are open ones.
void CheckPorts(const Ports& ports);

/// Of the tree: names are there once, no device is empty, and each of its ports is a prepared one of
/// the same device; with unique numbers also the other way round.
/// @param areNumbersUnique  now, and at every removal before
void CheckTree(const Devices& devices, const Ports& ports, bool areNumbersUnique);

/// Of what a host is told, which is the tree.
void CheckList(const _KOVAMGR_DEVICEINFOLIST& list, const Devices& devices);

/// An arrival leaves all ports as they are and adds those of the list that were not known, each with
/// its texts.
void CheckArrival(const Ports& before, const Ports& after, const _OS_ADAPT_DEVICEPORTLIST& list);

/// A removal leaves the order and adds none.
void CheckRemoval(const Ports& before, const Ports& after);

/// All else changes nothing.
void CheckUnchanged(const Ports& before, const Ports& after);

#endif
