// SPDX-License-Identifier: MIT
#include "adapters/virtual/language/sentence.h"

#include <stdexcept>

#include "adapters/shared/adapter_log.h"

namespace {

std::string Shown(const std::string& word) { return "'" + Printable(word) + "'"; }

} // namespace

Sentence::Sentence(const std::string& text, Quotes quotes)
    : m_Words(SplitEventWords(text)), m_QuotesMatter(quotes == Quotes::Matter) {
    if (m_Words.empty()) {
        throw std::runtime_error("the sentence is empty");
    }
}

bool Sentence::Sees(const std::string& keyword, size_t ahead) const {
    const size_t at = m_At + ahead;
    return at < m_Words.size() && m_Words[at].text == keyword &&
           !(m_QuotesMatter && m_Words[at].isQuoted);
}

bool Sentence::SeesQuoted() const { return !IsAtEnd() && m_Words[m_At].isQuoted; }

bool Sentence::SeesCount() const {
    return !IsAtEnd() && !(m_QuotesMatter && m_Words[m_At].isQuoted) &&
           ReadCount(m_Words[m_At].text).has_value();
}

bool Sentence::Take(const std::string& keyword) {
    const bool isNext = Sees(keyword);
    m_At += isNext ? 1 : 0;
    return isNext;
}

size_t Sentence::TakeNth() {
    const auto nth = IsAtEnd() ? std::nullopt : ReadNth(m_Words[m_At].text);
    m_At += nth ? 1 : 0;
    return nth.value_or(0);
}

void Sentence::Need(const std::string& keyword) {
    if (!Take(keyword)) {
        Expected("'" + keyword + "'");
    }
}

void Sentence::NeedEither(const std::string& one, const std::string& other) {
    if (!Take(one)) {
        Need(other);
    }
}

std::string Sentence::NeedName(const std::string& what) {
    if (IsAtEnd() || m_Words[m_At].text.empty()) {
        Expected(what);
    }
    return m_Words[m_At++].text;
}

std::string Sentence::NeedBytes() {
    if (IsAtEnd() || (m_QuotesMatter && !m_Words[m_At].isQuoted)) {
        Expected("a text in double quotes");
    }
    const EventWord& word = m_Words[m_At];
    std::string bytes = word.isQuoted ? word.text : ResolveBackslashes(word.text);
    if (bytes.empty() || bytes.size() > kMaxEventBytes) {
        Expected("a text of 1 to " + std::to_string(kMaxEventBytes) + " bytes, not " +
                 std::to_string(bytes.size()));
    }
    ++m_At;
    return bytes;
}

ScenarioTime Sentence::NeedTime(ScenarioTime least, ScenarioTime most) {
    const auto time = IsAtEnd() ? std::nullopt : ReadTime(m_Words[m_At].text);
    if (!time) {
        Expected("a time such as 2s, 50ms or 1.5s");
    }
    if (*time < least || *time > most) {
        Expected("a time from " + TimeText(least) + " to " + TimeText(most));
    }
    ++m_At;
    return *time;
}

size_t Sentence::NeedCount(size_t least, size_t most) {
    const auto count = IsAtEnd() ? std::nullopt : ReadCount(m_Words[m_At].text);
    if (!count || *count < least || *count > most) {
        Expected("a number from " + std::to_string(least) + " to " + std::to_string(most));
    }
    ++m_At;
    return *count;
}

void Sentence::NeedEnd() const {
    if (!IsAtEnd()) {
        Expected("the end of the sentence");
    }
}

void Sentence::Expected(const std::string& what) const {
    std::string where = IsAtEnd() ? "the end" : Shown(m_Words[m_At].text);
    if (m_At > 0) {
        where += " after " + Shown(m_Words[m_At - 1].text);
    }
    throw std::runtime_error(where + ": expected " + what);
}
