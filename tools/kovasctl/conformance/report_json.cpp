// SPDX-License-Identifier: MIT
#include <nlohmann/json.hpp>

#include "tools/kovasctl/conformance/report.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr int kSchema = 1; // that of all of the tool's objects

std::string Line(const Json& object) {
    return object.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

const char* VerdictName(Verdict verdict) {
    switch (verdict) {
    case Verdict::Pass:
        return "pass";
    case Verdict::Fail:
        return "fail";
    case Verdict::NotApplicable:
        return "not-applicable";
    }
    return "";
}

Json ToJson(const Rule& rule) {
    return {{"rule", rule.number},
            {"text", rule.text},
            {"broken", rule.broken},
            {"needs", NeedsText(rule.needs)}};
}

Json ToJson(const Result& result) {
    Json object = ToJson(*result.rule);
    object["verdict"] = VerdictName(result.outcome.verdict);
    object["seen"] = result.outcome.seen;
    object["seconds"] = result.outcome.seconds;
    return object;
}

} // namespace

std::string ResultsAsJson(const std::string& file, const Results& results) {
    Json list = Json::array();
    for (const Result& result : results) {
        list.push_back(ToJson(result));
    }
    return Line(
        {{"schema", kSchema}, {"adapter", file}, {"good", !HasFailure(results)}, {"rules", list}});
}

std::string RulesAsJson(const std::vector<const Rule*>& rules) {
    Json list = Json::array();
    for (const Rule* rule : rules) {
        list.push_back(ToJson(*rule));
    }
    return Line({{"schema", kSchema}, {"rules", list}});
}
