// SPDX-License-Identifier: MIT
#include "tools/kovasctl/sim/host.h"

#include <map>

#include "KOVASMgr.h"
#include "tools/kovasctl/difference.h"
#include "tools/kovasctl/failure.h"
#include "tools/kovasctl/library.h"
#include "tools/kovasctl/notices.h"
#include "tools/kovasctl/result_code.h"
#include "tools/kovasctl/sim/arrivals.h"
#include "tools/kovasctl/sim/progress.h"
#include "tools/kovasctl/sim/screen.h"
#include "tools/kovasctl/streams.h"

namespace {

constexpr std::chrono::milliseconds kStatusPeriod{100};
constexpr std::chrono::milliseconds kRetryPeriod{250};

constexpr double kPatienceInSeconds = 5;

// What was sent last is on its way for a sweep or two of the read thread.
constexpr double kAfterwardsInSeconds = 0.2;

class SimHost {
  public:
    SimHost(const GlobalOptions& global, const std::string& control)
        : m_Library(global), m_Progress(control, kPatienceInSeconds) {}

    int Run() {
        AskForStatus();
        const Snapshot first = m_Notices.Take().front().snapshot;
        TellAll(AllPresent(first));
        Follow(first);
        while (!m_HasEnded) {
            ServeUntil(Clock::now() + kStatusPeriod);
            AskForStatus();
        }
        ServeUntil(After(kAfterwardsInSeconds));
        return kDone;
    }

  private:
    struct KnownPort {
        std::string name;
        KOVAMGR_READ_CALLBACK callback = nullptr;
        bool isOpen = false;
        bool wasRefused = false;
    };

    void ServeUntil(const Deadline& deadline) {
        do {
            WaitForInput({m_Notices.Descriptor(), m_Arrivals.Descriptor()}, deadline);
            TellArrivals(); // what a device sent before it went comes before that it went
            for (const Notices::Notice& notice : m_Notices.Take()) {
                TellAll(Difference(m_Last, notice.snapshot));
                Follow(notice.snapshot);
            }
            RetryRefused();
        } while (!IsOver(deadline));
    }

    void AskForStatus() {
        if (const std::optional<SimStatus> status = m_Progress.Ask()) {
            m_Screen.SetStatus(*status);
            m_HasEnded = status->hasEnded;
        } else if (m_Progress.IsOutOfReach()) {
            throw Failure(m_Progress.Trouble() + m_Library.Reason(0));
        }
    }

    void TellAll(const std::vector<Change>& changes) {
        for (const Change& change : changes) {
            m_Screen.Tell(change);
        }
    }

    void TellArrivals() {
        for (const SimArrivals::Arrival& arrival : m_Arrivals.Take()) {
            m_Screen.Tell(arrival);
        }
        if (const size_t dropped = m_Arrivals.TakeDropped(); dropped > 0) {
            Message(std::to_string(dropped) + " received bytes are not shown, they came too fast");
        }
    }

    // Identifiers are never used twice, so one that is known and not there any more has gone.
    void Follow(const Snapshot& snapshot) {
        std::map<int, KnownPort> known;
        known.swap(m_Ports);
        for (const Device& device : snapshot.devices) {
            for (const Port& port : device.ports) {
                const auto found = known.extract(port.id);
                if (found.empty()) {
                    OpenNew(port);
                } else {
                    m_Ports[port.id] = found.mapped();
                }
            }
        }
        for (const auto& [id, gone] : known) {
            m_Arrivals.Remove(gone.callback);
        }
        m_Last = snapshot;
    }

    void OpenNew(const Port& port) {
        KnownPort& known = m_Ports[port.id];
        known = {port.name, m_Arrivals.Add(port.name), false, false};
        if (known.callback == nullptr) {
            throw Failure("there are more ports than the library lists");
        }
        KOVAMGR_RegisterCommDataReadCallback(known.callback, port.id);
        Open(port.id, known);
    }

    // A port that is not known any more has gone; the notice is on its way.
    void Open(int id, KnownPort& port) {
        const int result = KOVAMGR_Open(id);
        if (result == KOVAMGR_OK) {
            port.isOpen = true;
            m_Screen.TellOpened(port.name);
        } else if (result != KOVAMGR_ERR_PARAM && !port.wasRefused) {
            port.wasRefused = true;
            m_Screen.TellRefused(port.name);
        }
    }

    void RetryRefused() {
        if (Clock::now() < m_RetryAt) {
            return;
        }
        m_RetryAt = Clock::now() + kRetryPeriod;
        for (auto& [id, port] : m_Ports) {
            if (!port.isOpen) {
                Open(id, port);
            }
        }
    }

    SimArrivals m_Arrivals; // outlives the library, which calls it
    Library m_Library;
    SimProgress m_Progress;
    Notices m_Notices;
    SimScreen m_Screen;
    Snapshot m_Last;
    std::map<int, KnownPort> m_Ports; // by identifier
    Clock::time_point m_RetryAt = Clock::now() + kRetryPeriod;
    bool m_HasEnded = false;
};

} // namespace

int RunSimHost(const GlobalOptions& global, const std::string& control) {
    return SimHost(global, control).Run();
}
