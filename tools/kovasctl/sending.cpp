// SPDX-License-Identifier: MIT
#include "tools/kovasctl/sending.h"

#include "tools/kovasctl/failure.h"
#include "tools/kovasctl/printable.h"
#include "tools/kovasctl/signals.h"
#include "tools/kovasctl/waiting.h"

namespace {

// An adapter may say at once that there is no room.
constexpr std::chrono::milliseconds kPause{20};

} // namespace

void SendAll(OpenPort& port, std::string_view bytes, double patience,
             const std::function<void(size_t)>& onSent) {
    Deadline deadline = After(patience);
    while (!bytes.empty()) {
        ThrowIfInterrupted();
        const size_t sent = port.Write(bytes);
        bytes.remove_prefix(sent);
        onSent(sent);
        if (sent > 0) {
            deadline = After(patience);
        } else if (IsOver(deadline)) {
            throw Failure(Printable(port.Chosen().port.name) + " takes no more data");
        } else {
            WaitForInput({}, Clock::now() + kPause);
        }
    }
}
