// SPDX-License-Identifier: MIT
//
// Calls of a host, notices, sweeps and answers of an adapter, in any order, on the manager and on its
// model: results, what is stored through pointers, the adapter's calls, the host's callbacks, log
// lines, trace lines and both lists are compared after every step.
//
// Input: bytes that choose the steps (tests/proof/model/decoder.h).
#include <filesystem>
#include <optional>

#include "tests/proof/fuzz/fuzz_input.h"
#include "tests/proof/model/bare_run.h"
#include "tests/proof/model/decoder.h"

namespace {

// A step that attaches a crowd of devices takes far longer than its bytes tell.
constexpr size_t kMostSteps = 400;

// Standard output is led away to the end; reports go to standard error.
model::BareRun& Run() {
    static model::BareRun run;
    return run;
}

} // namespace

// The run has a directory of its own, but the names of inputs and findings may be relative.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
    const std::filesystem::path before = std::filesystem::current_path();
    Run();
    std::filesystem::current_path(before);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const model::ByteSource bytes(data, size);
    model::Sequence sequence = model::Decoder(bytes, model::Decoder::Host::kBare).Decode();
    sequence.resize(std::min(sequence.size(), kMostSteps));
    const std::optional<model::Difference> difference = Run().Compare(sequence);
    if (difference) {
        sequence.resize(difference->step + 1);
        std::fprintf(stderr, "%s%s", Describe(sequence).c_str(), difference->what.c_str());
    }
    Demand(!difference, "the manager does what its model says");
    return 0;
}
