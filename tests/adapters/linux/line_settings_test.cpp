// SPDX-License-Identifier: MIT
#include "adapters/linux/line_settings.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

// The text of a default line after these changes.
template <typename... Texts> std::string After(const Texts&... texts) {
    LineSettings settings;
    (Apply(ParseLineChange(texts), settings), ...);
    return LineText(settings);
}

std::string MistakeIn(const std::string& text) {
    try {
        ParseLineChange(text);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "";
}

testing::AssertionResult Mentions(const std::string& text, const std::string& part) {
    return (text.find(part) != std::string::npos ? testing::AssertionSuccess()
                                                 : testing::AssertionFailure())
           << "'" << text << "'";
}

} // namespace

TEST(LineSettings, WithoutAnyWordAreTheDefault) {
    EXPECT_EQ("115200 8N1", After(""));
    EXPECT_EQ("115200 8N1", After("  ,\t, "));
    EXPECT_EQ(1000, LineSettings().writeTime.count());
    EXPECT_EQ(LineSwitch::Keep, LineSettings().dtr);
    EXPECT_EQ(LineSwitch::Keep, LineSettings().rts);
}

TEST(LineSettings, AreReadFromEveryWord) {
    const struct {
        const char* text;
        const char* result;
    } cases[] = {
        {"9600", "9600 8N1"},
        {"1", "1 8N1"},
        {"4294967295", "4294967295 8N1"},
        {"31250 7E2", "31250 7E2"},
        {"9600,7e2", "9600 7E2"},
        {" 9600 ,\t5O1 ", "9600 5O1"},
        {"6m1", "115200 6M1"},
        {"8S2", "115200 8S2"},
        {"rtscts", "115200 8N1 flow=rtscts"},
        {"XonXoff", "115200 8N1 flow=xonxoff"},
        {"flow=rtscts", "115200 8N1 flow=rtscts"},
        {"flow=xonxoff", "115200 8N1 flow=xonxoff"},
        {"rtscts flow=none", "115200 8N1"},
        {"dtr=off rts=on", "115200 8N1 dtr=off rts=on"},
        {"DTR=OFF dtr=keep", "115200 8N1"},
        {"low_latency=on", "115200 8N1 low_latency=on"},
        {"low_latency=off", "115200 8N1 low_latency=off"},
        {"write_timeout=1", "115200 8N1 write_timeout=1"},
        {"write_timeout=10000", "115200 8N1 write_timeout=10000"},
    };
    for (const auto& it : cases) {
        EXPECT_EQ(it.result, After(it.text)) << it.text;
    }
}

TEST(LineSettings, TakeTheLaterOfTwoWords) {
    EXPECT_EQ("300 7O1 dtr=on", After("9600 8E2 dtr=off 300 7O1 dtr=on"));
}

TEST(LineSettings, KeepWhatAChangeDoesNotName) {
    EXPECT_EQ("9600 7E1 flow=rtscts rts=off write_timeout=500",
              After("300 7E1 rtscts", "rts=off write_timeout=500", "9600"));
    EXPECT_EQ("9600 8N1", After("9600", ""));
}

TEST(LineSettings, NameTheWordThatIsWrongAndWhatIsAllowed) {
    const struct {
        const char* text;
        const char* word;
        const char* allowed;
    } cases[] = {
        {"9600 8X1", "'8x1'", "8N1"},
        {"9N1", "'9n1'", "5 to 8 data bits"},
        {"4N1", "'4n1'", "5 to 8 data bits"},
        {"8N3", "'8n3'", "1 or 2 stop bits"},
        {"8N1.5", "'8n1.5'", "1 or 2 stop bits"},
        {"8N", "'8n'", "8N1"},
        {"0", "'0'", "a baud rate is a whole number from 1 to 4294967295"},
        {"4294967296", "'4294967296'", "from 1 to 4294967295"},
        {"99999999999999999999999", "'99999999999999999999999'", "from 1 to 4294967295"},
        {"-9600", "'-9600'", "allowed are a baud rate"},
        {"9600.5", "'9600.5'", "allowed are a baud rate"},
        {"fast", "'fast'", "flow="},
        {"flow=hardware", "'flow=hardware'", "flow=none, flow=rtscts and flow=xonxoff"},
        {"flow=", "'flow='", "flow=rtscts"},
        {"dtr=yes", "'dtr=yes'", "dtr=on, dtr=off and dtr=keep"},
        {"dtr", "'dtr'", "dtr="},
        {"rts=1", "'rts=1'", "rts=on, rts=off and rts=keep"},
        {"low_latency=", "'low_latency='", "low_latency=on"},
        {"write_timeout=0", "'write_timeout=0'",
         "in milliseconds is a whole number from 1 to 10000"},
        {"write_timeout=10001", "'write_timeout=10001'", "from 1 to 10000"},
        {"write_timeout=1s", "'write_timeout=1s'", "from 1 to 10000"},
        {"write_timeout= 1", "'write_timeout='", "from 1 to 10000"},
        {"break=0", "'break=0'", "from 1 to 5000"},
        {"break=5001", "'break=5001'", "from 1 to 5000"},
        {"=", "'='", "allowed are"},
        {"a\x1b[2J\nb%s", "'a?[2j?b%s'", "allowed are"},
    };
    for (const auto& it : cases) {
        EXPECT_TRUE(Mentions(MistakeIn(it.text), it.word)) << it.text;
        EXPECT_TRUE(Mentions(MistakeIn(it.text), it.allowed)) << it.text;
    }
}

TEST(LineSettings, HaveABoundOnTheirText) {
    EXPECT_EQ("", MistakeIn(std::string(256, ' ')));
    EXPECT_EQ("line settings have at most 256 bytes, not 257", MistakeIn(std::string(257, ' ')));
    EXPECT_LT(MistakeIn(std::string(256, 'x')).size(), 600U);
}

TEST(LineSettings, HoldNoBreak) {
    EXPECT_EQ(250, ParseLineChange("break").breakTime->count());
    EXPECT_EQ(5000, ParseLineChange("9600 break=5000").breakTime->count());
    EXPECT_FALSE(ParseLineChange("9600").breakTime);
    LineChange remembered;
    Apply(ParseLineChange("9600 break"), remembered);
    EXPECT_FALSE(remembered.breakTime);
    EXPECT_EQ(9600U, remembered.baudRate);
    EXPECT_THROW(ParseConfiguredLine("9600 break"), std::runtime_error);
}

TEST(LineSettings, AreMergedFromTwoChangesOfWhichTheLaterWins) {
    LineChange change = ParseLineChange("300 7E1 dtr=off");
    Apply(ParseLineChange("9600 rts=on"), change);
    LineSettings settings;
    Apply(change, settings);
    EXPECT_EQ("9600 7E1 dtr=off rts=on", LineText(settings));
}
