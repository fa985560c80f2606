// SPDX-License-Identifier: MIT
#include "adapters/virtual/language/event_values.h"

#include <algorithm>

namespace {

constexpr size_t kMaxDigits = 9;
constexpr int64_t kParts = 1000000; // a time has up to six decimals

struct Unit {
    const char* name;
    int64_t microseconds;
};

constexpr Unit kUnits[] = {
    {"us", 1}, {"ms", 1000}, {"s", 1000000}, {"m", 60000000}, {"h", 3600000000}};

bool IsDigit(char character) { return character >= '0' && character <= '9'; }

bool IsNumber(const std::string& text, size_t maxDigits) {
    return !text.empty() && text.size() <= maxDigits &&
           std::all_of(text.begin(), text.end(), IsDigit);
}

// "1.5" in millionths.
std::optional<int64_t> ReadMillionths(const std::string& number) {
    const size_t dot = number.find('.');
    const std::string whole = number.substr(0, dot);
    std::string decimals = dot == std::string::npos ? "0" : number.substr(dot + 1);
    if (!IsNumber(whole, kMaxDigits) || !IsNumber(decimals, 6)) {
        return std::nullopt;
    }
    decimals.resize(6, '0');
    return std::stoll(whole) * kParts + std::stoll(decimals);
}

// 11th, 12th and 13th go their own way.
std::string OrdinalEnding(size_t number) {
    const size_t last = number % 100 / 10 == 1 ? 0 : number % 10;
    return last == 1 ? "st" : last == 2 ? "nd" : last == 3 ? "rd" : "th";
}

} // namespace

std::optional<ScenarioTime> ReadTime(const std::string& word) {
    const size_t end = word.find_first_not_of("0123456789.");
    const auto* unit =
        end == std::string::npos
            ? std::end(kUnits)
            : std::find_if(std::begin(kUnits), std::end(kUnits),
                           [&](const Unit& each) { return word.compare(end, 3, each.name) == 0; });
    const auto millionths = ReadMillionths(word.substr(0, end));
    if (unit == std::end(kUnits) || !millionths) {
        return std::nullopt;
    }
    // In this order it fits: the bound has no more than eighteen digits.
    if (*millionths / kParts > kMaxTime.count() / unit->microseconds) {
        return std::nullopt;
    }
    const int64_t time = *millionths * unit->microseconds;
    return time % kParts != 0 || time / kParts > kMaxTime.count()
               ? std::nullopt
               : std::make_optional(ScenarioTime(time / kParts));
}

std::optional<size_t> ReadCount(const std::string& word) {
    return IsNumber(word, kMaxDigits) ? std::make_optional<size_t>(std::stoul(word)) : std::nullopt;
}

std::optional<size_t> ReadNth(const std::string& word) {
    if (word.size() < 3) {
        return std::nullopt;
    }
    const std::string ending = word.substr(word.size() - 2);
    const auto number = ReadCount(word.substr(0, word.size() - 2));
    return number && *number > 0 && ending == OrdinalEnding(*number) ? number : std::nullopt;
}

std::string TimeText(ScenarioTime time) {
    const auto count = time.count();
    if (count % kParts == 0) {
        return std::to_string(count / kParts) + "s";
    }
    if (count % 1000 == 0) {
        return std::to_string(count / 1000) + "ms";
    }
    const std::string microseconds = std::to_string(count);
    return microseconds.size() <= kMaxDigits
               ? microseconds + "us"
               : microseconds.substr(0, microseconds.size() - 6) + "." +
                     microseconds.substr(microseconds.size() - 6) + "s";
}
