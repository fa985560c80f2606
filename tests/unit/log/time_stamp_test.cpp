// SPDX-License-Identifier: MIT
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <regex>

#include "tests/harness/wait_until.h"
#include "tests/unit/log/log_test.h"

namespace {

std::string Stamp() {
    char out[64];
    std::memset(out, '#', sizeof out);
    PelMgr_GetCurrentTime(out, nullptr);
    return out;
}

// Seconds since the epoch, in the local time zone.
time_t SecondsOf(const std::string& stamp) {
    tm fields{};
    strptime(stamp.c_str(), "%Y-%m-%d %H:%M:%S", &fields);
    fields.tm_isdst = -1;
    return mktime(&fields);
}

TEST(TimeStamp, HasDateTimeAndMilliseconds) {
    EXPECT_TRUE(std::regex_match(
        Stamp(), std::regex("[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}:[0-9]{3}")))
        << Stamp();
}

TEST(TimeStamp, WritesItsTextAndATerminatorOnly) {
    char out[64];
    std::memset(out, '#', sizeof out);
    PelMgr_GetCurrentTime(out, nullptr);
    EXPECT_EQ(std::strlen(out), 23U);
    EXPECT_EQ(std::string(out + 24, 40), std::string(40, '#'));
}

TEST(TimeStamp, IsTheLocalTime) {
    for (const char* zone : {"UTC0", "AAA-05:45", "BBB+11"}) {
        setenv("TZ", zone, 1);
        tzset();
        const time_t before = time(nullptr);
        const time_t stamped = SecondsOf(Stamp());
        EXPECT_GE(stamped, before - 1) << zone;
        EXPECT_LE(stamped, time(nullptr)) << zone;
        // The text of a second is kept for that second.
        ASSERT_TRUE(WaitUntil([&] { return time(nullptr) > before + 1; }));
    }
}

TEST(TimeStamp, MovesOn) {
    const std::string first = Stamp();
    EXPECT_TRUE(WaitUntil([&] { return Stamp() > first; }));
    const std::string second = first.substr(0, 19);
    EXPECT_TRUE(WaitUntil([&] { return Stamp().substr(0, 19) > second; }));
}

TEST(TimeStamp, WithAFormatLeavesTheBufferUntouched) {
    char out[64] = "untouched";
    PelMgr_GetCurrentTime(out, "%Y");
    EXPECT_STREQ(out, "untouched");
    PelMgr_GetCurrentTime(out, "");
    EXPECT_STREQ(out, "untouched");
}

TEST(TimeStamp, WithoutABufferDoesNothing) {
    PelMgr_GetCurrentTime(nullptr, nullptr);
    PelMgr_GetCurrentTime(nullptr, "%Y");
}

} // namespace
