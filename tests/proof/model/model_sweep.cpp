// SPDX-License-Identifier: MIT
#include <algorithm>

#include "tests/proof/model/model.h"

namespace model {
namespace {

constexpr long kMostBytes = 4096;

} // namespace

void Model::Sweep() {
    for (std::size_t i = 0; i < m_State.ports.size() && m_State.isRunning; ++i) {
        if (m_State.ports[i].handle != -1) {
            ReadPort(i);
        }
    }
}

// The length keeps its value from one read to the next: an adapter that stores none repeats it.
void Model::ReadPort(std::size_t at) {
    if (!Adapter().IsComplete()) {
        Log("Can't load OSAdapt DLL for OS_ADAPT_Read.");
        return;
    }
    std::string buffer(kMostBytes + 1, '\0');
    const bool isStored = Adapter().StoresNextCount();
    if (Adapter().Read(m_State.ports[at].handle, &buffer[0], kMostBytes, &m_Length) !=
        OS_ADAPT_OK) {
        Log("Read failed.\n");
        return;
    }
    CountIf(m_Length > kMostBytes, Quirk::kLengthCut);
    CountIf(m_Length >= 1 && !isStored, Quirk::kLengthRepeated);
    if (m_Length >= 1) {
        Deliver(at, &buffer[0], static_cast<int>(std::min(m_Length, kMostBytes)));
    }
}

// A callback may change the list: the next one is the one behind it, wherever that stands now; but a
// place is kept only as often as there were callbacks at the start, so that an end is certain. When
// the run flag is cleared, those that are left are not called.
void Model::Deliver(std::size_t at, char* data, int length) {
    const std::vector<int>& callbacks = m_State.ports[at].readCallbacks;
    std::size_t keeps = callbacks.size();
    std::size_t i = 0;
    while (i < callbacks.size() && m_State.isRunning) {
        const int callback = callbacks[i];
        OnRead(callback, data, length);
        const bool isGone = i >= callbacks.size() || callbacks[i] != callback;
        CountIf(isGone && i < callbacks.size(), Quirk::kReadCallbackRemoved);
        if (isGone && keeps > 0) {
            --keeps;
        } else {
            ++i;
        }
    }
    CountIf(i < callbacks.size(), Quirk::kStoppedBetweenReaders);
}

} // namespace model
