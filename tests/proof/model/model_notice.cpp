// SPDX-License-Identifier: MIT
#include "tests/proof/model/model.h"

namespace model {

// The lists first, then the callbacks, which are told in any case. They are walked by index, the
// count read anew, so that one who removes itself costs its successor the notice.
int Model::Notice(int status) {
    if (!m_State.exists) {
        return -1;
    }
    ++m_Notices;
    if (status == OS_ADAPT_DEVICE_INSERT) {
        Trace("----OS_ADAPT_DEVICE_INSERT-------");
        Arrival();
    } else if (status == OS_ADAPT_DEVICE_PULLOUT) {
        Trace("----OS_ADAPT_DEVICE_PULLOUT-------");
        Removal();
    }
    const int told = static_cast<int>(static_cast<unsigned>(status) + 20200U); // any status
    const std::vector<int>& callbacks = m_State.stateCallbacks;
    for (std::size_t i = 0; i < callbacks.size(); ++i) {
        const int callback = callbacks[i];
        OnState(callback, told);
        if (i < callbacks.size() && callbacks[i] != callback) {
            Count(Quirk::kStateCallbackSkipped);
        }
    }
    --m_Notices;
    return 0;
}

} // namespace model
