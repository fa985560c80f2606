// SPDX-License-Identifier: MIT
//
// What a rule's process and the tool say to each other, a packet at a time.
#ifndef KOVASCTL_CONFORMANCE_PACKET_H
#define KOVASCTL_CONFORMANCE_PACKET_H

#include <optional>
#include <string>

struct Packet {
    enum class Kind : char {
        Step = 's',    // to the tool: what is being tried from now on
        Command = 'c', // to the tool: run the command of this name; to the process: its name, a
                       // line end, and why it failed
        Pass = 'p',    // to the tool: the verdict
        Fail = 'f',
        NotApplicable = 'n',
    };

    Kind kind = Kind::Step;
    std::string text; // at most 16 KiB of it are sent
};

/// @return false when there is no way to the other side
bool Send(int socket, const Packet& packet);

/// Waits for the next one; nothing when the other side has gone.
std::optional<Packet> Receive(int socket);

#endif
