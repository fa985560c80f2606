// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_SPY_FAULT_WORDS_H
#define KOVASMGR_ADAPTERS_SPY_FAULT_WORDS_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

#include "adapters/spy/fault.h"

/// Takes a plan apart, from left to right. Blanks between words mean nothing.
/// All that expects something throws std::runtime_error with the place when it is not there.
class FaultWords {
  public:
    explicit FaultWords(const std::string& plan) : m_Plan(plan) {}

    bool IsEnd();

    /// Takes the character if it is the next.
    bool Skip(char character);
    void Expect(char character, const std::string& what);

    OSADAPT_SPY_KIND Call();
    FaultKind Kind();
    uint64_t Number(const std::string& what);
    long Number31(const std::string& what); // up to 2,147,483,647
    std::chrono::nanoseconds Time();        // up to a minute

    /// A port's name, up to the ':' in front of the numbers; in double quotes, with \" and \\ inside,
    /// when it has a ':', ',' or '=' itself.
    std::string Port();

    /// Where the next word begins; the text from such a place to here.
    size_t Place();
    std::string Since(size_t place) const { return m_Plan.substr(place, m_At - place); }

    [[noreturn]] void Fail(const std::string& reason);
    [[noreturn]] void FailAt(size_t place, const std::string& reason) const;

  private:
    void SkipBlanks();
    std::string Word();
    std::string QuotedPort();
    double Decimal();

    const std::string& m_Plan;
    size_t m_At = 0;
};

#endif
