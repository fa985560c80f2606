// SPDX-License-Identifier: MIT
//
// The library under load, for as long as KOVASMGR_SOAK_SECONDS says: 64 devices with real terminals,
// 16 threads of a host, a hundred plugs and pulls a second, faults on the way. Ends with 0 when no
// byte, notice or call was lost and the process holds no more than before.
#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <string>

#include "KOVASMgr.h"
#include "tests/harness/figures.h"
#include "tests/harness/scratch_directory.h"
#include "tests/proof/soak/call_watch.h"
#include "tests/proof/soak/load.h"
#include "tests/proof/soak/process_state.h"
#include "tests/proof/soak/verdict.h"

namespace {

using std::chrono::seconds;
using verdict::Expect;

// What the process may hold more than after the warm-up. Threads keep small blocks back for
// themselves, each as it happens to need them.
constexpr long kAllocatedKb = 256;
constexpr long kResidentKb = 4096;
constexpr bool kIsMemoryJudged = KOVASMGR_SOAK_JUDGES_MEMORY;

seconds Duration() {
    const char* const wanted = std::getenv("KOVASMGR_SOAK_SECONDS");
    const int number = std::atoi(wanted != nullptr ? wanted : "");
    return seconds(number > 0 ? number : KOVASMGR_SOAK_DEFAULT_SECONDS);
}

/// Keeps the library's lines on standard output, a few a notice, away from it.
class QuietStdout {
  public:
    QuietStdout() : m_Before(dup(STDOUT_FILENO)) { PutThere(open("/dev/null", O_WRONLY)); }
    ~QuietStdout() { PutThere(m_Before); }
    QuietStdout(const QuietStdout&) = delete;
    QuietStdout& operator=(const QuietStdout&) = delete;

  private:
    static void PutThere(int descriptor) {
        std::fflush(stdout);
        dup2(descriptor, STDOUT_FILENO);
        close(descriptor);
    }

    int m_Before;
};

SoakAdapterControl& LoadAdapter(const ScratchDirectory& scratch) {
    const std::string path = scratch.Path() + "/libOSAdapt.so";
    std::filesystem::create_symlink(KOVASMGR_SOAK_ADAPTER, path);
    void* const library = dlopen(path.c_str(), RTLD_NOW);
    void* const control = library != nullptr ? dlsym(library, "SoakAdapter_Control") : nullptr;
    if (control == nullptr) {
        throw std::runtime_error("the adapter does not load");
    }
    return *reinterpret_cast<decltype(&SoakAdapter_Control)>(control)();
}

void Init(const ScratchDirectory& scratch) {
    if (KOVAMGR_Init(scratch.LogDirectory().c_str()) != KOVAMGR_OK) {
        throw std::runtime_error("the library does not start");
    }
}

// The library is initialised and released once before, for what stays: the log's descriptor.
Outcome LoadInitialised(const ScratchDirectory& scratch, SoakAdapterControl& adapter,
                        LogKeeper& log) {
    Init(scratch);
    KOVAMGR_Release();
    const ProcessState before = ProcessState::Now();
    Init(scratch);
    const Outcome outcome = Load(adapter, log, Duration());
    KOVASMGR_WATCHED(KOVAMGR_Release, );
    const ProcessState after = ProcessState::Now();
    Expect(after.descriptors == before.descriptors, "the release leaves descriptors behind");
    Expect(after.threads == before.threads, "the release leaves threads behind");
    return outcome;
}

void JudgeProcess(const ProcessState& warm, const ProcessState& last) {
    const long resident = last.residentKb - warm.residentKb;
    const long allocated = last.allocatedKb - warm.allocatedKb;
    const auto descriptors = static_cast<long>(last.descriptors - warm.descriptors);
    const auto threads = static_cast<long>(last.threads - warm.threads);
    NoteFigure("soak.memory_growth_kb", static_cast<double>(resident));
    NoteFigure("soak.allocated_growth_kb", static_cast<double>(allocated));
    NoteFigure("soak.descriptors_growth", static_cast<double>(descriptors));
    NoteFigure("soak.threads_growth", static_cast<double>(threads));
    Expect(descriptors == 0, "the number of descriptors has changed");
    Expect(threads == 0, "the number of threads has changed");
    Expect(!kIsMemoryJudged || resident <= kResidentKb, "resident memory has grown");
    Expect(!kIsMemoryJudged || allocated <= kAllocatedKb, "allocated memory has grown");
}

void NoteLoad(const Outcome& outcome, const SoakAdapterControl& adapter, const LogKeeper& log) {
    NoteFigure("soak.seconds", outcome.seconds);
    NoteFigure("soak.notices", static_cast<double>(outcome.moves));
    NoteFigure("soak.notices_per_second", static_cast<double>(outcome.moves) / outcome.seconds);
    NoteFigure("soak.bytes", static_cast<double>(outcome.bytes));
    NoteFigure("soak.faults", static_cast<double>(adapter.FaultsInjected()));
    NoteFigure("soak.log_bytes", static_cast<double>(log.Written()));
    NoteFigure("soak.longest_call_ms", outcome.longestCallMs);
    std::printf("the longest call was %s\n", outcome.longestCall);
    Expect(outcome.moves > 0, "nothing was plugged or pulled");
}

void Run() {
    const ScratchDirectory scratch;
    SoakAdapterControl& adapter = LoadAdapter(scratch);
    LogKeeper log(scratch.LogFile());
    call_watch::Start();
    Outcome outcome;
    {
        const QuietStdout quiet;
        outcome = LoadInitialised(scratch, adapter, log);
    }
    JudgeProcess(outcome.warm, outcome.last);
    NoteLoad(outcome, adapter, log);
}

} // namespace

int main() {
    try {
        Run();
    } catch (const std::exception& error) {
        verdict::Wrong(error.what());
    }
    std::printf("soak: %s\n", verdict::Count() == 0 ? "held" : "BROKEN");
    return verdict::Count() == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
