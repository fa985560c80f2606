// SPDX-License-Identifier: MIT
//
// Scenario files and recordings as the virtual adapter reads them.
//
// Input: a file's text. Behind a line "#### recording" stands that of the recording which a scenario
// finds in its folder as "101".
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <memory>

#include "OSAdapt.h"
#include "OSAdaptScenario.h"
#include "adapters/virtual/language/scenario.h"
#include "tests/proof/fuzz/fuzz_input.h"
#include "tests/proof/fuzz/scenario_text.h"

namespace {

constexpr const char* kScenarioPath = "/proc/self/fd/100";
constexpr const char* kSecondFile = "\n#### recording\n";

// More of them are read, but not twice.
constexpr size_t kManyDevices = 100;
constexpr size_t kManyEvents = 300;

/// A file in memory, under a descriptor that nothing else has.
class MemoryFile {
  public:
    explicit MemoryFile(int descriptor) : m_Descriptor(descriptor) {
        const int file = memfd_create("file", 0);
        Demand(file != -1 && dup2(file, descriptor) == descriptor, "there is memory for a file");
        close(file);
    }

    void Write(const std::string& text) const {
        Demand(ftruncate(m_Descriptor, 0) == 0 && pwrite(m_Descriptor, text.data(), text.size(),
                                                         0) == static_cast<ssize_t>(text.size()),
               "there is memory for a file's text");
    }

  private:
    int m_Descriptor;
};

/// Whether it is "file:line: reason".
bool IsReason(const std::string& error, const std::string& file) {
    const size_t line = file.size() + 1;
    const size_t end = error.find_first_not_of("0123456789", line);
    return error.compare(0, line, file + ":") == 0 && end != std::string::npos && end > line &&
           error.compare(end, 2, ": ") == 0 && error.size() > end + 2;
}

std::string WithoutControls(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](unsigned char byte) { return byte < 0x20 || byte == 0x7f; },
        '?');
    return text;
}

/// The check stores as much of the reason as there is room for.
void DemandReason(const std::string& error, size_t room) {
    const std::unique_ptr<char[]> reason(new char[room]);
    const int result = OSADAPT_CheckScenario(kScenarioPath, reason.get(), static_cast<long>(room));
    Demand(result == (error.empty() ? OS_ADAPT_OK : OS_ADAPT_FAILED),
           "the check and the reader agree");
    Demand(room == 0 || WithoutControls(error).substr(0, room - 1) == reason.get(),
           "the check gives the reader's reason");
}

void DemandSame(const Scenario& scenario, const std::string& text, const char* promise) {
    const ScenarioResult again = ReadScenario(text, kScenarioPath);
    if (!again.error.empty()) {
        std::fprintf(stderr, "%s\n%s\n", again.error.c_str(), text.c_str());
    }
    Demand(again.error.empty() && IsSame(scenario, again.scenario), promise);
}

void CheckRejected(const ScenarioResult& result) {
    Demand(IsReason(result.error, kScenarioPath) ||
               IsReason(result.error, "/proc/self/fd/101"), // of the recording
           "a mistake is file:line: reason");
    Demand(result.scenario.devices.empty() && result.scenario.events.empty(),
           "a mistake leaves no scenario");
    DemandReason(result.error, result.error.size() / 2);
}

void CheckAccepted(const Scenario& scenario, const std::string& text) {
    Demand(!scenario.devices.empty() || text.front() == '{', "a scenario has a device");
    if (scenario.devices.size() > kManyDevices || scenario.events.size() > kManyEvents) {
        return;
    }
    DemandSame(scenario, text, "a text is read again as it was read before");
    if (const auto written = ScenarioText(scenario); written && !scenario.devices.empty()) {
        DemandSame(scenario, *written, "what a scenario says, written out, is the same scenario");
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) { return 0; }

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const MemoryFile kScenario(100);
    static const MemoryFile kRecording(101);
    std::string text = FuzzInput(data, size).Rest();
    const size_t cut = std::min(text.find(kSecondFile), text.size());
    kRecording.Write(cut == text.size() ? "" : text.substr(cut + std::strlen(kSecondFile)));
    text.resize(cut);
    kScenario.Write(text);
    const ScenarioResult result = ReadScenario(text, kScenarioPath);
    DemandReason(result.error, result.error.size() + 1);
    if (result.error.empty()) {
        CheckAccepted(result.scenario, text);
    } else {
        CheckRejected(result);
    }
    return 0;
}
