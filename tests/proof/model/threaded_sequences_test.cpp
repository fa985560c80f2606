// SPDX-License-Identifier: MIT
//
// Fewer sequences, through the exported functions alone, with the read thread at work: what is fixed
// in spite of it is as the model says.
#include <gtest/gtest.h>

#include <dlfcn.h>

#include <filesystem>

#include "tests/harness/figures.h"
#include "tests/harness/scratch_directory.h"
#include "tests/proof/model/binding.h"
#include "tests/proof/model/comparison.h"
#include "tests/proof/model/decoder.h"
#include "tests/proof/model/model.h"
#include "tests/proof/model/shrink.h"
#include "tests/proof/model/threaded_manager.h"

namespace {

using namespace model;

constexpr int kSequences = 50;
constexpr std::size_t kFewestBytes = 20;
constexpr std::size_t kMostBytes = 120;

/// A directory with the forwarding adapter, which stays loaded.
class Place {
  public:
    Place() {
        std::filesystem::create_symlink(KOVASMGR_MODEL_ADAPTER,
                                        m_Scratch.Path() + "/libOSAdapt.so");
        m_Adapter = dlopen(KOVASMGR_MODEL_ADAPTER, RTLD_NOW);
        using Forward = void (*)(const AdapterFunctions*);
        reinterpret_cast<Forward>(dlsym(m_Adapter, "ModelAdapter_Forward"))(&WorldFunctions());
    }
    ~Place() { dlclose(m_Adapter); }
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;

    std::optional<Difference> Compare(const Sequence& sequence) {
        ThreadedManager manager(m_Scratch.LogDirectory(), m_Trace);
        Model model(Model::Start::kFull, m_Quirks);
        return model::Compare(sequence, manager, model);
    }

  private:
    ScratchDirectory m_Scratch;
    TraceFile m_Trace;
    QuirkCounts m_Quirks{};
    void* m_Adapter;
};

std::string Report(Place& place, std::uint64_t seed, const Sequence& sequence) {
    const Sequence shrunk = Shrink(
        sequence, [&](const Sequence& shorter) { return place.Compare(shorter).has_value(); });
    const auto difference = place.Compare(shrunk);
    return "seed " + std::to_string(seed) + ":\n" + Describe(shrunk) +
           (difference ? difference->what : "and not every time");
}

std::string RunSequences(std::uint64_t firstSeed, long& steps) {
    Place place;
    for (std::uint64_t seed = firstSeed; seed < firstSeed + kSequences; ++seed) {
        const Sequence sequence =
            Decode(RandomBytes(seed, kFewestBytes, kMostBytes), Decoder::Host::kThreaded);
        steps += static_cast<long>(sequence.size());
        if (place.Compare(sequence)) {
            return Report(place, seed, sequence);
        }
    }
    return "";
}

class ThreadedSequences : public testing::TestWithParam<int> {};

TEST_P(ThreadedSequences, EndAsTheModelSays) {
    long steps = 0;
    ASSERT_EQ("", RunSequences(static_cast<std::uint64_t>(GetParam()) * 1'000'000, steps));
    NoteFigure("model.threaded_sequences", kSequences);
    NoteFigure("model.threaded_steps", static_cast<double>(steps));
}

INSTANTIATE_TEST_SUITE_P(Of, ThreadedSequences, testing::Range(0, 4));

} // namespace
