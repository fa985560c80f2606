// SPDX-License-Identifier: MIT
#include <climits>
#include <set>

#include "tools/kovasctl/conformance/checks.h"
#include "tools/kovasctl/conformance/trial.h"
#include "tools/kovasctl/conformance/verdict.h"

namespace {

constexpr const char* kNobody = "there is no port of this name";
constexpr int kUnknownHandles[] = {-1, 0, 12345, 1 << 24, INT_MAX, INT_MIN};
constexpr int kOpenings = 20; // of each port

void ExpectRefused(const std::string& call, int handle, int result) {
    if (result == OS_ADAPT_OK) {
        throw Broken("OS_ADAPT_" + call + " took handle " + std::to_string(handle));
    }
}

void ExpectUnknown(const Subject& adapter, int handle) {
    long count = 0;
    char buffer[8192];
    ExpectRefused("Write", handle, adapter.Write(handle, kLineEnd, sizeof kLineEnd, &count));
    ExpectRefused("Read", handle, adapter.Read(handle, buffer, 4096, &count));
    ExpectRefused("ClosePort", handle, adapter.Close(handle));
}

int OpenAnew(Trial& trial, const std::string& port, int old) {
    int handle = OS_ADAPT_NO_HANDLE;
    trial.Step("opening '" + port + "' while it is open");
    const int result = trial.Adapter().Open(port.c_str(), &handle);
    if (result != OS_ADAPT_OK) {
        throw Broken("opening '" + port + "' while it is open returned " + std::to_string(result));
    }
    if (handle == old || handle == OS_ADAPT_NO_HANDLE) {
        throw Broken("opening '" + port + "' while it is open gave the handle " +
                     std::to_string(handle));
    }
    return handle;
}

long BytesReadFrom(const Subject& adapter, int handle) {
    char buffer[8192];
    long count = 0;
    const int result = adapter.Read(handle, buffer, 4096, &count);
    return result == OS_ADAPT_OK ? count : 0;
}

} // namespace

std::string CheckHandleValue(Trial& trial) {
    std::string handles;
    for (const std::string& port : trial.Options().ports) {
        int handle = 0;
        trial.Step("opening '" + port + "'");
        if (trial.Adapter().Open(port.c_str(), &handle) != OS_ADAPT_OK) {
            throw NotTried("port '" + port + "' does not open");
        }
        if (handle == OS_ADAPT_NO_HANDLE) {
            throw Broken("'" + port + "' opened with the handle -1");
        }
        handles += (handles.empty() ? "" : ", ") + std::to_string(handle);
    }
    return "handles given: " + handles;
}

std::string CheckUnknownPort(Trial& trial) {
    for (const char* name : {kNobody, ""}) {
        int handle = OS_ADAPT_NO_HANDLE;
        trial.Step(std::string("opening '") + name + "'");
        if (trial.Adapter().Open(name, &handle) == OS_ADAPT_OK) {
            throw Broken(std::string("the port '") + name + "' opened");
        }
    }
    return "two names that no port has were refused";
}

std::string CheckHandleKept(Trial& trial) {
    int handle = OS_ADAPT_NO_HANDLE;
    if (trial.Adapter().Open(kNobody, &handle) == OS_ADAPT_OK) {
        throw NotTried("no opening fails");
    }
    if (handle != OS_ADAPT_NO_HANDLE) {
        throw Broken("a failed opening stored the handle " + std::to_string(handle));
    }
    return "the handle was still -1";
}

std::string CheckHandlesAreFresh(Trial& trial) {
    std::set<int> given;
    for (int round = 0; round < kOpenings; ++round) {
        for (const std::string& port : trial.Options().ports) {
            trial.Step("opening '" + port + "' again");
            const int handle = trial.Open(port);
            if (!given.insert(handle).second) {
                throw Broken("opening " + std::to_string(given.size() + 1) + " gave the handle " +
                             std::to_string(handle) + " again");
            }
            trial.Adapter().Close(handle);
        }
    }
    return std::to_string(given.size()) + " openings gave as many handles";
}

std::string CheckUnknownHandles(Trial& trial) {
    for (const int handle : kUnknownHandles) {
        trial.Step("using the handle " + std::to_string(handle) + ", which was never given");
        ExpectUnknown(trial.Adapter(), handle);
    }
    return "write, read and close refused six handles that were never given";
}

std::string CheckClosedHandle(Trial& trial) {
    for (const std::string& port : trial.Options().ports) {
        const int handle = trial.Open(port);
        if (trial.Adapter().Close(handle) != OS_ADAPT_OK) {
            throw NotTried("port '" + port + "' does not close, see R0c");
        }
        trial.Step("using a handle of '" + port + "' that is closed");
        ExpectUnknown(trial.Adapter(), handle);
    }
    return "write, read and a second close were refused";
}

std::string CheckOpenTwice(Trial& trial) {
    for (const std::string& port : trial.Options().ports) {
        const int handle = OpenAnew(trial, port, trial.Open(port));
        long count = 0;
        if (trial.Adapter().Write(handle, kLineEnd, sizeof kLineEnd, &count) != OS_ADAPT_OK) {
            throw Broken("the second handle of '" + port + "' takes no write");
        }
    }
    return "each port opened a second time, with a handle that works";
}

std::string CheckOldHandle(Trial& trial) {
    for (const std::string& port : trial.Options().ports) {
        const int old = trial.Open(port);
        OpenAnew(trial, port, old);
        long count = 0;
        trial.Step("using the old handle of '" + port + "'");
        if (trial.Adapter().Write(old, kLineEnd, sizeof kLineEnd, &count) == OS_ADAPT_OK) {
            throw Broken("the old handle of '" + port + "' still takes writes");
        }
        if (BytesReadFrom(trial.Adapter(), old) > 0) {
            throw Broken("the old handle of '" + port + "' still gives bytes");
        }
    }
    return "the old handle reached nothing";
}
