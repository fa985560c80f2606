// SPDX-License-Identifier: MIT
//
// Counts what the model runs into; changes nothing.
#include <algorithm>
#include <set>

#include "tests/proof/model/model.h"
#include "tests/proof/model/model_text.h"

namespace model {
namespace {

template <std::size_t size> bool IsCut(const char (&array)[size]) { return array[size - 1] != 0; }

bool HasCutText(const _OS_ADAPT_DEVICEPORTINFO& entry) {
    return IsCut(entry.szDeviceName) || IsCut(entry.szDeviceText) ||
           std::any_of(entry.stPort, entry.stPort + 16,
                       [](const _OS_ADAPT_PORTINFO& port) { return IsCut(port.szPortName); });
}

bool HasPort(const _OS_ADAPT_DEVICEPORTINFO& entry, const Port& port) {
    return std::any_of(entry.stPort, entry.stPort + 16, [&](const _OS_ADAPT_PORTINFO& other) {
        return Text(other.szPortName) == port.name;
    });
}

} // namespace

void Model::CountList() {
    std::set<std::string> names;
    CountIf(m_List.nDeviceCount > 64, Quirk::kCountBeyondArray);
    CountIf(m_List.nDeviceCount < 0, Quirk::kCountNegative);
    for (int i = 0; i < std::min(m_List.nDeviceCount, 64); ++i) {
        const _OS_ADAPT_DEVICEPORTINFO& entry = m_List.stDevice[i];
        CountIf(entry.nPortCount > 16, Quirk::kCountBeyondArray);
        CountIf(entry.nPortCount < 0, Quirk::kCountNegative);
        CountIf(HasCutText(entry), Quirk::kTextCut);
        const bool isNewName =
            entry.nPortCount <= 0 || names.insert(Text(entry.szDeviceName)).second;
        CountIf(!isNewName, Quirk::kDevicesMerged);
    }
}

// Before the port is added.
void Model::CountNumber(int id, int proposed, int lastBefore) {
    const bool isTaken = FindPort(id) != nullptr;
    CountIf(isTaken && proposed == 0, Quirk::kNumberRepeated);
    CountIf(isTaken && proposed != 0, Quirk::kProposedNumberTaken);
    CountIf(proposed == 0 && id > lastBefore + 1, Quirk::kNumberSkipped);
}

void Model::CountUnchanged(const Device& device, const _OS_ADAPT_DEVICEPORTINFO& entry) {
    const bool hasAll = std::all_of(device.ports.begin(), device.ports.end(),
                                    [&](const Port& port) { return HasPort(entry, port); });
    CountIf(!hasAll, Quirk::kSwapUnnoticed);
}

void Model::CountVanishing(const Device& device, const Port& port,
                           const _OS_ADAPT_DEVICEPORTINFO& entry) {
    const Port* const live = FindPort(port.id);
    CountIf(live != nullptr && live->handle != -1, Quirk::kRemovedUnclosed);
    CountIf(live != nullptr && live->name != port.name, Quirk::kOtherTwinDeleted);
    if (device.name == Text(entry.szDeviceName)) {
        return;
    }
    Count(Quirk::kRestartOnNextDevice);
    const _OS_ADAPT_DEVICEPORTINFO* const own = EntryOf(device);
    CountIf(own != nullptr && HasPort(*own, port), Quirk::kNeighbourDropped);
}

void Model::CountState() {
    std::set<int> ids;
    std::size_t inTree = 0;
    int before = m_State.ports.empty() ? 0 : m_State.ports.front().id;
    for (const Port& port : m_State.ports) {
        CountIf(port.id < before, Quirk::kListOutOfOrder);
        CountIf(!ids.insert(port.id).second, Quirk::kNumberTwice);
        before = port.id;
    }
    for (const Device& device : m_State.devices) {
        inTree += device.ports.size();
    }
    CountIf(inTree != m_State.ports.size(), Quirk::kListsApart);
}

} // namespace model
