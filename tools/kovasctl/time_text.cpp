// SPDX-License-Identifier: MIT
#include "tools/kovasctl/time_text.h"

#include <ctime>

namespace {

using Time = std::chrono::system_clock::time_point;

tm LocalFields(Time time) {
    const time_t seconds = std::chrono::system_clock::to_time_t(time);
    tm fields{};
    localtime_r(&seconds, &fields);
    return fields;
}

std::string Formatted(const tm& fields, const char* format) {
    char text[64] = "";
    return std::string(text, std::strftime(text, sizeof text, format, &fields));
}

std::string Milliseconds(Time time) {
    const auto sinceEpoch =
        std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch());
    return "." + std::to_string(1000 + sinceEpoch.count() % 1000).substr(1);
}

} // namespace

std::string TimeForPeople(Time time) {
    return Formatted(LocalFields(time), "%Y-%m-%d %H:%M:%S") + Milliseconds(time);
}

std::string TimeForPrograms(Time time) {
    const tm fields = LocalFields(time);
    const std::string zone = Formatted(fields, "%z"); // "+0100"
    return Formatted(fields, "%Y-%m-%dT%H:%M:%S") + Milliseconds(time) + zone.substr(0, 3) + ":" +
           zone.substr(3);
}
