// SPDX-License-Identifier: MIT
#include <algorithm>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "tools/kovasctl/conformance/checks.h"
#include "tools/kovasctl/conformance/notice_book.h"
#include "tools/kovasctl/conformance/provocation.h"
#include "tools/kovasctl/conformance/resources.h"
#include "tools/kovasctl/conformance/timed.h"
#include "tools/kovasctl/conformance/trial.h"
#include "tools/kovasctl/conformance/verdict.h"

namespace {

constexpr double kAtOnce = 1; // second; generous to a busy machine

struct OpenedPort {
    std::string name;
    int handle;
    std::map<int, std::string> descriptors; // what came with the opening
};

using OpenedPorts = std::vector<OpenedPort>;

// Only what has a path keeps a node; what else an adapter opens with a port may be shared by all.
OpenedPort OpenWatched(Trial& trial, const std::string& name) {
    const auto before = Descriptors();
    OpenedPort port{name, trial.Open(name), {}};
    for (const auto& entry : Descriptors()) {
        if (before.count(entry.first) == 0 && entry.second.compare(0, 1, "/") == 0) {
            port.descriptors.insert(entry);
        }
    }
    return port;
}

OpenedPorts OpenAll(Trial& trial) {
    OpenedPorts ports;
    for (const std::string& name : trial.Options().ports) {
        ports.push_back(OpenWatched(trial, name));
    }
    return ports;
}

/// Pulls the device out.
/// @return the first of the ports that went with it
OpenedPort PullOne(Trial& trial, const OpenedPorts& ports) {
    UnplugUntilEnd(trial);
    auto gone = ports.end();
    HoldsWithin(trial.Moment(), [&] {
        const Listing left = trial.Enumerate();
        gone = std::find_if(ports.begin(), ports.end(),
                            [&](const OpenedPort& port) { return !HasPort(left, port.name); });
        return gone != ports.end();
    });
    if (gone == ports.end()) {
        throw NotTried("the command of --unplug pulls none of the ports that --port names");
    }
    return *gone;
}

OpenedPort PullOpenPort(Trial& trial) {
    trial.Register();
    return PullOne(trial, OpenAll(trial));
}

std::string DescriptorsStillOpen(const OpenedPort& port) {
    const auto now = Descriptors();
    std::string text;
    for (const auto& entry : port.descriptors) {
        if (now.count(entry.first) != 0 && now.at(entry.first) == entry.second) {
            text += (text.empty() ? "" : ", ") + std::to_string(entry.first) + " (" + entry.second +
                    ")";
        }
    }
    return text;
}

/// Handles that took a write inside a notice.
struct WritesInside {
    std::mutex mutex;
    std::vector<int> taken;
};

} // namespace

std::string CheckDeadReads(Trial& trial) {
    constexpr int kReads = 20;
    const OpenedPort port = PullOpenPort(trial);
    int failures = 0;
    trial.Step("reading from '" + port.name + "', which is gone");
    for (int i = 0; i < kReads; ++i) {
        char buffer[8192];
        long count = 0; // whether it is set at all: R9b
        if (trial.Adapter().Read(port.handle, buffer, 4096, &count) != OS_ADAPT_OK) {
            ++failures;
        } else if (failures > 0 && count != 0) {
            throw Broken("a read of the dead port gave the count " + std::to_string(count));
        }
    }
    if (failures != 1) {
        throw Broken(std::to_string(failures) + " of 20 reads of the dead port failed");
    }
    return "of 20 reads of '" + port.name + "' one failed, and the later ones gave 0 bytes";
}

std::string CheckDeadWrites(Trial& trial) {
    const OpenedPort port = PullOpenPort(trial);
    trial.Step("writing to '" + port.name + "', which is gone");
    long count = 0;
    const Stopwatch watch;
    const int result = trial.Adapter().Write(port.handle, kLineEnd, sizeof kLineEnd, &count);
    if (result == OS_ADAPT_OK || watch.Seconds() > kAtOnce) {
        throw Broken("a write to the dead port " +
                     std::string(result == OS_ADAPT_OK ? "succeeded" : "failed") + " after " +
                     DurationText(watch.Seconds()));
    }
    return "a write failed after " + DurationText(watch.Seconds());
}

std::string CheckGonePortOpens(Trial& trial) {
    const OpenedPort port = PullOpenPort(trial);
    trial.Step("opening '" + port.name + "', which is gone");
    int handle = OS_ADAPT_NO_HANDLE;
    const Stopwatch watch;
    const int result = trial.Adapter().Open(port.name.c_str(), &handle);
    if (result == OS_ADAPT_OK || watch.Seconds() > kAtOnce) {
        throw Broken("opening the port that is gone " +
                     std::string(result == OS_ADAPT_OK ? "succeeded" : "failed") + " after " +
                     DurationText(watch.Seconds()));
    }
    return "opening it failed after " + DurationText(watch.Seconds());
}

std::string CheckDeadClose(Trial& trial) {
    const OpenedPort port = PullOpenPort(trial);
    trial.Step("closing '" + port.name + "', which is gone");
    const int result = trial.Adapter().Close(port.handle);
    if (result != OS_ADAPT_OK) {
        throw Broken("closing the dead handle returned " + std::to_string(result));
    }
    return "the dead handle closed";
}

std::string CheckDeadAtOnce(Trial& trial) {
    trial.Register();
    const OpenedPorts ports = OpenAll(trial);
    const auto writes = std::make_shared<WritesInside>();
    const Subject* adapter = &trial.Adapter();
    NoticeBook::Instance().SetAction([=](_OS_ADAPT_DEVICESTATUS_TYPE) {
        for (const OpenedPort& port : ports) {
            long count = 0;
            const std::lock_guard<std::mutex> lock(writes->mutex);
            if (adapter->Write(port.handle, kLineEnd, 1, &count) == OS_ADAPT_OK) {
                writes->taken.push_back(port.handle);
            }
        }
    });
    const OpenedPort port = PullOne(trial, ports);
    const std::lock_guard<std::mutex> lock(writes->mutex);
    if (std::count(writes->taken.begin(), writes->taken.end(), port.handle) != 0) {
        throw Broken("'" + port.name + "' still took a write inside the notice of its removal");
    }
    return "'" + port.name + "' refused a write inside the notice of its removal";
}

std::string CheckDescriptorIsClosed(Trial& trial) {
    const OpenedPort port = PullOpenPort(trial);
    if (port.descriptors.empty()) {
        throw NotTried("opening '" + port.name + "' opens no node");
    }
    trial.Step("waiting for the descriptors of '" + port.name + "' to be closed");
    if (!HoldsWithin(trial.Moment(), [&] { return DescriptorsStillOpen(port).empty(); })) {
        throw Broken("'" + port.name + "' is gone, and still open: descriptor " +
                     DescriptorsStillOpen(port));
    }
    return std::to_string(port.descriptors.size()) + " descriptors of '" + port.name +
           "' were closed";
}
