// SPDX-License-Identifier: MIT
#include "tools/kovasctl/conformance/rule_child.h"

#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include "tools/kovasctl/conformance/packet.h"
#include "tools/kovasctl/conformance/trial.h"
#include "tools/kovasctl/conformance/verdict.h"

namespace {

void BecomeExpendable(int errors) {
    const rlimit noCore{};
    setrlimit(RLIMIT_CORE, &noCore);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGALRM, SIGUSR1, SIGUSR2, SIGSEGV,
                             SIGBUS, SIGFPE, SIGILL, SIGABRT}) {
        signal(number, SIG_DFL);
    }
    dup2(errors, STDERR_FILENO);
}

// What the adapter throws ends in std::exception or the process; both are its failure.
Packet Judge(const Rule& rule, Trial& trial) {
    try {
        return {Packet::Kind::Pass, rule.check(trial)};
    } catch (const Broken& seen) {
        return {Packet::Kind::Fail, seen.what()};
    } catch (const NotTried& reason) {
        return {Packet::Kind::NotApplicable, reason.what()};
    } catch (const std::exception& error) {
        return {Packet::Kind::Fail, std::string("an exception came out of it: ") + error.what()};
    }
}

} // namespace

void BecomeRuleChild(const Rule& rule, const KitOptions& options, int tool, int errors) {
    BecomeExpendable(errors);
    // Never destroyed: threads that are left behind refer to it.
    auto* trial = new Trial(options, tool);
    const Packet verdict = Judge(rule, *trial);
    while (!Send(tool, verdict)) {
        pause(); // the adapter has closed the socket: not to be taken for an exit
    }
    trial->Leave();
    _exit(0);
}
