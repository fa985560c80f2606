// SPDX-License-Identifier: MIT
#include "tools/kovasctl/sim/screen.h"

#include <cstdio>

#include "tools/kovasctl/paint.h"
#include "tools/kovasctl/printable.h"
#include "tools/kovasctl/streams.h"

namespace {

constexpr size_t kMostBytes = 64; // of one piece

std::string WordsFor(Change::Kind kind) { // of one width
    switch (kind) {
    case Change::Kind::DevicePresent:
        return Painted(Colour::Dim, "= present    ");
    case Change::Kind::DeviceAdded:
        return Painted(Colour::Green, "+ added      ");
    case Change::Kind::DeviceRemoved:
        return Painted(Colour::Red, "- removed    ");
    case Change::Kind::PortAdded:
        return Painted(Colour::Green, "+ port added ");
    case Change::Kind::PortRemoved:
        return Painted(Colour::Red, "- port gone  ");
    }
    return "";
}

std::string Names(const std::vector<Port>& ports) {
    std::string text;
    for (const Port& port : ports) {
        text += (text.empty() ? "" : ", ") + Printable(port.name);
    }
    return text;
}

std::string Escaped(unsigned char byte) {
    switch (byte) {
    case '\r':
        return "\\r";
    case '\n':
        return "\\n";
    case '\t':
        return "\\t";
    case '"':
        return "\\\"";
    case '\\':
        return "\\\\";
    default:
        break;
    }
    char text[8] = "";
    std::snprintf(text, sizeof text, byte >= 0x20 && byte < 0x7f ? "%c" : "\\x%02x", byte);
    return text;
}

// As a scenario has them.
std::string Quoted(const std::string& bytes) {
    std::string text = "\"";
    for (const char byte : bytes.substr(0, kMostBytes)) {
        text += Escaped(static_cast<unsigned char>(byte));
    }
    const bool isAll = bytes.size() <= kMostBytes;
    return text + (isAll ? "\"" : "\" ... " + std::to_string(bytes.size()) + " bytes");
}

} // namespace

void SimScreen::SetStatus(const SimStatus& status) {
    m_Status = status;
    m_StatusAt = Clock::now();
}

void SimScreen::Tell(const Change& change) {
    Line(WordsFor(change.kind),
         Printable(change.device.name) + "  (" + Names(change.device.ports) + ")");
}

void SimScreen::Tell(const SimArrivals::Arrival& arrival) {
    Line(Painted(Colour::Cyan, "> received   "),
         Printable(arrival.port) + "  " + Quoted(arrival.bytes));
}

std::string SimScreen::Time() const {
    const std::chrono::duration<double> passed = Clock::now() - m_StatusAt;
    const bool isMoving = !m_Status.isPaused && !m_Status.hasEnded;
    char text[32] = "";
    std::snprintf(text, sizeof text, "%10.3f",
                  m_Status.seconds + (isMoving ? passed.count() * m_Status.speed : 0));
    return text;
}

void SimScreen::Line(const std::string& what, const std::string& text) {
    WriteData(Time() + "  " + what + "  " + text + "\n");
}
