// SPDX-License-Identifier: MIT
#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <string_view>

#include "adapters/linux/line_settings.h"
#include "adapters/shared/adapter_log.h"

namespace {

constexpr size_t kMaxText = 256;
constexpr std::string_view kSeparators = " \t,";
constexpr std::chrono::milliseconds kDefaultBreak{250};
constexpr uint32_t kMaxBreakMs = 5000;
constexpr uint32_t kMaxWriteMs = 10000;

constexpr std::string_view kParityLetters = "neoms"; // in the order of Parity
constexpr std::string_view kDigits = "0123456789";

[[noreturn]] void Refuse(const std::string& word, const std::string& allowed) {
    throw std::runtime_error("'" + Printable(word) + "': " + allowed);
}

// std::tolower follows the host's locale.
std::string Lower(std::string text) {
    for (char& character : text) {
        if (character >= 'A' && character <= 'Z') {
            character = static_cast<char>(character - 'A' + 'a');
        }
    }
    return text;
}

bool IsAllDigits(const std::string& text) {
    return !text.empty() && text.find_first_not_of(kDigits) == std::string::npos;
}

bool IsFraming(const std::string& word) {
    return word.size() == 3 && word[0] >= '5' && word[0] <= '8' &&
           kParityLetters.find(word[1]) != std::string_view::npos &&
           (word[2] == '1' || word[2] == '2');
}

// Reads one word, which is in lower case.
class Word {
  public:
    Word(const std::string& word, LineChange& change) : m_Word(word), m_Change(change) {
        const size_t equals = word.find('=');
        m_Key = word.substr(0, equals);
        m_HasValue = equals != std::string::npos;
        if (m_HasValue) {
            m_Value = word.substr(equals + 1);
        }
    }

    void Read() {
        if (IsAllDigits(m_Word)) {
            m_Change.baudRate = Number(m_Word, 1, UINT32_MAX, "a baud rate");
        } else if (IsFraming(m_Word)) {
            ReadFraming();
        } else if (m_HasValue) {
            ReadSetting();
        } else {
            ReadBareWord();
        }
    }

  private:
    void ReadFraming() {
        m_Change.dataBits = m_Word[0] - '0';
        m_Change.parity = static_cast<Parity>(kParityLetters.find(m_Word[1]));
        m_Change.stopBits = m_Word[2] - '0';
    }

    void ReadSetting() {
        if (m_Key == "flow") {
            m_Change.flow = Choice(FlowControl::None, FlowControl::RtsCts, FlowControl::XonXoff);
        } else if (m_Key == "dtr") {
            m_Change.dtr = ReadSwitch();
        } else if (m_Key == "rts") {
            m_Change.rts = ReadSwitch();
        } else if (m_Key == "low_latency") {
            m_Change.lowLatency = ReadSwitch();
        } else if (m_Key == "write_timeout") {
            m_Change.writeTime = Milliseconds(kMaxWriteMs);
        } else if (m_Key == "break") {
            m_Change.breakTime = Milliseconds(kMaxBreakMs);
        } else {
            RefuseUnknown();
        }
    }

    void ReadBareWord() {
        if (m_Word == NameOf(FlowControl::RtsCts)) {
            m_Change.flow = FlowControl::RtsCts;
        } else if (m_Word == NameOf(FlowControl::XonXoff)) {
            m_Change.flow = FlowControl::XonXoff;
        } else if (m_Word == "break") {
            m_Change.breakTime = kDefaultBreak;
        } else {
            RefuseUnknown();
        }
    }

    LineSwitch ReadSwitch() const {
        return Choice(LineSwitch::On, LineSwitch::Off, LineSwitch::Keep);
    }

    // The one of three values whose name the word gives.
    template <typename Value> Value Choice(Value first, Value second, Value third) const {
        for (const Value value : {first, second, third}) {
            if (m_Value == NameOf(value)) {
                return value;
            }
        }
        Refuse(m_Word, "allowed are " + m_Key + "=" + NameOf(first) + ", " + m_Key + "=" +
                           NameOf(second) + " and " + m_Key + "=" + NameOf(third));
    }

    std::chrono::milliseconds Milliseconds(uint32_t most) const {
        return std::chrono::milliseconds(Number(m_Value, 1, most, m_Key + " in milliseconds"));
    }

    uint32_t Number(const std::string& text, uint32_t least, uint32_t most,
                    const std::string& what) const {
        uint32_t number = 0;
        const char* end = text.data() + text.size();
        const std::from_chars_result result = std::from_chars(text.data(), end, number);
        if (result.ec != std::errc() || result.ptr != end || number < least || number > most) {
            Refuse(m_Word, what + " is a whole number from " + std::to_string(least) + " to " +
                               std::to_string(most));
        }
        return number;
    }

    [[noreturn]] void RefuseUnknown() const {
        Refuse(m_Word, "not a line setting; allowed are a baud rate (115200), a framing of 5 to 8 "
                       "data bits, parity N, E, O, M or S and 1 or 2 stop bits (8N1), flow=, dtr=, "
                       "rts=, low_latency=, write_timeout=, break and break=");
    }

    const std::string m_Word;
    LineChange& m_Change;
    std::string m_Key;
    std::string m_Value;
    bool m_HasValue = false;
};

} // namespace

LineChange ParseLineChange(const std::string& text) {
    if (text.size() > kMaxText) {
        throw std::runtime_error("line settings have at most " + std::to_string(kMaxText) +
                                 " bytes, not " + std::to_string(text.size()));
    }
    const std::string words = Lower(text);
    LineChange change;
    for (size_t start = words.find_first_not_of(kSeparators); start != std::string::npos;) {
        const size_t end = std::min(words.find_first_of(kSeparators, start), words.size());
        Word(words.substr(start, end - start), change).Read();
        start = words.find_first_not_of(kSeparators, end);
    }
    return change;
}

LineChange ParseConfiguredLine(const std::string& text) {
    const LineChange change = ParseLineChange(text);
    if (change.breakTime) {
        throw std::runtime_error("'break' is for a port that is open, not for a configuration");
    }
    return change;
}
