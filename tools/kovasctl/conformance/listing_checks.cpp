// SPDX-License-Identifier: MIT
#include <sys/mman.h>
#include <unistd.h>

#include <map>
#include <vector>

#include "tools/kovasctl/conformance/checks.h"
#include "tools/kovasctl/conformance/timed.h"
#include "tools/kovasctl/conformance/trial.h"
#include "tools/kovasctl/conformance/verdict.h"

namespace {

using Roomy = std::unique_ptr<RoomyList>;

Roomy Answer(Trial& trial) {
    auto roomy = std::make_unique<RoomyList>();
    trial.Step("enumerating");
    if (trial.Adapter().Enumerate(OS_ADAPT_ENUM_ALL, &roomy->list) != OS_ADAPT_OK) {
        throw NotTried("the enumeration fails");
    }
    return roomy;
}

std::string Named(const _OS_ADAPT_DEVICEPORTINFO& device) {
    return "device '" + TextIn(device.szDeviceName) + "'";
}

template <size_t size>
void ExpectText(const char (&array)[size], const std::string& what, bool mayBeEmpty) {
    const std::string text = TextIn(array);
    if (text.size() == size) {
        throw Broken(what + " has no end within its " + std::to_string(size) + " bytes");
    }
    if (text.empty() && !mayBeEmpty) {
        throw Broken(what + " is empty");
    }
}

template <typename Value>
void ExpectNew(std::map<Value, std::string>& known, const Value& value, const std::string& owner,
               const std::string& what) {
    const auto [entry, isNew] = known.emplace(value, owner);
    if (!isNew) {
        throw Broken(what + " is that of " + entry->second + " and of " + owner);
    }
}

void ForEachDevice(const Roomy& roomy,
                   const std::function<void(const _OS_ADAPT_DEVICEPORTINFO&)>& look) {
    for (int d = 0; d < DeviceCount(roomy->list); ++d) {
        look(roomy->list.stDevice[d]);
    }
}

void ForEachPort(
    const Roomy& roomy,
    const std::function<void(const std::string& device, const _OS_ADAPT_PORTINFO&)>& look) {
    ForEachDevice(roomy, [&](const _OS_ADAPT_DEVICEPORTINFO& device) {
        for (int p = 0; p < PortCount(device); ++p) {
            look(Named(device), device.stPort[p]);
        }
    });
}

std::string Devices(const Roomy& roomy) {
    return std::to_string(DeviceCount(roomy->list)) + " devices with " +
           std::to_string(ToListing(roomy->list).size()) + " ports";
}

/// Zeroed pages between two that must not be touched.
class GuardedPages {
  public:
    explicit GuardedPages(size_t size)
        : m_Page(static_cast<size_t>(sysconf(_SC_PAGESIZE))),
          m_Inner((size + m_Page - 1) / m_Page * m_Page),
          m_Begin(static_cast<char*>(
              mmap(nullptr, m_Inner + 2 * m_Page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))) {
        if (m_Begin == MAP_FAILED ||
            mprotect(m_Begin + m_Page, m_Inner, PROT_READ | PROT_WRITE) != 0) {
            throw NotTried("no guarded memory to be had");
        }
    }
    GuardedPages(const GuardedPages&) = delete;
    GuardedPages& operator=(const GuardedPages&) = delete;

    char* First() const { return m_Begin + m_Page; }
    char* Last(size_t size) const { return First() + m_Inner - size; }

  private:
    size_t m_Page;
    size_t m_Inner;
    char* m_Begin; // stays: the process ends
};

void EnumerateInto(Trial& trial, char* place) {
    auto* list = reinterpret_cast<_OS_ADAPT_DEVICEPORTLIST*>(place);
    if (trial.Adapter().Enumerate(OS_ADAPT_ENUM_ALL, list) != OS_ADAPT_OK) {
        throw NotTried("the enumeration fails");
    }
}

std::vector<char> Copy(const Roomy& roomy) {
    const char* bytes = reinterpret_cast<const char*>(&roomy->list);
    return {bytes, bytes + sizeof roomy->list};
}

} // namespace

std::string CheckCounts(Trial& trial) {
    const Roomy roomy = Answer(trial);
    if (roomy->list.nDeviceCount != DeviceCount(roomy->list)) {
        throw Broken(std::to_string(roomy->list.nDeviceCount) + " devices");
    }
    ForEachDevice(roomy, [](const _OS_ADAPT_DEVICEPORTINFO& device) {
        if (device.nPortCount != PortCount(device)) {
            throw Broken(Named(device) + " has " + std::to_string(device.nPortCount) + " ports");
        }
    });
    return Devices(roomy);
}

std::string CheckTexts(Trial& trial) {
    const Roomy roomy = Answer(trial);
    ForEachDevice(roomy, [](const _OS_ADAPT_DEVICEPORTINFO& device) {
        ExpectText(device.szDeviceName, "the name of " + Named(device), false);
        ExpectText(device.szDeviceText, "the text of " + Named(device), true);
    });
    ForEachPort(roomy, [](const std::string& device, const _OS_ADAPT_PORTINFO& port) {
        ExpectText(port.szPortName, "the name of a port of " + device, false);
    });
    return "the texts of " + Devices(roomy);
}

std::string CheckDeviceNames(Trial& trial) {
    const Roomy roomy = Answer(trial);
    std::map<std::string, std::string> known;
    int number = 0;
    ForEachDevice(roomy, [&](const _OS_ADAPT_DEVICEPORTINFO& device) {
        ExpectNew(known, TextIn(device.szDeviceName), "entry " + std::to_string(++number),
                  "the name '" + TextIn(device.szDeviceName) + "'");
    });
    return Devices(roomy);
}

std::string CheckPortNames(Trial& trial) {
    const Roomy roomy = Answer(trial);
    std::map<std::string, std::string> known;
    ForEachPort(roomy, [&](const std::string& device, const _OS_ADAPT_PORTINFO& port) {
        ExpectNew(known, TextIn(port.szPortName), "a port of " + device,
                  "the name '" + TextIn(port.szPortName) + "'");
    });
    return Devices(roomy);
}

std::string CheckEmptyDevices(Trial& trial) {
    const Roomy roomy = Answer(trial);
    ForEachDevice(roomy, [](const _OS_ADAPT_DEVICEPORTINFO& device) {
        if (device.nPortCount == 0) {
            throw Broken(Named(device) + " has no port");
        }
    });
    return Devices(roomy);
}

std::string CheckProposedIds(Trial& trial) {
    const Roomy roomy = Answer(trial);
    std::map<int, std::string> known;
    ForEachPort(roomy, [&](const std::string&, const _OS_ADAPT_PORTINFO& port) {
        if (port.nPortID != 0) {
            ExpectNew(known, port.nPortID, "port '" + TextIn(port.szPortName) + "'",
                      "the identifier " + std::to_string(port.nPortID));
        }
    });
    return std::to_string(known.size()) + " of " + std::to_string(ToListing(roomy->list).size()) +
           " ports have a proposed identifier";
}

std::string CheckListBounds(Trial& trial) {
    const GuardedPages pages(sizeof(_OS_ADAPT_DEVICEPORTLIST));
    trial.Step("enumerating into a list with no memory behind it");
    EnumerateInto(trial, pages.Last(sizeof(_OS_ADAPT_DEVICEPORTLIST)));
    const GuardedPages others(sizeof(_OS_ADAPT_DEVICEPORTLIST));
    trial.Step("enumerating into a list with no memory before it");
    EnumerateInto(trial, others.First());
    return "lists with no memory behind and before them were filled";
}

// A device may really come or go between two of them; three pairs in a row are no accident.
std::string CheckSameAnswer(Trial& trial) {
    constexpr int kAttempts = 3;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        const Roomy first = Answer(trial);
        if (Copy(first) == Copy(Answer(trial))) {
            return "two answers with " + Devices(first) + " were alike, byte for byte";
        }
    }
    throw Broken("three times two answers differed that were asked for one after the other");
}
