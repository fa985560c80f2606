// SPDX-License-Identifier: MIT
//
// The table and what leads to its changes. How the thread waits and fetches is in
// device_watch_thread.cpp.
#include "adapters/linux/device_watch.h"

#include <stdlib.h>

#include <algorithm>
#include <fstream>
#include <stdexcept>
#include <utility>

#include "OSAdapt.h"
#include "adapters/shared/adapter_log.h"

using Lock = std::lock_guard<std::mutex>;

namespace {

// What the constructor found is still good when the host's first question comes with it.
constexpr std::chrono::milliseconds kFreshTime{10};

Arrivals::Instant Now() { return std::chrono::steady_clock::now(); }

// An event is old news when what we know is from the same moment or a later one.
bool IsOld(uint64_t sequence, uint64_t known) {
    return sequence != 0 && known != 0 && sequence <= known;
}

uint64_t LastEventOfKernel() {
    uint64_t sequence = 0;
    std::ifstream("/sys/kernel/uevent_seqnum") >> sequence;
    return sequence;
}

// Whatever its place in the device tree is.
bool IsSame(const PortFacts& one, const PortFacts& other) {
    return one.node == other.node && one.inode == other.inode;
}

const FactsRead* FindIn(const std::vector<FactsRead>& scan, const PortFacts& facts) {
    const auto found = std::find_if(
        scan.begin(), scan.end(), [&](const FactsRead& read) { return IsSame(read.facts, facts); });
    return found == scan.end() ? nullptr : &*found;
}

} // namespace

void DeviceWatch::Refresh() {
    const Lock lock(m_Mutex);
    if (!std::exchange(m_IsFresh, false) || Now() - m_Started > kFreshTime) {
        Compare();
        Publish();
        Wake();
    }
}

std::optional<DeviceTable::Port> DeviceWatch::Find(const std::string& node) {
    const Lock lock(m_Mutex);
    const DeviceTable::Port* port = m_Table.FindNode(node);
    return port == nullptr ? std::nullopt : std::optional<DeviceTable::Port>(*port);
}

// With the lock held from the second look to the entry: a removal that comes later finds the handle
// and lets its descriptor go.
int DeviceWatch::Enter(const DeviceTable::Port& port, HandleTable::Terminal terminal) {
    const Lock lock(m_Mutex);
    const DeviceTable::Port* present = m_Table.FindNode(port.facts.node);
    if (m_Stop || present == nullptr || present->arrival != port.arrival || IsReplaced(*present)) {
        throw std::runtime_error("its device went away while it was being opened");
    }
    const int handle = m_Handles.Add(port.facts.node, std::move(terminal));
    if (handle == OS_ADAPT_NO_HANDLE) {
        throw std::runtime_error("all handle numbers are used; restart the host");
    }
    return handle;
}

void DeviceWatch::OnEvent(const DeviceEvent& event, bool isWord) {
    if (event.action == DeviceEvent::Action::Removed) {
        OnRemoved(event);
    } else if (isWord) {
        OnWord(event);
    } else if (event.action == DeviceEvent::Action::Added) {
        OnAnnounced(event);
    }
}

// The kernel's event where udevd's is still to come.
void DeviceWatch::OnAnnounced(const DeviceEvent& event) {
    const DeviceTable::Port* known = m_Table.Find(event.sysPath);
    if (known != nullptr && !IsReplaced(*known)) {
        return; // the comparison was quicker
    }
    if (known == nullptr && IsOld(event.sequence, m_Compared)) {
        return;
    }
    Leave(event.sysPath);
    m_Arrivals.Announce(event.sysPath, event.sequence, Now());
}

void DeviceWatch::OnWord(const DeviceEvent& event) {
    const DeviceTable::Port* known = m_Table.Find(event.sysPath);
    const auto announced = m_Arrivals.SequenceOf(event.sysPath);
    if (known != nullptr && !IsReplaced(*known)) {
        return;
    }
    // Of one that was there before it.
    if (announced && event.sequence != 0 && event.sequence < *announced) {
        return;
    }
    if (known == nullptr && !announced && IsOld(event.sequence, m_Compared)) {
        return;
    }
    Leave(event.sysPath);
    Look(event.sysPath, event.sequence);
}

// What was there at the last comparison was not removed before it.
void DeviceWatch::OnRemoved(const DeviceEvent& event) {
    const DeviceTable::Port* known = m_Table.Find(event.sysPath);
    if (known != nullptr && !IsOld(event.sequence, std::max(known->sequence, m_Compared))) {
        Leave(event.sysPath);
    }
    const auto announced = m_Arrivals.SequenceOf(event.sysPath);
    if (announced && !IsOld(event.sequence, std::max(*announced, m_Compared))) {
        m_Arrivals.Drop(event.sysPath);
    }
}

// Its path is there, but it is another one; its removal was lost or is still to come.
bool DeviceWatch::IsReplaced(const DeviceTable::Port& port) const {
    const ino_t inode = SysInode(port.facts.sysPath);
    return inode != 0 && inode != port.facts.inode;
}

void DeviceWatch::Look(const std::string& sysPath, uint64_t sequence) {
    const FactsRead read = ReadFacts(m_Context.get(), sysPath);
    if (read.kind == FactsRead::Kind::Port) {
        m_Arrivals.Complete(read.facts, sequence, Now());
    } else if (read.kind == FactsRead::Kind::NoPort) {
        m_Arrivals.Drop(sysPath);
    } else if (m_Arrivals.IsOutOfPatience(sysPath, Now())) {
        LogError("a port is not reported, its device cannot be read: " + Printable(sysPath));
        m_Arrivals.Drop(sysPath);
    } else {
        m_Arrivals.LookAgain(sysPath, sequence, Now());
    }
}

// Takes in what has waited long enough.
void DeviceWatch::Settle() {
    for (const std::string& sysPath : m_Arrivals.TakeOverdue(Now())) {
        if (m_AwaitWord && m_Arrivals.IsOutOfPatience(sysPath, Now())) {
            LogInfo("udevd has not finished with '" + Printable(sysPath) + "'; taken as it is");
        }
        Look(sysPath, m_Arrivals.SequenceOf(sysPath).value_or(0));
    }
    for (const Arrivals::Port& port : m_Arrivals.TakeReady(Now())) {
        Admit(port);
    }
}

void DeviceWatch::Admit(const Arrivals::Port& port) {
    if (SysInode(port.facts.sysPath) != port.facts.inode) {
        return; // gone again; whatever stands there now has an event of its own, or a comparison
    }
    const DeviceTable::Port* holder = m_Table.FindNode(port.facts.node);
    if (holder != nullptr && IsSame(holder->facts, port.facts)) {
        m_Table.Move(std::string(holder->facts.sysPath), port.facts.sysPath);
        return;
    }
    if (holder != nullptr) {
        Leave(std::string(holder->facts.sysPath));
    }
    BeginChange(OS_ADAPT_DEVICE_INSERT);
    m_Table.Add(port.facts, port.sequence);
}

void DeviceWatch::Leave(const std::string& sysPath) {
    const DeviceTable::Port* port = m_Table.Find(sysPath);
    if (port == nullptr) {
        return;
    }
    m_Handles.KillPort(port->facts.node);
    BeginChange(OS_ADAPT_DEVICE_PULLOUT);
    m_Table.Remove(sysPath);
}

// The number is noted first: what happens during the scan is looked at again when its event comes.
void DeviceWatch::Compare() {
    const uint64_t last = LastEventOfKernel();
    Scan scan = ScanSystem();
    m_Compared = last;
    LeaveWhatIsGone(scan);
    EnterWhatIsNew(scan);
}

DeviceWatch::Scan DeviceWatch::ScanSystem() {
    const UdevEnumeration enumeration(udev_enumerate_new(m_Context.get()));
    if (enumeration == nullptr ||
        udev_enumerate_add_match_subsystem(enumeration.get(), "tty") < 0 ||
        udev_enumerate_scan_devices(enumeration.get()) < 0) {
        throw std::runtime_error("the system's list of terminals cannot be read");
    }
    Scan scan;
    for (udev_list_entry* entry = udev_enumerate_get_list_entry(enumeration.get());
         entry != nullptr; entry = udev_list_entry_get_next(entry)) {
        FactsRead read = ReadFacts(m_Context.get(), UdevText(udev_list_entry_get_name(entry)));
        if (read.kind != FactsRead::Kind::NoPort) {
            scan.push_back(std::move(read));
        }
    }
    return scan;
}

void DeviceWatch::LeaveWhatIsGone(const Scan& scan) {
    for (const DeviceTable::Port& port : m_Table.Ports()) {
        const FactsRead* read = FindIn(scan, port.facts);
        if (read == nullptr) {
            Leave(port.facts.sysPath);
        } else {
            m_Table.Move(port.facts.sysPath, read->facts.sysPath);
        }
    }
    // What was read of others may be of a device that has been replaced since.
    m_Arrivals.DropComplete();
}

void DeviceWatch::EnterWhatIsNew(Scan& scan) {
    std::sort(scan.begin(), scan.end(), [](const FactsRead& left, const FactsRead& right) {
        return StandsBefore(left.facts, right.facts);
    });
    for (const FactsRead& read : scan) {
        const std::string& sysPath = read.facts.sysPath;
        const bool isComplete = read.kind == FactsRead::Kind::Port;
        if (m_Table.Find(sysPath) != nullptr) {
            continue;
        }
        if (isComplete && (read.isInitialized || !m_AwaitWord)) {
            m_Arrivals.Drop(sysPath);
            Admit({read.facts, m_Compared});
        } else if (m_Arrivals.SequenceOf(sysPath)) {
            continue; // it waits already
        } else if (isComplete) {
            m_Arrivals.Announce(sysPath, 0, Now());
        } else {
            m_Arrivals.LookAgain(sysPath, 0, Now());
        }
    }
}

// A run of removals and a run of arrivals are told apart, so the table between them is published too.
void DeviceWatch::BeginChange(_OS_ADAPT_DEVICESTATUS_TYPE direction) {
    if (m_Unpublished && *m_Unpublished != direction) {
        Publish();
    }
    m_Unpublished = direction;
}

void DeviceWatch::Publish() {
    if (m_Unpublished) {
        m_Notifier.Publish(m_Table.Reported());
        m_Unpublished.reset();
    }
}
