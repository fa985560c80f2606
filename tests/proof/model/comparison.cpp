// SPDX-License-Identifier: MIT
#include "tests/proof/model/comparison.h"

#include <cstring>

namespace model {
namespace {

std::string Both(const std::string& what, const std::string& manager, const std::string& model) {
    return what + ":\n" + manager + "\nbut the model says:\n" + model + "\n";
}

std::string Joined(const std::vector<std::string>& events) {
    std::string text;
    for (const std::string& event : events) {
        text += event.substr(0, 200) + "\n";
    }
    return text;
}

std::string CompareEvents(Subject& manager, Subject& model) {
    const auto actual = manager.Adapter().TakeEvents();
    const auto expected = model.Adapter().TakeEvents();
    return actual == expected ? "" : Both("happened", Joined(actual), Joined(expected));
}

std::string CompareTexts(Subject& manager, Subject& model) {
    const std::string log = manager.TakeLog();
    const std::string expectedLog = model.TakeLog();
    if (log != expectedLog) {
        return Both("the log", log, expectedLog);
    }
    const std::string trace = manager.TakeTrace();
    const std::string expectedTrace = model.TakeTrace();
    return trace == expectedTrace ? "" : Both("the trace", trace, expectedTrace);
}

std::string CompareLists(Subject& manager, Subject& model) {
    const State actual = manager.Snapshot();
    const State expected = model.Snapshot();
    return actual == expected ? "" : Both("the lists", Describe(actual), Describe(expected));
}

std::string CompareRecords(Subject& manager, Subject& model) {
    const bool isUsed = manager.TakeIsRecordUsed();
    if (!model.TakeIsRecordUsed() && !isUsed) {
        return "";
    }
    const char* const actual = reinterpret_cast<const char*>(&manager.Record());
    const char* const expected = reinterpret_cast<const char*>(&model.Record());
    std::size_t at = 0;
    if (std::memcmp(actual, expected, sizeof manager.Record()) == 0) {
        return "";
    }
    while (actual[at] == expected[at]) {
        ++at;
    }
    return "the enumeration record differs from byte " + std::to_string(at) + " on\n";
}

std::string Step(const Operation& operation, Subject& manager, Subject& model) {
    const Outcome actual = manager.Do(operation);
    const Outcome expected = model.Do(operation);
    if (!(actual == expected)) {
        return Both("the result", Describe(actual), Describe(expected));
    }
    for (const auto compare : {CompareEvents, CompareTexts, CompareLists, CompareRecords}) {
        const std::string difference = compare(manager, model);
        if (!difference.empty()) {
            return difference;
        }
    }
    return "";
}

} // namespace

std::optional<Difference> Compare(const Sequence& sequence, Subject& manager, Subject& model) {
    for (std::size_t i = 0; i < sequence.size(); ++i) {
        const std::string difference = Step(sequence[i], manager, model);
        if (!difference.empty()) {
            return Difference{i, "after step " + std::to_string(i + 1) + ", " +
                                     Describe(sequence[i]) + "\n" + difference};
        }
    }
    return std::nullopt;
}

} // namespace model
