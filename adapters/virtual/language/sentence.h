// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_SENTENCE_H
#define KOVASMGR_ADAPTERS_VIRTUAL_SENTENCE_H

#include <string>
#include <vector>

#include "adapters/virtual/language/event_values.h"
#include "adapters/virtual/language/event_words.h"

/// What one text of a sentence may hold.
constexpr size_t kMaxEventBytes = 1024;

/// A sentence that is read word by word. What is needed and not there is thrown as
/// std::runtime_error with a reason that names the word and says what was expected.
class Sentence {
  public:
    /// Whether a word in quotes is never a keyword, and bytes must stand in quotes.
    enum class Quotes { Matter, DoNotMatter };

    Sentence(const std::string& text, Quotes quotes);

    bool IsAtEnd() const { return m_At == m_Words.size(); }

    /// Whether the next word, or one further ahead, is this keyword.
    bool Sees(const std::string& keyword, size_t ahead = 0) const;
    bool SeesQuoted() const;
    bool SeesCount() const;

    /// Goes past the keyword if it is next.
    bool Take(const std::string& keyword);

    /// Goes past the ordinal number if one is next.
    size_t TakeNth();

    void Need(const std::string& keyword);
    void NeedEither(const std::string& one, const std::string& other);
    std::string NeedName(const std::string& what);
    std::string NeedBytes();
    ScenarioTime NeedTime(ScenarioTime least = ScenarioTime(0), ScenarioTime most = kMaxTime);
    size_t NeedCount(size_t least, size_t most);
    void NeedEnd() const;

    /// @throws std::runtime_error "'soon' after 'at': expected " and what
    [[noreturn]] void Expected(const std::string& what) const;

  private:
    std::vector<EventWord> m_Words;
    bool m_QuotesMatter;
    size_t m_At = 0;
};

#endif
