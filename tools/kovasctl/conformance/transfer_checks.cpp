// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstring>
#include <vector>

#include "tools/kovasctl/conformance/checks.h"
#include "tools/kovasctl/conformance/stall.h"
#include "tools/kovasctl/conformance/timed.h"
#include "tools/kovasctl/conformance/trial.h"
#include "tools/kovasctl/conformance/verdict.h"

namespace {

constexpr long kAsked = 4096; // what the manager asks for
constexpr long kPoison = -77777;
constexpr char kUntouched = '\x5a';

// What a host takes for waiting: it asks every 10 ms. A busy machine delays some reads, not half.
constexpr double kSlow = 0.02;
constexpr double kVerySlow = 2;

struct TimedReads {
    double median;
    double longest;
    size_t count;
};

TimedReads MeasureReads(const Subject& adapter, int handle) {
    constexpr size_t kReads = 100;
    constexpr double kEnough = 1.5; // seconds
    std::vector<double> times;
    const Stopwatch all;
    while (times.size() < kReads && all.Seconds() < kEnough) {
        char buffer[2 * kAsked];
        long count = 0;
        const Stopwatch one;
        adapter.Read(handle, buffer, kAsked, &count);
        times.push_back(one.Seconds());
    }
    std::sort(times.begin(), times.end());
    return {times[times.size() / 2], times.back(), times.size()};
}

void ExpectQuick(const TimedReads& reads, const std::string& port) {
    if (reads.median > kSlow || reads.longest > kVerySlow) {
        throw Broken("'" + port + "': of " + std::to_string(reads.count) + " reads half took " +
                     DurationText(reads.median) + " or more, the longest " +
                     DurationText(reads.longest));
    }
}

void ExpectCount(const std::string& call, long count, long most) {
    if (count == kPoison) {
        throw Broken(call + " returned 30000 and did not set the count");
    }
    if (count < 0 || count > most) {
        throw Broken(call + " returned 30000 with the count " + std::to_string(count) + ", of " +
                     std::to_string(most) + " at most");
    }
}

/// One read into a buffer that is looked at afterwards.
/// @return how many bytes came
long ReadWatched(Trial& trial, int handle, long size) {
    std::vector<char> buffer(2 * kAsked, kUntouched);
    long count = 0;
    if (trial.Adapter().Read(handle, buffer.data(), size, &count) != OS_ADAPT_OK) {
        throw NotTried("a read fails, see R0c");
    }
    const auto begin = buffer.begin() + std::clamp<long>(count, 0, size);
    const auto touched =
        std::find_if(begin, buffer.end(), [](char byte) { return byte != kUntouched; });
    if (touched != buffer.end() || count > size) {
        throw Broken("a read of at most " + std::to_string(size) + " bytes gave the count " +
                     std::to_string(count) + " and wrote byte " +
                     std::to_string(touched - buffer.begin() + 1));
    }
    return count;
}

long ReadsWithBytes(Trial& trial, const std::string& port) {
    const int handle = trial.Open(port);
    long found = 0;
    for (const long size : {1L, 2L, 7L, kAsked}) {
        long written = 0;
        trial.Adapter().Write(handle, kLineEnd, sizeof kLineEnd, &written);
        trial.Step("reading at most " + std::to_string(size) + " bytes from '" + port + "'");
        constexpr double kForAnAnswer = 0.15; // seconds; far ends that do not answer cost that
        const bool hasCome =
            HoldsWithin(kForAnAnswer, [&] { return ReadWatched(trial, handle, size) > 0; });
        found += hasCome ? 1 : 0;
    }
    return found;
}

} // namespace

std::string CheckReadReturns(Trial& trial) {
    std::string seen;
    for (const std::string& port : trial.Options().ports) {
        const int handle = trial.Open(port);
        trial.Step("reading from '" + port + "'");
        const TimedReads reads = MeasureReads(trial.Adapter(), handle);
        ExpectQuick(reads, port);
        seen += (seen.empty() ? "" : "; ") + ("'" + port + "': " + std::to_string(reads.count)) +
                " reads, half within " + DurationText(reads.median) + ", the longest " +
                DurationText(reads.longest);
    }
    return seen;
}

std::string CheckReadCount(Trial& trial) {
    constexpr int kReads = 10;
    for (const std::string& port : trial.Options().ports) {
        const int handle = trial.Open(port);
        for (int i = 0; i < kReads; ++i) {
            char buffer[2 * kAsked];
            long count = kPoison;
            if (trial.Adapter().Read(handle, buffer, kAsked, &count) == OS_ADAPT_OK) {
                ExpectCount("OS_ADAPT_Read", count, kAsked);
            }
        }
    }
    return "10 reads of each port set it";
}

std::string CheckReadBuffer(Trial& trial) {
    long found = 0;
    for (const std::string& port : trial.Options().ports) {
        found += ReadsWithBytes(trial, port);
    }
    if (found == 0) {
        throw NotTried("nothing arrived at the ports, also after a line end was written");
    }
    return std::to_string(found) + " reads with bytes, of 1, 2, 7 and 4096 at most";
}

std::string CheckWriteCount(Trial& trial) {
    for (const std::string& port : trial.Options().ports) {
        const int handle = trial.Open(port);
        for (const long length : {0L, 1L, 2L}) {
            long count = kPoison;
            trial.Step("writing " + std::to_string(length) + " bytes to '" + port + "'");
            if (trial.Adapter().Write(handle, kLineEnd, length, &count) == OS_ADAPT_OK) {
                ExpectCount("OS_ADAPT_Write of " + std::to_string(length) + " bytes", count,
                            length);
            }
        }
    }
    return "writes of 0, 1 and 2 bytes to each port set it";
}

std::string CheckStalledWriteEnds(Trial& trial) {
    const double margin = std::max(1.0, trial.Options().writeBound);
    double longest = 0;
    for (const std::string& port : trial.Options().stalledPorts) {
        const Stall stall = StallPort(trial, port);
        longest = std::max(longest, stall.longest);
        if (longest > trial.Options().writeBound + margin) {
            throw Broken("a write to '" + port + "' took " + DurationText(longest));
        }
    }
    return "the longest write took " + DurationText(longest) + ", with far ends that do not read";
}

std::string CheckShortWrite(Trial& trial) {
    for (const std::string& port : trial.Options().stalledPorts) {
        const Stall stall = StallPort(trial, port);
        if (stall.result != OS_ADAPT_OK) {
            throw Broken("a write that '" + port + "' had no room for returned " +
                         std::to_string(stall.result));
        }
        long count = kPoison;
        const std::string data(kStallPiece, '\n');
        const int result = trial.Adapter().Write(stall.handle, data.data(), kStallPiece, &count);
        if (result != OS_ADAPT_OK) {
            throw Broken("a write to '" + port + "', which is full, returned " +
                         std::to_string(result));
        }
        ExpectCount("OS_ADAPT_Write to a full port", count, kStallPiece);
    }
    return "writes to ports that were full succeeded with short counts";
}
