// SPDX-License-Identifier: MIT
#include <memory>

#include "tools/kovasctl/byte_text.h"
#include "tools/kovasctl/command.h"
#include "tools/kovasctl/failure.h"
#include "tools/kovasctl/library.h"
#include "tools/kovasctl/notices.h"
#include "tools/kovasctl/open_port.h"
#include "tools/kovasctl/option_types.h"
#include "tools/kovasctl/printable.h"
#include "tools/kovasctl/reception.h"
#include "tools/kovasctl/sending.h"
#include "tools/kovasctl/streams.h"
#include "tools/kovasctl/waiting.h"

namespace {

struct ReceiveOptions {
    std::string port;
    std::optional<uint64_t> count;
    std::optional<double> idleTimeout;
    std::optional<double> timeout;
    std::string until;
    std::string send;
    std::string lineEnd;
    bool hasEscapes = false;
    std::string line;
};

std::string Meant(const ReceiveOptions& options, const std::string& text) {
    return options.hasEscapes ? FromEscapes(text) : text;
}

class Receiver {
  public:
    Receiver(const GlobalOptions& global, const ReceiveOptions& options)
        : m_Options(options), m_Reception(options.count, Meant(options, options.until)),
          m_Question(
              options.send.empty() ? "" : Meant(options, options.send) + LineEnd(options.lineEnd)),
          m_Library(global),
          m_Port(m_Library, ChoosePort(m_Notices.Take().back().snapshot, options.port),
                 options.line),
          m_End(After(options.timeout)), m_IdleEnd(After(options.idleTimeout)) {}

    int Run() {
        SendAll(m_Port, m_Question, kSendPatienceInSeconds, [](size_t) {});
        while (!m_Reception.IsComplete()) {
            const Deadline deadline = Sooner(m_End, m_IdleEnd);
            WaitForInput({m_Port.Received().Descriptor(), m_Notices.Descriptor()}, deadline);
            const bool isGone = IsGone(); // before the bytes that it sent last are fetched
            Fetch();
            if (isGone && !m_Reception.IsComplete()) {
                throw Failure(Printable(m_Port.Chosen().port.name) + " went away" + HowMuch());
            }
            if (IsOver(Sooner(m_End, m_IdleEnd))) {
                return EndInTime();
            }
        }
        return kDone;
    }

  private:
    void Fetch() {
        std::string bytes = m_Port.Received().Take();
        if (!bytes.empty()) {
            m_Reception.Accept(bytes);
            WriteData(bytes); // a reader may take its time, which is not the line's
            m_IdleEnd = After(m_Options.idleTimeout);
        }
    }

    bool IsGone() {
        bool isGone = false;
        for (const Notices::Notice& notice : m_Notices.Take()) {
            isGone = isGone || !IsPresent(notice.snapshot, m_Port.Chosen());
        }
        return isGone;
    }

    std::string HowMuch() const {
        const std::string wanted = m_Options.count ? " of " + std::to_string(*m_Options.count) : "";
        return "\n  received: " + std::to_string(m_Reception.Received()) + wanted + " bytes";
    }

    int EndInTime() const {
        if (m_Reception.HasEnd() && !m_Reception.IsComplete()) {
            throw Failure("the time is over" + HowMuch());
        }
        return kDone;
    }

    ReceiveOptions m_Options;
    Reception m_Reception;
    std::string m_Question;
    Library m_Library;
    Notices m_Notices;
    OpenPort m_Port;
    Deadline m_End;
    Deadline m_IdleEnd;
};

} // namespace

Action SetUpReceive(CLI::App& app) {
    const auto options = std::make_shared<ReceiveOptions>();
    AddPort(app, options->port);
    AddCount(app, "--count", options->count, "BYTES", "end after so many bytes");
    AddSeconds(
        app, "--idle-timeout", options->idleTimeout,
        "end when nothing has come for so long; a failure when --count or --until is not met");
    AddSeconds(app, "--timeout", options->timeout, "the same, from the start");
    app.add_option("--until", options->until, "end behind this text")
        ->type_name("TEXT")
        ->check([](const std::string& text) {
            return text.empty() ? std::string("an empty text is never waited for") : std::string();
        });
    app.add_option("--send", options->send, "send this first, to receive the answer")
        ->type_name("TEXT");
    AddTextOptions(app, options->hasEscapes, options->lineEnd);
    AddLine(app, options->line);
    return [=](const GlobalOptions& global) { return Receiver(global, *options).Run(); };
}
