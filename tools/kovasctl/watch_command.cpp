// SPDX-License-Identifier: MIT
#include <memory>

#include "tools/kovasctl/command.h"
#include "tools/kovasctl/difference.h"
#include "tools/kovasctl/failure.h"
#include "tools/kovasctl/json_text.h"
#include "tools/kovasctl/library.h"
#include "tools/kovasctl/notices.h"
#include "tools/kovasctl/option_types.h"
#include "tools/kovasctl/paint.h"
#include "tools/kovasctl/printable.h"
#include "tools/kovasctl/streams.h"
#include "tools/kovasctl/time_text.h"
#include "tools/kovasctl/waiting.h"

namespace {

struct WatchOptions {
    std::optional<uint64_t> count;
    std::optional<double> timeout;
    bool initial = false;
};

struct Words { // of one width
    Colour colour;
    const char* text;
};

Words WordsFor(Change::Kind kind) {
    switch (kind) {
    case Change::Kind::DevicePresent:
        return {Colour::Dim, "= present     "};
    case Change::Kind::DeviceAdded:
        return {Colour::Green, "+ added       "};
    case Change::Kind::DeviceRemoved:
        return {Colour::Red, "- removed     "};
    case Change::Kind::PortAdded:
        return {Colour::Green, "+ port added  "};
    case Change::Kind::PortRemoved:
        return {Colour::Red, "- port removed"};
    }
    return {Colour::Dim, ""};
}

std::string PortList(const Device& device) {
    std::string text;
    for (const Port& port : device.ports) {
        text += (text.empty() ? "" : ", ") + std::to_string(port.id) + " " + Printable(port.name);
    }
    return text;
}

std::string LineFor(const Change& change, std::chrono::system_clock::time_point time) {
    const Words words = WordsFor(change.kind);
    return TimeForPeople(time) + "  " + Painted(words.colour, words.text) + "  " +
           Printable(change.device.name) + "  (" + PortList(change.device) + ")\n";
}

class Watch {
  public:
    Watch(const GlobalOptions& global, const WatchOptions& options)
        : m_Options(options), m_AsJson(global.json), m_End(After(options.timeout)),
          m_Library(global) {}

    int Run() {
        Begin(m_Notices.Take());
        while (!IsEnough() && !IsOver(m_End)) {
            WaitForInput({m_Notices.Descriptor()}, m_End);
            for (const Notices::Notice& notice : m_Notices.Take()) {
                TellAll(Difference(m_Last, notice.snapshot), notice.time);
                m_Last = notice.snapshot;
            }
        }
        if (m_Options.count && !IsEnough()) {
            throw Failure("the time is over; changes: " + std::to_string(m_Told) + " of " +
                          std::to_string(*m_Options.count));
        }
        return kDone;
    }

  private:
    // The first notice is what was there at the start, or when the first change came.
    void Begin(const std::deque<Notices::Notice>& notices) {
        m_Last = notices.front().snapshot;
        if (IsMessageOnTerminal()) {
            Message("watching " + std::to_string(m_Last.devices.size()) + " devices; Ctrl-C ends");
        }
        if (m_Options.initial) {
            TellAll(AllPresent(m_Last), notices.front().time);
        }
        for (const Notices::Notice& notice : notices) {
            TellAll(Difference(m_Last, notice.snapshot), notice.time);
            m_Last = notice.snapshot;
        }
    }

    void TellAll(const std::vector<Change>& changes, std::chrono::system_clock::time_point time) {
        for (const Change& change : changes) {
            if (IsEnough()) {
                return;
            }
            WriteData(m_AsJson ? ChangeAsJson(change, time) : LineFor(change, time));
            ++m_Told;
        }
    }

    bool IsEnough() const { return m_Options.count && m_Told >= *m_Options.count; }

    WatchOptions m_Options;
    bool m_AsJson;
    Deadline m_End;
    Library m_Library;
    Notices m_Notices;
    Snapshot m_Last;
    uint64_t m_Told = 0;
};

} // namespace

Action SetUpWatch(CLI::App& app) {
    const auto options = std::make_shared<WatchOptions>();
    AddCount(app, "--count", options->count, "N", "end after so many lines");
    AddSeconds(app, "--timeout", options->timeout,
               "end after so many seconds; a failure when --count was not reached");
    app.add_flag("--initial", options->initial, "tell first what is there already");
    return [=](const GlobalOptions& global) { return Watch(global, *options).Run(); };
}
