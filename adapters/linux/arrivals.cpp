// SPDX-License-Identifier: MIT
#include "adapters/linux/arrivals.h"

#include <algorithm>
#include <utility>

#include "adapters/linux/device_table.h"

namespace {

bool IsBelow(const std::string& sysPath, const std::string& devicePath) {
    return sysPath.compare(0, devicePath.size() + 1, devicePath + "/") == 0;
}

} // namespace

void Arrivals::Announce(const std::string& sysPath, uint64_t sequence, Instant now) {
    Waiting waiting;
    waiting.port.sequence = sequence;
    waiting.end = now + kPatience;
    waiting.look = waiting.end;
    m_Ports[sysPath] = std::move(waiting);
}

void Arrivals::LookAgain(const std::string& sysPath, uint64_t sequence, Instant now) {
    if (m_Ports.count(sysPath) == 0) {
        Announce(sysPath, sequence, now);
    }
    Waiting& waiting = m_Ports[sysPath];
    waiting.isComplete = false;
    waiting.look = now + kLookAgain;
}

void Arrivals::Complete(const PortFacts& facts, uint64_t sequence, Instant now) {
    Announce(facts.sysPath, sequence, now);
    Waiting& waiting = m_Ports[facts.sysPath];
    waiting.port.facts = facts;
    waiting.isComplete = true;
    waiting.look = now + kTogether;
    // They wait together: the first one's end is everybody's.
    for (const auto& [path, other] : m_Ports) {
        if (other.isComplete && other.port.facts.devicePath == facts.devicePath) {
            waiting.look = std::min(waiting.look, other.look);
        }
    }
}

void Arrivals::Drop(const std::string& sysPath) { m_Ports.erase(sysPath); }

void Arrivals::DropComplete() {
    for (auto port = m_Ports.begin(); port != m_Ports.end();) {
        port = port->second.isComplete ? m_Ports.erase(port) : std::next(port);
    }
}

std::optional<uint64_t> Arrivals::SequenceOf(const std::string& sysPath) const {
    const auto found = m_Ports.find(sysPath);
    return found == m_Ports.end() ? std::nullopt
                                  : std::optional<uint64_t>(found->second.port.sequence);
}

bool Arrivals::IsOutOfPatience(const std::string& sysPath, Instant now) const {
    const auto found = m_Ports.find(sysPath);
    return found != m_Ports.end() && now >= found->second.end;
}

std::vector<std::string> Arrivals::TakeOverdue(Instant now) {
    std::vector<std::string> overdue;
    for (auto& [path, waiting] : m_Ports) {
        if (!waiting.isComplete && now >= waiting.look) {
            overdue.push_back(path);
            waiting.look = now + kLookAgain;
        }
    }
    return overdue;
}

std::vector<Arrivals::Port> Arrivals::TakeReady(Instant now) {
    std::vector<Port> ready;
    for (const auto& [path, waiting] : m_Ports) {
        if (IsReady(waiting, now)) {
            ready.push_back(waiting.port);
        }
    }
    for (const Port& port : ready) {
        m_Ports.erase(port.facts.sysPath);
    }
    std::sort(ready.begin(), ready.end(), [](const Port& left, const Port& right) {
        return StandsBefore(left.facts, right.facts);
    });
    return ready;
}

std::optional<Arrivals::Instant> Arrivals::Due() const {
    std::optional<Instant> due;
    for (const auto& [path, waiting] : m_Ports) {
        due = due ? std::min(*due, waiting.look) : waiting.look;
    }
    return due;
}

bool Arrivals::IsReady(const Waiting& waiting, Instant now) const {
    if (!waiting.isComplete) {
        return false;
    }
    if (now >= waiting.look) {
        return true;
    }
    return std::none_of(m_Ports.begin(), m_Ports.end(), [&](const auto& other) {
        return !other.second.isComplete && IsBelow(other.first, waiting.port.facts.devicePath);
    });
}
