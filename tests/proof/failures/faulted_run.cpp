// SPDX-License-Identifier: MIT
#include "tests/proof/failures/faulted_run.h"

#include <cstdlib>
#include <filesystem>

#include "KOVASMgr.h"
#include "KOVASMgrLog.h"
#include "tests/harness/fake_adapter_library.h"
#include "tests/harness/log_text.h"
#include "tests/harness/scratch_directory.h"
#include "tests/proof/failures/inspection.h"
#include "tests/proof/failures/leaks.h"
#include "tests/proof/failures/script.h"
#include "tests/proof/failures/steered_adapter.h"
#include "tests/proof/failures/steps.h"

namespace {

std::string CheckRelease(const Holdings& before) {
    std::string report = Difference(before);
    if (FakeAdapterLibrary::IsLoaded()) {
        report += "the adapter is still loaded\n";
    }
    if (g_SteeredAdapter.callback != nullptr) {
        report += "the adapter still has the manager's callback\n";
    }
    for (std::size_t port = 0; port < kSteeredPorts; ++port) {
        if (g_SteeredAdapter.handles[port] != 0 && !g_SteeredAdapter.isCloseRefused[port]) {
            report += std::string("still open: ") + kPortNames[port] + "\n";
        }
    }
    if (g_SteeredAdapter.strayCalls != 0) {
        report += "the adapter was called with a handle that is not open\n";
    }
    return report;
}

std::string CheckLog(const Stage& stage) {
    const std::string log = LogText(stage.logDirectory + "/KOVASMgr.log");
    const std::string last = "[TIME] INFO:LEAVE CKOVASMgrPort::Release()\n[TIME] INFO:inspected\n";
    const bool isWhole =
        log.size() >= last.size() && log.compare(log.size() - last.size(), last.size(), last) == 0;
    return isWhole ? "" : "the log does not end as it should:\n" + log;
}

// The lines of the spared threads are all there, those between two that failed as well.
std::string CheckInspectedLines(const std::string& directory) {
    const int lines = CountOf(FileText(directory + "/KOVASMgr.log"), "INFO:inspected\n");
    return lines == 2 * static_cast<int>(Steps().size()) ? "" : "lines of others are lost\n";
}

void ForgetHandles() {
    for (std::size_t port = 0; port < kSteeredPorts; ++port) {
        g_SteeredAdapter.handles[port] = 0; // what R13 asks of an adapter at un-registration
    }
}

std::string CheckSecondLife(Stage& stage, const Holdings& before) {
    const long bytes = BytesReceived();
    const long notices = NoticesReceived();
    ForgetHandles();
    stage.report.clear();
    stage.heir.Run([&] { PlayScript(stage); });
    std::string report = stage.report + CheckRelease(before) + CheckLog(stage);
    if (BytesReceived() == bytes || NoticesReceived() == notices) {
        report += "no bytes or no notices\n";
    }
    return report.empty() ? "" : "in the second life:\n" + report;
}

} // namespace

std::string RunThrough(const Ordeal& ordeal) {
    setenv("TZ", "UTC", 1); // with none, every new second asks for memory
    const Spared spared;
    std::filesystem::create_symlink(KOVASMGR_TEST_STEERED_ADAPTER, "libOSAdapt.so");
    Stage stage;
    stage.logDirectory = ordeal.logDirectory;
    const Holdings before = Holdings::Now();
    ordeal.begin();
    PlayScript(stage);
    ordeal.end();
    const std::string report = stage.report + CheckRelease(before);
    stage.logDirectory = ordeal.secondLogDirectory;
    return report + CheckSecondLife(stage, before) + LeakText();
}

ChildReport RunWithFault(const Fault& fault) {
    const ScratchDirectory scratch;
    const std::string log = scratch.LogDirectory();
    const bool canLackLog = fault.trouble == kNoMemory || fault.trouble == kLogNotOpened;
    const std::string report =
        RunThrough({log, canLackLog ? scratch.Path() : log, [&] { ArmFault(fault); }, DisarmFault});
    const bool mustLog = fault.trouble == kLogNotWritten;
    return {StrikeCount() != 0, report + (mustLog ? CheckInspectedLines(log) : "")};
}
