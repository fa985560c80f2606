// SPDX-License-Identifier: MIT
#include "tools/kovasctl/conformance/rule_process.h"

#include <signal.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <list>
#include <memory>
#include <optional>
#include <sstream>

#include "tools/kovasctl/conformance/file_text.h"
#include "tools/kovasctl/conformance/packet.h"
#include "tools/kovasctl/conformance/rule_child.h"
#include "tools/kovasctl/conformance/shell_command.h"
#include "tools/kovasctl/conformance/timed.h"
#include "tools/kovasctl/conformance/trial.h"
#include "tools/kovasctl/failure.h"
#include "tools/kovasctl/streams.h"
#include "tools/kovasctl/waiting.h"

namespace {

constexpr double kTimeToLeave = 0.5; // seconds, after the verdict
constexpr std::chrono::milliseconds kLook{2};

/// The process of one rule, and the commands that it has asked for.
class RuleProcess {
  public:
    RuleProcess(const Rule& rule, const KitOptions& options);
    ~RuleProcess();
    RuleProcess(const RuleProcess&) = delete;
    RuleProcess& operator=(const RuleProcess&) = delete;

    Outcome Await();

  private:
    struct Running {
        std::string name;
        std::unique_ptr<ShellCommand> command;
    };

    void Start(const Rule& rule, UniqueFd ends[2]);
    bool TakePacket();
    void StartCommand(const std::string& name);
    void ReportCommands();
    bool HasEnded();
    void Kill();
    void PlugIn() const;
    Outcome Ended();
    Outcome Hung() const;
    std::string Where() const;
    std::string WhatItWrote() const;

    const KitOptions& m_Options;
    UniqueFd m_Errors;
    UniqueFd m_Socket;
    pid_t m_Process = -1;
    bool m_HasEnded = false;
    int m_Status = 0;
    std::string m_Step;
    bool m_IsOut = false;
    std::list<Running> m_Running;
    std::optional<Outcome> m_Outcome;
};

RuleProcess::RuleProcess(const Rule& rule, const KitOptions& options)
    : m_Options(options), m_Errors(memfd_create("errors", MFD_CLOEXEC)) {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
        throw Failure(std::string("no socket to be had: ") + std::strerror(errno));
    }
    UniqueFd owned[2] = {UniqueFd(ends[0]), UniqueFd(ends[1])};
    Start(rule, owned);
}

void RuleProcess::Start(const Rule& rule, UniqueFd ends[2]) {
    m_Process = fork();
    if (m_Process == 0) {
        ends[0].Reset();
        BecomeRuleChild(rule, m_Options, ends[1].Get(), m_Errors.Get());
    }
    if (m_Process < 0) {
        throw Failure(std::string("no process to be had: ") + std::strerror(errno));
    }
    m_Socket = std::move(ends[0]);
}

Outcome RuleProcess::Await() {
    const Deadline limit = After(m_Options.timeout);
    while (!m_Outcome) {
        const Deadline look = m_Running.empty() ? limit : Sooner(limit, Clock::now() + kLook);
        WaitForInput({m_Socket.Get()}, look);
        ReportCommands();
        if (IsReadable(m_Socket.Get()) && !TakePacket()) {
            return Ended();
        }
        if (!m_Outcome && IsOver(limit)) {
            return Hung();
        }
    }
    return *m_Outcome;
}

bool RuleProcess::TakePacket() {
    const auto packet = Receive(m_Socket.Get());
    if (!packet) {
        return false;
    }
    switch (packet->kind) {
    case Packet::Kind::Step:
        m_Step = packet->text;
        break;
    case Packet::Kind::Command:
        StartCommand(packet->text);
        break;
    case Packet::Kind::Pass:
        m_Outcome = Outcome{Verdict::Pass, packet->text};
        break;
    case Packet::Kind::Fail:
        m_Outcome = Outcome{Verdict::Fail, packet->text};
        break;
    case Packet::Kind::NotApplicable:
        m_Outcome = Outcome{Verdict::NotApplicable, packet->text};
        break;
    }
    return true;
}

void RuleProcess::StartCommand(const std::string& name) {
    m_IsOut = name == kUnplug;
    const std::string& text = m_IsOut ? m_Options.unplug : m_Options.plug;
    m_Running.push_back({name, std::make_unique<ShellCommand>(text, m_Options.home, m_Process)});
}

void RuleProcess::ReportCommands() {
    for (auto running = m_Running.begin(); running != m_Running.end();) {
        if (running->command->HasEnded()) {
            Send(m_Socket.Get(),
                 {Packet::Kind::Command, running->name + "\n" + running->command->Failure()});
            running = m_Running.erase(running);
        } else {
            ++running;
        }
    }
}

bool RuleProcess::HasEnded() {
    if (!m_HasEnded) {
        m_HasEnded = waitpid(m_Process, &m_Status, WNOHANG) == m_Process;
    }
    return m_HasEnded;
}

void RuleProcess::Kill() {
    if (!m_HasEnded) {
        kill(m_Process, SIGKILL);
        while (waitpid(m_Process, &m_Status, 0) < 0 && errno == EINTR) {
        }
        m_HasEnded = true;
    }
}

// Also when a signal ends the tool: what was pulled out is plugged in again.
RuleProcess::~RuleProcess() {
    HoldsWithin(m_Outcome ? kTimeToLeave : 0, [&] { return HasEnded(); });
    Kill();
    m_Running.clear();
    if (m_IsOut) {
        PlugIn();
    }
}

void RuleProcess::PlugIn() const {
    try {
        ShellCommand plug(m_Options.plug, m_Options.home, m_Process);
        HoldsWithin(m_Options.timeout, [&] { return plug.HasEnded(); });
    } catch (const Failure& failure) {
        Message(std::string("the device stays pulled out: ") + failure.what());
    }
}

// The socket is closed just before the end, unless it is the adapter that closes it.
Outcome RuleProcess::Ended() {
    if (!HoldsWithin(kTimeToLeave, [&] { return HasEnded(); })) {
        return {Verdict::Fail, "it closed descriptors that are not its own" + Where()};
    }
    const std::string how =
        WIFSIGNALED(m_Status)
            ? std::string("it crashed (") + strsignal(WTERMSIG(m_Status)) + ")"
            : "it ended the process (status " + std::to_string(WEXITSTATUS(m_Status)) + ")";
    return {Verdict::Fail, how + Where() + WhatItWrote()};
}

Outcome RuleProcess::Hung() const {
    return {Verdict::Fail,
            "it did not end within " + DurationText(m_Options.timeout) + Where() + WhatItWrote()};
}

std::string RuleProcess::Where() const {
    std::string text = m_Step.empty() ? "" : ", " + m_Step;
    for (const Running& running : m_Running) {
        text += ", while the command of --" + running.name + " ran";
    }
    return text;
}

// The first lines: sanitizers say there what is wrong, and then much more.
std::string RuleProcess::WhatItWrote() const {
    constexpr int kLines = 3;
    std::istringstream lines(TextOfFile(m_Errors.Get()));
    std::string text;
    int count = 0;
    for (std::string line; count < kLines && std::getline(lines, line);) {
        if (line.find_first_not_of("= \t") != std::string::npos) {
            text += "\n" + line;
            ++count;
        }
    }
    return text;
}

} // namespace

Outcome TryRule(const Rule& rule, const KitOptions& options) {
    const Stopwatch watch;
    RuleProcess process(rule, options);
    Outcome outcome = process.Await();
    outcome.seconds = watch.Seconds();
    return outcome;
}
