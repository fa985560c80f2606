// SPDX-License-Identifier: MIT
#include "adapters/spy/recording.h"

#include <algorithm>
#include <utility>

#include "adapters/shared/cancel_shield.h"
#include "adapters/spy/call_line.h"
#include "adapters/spy/json_line.h"

namespace {

// The first line's beginning, which only this process can have written.
std::string Identity() {
    return "{\"kovasmgr_recording\":1,\"process\":\"" + ProcessIdentity() + "\",\"zero_ns\":";
}

bool IsIdleRead(const Call& call) {
    return call.kind == OSADAPT_SPY_READ && call.HasSucceeded() && call.count == 0 &&
           call.fault.empty();
}

} // namespace

Recording::Recording(std::string path, std::string adapterFile, bool hasIdleReads)
    : m_AdapterFile(std::move(adapterFile)), m_HasIdleReads(hasIdleReads),
      m_File(std::move(path), Identity()) {}

void Recording::Add(const Call& call) {
    if (!m_HasIdleReads && IsIdleRead(call)) {
        return;
    }
    const std::string members =
        CallMembers(call, m_Threads.Own()); // the long part, before others have to wait
    const CancelShield shield;
    const std::lock_guard<std::mutex> lock(m_Mutex);
    if (!BeReady(call.startNs)) {
        return;
    }
    const int64_t time = std::max<int64_t>(0, call.startNs - m_ZeroNs) / 1000;
    const std::string line = "{\"n\":" + std::to_string(m_Lines) +
                             ",\"t_us\":" + std::to_string(time) + "," + members + "}\n";
    m_Lines += m_File.Append(line) ? 1 : 0;
}

void Recording::Rest() {
    const CancelShield shield;
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_File.Close();
}

bool Recording::BeReady(int64_t now) {
    if (m_File.IsOpen()) {
        return true;
    }
    return m_File.Open() && (m_File.IsBegun() ? GoOn() : Begin(now));
}

// The lines that are there are counted, unless this object has written them itself.
bool Recording::GoOn() {
    if (m_Lines == 0) {
        std::string first;
        m_File.ReadAll([&](std::string_view piece) {
            first += m_Lines == 0 ? piece : "";
            m_Lines += std::count(piece.begin(), piece.end(), '\n');
        });
        m_ZeroNs = std::stoll(first.substr(Identity().size()));
    }
    return true;
}

bool Recording::Begin(int64_t now) {
    m_ZeroNs = now;
    m_Lines = 1;
    return m_File.Append(Identity() + std::to_string(m_ZeroNs) +
                         ",\"adapter\":" + JsonText(m_AdapterFile) + "}\n");
}
