// SPDX-License-Identifier: MIT
#include "adapters/spy/fault_words.h"

#include <cctype>
#include <cmath>
#include <stdexcept>

#include "adapters/shared/adapter_log.h"
#include "adapters/spy/call.h"

namespace {

constexpr size_t kMaxShown = 24;
constexpr size_t kMaxDigits = 18;

struct KindWord {
    const char* word;
    FaultKind kind;
};

constexpr KindWord kKindWords[] = {{"fail", FaultKind::Fail},
                                   {"fail-with-handle", FaultKind::FailWithHandle},
                                   {"delay", FaultKind::Delay},
                                   {"short", FaultKind::Short},
                                   {"result", FaultKind::Result}};

struct Unit {
    const char* word;
    double nanoseconds;
};

constexpr Unit kUnits[] = {{"us", 1e3}, {"ms", 1e6}, {"s", 1e9}, {"m", 60e9}};
constexpr std::chrono::nanoseconds kLongest = std::chrono::seconds(60);

bool IsDigit(char character) { return character >= '0' && character <= '9'; }

} // namespace

bool FaultWords::IsEnd() { return Place() == m_Plan.size(); }

bool FaultWords::Skip(char character) {
    SkipBlanks();
    if (m_At == m_Plan.size() || m_Plan[m_At] != character) {
        return false;
    }
    ++m_At;
    return true;
}

void FaultWords::Expect(char character, const std::string& what) {
    if (!Skip(character)) {
        Fail(what + ", is expected here");
    }
}

OSADAPT_SPY_KIND FaultWords::Call() {
    const size_t start = Place();
    const std::string word = Word();
    for (int kind = OSADAPT_SPY_REGISTER; kind < OSADAPT_SPY_NOTICE; ++kind) {
        if (word == NameOf(static_cast<OSADAPT_SPY_KIND>(kind))) {
            return static_cast<OSADAPT_SPY_KIND>(kind);
        }
    }
    FailAt(start,
           "one of register, unregister, open, close, write, read and enumerate is expected");
}

FaultKind FaultWords::Kind() {
    const size_t start = Place();
    const std::string word = Word();
    for (const KindWord& known : kKindWords) {
        if (word == known.word) {
            return known.kind;
        }
    }
    FailAt(start, "one of fail, fail-with-handle, delay:TIME, short:N and result:N is expected");
}

uint64_t FaultWords::Number(const std::string& what) {
    const size_t start = Place();
    while (m_At < m_Plan.size() && IsDigit(m_Plan[m_At])) {
        ++m_At;
    }
    if (m_At == start || m_At - start > kMaxDigits) {
        FailAt(start, what + " is expected here");
    }
    return std::stoull(Since(start));
}

long FaultWords::Number31(const std::string& what) {
    const size_t start = Place();
    const uint64_t number = Number(what);
    if (number > INT32_MAX) {
        FailAt(start, what + " is 2147483647 at most");
    }
    return static_cast<long>(number);
}

std::chrono::nanoseconds FaultWords::Time() {
    const size_t start = Place();
    const double value = Decimal();
    const std::string word = Word();
    for (const Unit& unit : kUnits) {
        if (word == unit.word) {
            const double nanoseconds = value * unit.nanoseconds;
            if (nanoseconds > static_cast<double>(kLongest.count())) {
                FailAt(start, "a delay is 60s at most");
            }
            return std::chrono::nanoseconds(static_cast<int64_t>(nanoseconds));
        }
    }
    FailAt(start, "a time has a unit: us, ms, s or m");
}

double FaultWords::Decimal() {
    const auto whole = static_cast<double>(Number("a time, as 20ms"));
    if (m_At == m_Plan.size() || m_Plan[m_At] != '.') {
        return whole;
    }
    const size_t first = ++m_At;
    const auto digits = static_cast<double>(Number("digits"));
    return whole + digits / std::pow(10, m_At - first);
}

std::string FaultWords::Port() {
    const size_t start = Place();
    if (Skip('"')) {
        return QuotedPort();
    }
    const size_t end = m_Plan.find_first_of(":,=", start);
    m_At = end == std::string::npos ? m_Plan.size() : end;
    std::string name = Since(start);
    if (name.empty()) {
        FailAt(start, "a port's name is expected here");
    }
    return name;
}

std::string FaultWords::QuotedPort() {
    const size_t start = m_At;
    std::string name;
    while (m_At < m_Plan.size() && m_Plan[m_At] != '"') {
        m_At += m_Plan[m_At] == '\\' && m_At + 1 < m_Plan.size() ? 1 : 0;
        name += m_Plan[m_At++];
    }
    if (m_At == m_Plan.size() || name.empty()) {
        FailAt(start, "a port's name and '\"' are expected here");
    }
    ++m_At;
    return name;
}

size_t FaultWords::Place() {
    SkipBlanks();
    return m_At;
}

void FaultWords::Fail(const std::string& reason) { FailAt(Place(), reason); }

void FaultWords::FailAt(size_t place, const std::string& reason) const {
    const std::string rest = m_Plan.substr(place);
    const std::string shown = rest.substr(0, kMaxShown) + (rest.size() > kMaxShown ? "..." : "");
    throw std::runtime_error("character " + std::to_string(place + 1) + ", " +
                             (rest.empty() ? "the end" : "'" + Printable(shown) + "'") + ": " +
                             reason);
}

void FaultWords::SkipBlanks() {
    while (m_At < m_Plan.size() && std::isspace(static_cast<unsigned char>(m_Plan[m_At])) != 0) {
        ++m_At;
    }
}

std::string FaultWords::Word() {
    const size_t start = Place();
    while (m_At < m_Plan.size() &&
           ((m_Plan[m_At] >= 'a' && m_Plan[m_At] <= 'z') || m_Plan[m_At] == '-')) {
        ++m_At;
    }
    return Since(start);
}
