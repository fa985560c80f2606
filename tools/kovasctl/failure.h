// SPDX-License-Identifier: MIT
//
// How a command ends early. main turns each into a message and an exit status; what stands on the
// stack restores the terminal and releases the library on the way there.
#ifndef KOVASCTL_FAILURE_H
#define KOVASCTL_FAILURE_H

#include <stdexcept>
#include <string>

enum ExitStatus { kDone = 0, kFailed = 1, kWrongUse = 2, kSignalBase = 128 };

/// It did not work: exit status 1.
class Failure : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The command line makes no sense: exit status 2.
class WrongUse : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// A signal asked to end, or the reader of standard output went away (SIGPIPE): exit status 128 and
/// the signal's number, without a message.
struct Interrupted {
    int signal;
};

#endif
