// SPDX-License-Identifier: MIT
#include "adapters/virtual/language/event_words.h"

#include <cstring>
#include <stdexcept>

#include "adapters/shared/adapter_log.h"

namespace {

constexpr char kLetters[] = {'r', 'n', 't', '0', '\\', '"'};
constexpr char kMeanings[] = {'\r', '\n', '\t', '\0', '\\', '"'};
constexpr const char* kHexDigits = "0123456789abcdef";

[[noreturn]] void Fail(const std::string& reason) { throw std::runtime_error(reason); }

bool IsBlank(char character) { return character == ' ' || character == '\t'; }

bool IsControl(char character) {
    const auto byte = static_cast<unsigned char>(character);
    return byte < 0x20 || byte == 0x7f;
}

int HexDigit(char character) {
    const char small = static_cast<char>(character | 0x20);
    const char* found = character == '\0' ? nullptr : std::strchr(kHexDigits, small);
    const bool isLetterOrDigit = character >= '0'; // 0x20 makes digits of control characters
    return found == nullptr || !isLetterOrDigit ? -1 : static_cast<int>(found - kHexDigits);
}

class Splitter {
  public:
    explicit Splitter(const std::string& text) : m_Text(text) {}

    std::vector<EventWord> Words() {
        std::vector<EventWord> words;
        for (SkipBlanks(); m_At < m_Text.size(); SkipBlanks()) {
            words.push_back(m_Text[m_At] == '"' ? Quoted() : Plain());
        }
        return words;
    }

    // Everything up to the end.
    std::string Resolved() {
        std::string text;
        while (m_At < m_Text.size()) {
            text += Character();
        }
        return text;
    }

  private:
    void SkipBlanks() {
        while (m_At < m_Text.size() && IsBlank(m_Text[m_At])) {
            ++m_At;
        }
    }

    EventWord Plain() {
        const size_t start = m_At;
        for (; m_At < m_Text.size() && !IsBlank(m_Text[m_At]); ++m_At) {
            RefuseControl();
            if (m_Text[m_At] == '"') {
                Fail("a quote stands inside a word: '" + Rest(start) + "'");
            }
        }
        return {m_Text.substr(start, m_At - start), false};
    }

    EventWord Quoted() {
        const size_t start = m_At++;
        EventWord word{"", true};
        while (m_At < m_Text.size() && m_Text[m_At] != '"') {
            word.text += Character();
        }
        if (m_At == m_Text.size()) {
            Fail("a quote is not closed: '" + Rest(start) + "'");
        }
        ++m_At;
        if (m_At < m_Text.size() && !IsBlank(m_Text[m_At])) {
            Fail("a blank is missing after a quote: '" + Rest(start) + "'");
        }
        return word;
    }

    char Character() {
        RefuseControl();
        const char character = m_Text[m_At++];
        return character == '\\' ? Escaped() : character;
    }

    char Escaped() {
        if (m_At == m_Text.size()) {
            Fail("a text ends with a backslash");
        }
        const char letter = m_Text[m_At++];
        if (letter == 'x') {
            return HexByte();
        }
        const auto* found =
            static_cast<const char*>(std::memchr(kLetters, letter, sizeof kLetters));
        if (found == nullptr) {
            Fail("'\\" + Printable(std::string(1, letter)) +
                 R"(': expected one of \r \n \t \0 \\ \" \xHH)");
        }
        return kMeanings[found - kLetters];
    }

    char HexByte() {
        const std::string digits = m_Text.substr(m_At, 2);
        if (digits.size() < 2 || HexDigit(digits[0]) < 0 || HexDigit(digits[1]) < 0) {
            Fail("'\\x" + Printable(digits) + "': expected two hexadecimal digits after \\x");
        }
        m_At += 2;
        return static_cast<char>(HexDigit(digits[0]) * 16 + HexDigit(digits[1]));
    }

    void RefuseControl() const {
        if (IsControl(m_Text[m_At])) {
            Fail(R"(a control character stands in the sentence; write it as \r, \n or \xHH)");
        }
    }

    std::string Rest(size_t start) const { return Printable(m_Text.substr(start)); }

    const std::string& m_Text;
    size_t m_At = 0;
};

void AppendQuoted(std::string& text, char character) {
    if (const void* found = std::memchr(kMeanings, character, sizeof kMeanings)) {
        text += '\\';
        text += kLetters[static_cast<const char*>(found) - kMeanings];
    } else if (const auto byte = static_cast<unsigned char>(character);
               byte < 0x20 || byte >= 0x7f) {
        text += "\\x";
        text += kHexDigits[byte / 16];
        text += kHexDigits[byte % 16];
    } else {
        text += character;
    }
}

} // namespace

std::vector<EventWord> SplitEventWords(const std::string& sentence) {
    return Splitter(sentence).Words();
}

std::string ResolveBackslashes(const std::string& text) { return Splitter(text).Resolved(); }

std::string QuoteBytes(const std::string& bytes) {
    std::string text = "\"";
    for (const char character : bytes) {
        AppendQuoted(text, character);
    }
    return text + "\"";
}
