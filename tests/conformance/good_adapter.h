// SPDX-License-Identifier: MIT
//
// A well-behaved adapter in memory, made to be spoilt: each culprit defines one function of it anew,
// which takes the place of the one here, because those here are weak.
//
// Two devices: "anchor" is always there, with the port "anchor-0", which sends everything back, and
// "anchor-full", whose far end takes 64 KiB and never reads. "probe", with the port "probe-0", is there
// while the file "probe" is in the directory CONFORMANCE_DEVICES.
#ifndef KOVASMGR_TESTS_CONFORMANCE_GOOD_ADAPTER_H
#define KOVASMGR_TESTS_CONFORMANCE_GOOD_ADAPTER_H

#include <cstddef>

#include "OSAdapt.h"

namespace good {

// The seven as they should be. The exported ones are weak and call these.
int Register(OS_ADAPT_STATUS_CALLBACK callback);
int UnRegister();
int Open(const char* portName, int* handle);
int Close(int handle);
int Write(int handle, const void* data, long length, long* written);
int Read(int handle, void* buffer, long size, long* read);
int Enumerate(int which, _OS_ADAPT_DEVICEPORTLIST* list);

// What goes on deeper inside; weak too.
void Tell(OS_ADAPT_STATUS_CALLBACK callback, _OS_ADAPT_DEVICESTATUS_TYPE status);
size_t StackSize();             // of the notifying thread
bool WaitsForNotice();          // an un-registration, while a notice runs
bool KnowsItself();             // an un-registration on the notifying thread
bool RemembersLastAnswer();     // a registration
bool SeesChangesDuringNotice(); // the notifying thread
bool ClosesDescriptorAtDeath(); // a port that is pulled out
bool DropsOldHandle();          // an opening of what is open
bool ReclaimsOpenPorts();       // an un-registration, and unloading
int NextHandle(int last);       // with the lock held

// What a culprit may ask.
bool IsProbeThere();
bool IsTelling(_OS_ADAPT_DEVICESTATUS_TYPE status);
bool IsInsideNotice(_OS_ADAPT_DEVICESTATUS_TYPE status); // the calling thread
bool IsKnownPort(const char* portName);
bool IsOpen(const char* portName);
bool IsDead(int handle);
bool IsTaken(int handle); // with the lock held: for NextHandle

/// Fills a zeroed list.
void Fill(_OS_ADAPT_DEVICEPORTLIST& list, bool isProbeThere);

/// Adds a device with one port, or with none for a null name.
void Add(_OS_ADAPT_DEVICEPORTLIST& list, const char* deviceName, const char* portName);

} // namespace good

#endif
