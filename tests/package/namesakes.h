// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PACKAGE_NAMESAKES_H
#define KOVASMGR_TESTS_PACKAGE_NAMESAKES_H

/// How often a function of the host's own that has the name of an exported one was called.
int NamesakeCalls();

/// Lets the library run through all it does, and checks that it called none of the host's
/// functions, and that the host's calls reached none of the library's.
void CheckThatNamesakesStayApart();

#endif
