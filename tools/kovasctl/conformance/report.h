// SPDX-License-Identifier: MIT
//
// What an examination has brought to light, for people and for programs.
#ifndef KOVASCTL_CONFORMANCE_REPORT_H
#define KOVASCTL_CONFORMANCE_REPORT_H

#include <string>
#include <vector>

#include "tools/kovasctl/conformance/rule.h"
#include "tools/kovasctl/conformance/verdict.h"

struct Result {
    const Rule* rule;
    Outcome outcome;
};

using Results = std::vector<Result>;

bool HasFailure(const Results& results);

// For people: one rule, and the numbers at the end.
std::string ResultAsText(const Result& result);
std::string SummaryAsText(const Results& results);
std::string RuleAsText(const Rule& rule);

// For programs; tools/kovasctl/README.md describes the form. One object and a line end.
std::string ResultsAsJson(const std::string& file, const Results& results);
std::string RulesAsJson(const std::vector<const Rule*>& rules);

/// JUnit's XML, as build servers read it.
std::string ResultsAsJunit(const std::string& file, const Results& results);

#endif
