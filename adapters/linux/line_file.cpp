// SPDX-License-Identifier: MIT
#include "adapters/linux/line_file.h"

#include <fnmatch.h>

#include <stdexcept>

namespace {

bool Matches(const std::string& wanted, const std::string& text) {
    return wanted.empty() || wanted == text;
}

bool MatchesPattern(const std::string& pattern, const std::string& text) {
    return pattern.empty() || fnmatch(pattern.c_str(), text.c_str(), 0) == 0;
}

} // namespace

void LineFile::Apply(const PortFacts& facts, const std::string& deviceName,
                     LineSettings& settings) const {
    Apply(m_ForAll, settings);
    for (const Entry& entry : m_Entries) {
        if (IsMatch(entry, facts, deviceName)) {
            Apply(entry.line, settings);
        }
    }
}

bool LineFile::IsMatch(const Entry& entry, const PortFacts& facts, const std::string& deviceName) {
    return Matches(entry.id, facts.vendorId + ":" + facts.productId) &&
           Matches(entry.serial, facts.serial) && Matches(entry.place, facts.place) &&
           (entry.interfaceNumber < 0 || entry.interfaceNumber == facts.interfaceNumber) &&
           MatchesPattern(entry.node, facts.node) && MatchesPattern(entry.name, deviceName);
}

void LineFile::Apply(const Line& line, LineSettings& settings) {
    try {
        ::Apply(ParseConfiguredLine(line.text), settings);
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(line.where + ": " + error.what());
    }
}
