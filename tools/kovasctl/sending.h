// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_SENDING_H
#define KOVASCTL_SENDING_H

#include <functional>
#include <string_view>

#include "tools/kovasctl/open_port.h"

constexpr double kSendPatienceInSeconds = 10; ///< unless the user says otherwise

/// Sends all of it; short writes are continued.
/// @param patience  in seconds, without a single byte being taken
/// @param onSent    is told after each step how many bytes it was
/// @throws Failure, Interrupted
void SendAll(OpenPort& port, std::string_view bytes, double patience,
             const std::function<void(size_t)>& onSent);

#endif
