// SPDX-License-Identifier: MIT
//
// One function for each rule; the table in rules.cpp says what each is about.
#ifndef KOVASCTL_CONFORMANCE_CHECKS_H
#define KOVASCTL_CONFORMANCE_CHECKS_H

#include <string>

class Trial;

// interface_checks.cpp
std::string CheckSymbols(Trial& trial);
std::string CheckResults(Trial& trial);
std::string CheckPortCalls(Trial& trial);
std::string CheckNullArguments(Trial& trial);

// thread_checks.cpp
std::string CheckThreadPerCall(Trial& trial);
std::string CheckRegistrationOverlap(Trial& trial);
std::string CheckCancelledWrite(Trial& trial);

// registration_checks.cpp
std::string CheckRegistrationIsPrompt(Trial& trial);
std::string CheckRegistrationDuringNotice(Trial& trial);
std::string CheckRegistrationReplaces(Trial& trial);
std::string CheckUnRegistrationAlone(Trial& trial);
std::string CheckUnRegistrationWaits(Trial& trial);
std::string CheckSilenceAfterUnRegistration(Trial& trial);
std::string CheckUnRegistrationInNotice(Trial& trial);

// notice_checks.cpp
std::string CheckNoticeFromOutside(Trial& trial);
std::string CheckCallsInNotice(Trial& trial);
std::string CheckCallsBesideNotice(Trial& trial);
std::string CheckNoticeStack(Trial& trial);
std::string CheckChangesAreTold(Trial& trial);
std::string CheckChangeBeforeRegistration(Trial& trial);
std::string CheckChangeDuringNotice(Trial& trial);

// answer_checks.cpp
std::string CheckPullOutAnswer(Trial& trial);
std::string CheckInsertionAnswer(Trial& trial);
std::string CheckFrozenAnswer(Trial& trial);
std::string CheckNoticeMatchesAnswer(Trial& trial);

// unload_checks.cpp
std::string CheckNothingIsLeft(Trial& trial);
std::string CheckItUnloads(Trial& trial);
std::string CheckSecondLoad(Trial& trial);
std::string CheckUnloadWithOpenPorts(Trial& trial);

// transfer_checks.cpp
std::string CheckReadReturns(Trial& trial);
std::string CheckReadCount(Trial& trial);
std::string CheckReadBuffer(Trial& trial);
std::string CheckWriteCount(Trial& trial);
std::string CheckStalledWriteEnds(Trial& trial);
std::string CheckShortWrite(Trial& trial);

// removal_checks.cpp
std::string CheckDeadReads(Trial& trial);
std::string CheckDeadWrites(Trial& trial);
std::string CheckGonePortOpens(Trial& trial);
std::string CheckDeadClose(Trial& trial);
std::string CheckDeadAtOnce(Trial& trial);
std::string CheckDescriptorIsClosed(Trial& trial);

// handle_checks.cpp
std::string CheckHandleValue(Trial& trial);
std::string CheckUnknownPort(Trial& trial);
std::string CheckHandleKept(Trial& trial);
std::string CheckHandlesAreFresh(Trial& trial);
std::string CheckUnknownHandles(Trial& trial);
std::string CheckClosedHandle(Trial& trial);
std::string CheckOpenTwice(Trial& trial);
std::string CheckOldHandle(Trial& trial);

// listing_checks.cpp
std::string CheckCounts(Trial& trial);
std::string CheckTexts(Trial& trial);
std::string CheckDeviceNames(Trial& trial);
std::string CheckPortNames(Trial& trial);
std::string CheckEmptyDevices(Trial& trial);
std::string CheckProposedIds(Trial& trial);
std::string CheckListBounds(Trial& trial);
std::string CheckSameAnswer(Trial& trial);

#endif
