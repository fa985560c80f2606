// SPDX-License-Identifier: MIT
//
// An adapter that crashes when it is loaded.
#include <csignal>

namespace {

struct Crash {
    Crash() {
        std::signal(SIGABRT, SIG_DFL); // the sanitizers' own handlers would write a report
        std::raise(SIGABRT);
    }
};

const Crash kCrash;

} // namespace
