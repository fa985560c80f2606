// SPDX-License-Identifier: MIT
#include "tools/kovasctl/adapter_probe.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <sstream>

#include "tools/kovasctl/failure.h"
#include "tools/kovasctl/unique_fd.h"
#include "tools/kovasctl/waiting.h"

namespace {

constexpr double kPatienceInSeconds = 10;
constexpr const char* kSetLine = "OSADAPT_SetLine";
constexpr const char* kFunctions[] = {
    "OS_ADAPT_RegisterDeviceStateProcessCallBack",
    "OS_ADAPT_UnRegisterDeviceStateProcessCallBack",
    "OS_ADAPT_OpenPort",
    "OS_ADAPT_ClosePort",
    "OS_ADAPT_Write",
    "OS_ADAPT_Read",
    "OS_ADAPT_EnumDevicePortInfo",
};

// The report is lines: "error TEXT", or "loaded" and a "found NAME" for each symbol.
void Send(int report, const std::string& line) {
    [[maybe_unused]] const ssize_t written = write(report, line.c_str(), line.size());
}

void BecomeExpendable() {
    const rlimit noCore{};
    setrlimit(RLIMIT_CORE, &noCore);
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
        signal(number, SIG_DFL);
    }
}

[[noreturn]] void LoadAndReport(const std::string& file, int report) {
    BecomeExpendable();
    void* library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        const char* reason = dlerror();
        Send(report, std::string("error ") + (reason == nullptr ? "unknown" : reason) + "\n");
        _exit(0);
    }
    std::string lines = "loaded\n";
    for (const char* name : kFunctions) {
        lines += dlsym(library, name) == nullptr ? "" : std::string("found ") + name + "\n";
    }
    lines += dlsym(library, kSetLine) == nullptr ? "" : std::string("found ") + kSetLine + "\n";
    Send(report, lines);
    _exit(0);
}

/// Ends with the object, whatever it is doing.
class Child {
  public:
    explicit Child(pid_t process) : m_Process(process) {}
    ~Child() { End(); }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    /// @return how it ended
    int End() {
        int status = 0;
        if (m_Process > 0) {
            kill(m_Process, SIGKILL);
            while (waitpid(m_Process, &status, 0) < 0 && errno == EINTR) {
            }
            m_Process = -1;
        }
        return status;
    }

    /// For one that has closed its end of the report, so is just about to end.
    int WaitForEnd() {
        int status = 0;
        const Deadline deadline = After(1);
        while (waitpid(m_Process, &status, WNOHANG) == 0) {
            if (IsOver(deadline)) {
                return End();
            }
            WaitForInput({}, Clock::now() + std::chrono::milliseconds(1));
        }
        m_Process = -1;
        return status;
    }

  private:
    pid_t m_Process;
};

/// @return false when the time was over before the end of the report
bool ReceiveAll(int report, std::string& text) {
    const Deadline deadline = After(kPatienceInSeconds);
    char buffer[4096];
    for (;;) {
        WaitForInput({report}, deadline);
        if (!IsReadable(report)) {
            return false;
        }
        const ssize_t count = read(report, buffer, sizeof buffer);
        if (count <= 0) {
            return true;
        }
        text.append(buffer, static_cast<size_t>(count));
    }
}

std::string HowItEnded(int status) {
    if (WIFSIGNALED(status)) {
        return std::string("loading it crashes (") + strsignal(WTERMSIG(status)) + ")";
    }
    return "loading it ends the process (status " + std::to_string(WEXITSTATUS(status)) + ")";
}

AdapterFacts Understand(const std::string& report) {
    AdapterFacts facts;
    const std::string text = "\n" + report;
    if (text.compare(0, 7, "\nerror ") == 0) {
        facts.loadError = text.substr(7, text.find('\n', 7) - 7);
    }
    const auto isFound = [&](const std::string& name) {
        return text.find("\nfound " + name + "\n") != std::string::npos;
    };
    for (const char* name : kFunctions) {
        facts.functions.push_back({name, isFound(name)});
    }
    facts.hasSetLine = isFound(kSetLine);
    return facts;
}

} // namespace

std::string AdapterFacts::Problem() const {
    if (!loadError.empty()) {
        return loadError;
    }
    std::string missing;
    for (const Function& function : functions) {
        missing += function.isFound ? "" : (missing.empty() ? "" : ", ") + function.name;
    }
    return missing.empty() ? "" : "it lacks " + missing;
}

AdapterFacts ProbeAdapter(const std::string& file) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        throw Failure(std::string("no pipe to be had: ") + std::strerror(errno));
    }
    const UniqueFd readEnd(ends[0]);
    UniqueFd writeEnd(ends[1]);
    const pid_t process = fork();
    if (process == 0) {
        LoadAndReport(file, writeEnd.Get());
    }
    if (process < 0) {
        throw Failure(std::string("no process to be had: ") + std::strerror(errno));
    }
    Child child(process);
    writeEnd.Reset();
    std::string report;
    const bool hasEnded = ReceiveAll(readEnd.Get(), report);
    const int status = hasEnded ? child.WaitForEnd() : child.End();
    AdapterFacts facts = Understand(report);
    if (report.empty()) {
        facts.loadError = hasEnded ? HowItEnded(status) : "loading it does not end";
    }
    return facts;
}
