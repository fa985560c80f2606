// SPDX-License-Identifier: MIT
//
// kovasctl: shows, watches and talks to the communication ports of attached devices.
#include <clocale>
#include <exception>

#include "tools/kovasctl/command_line.h"
#include "tools/kovasctl/failure.h"
#include "tools/kovasctl/signals.h"
#include "tools/kovasctl/streams.h"

namespace {

int Run(int argc, char** argv) {
    PrepareStreams();
    CatchSignals();
    std::setlocale(LC_CTYPE, ""); // widths of characters; numbers stay as programs read them
    return RunCommandLine(argc, argv);
}

int End(const char* message, int status) {
    Message(message);
    return status;
}

} // namespace

int main(int argc, char** argv) {
    try {
        return Run(argc, argv);
    } catch (const Interrupted& interrupted) {
        return kSignalBase + interrupted.signal;
    } catch (const WrongUse& wrongUse) {
        return End(wrongUse.what(), kWrongUse);
    } catch (const std::exception& failure) {
        return End(failure.what(), kFailed);
    }
}
