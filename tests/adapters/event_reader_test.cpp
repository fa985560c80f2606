// SPDX-License-Identifier: MIT
//
// The sentences of scenarios: every form, and what is said about every mistake.
#include "adapters/virtual/language/event_reader.h"

#include <gtest/gtest.h>

#include <random>
#include <stdexcept>

#include "adapters/virtual/language/event_values.h"
#include "adapters/virtual/language/event_words.h"

namespace {

using std::chrono::hours;
using std::chrono::microseconds;
using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;

// Sentences stand in the script of this port.
constexpr const char* kOwn = "own";

template <typename Read> std::string MistakeOf(Read read) {
    try {
        read();
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "none";
}

std::string EventMistake(const std::string& sentence, const std::string& ownPort = "") {
    return MistakeOf([&] { ReadEvent(sentence, ownPort); });
}

std::string ActionMistake(const std::string& sentence) {
    return MistakeOf([&] { ReadAction(sentence); });
}

std::string WordsMistake(const std::string& sentence) {
    return MistakeOf([&] { SplitEventWords(sentence); });
}

// All of an action in a line, to compare it with.
std::string Shown(const Action& action) {
    static constexpr const char* kKinds[] = {
        "Plug",  "Pull",   "Replug", "Switch", "PlugPort", "UnplugPort", "Send", "SendRandom",
        "Stall", "Resume", "Break",  "Mend",   "Fail",     "Shorten",    "Delay"};
    static constexpr const char* kOperations[] = {"Open", "Close", "Write", "Read", "Enumerate"};
    const auto kind = static_cast<size_t>(action.kind);
    std::string text = std::string(kKinds[kind]) + " " + action.target;
    text += action.mode.empty() ? "" : " mode " + action.mode;
    text += action.bytes.empty() ? "" : " " + QuoteBytes(action.bytes);
    text += action.count == 0 ? "" : " count " + std::to_string(action.count);
    text += action.times == 1 ? "" : " times " + std::to_string(action.times);
    text += action.delay.count() == 0 ? "" : " by " + std::to_string(action.delay.count());
    if (action.kind >= ActionKind::Fail) {
        text += std::string(" ") + kOperations[static_cast<size_t>(action.operation)] + " calls " +
                std::to_string(action.extent.calls) + " time " +
                std::to_string(action.extent.time.count());
    }
    return text;
}

std::string ShownAction(const std::string& sentence) { return Shown(ReadAction(sentence)); }

// Of a script's sentence that begins with a time.
std::string ShownInScript(const std::string& action) {
    return Shown(ReadEvent("at 1s " + action, kOwn).action);
}

std::string ShownOn(const std::string& rest, const std::string& ownPort = kOwn) {
    return Shown(ReadEvent("on " + rest, ownPort).action);
}

ScenarioTime TimeOf(const std::string& word) {
    return ReadEvent("at " + word + " pull d").trigger.time;
}

} // namespace

TEST(EventWords, StandApartByBlanksAndTabs) {
    const auto words = SplitEventWords(" \tat  2s\tpull  \"my modem\" ");
    ASSERT_EQ(4U, words.size());
    EXPECT_EQ("at", words[0].text);
    EXPECT_EQ("pull", words[2].text);
    EXPECT_FALSE(words[2].isQuoted);
    EXPECT_EQ("my modem", words[3].text);
    EXPECT_TRUE(words[3].isQuoted);
    EXPECT_TRUE(SplitEventWords("").empty());
    EXPECT_TRUE(SplitEventWords(" \t ").empty());
}

TEST(EventWords, ABackslashInQuotesStandsForAnyByte) {
    EXPECT_EQ(std::string("\r\n\t\0\\\"", 6), SplitEventWords(R"("\r\n\t\0\\\"")").front().text);
    EXPECT_EQ(std::string("\x00\x7f\xff\xaB", 4),
              SplitEventWords(R"("\x00\x7F\xff\xaB")").front().text);
    EXPECT_EQ("é#'", SplitEventWords("\"é#'\"").front().text);
    EXPECT_EQ("a\\r", SplitEventWords("a\\r").front().text);
    EXPECT_EQ("", SplitEventWords("\"\"").front().text);
}

TEST(EventWords, EveryByteComesBackFromItsQuotedForm) {
    std::string all;
    for (int byte = 0; byte < 256; ++byte) {
        all += static_cast<char>(byte);
    }
    const std::string quoted = QuoteBytes(all);
    EXPECT_EQ(all, SplitEventWords(quoted).front().text);
    EXPECT_EQ(all, ResolveBackslashes(quoted.substr(1, quoted.size() - 2)));
    EXPECT_EQ(R"("AT\r\x01\"")", QuoteBytes("AT\r\x01\""));
}

// A number has nine digits at most.
TEST(EventValues, ALongTimeWithMicrosecondsComesBackFromItsText) {
    for (const auto& [word, text] :
         std::vector<std::pair<std::string, std::string>>{{"999999999us", "999999999us"},
                                                          {"1000.000001s", "1000.000001s"},
                                                          {"0.999999h", "3599.996400s"},
                                                          {"1000.5s", "1000500ms"}}) {
        const auto time = ReadTime(word);
        ASSERT_TRUE(time) << word;
        EXPECT_EQ(text, TimeText(*time));
        EXPECT_EQ(time, ReadTime(TimeText(*time)));
    }
}

TEST(EventWords, AMistakeIsNamed) {
    EXPECT_EQ("a quote is not closed: '\"abc d'", WordsMistake("pull \"abc d"));
    EXPECT_EQ("a quote is not closed: '\"'", WordsMistake("\""));
    EXPECT_EQ("a quote is not closed: '\"\\\"'", WordsMistake("\"\\\""));
    EXPECT_EQ("a quote stands inside a word: 'b\"c'", WordsMistake("a b\"c"));
    EXPECT_EQ("a blank is missing after a quote: '\"a\"b'", WordsMistake("\"a\"b"));
    EXPECT_EQ(R"('\q': expected one of \r \n \t \0 \\ \" \xHH)", WordsMistake(R"("\q")"));
    EXPECT_EQ(R"('\xg0': expected two hexadecimal digits after \x)", WordsMistake(R"("\xg0")"));
    EXPECT_EQ(R"('\x1"': expected two hexadecimal digits after \x)", WordsMistake(R"("\x1")"));
    EXPECT_EQ(R"('\x': expected two hexadecimal digits after \x)", WordsMistake(R"("\x)"));
    EXPECT_EQ("a text ends with a backslash", WordsMistake("\"a\\"));
    const std::string control =
        R"(a control character stands in the sentence; write it as \r, \n or \xHH)";
    EXPECT_EQ(control, WordsMistake("at 2s\npull d"));
    EXPECT_EQ(control, WordsMistake("\"a\rb\""));
    EXPECT_EQ(control, WordsMistake(std::string("a\0b", 3)));
    EXPECT_EQ(control, WordsMistake("a\x7f"));
    EXPECT_EQ(R"('\x??': expected two hexadecimal digits after \x)",
              WordsMistake("\"\\x\x10\x11\""));
}

TEST(EventTime, HasAUnitAndUpToSixDecimals) {
    EXPECT_EQ(seconds(2), TimeOf("2s"));
    EXPECT_EQ(milliseconds(50), TimeOf("50ms"));
    EXPECT_EQ(microseconds(250), TimeOf("250us"));
    EXPECT_EQ(minutes(1), TimeOf("1m"));
    EXPECT_EQ(hours(1), TimeOf("1h"));
    EXPECT_EQ(milliseconds(1500), TimeOf("1.5s"));
    EXPECT_EQ(microseconds(1), TimeOf("0.000001s"));
    EXPECT_EQ(microseconds(500), TimeOf("0.5ms"));
    EXPECT_EQ(seconds(0), TimeOf("0s"));
    EXPECT_EQ(seconds(1000000), TimeOf("1000000s"));
}

TEST(EventTime, WhatIsNoneIsNamed) {
    for (const char* word : {"soon",  "2",        "s",          "2x",     "2 s",
                             ".5s",   "1.s",      "1..5s",      "1.5.5s", "-2s",
                             "+2s",   "2S",       "2sec",       "2ss",    "1.0000001s",
                             "0.5us", "1000001s", "1000000.5s", "300h",   "999999999999999999999s",
                             "1e3s",  "0x1s",     "\"\""}) {
        const std::string reason = EventMistake(std::string("at ") + word + " pull d");
        EXPECT_NE(std::string::npos,
                  reason.find(" after 'at': expected a time such as 2s, 50ms or 1.5s"))
            << word << ": " << reason;
    }
    EXPECT_EQ("'soon' after 'at': expected a time such as 2s, 50ms or 1.5s",
              EventMistake("at soon pull d"));
    EXPECT_EQ("the end after 'at': expected a time such as 2s, 50ms or 1.5s", EventMistake("at"));
}

TEST(EventTrigger, AtATime) {
    const Event event = ReadEvent("  at 2s pull modem\t");
    EXPECT_EQ(TriggerKind::At, event.trigger.kind);
    EXPECT_EQ(seconds(2), event.trigger.time);
    EXPECT_EQ("Pull modem", Shown(event.action));
    EXPECT_EQ("at 2s pull modem", event.text);
    EXPECT_EQ(0U, event.line);
    EXPECT_EQ(ScenarioTime(0), event.after);
}

TEST(EventTrigger, EveryPeriod) {
    Event event = ReadEvent("every 50ms send \"x\" to p");
    EXPECT_EQ(TriggerKind::Every, event.trigger.kind);
    EXPECT_EQ(milliseconds(50), event.trigger.time);
    EXPECT_EQ(ScenarioTime(0), event.trigger.start);
    EXPECT_FALSE(event.trigger.end);
    event = ReadEvent("every 100us from 1s until 2s pull d");
    EXPECT_EQ(microseconds(100), event.trigger.time);
    EXPECT_EQ(seconds(1), event.trigger.start);
    EXPECT_EQ(seconds(2), event.trigger.end);
    EXPECT_EQ(seconds(3), ReadEvent("every 1s until 3s pull d").trigger.end);
    EXPECT_EQ(seconds(3), ReadEvent("every 1s from 3s pull d").trigger.start);
}

TEST(EventTrigger, OnBytes) {
    Event event = ReadEvent(R"(on "ATI\r" from modem-0 reply "OK\r\n" after 20ms)");
    EXPECT_EQ(TriggerKind::OnBytes, event.trigger.kind);
    EXPECT_EQ("ATI\r", event.trigger.bytes);
    EXPECT_EQ("modem-0", event.trigger.port);
    EXPECT_EQ(R"(Send modem-0 "OK\r\n")", Shown(event.action));
    EXPECT_EQ(milliseconds(20), event.after);
    event = ReadEvent(R"(on "x" pull "d e")", kOwn);
    EXPECT_EQ(kOwn, event.trigger.port);
    EXPECT_EQ("Pull d e", Shown(event.action));
}

TEST(EventTrigger, OnACall) {
    Event event = ReadEvent("on open of p pull d");
    EXPECT_EQ(TriggerKind::OnCall, event.trigger.kind);
    EXPECT_EQ(Operation::Open, event.trigger.operation);
    EXPECT_EQ("p", event.trigger.port);
    EXPECT_EQ(0U, event.trigger.nth);
    EXPECT_EQ(Operation::Close, ReadEvent("on close of p pull d").trigger.operation);
    EXPECT_EQ(Operation::Write, ReadEvent("on write to p pull d").trigger.operation);
    EXPECT_EQ(Operation::Read, ReadEvent("on read from p pull d").trigger.operation);
    event = ReadEvent("on enumeration pull d", kOwn);
    EXPECT_EQ(Operation::Enumerate, event.trigger.operation);
    EXPECT_EQ("", event.trigger.port);
    event = ReadEvent("on 3rd write pull d after 1s", kOwn);
    EXPECT_EQ(3U, event.trigger.nth);
    EXPECT_EQ(kOwn, event.trigger.port);
    EXPECT_EQ(seconds(1), event.after);
    EXPECT_EQ(1U, ReadEvent("on 1st open pull d", kOwn).trigger.nth);
    EXPECT_EQ(2U, ReadEvent("on 2nd open pull d", kOwn).trigger.nth);
    for (const char* const nth : {"1st", "3rd", "4th", "11th", "12th", "13th", "21st", "111th"}) {
        EXPECT_NE(0U, ReadEvent("on " + std::string(nth) + " open pull d", kOwn).trigger.nth);
    }
    for (const char* const nth : {"1th", "2th", "3th", "4st", "11st", "12nd", "13rd", "21th"}) {
        EXPECT_NE("", EventMistake("on " + std::string(nth) + " open pull d")) << nth;
    }
    EXPECT_EQ(112U, ReadEvent("on 112th open pull d", kOwn).trigger.nth);
}

TEST(EventTrigger, AMistakeIsNamed) {
    EXPECT_EQ("the sentence is empty", EventMistake("  "));
    EXPECT_EQ("'in': expected 'at', 'every' or 'on'", EventMistake("in 2s pull d"));
    EXPECT_EQ("'At': expected 'at', 'every' or 'on'", EventMistake("At 2s pull d"));
    EXPECT_EQ("'at': expected 'at', 'every' or 'on'", EventMistake("\"at\" 2s pull d"));
    EXPECT_EQ("'99us' after 'every': expected a time from 100us to 1000000s",
              EventMistake("every 99us pull d"));
    EXPECT_EQ("'0s' after 'every': expected a time from 100us to 1000000s",
              EventMistake("every 0s pull d"));
    EXPECT_EQ("'1s' after 'until': expected a time from 2s to 1000000s",
              EventMistake("every 1s from 2s until 1s pull d"));
    const std::string on =
        "expected a text in double quotes, a number such as 2nd, or open, close, "
        "write, read or enumeration";
    EXPECT_EQ("'ATI' after 'on': " + on, EventMistake("on ATI reply \"x\"", kOwn));
    EXPECT_EQ("'0th' after 'on': " + on, EventMistake("on 0th write pull d", kOwn));
    EXPECT_EQ("'2' after 'on': " + on, EventMistake("on 2 write pull d", kOwn));
    EXPECT_EQ("the end after 'on': " + on, EventMistake("on"));
    EXPECT_EQ("'pull' after '2nd': expected open, close, write, read or enumeration",
              EventMistake("on 2nd pull d", kOwn));
    EXPECT_EQ("'fail' after 'write': expected 'to' and the name of a port",
              EventMistake("on write fail"));
    EXPECT_EQ("'reply' after 'x': expected 'from' and the name of a port",
              EventMistake("on \"x\" reply \"y\""));
    EXPECT_EQ("the end after 'of': expected the name of a port", EventMistake("on open of"));
    EXPECT_EQ("'' after 'on': expected a text of 1 to 1024 bytes, not 0",
              EventMistake("on \"\" pull d", kOwn));
    EXPECT_NE(std::string::npos, EventMistake("on \"" + std::string(1025, 'x') + "\" pull d", kOwn)
                                     .find("expected a text of 1 to 1024 bytes, not 1025"));
    EXPECT_EQ("the end after '2s': expected plug, pull, replug, switch, plug-port, unplug-port, "
              "send, reply, stall, resume, break, mend, fail, delay or shorten",
              EventMistake("at 2s"));
    EXPECT_EQ("'now' after 'modem': expected the end of the sentence",
              EventMistake("at 2s pull modem now"));
    EXPECT_EQ("'after' after 'modem': expected the end of the sentence",
              EventMistake("at 2s pull modem after 1s"));
    EXPECT_EQ("the end after 'after': expected a time such as 2s, 50ms or 1.5s",
              EventMistake("on open pull d after", kOwn));
}

TEST(EventAction, OfADevice) {
    EXPECT_EQ("Plug d", ShownAction("plug d"));
    EXPECT_EQ("Pull my modem", ShownAction("pull \"my modem\""));
    EXPECT_EQ("Replug d", ShownAction("replug d"));
    EXPECT_EQ("Switch d mode update", ShownAction("switch d update"));
    EXPECT_EQ("Plug after", ShownAction("plug after"));
    EXPECT_EQ("the end after 'plug': expected the name of a device", ActionMistake("plug"));
    EXPECT_EQ("the end after 'plug': expected the name of a device",
              EventMistake("at 1s plug", kOwn));
    EXPECT_EQ("'' after 'pull': expected the name of a device", ActionMistake("pull \"\""));
    EXPECT_EQ("the end after 'd': expected a mode of the device", ActionMistake("switch d"));
}

TEST(EventAction, OfAPortWhichAScriptNeedNotName) {
    const std::pair<const char*, const char*> kinds[] = {
        {"plug-port", "PlugPort"}, {"unplug-port", "UnplugPort"},
        {"stall", "Stall"},        {"resume", "Resume"},
        {"break", "Break"},        {"mend", "Mend"}};
    for (const auto& [word, kind] : kinds) {
        EXPECT_EQ(std::string(kind) + " p", ShownAction(std::string(word) + " p"));
        EXPECT_EQ(std::string(kind) + " p", ShownInScript(std::string(word) + " p"));
        EXPECT_EQ(std::string(kind) + " own", ShownInScript(word));
        EXPECT_EQ("the end after '" + std::string(word) + "': expected the name of a port",
                  ActionMistake(word));
        EXPECT_EQ("'after' after '" + std::string(word) + "': expected the name of a port",
                  EventMistake("on open of p " + std::string(word) + " after 1s"));
    }
    EXPECT_EQ("Stall own", ShownOn("open stall after 5ms"));
    EXPECT_EQ("Stall after", ShownOn("open stall \"after\""));
}

TEST(EventAction, Send) {
    EXPECT_EQ(R"(Send p "a b\r")", ShownAction(R"(send "a b\r" to p)"));
    EXPECT_EQ(R"(Send p "a" times 3)", ShownAction(R"(send "a" to p 3 times)"));
    EXPECT_EQ(R"(Send p "a")", ShownAction(R"(send "a" to p 1 time)"));
    EXPECT_EQ(R"(Send own "a" times 2)", ShownInScript(R"(send "a" 2 times)"));
    EXPECT_EQ("SendRandom p count 17", ShownAction("send 17 random bytes to p"));
    EXPECT_EQ("SendRandom own count 1 times 9", ShownInScript("send 1 random byte 9 times"));
    EXPECT_EQ(R"(Send own "5 random bytes")", ShownInScript(R"(send "5 random bytes")"));
}

TEST(EventAction, AMistakeInSendIsNamed) {
    EXPECT_EQ("the end after 'a': expected 'to' and the name of a port",
              ActionMistake("send \"a\""));
    EXPECT_EQ("'hello' after 'send': expected a text in double quotes",
              EventMistake("at 1s send hello", kOwn));
    EXPECT_EQ("'5' after 'send': expected a text in double quotes",
              EventMistake("at 1s send 5 bytes", kOwn));
    EXPECT_EQ("'0' after 'send': expected a number from 1 to 1048576",
              ActionMistake("send 0 random bytes to p"));
    EXPECT_EQ("'1048577' after 'send': expected a number from 1 to 1048576",
              ActionMistake("send 1048577 random bytes to p"));
    EXPECT_EQ("'x' after 'random': expected 'byte'", ActionMistake("send 5 random x to p"));
    EXPECT_EQ("'0' after 'p': expected a number from 1 to 1000000",
              ActionMistake("send \"a\" to p 0 times"));
    EXPECT_EQ("the end after '3': expected 'time'", ActionMistake("send \"a\" to p 3"));
    EXPECT_EQ("'send' of 1048577 bytes: expected at most 1048576",
              ActionMistake("send 61681 random bytes to p 17 times"));
    EXPECT_EQ("'random' after '5': expected a text in double quotes; random bytes come with 'at' "
              "and 'every' only",
              EventMistake("on open send 5 random bytes", kOwn));
}

TEST(EventAction, ReplyGoesToThePortOfItsTrigger) {
    EXPECT_EQ(R"(Send p "a")", ShownOn(R"(open of p reply "a" after 1s)"));
    EXPECT_EQ(R"(Send own "a")", ShownOn(R"("x" reply "a")"));
    const std::string reason = "'reply': expected 'send'; only what a port does with 'on' is "
                               "replied to";
    EXPECT_EQ(reason, EventMistake("at 1s reply \"a\"", kOwn));
    EXPECT_EQ(reason, EventMistake("every 1s reply \"a\"", kOwn));
    EXPECT_EQ(reason, EventMistake("on enumeration reply \"a\"", kOwn));
    EXPECT_EQ(reason, ActionMistake("reply \"a\""));
    EXPECT_EQ("the end after 'reply': expected a text in double quotes",
              EventMistake("on open reply", kOwn));
}

TEST(EventAction, Fail) {
    EXPECT_EQ("Fail p Write calls 1 time 0", ShownAction("fail write to p"));
    EXPECT_EQ("Fail p Open calls 3 time 0", ShownAction("fail open of p 3 times"));
    EXPECT_EQ("Fail p Close calls 0 time 2000000", ShownAction("fail close of p for 2s"));
    EXPECT_EQ("Fail p Read calls 0 time 0", ShownAction("fail read from p always"));
    EXPECT_EQ("Fail  Enumerate calls 1 time 0", ShownAction("fail enumeration"));
    EXPECT_EQ("Fail own Read calls 4 time 0", ShownInScript("fail read 4 times"));
    EXPECT_EQ("the end after 'fail': expected open, close, write, read or enumeration",
              ActionMistake("fail"));
    EXPECT_EQ("the end after 'fail': expected open, close, write, read or enumeration",
              EventMistake("at 1s fail", kOwn));
    EXPECT_EQ("'everything' after 'fail': expected open, close, write, read or enumeration",
              ActionMistake("fail everything"));
    EXPECT_EQ("'0s' after 'for': expected a time from 1us to 1000000s",
              ActionMistake("fail write to p for 0s"));
    EXPECT_EQ("'of' after 'write': expected 'to' and the name of a port",
              ActionMistake("fail write of p"));
}

TEST(EventAction, AFaultWithoutAnOperationIsAboutTheCallItself) {
    EXPECT_EQ("Fail p Write calls 1 time 0", ShownOn("write to p fail"));
    EXPECT_EQ("Fail own Read calls 3 time 0", ShownOn("2nd read fail 3 times"));
    EXPECT_EQ("Fail  Enumerate calls 0 time 0", ShownOn("enumeration fail always"));
    EXPECT_EQ("Delay own by 20000 Open calls 1 time 0", ShownOn("open delay by 20ms"));
    EXPECT_EQ("Shorten own count 3 Write calls 1 time 0", ShownOn("write shorten to 3 bytes"));
    EXPECT_EQ("Fail own Read calls 1 time 0", ShownOn("open fail read after 1s"));
    EXPECT_EQ("Fail p Open calls 1 time 0", ShownOn("open fail open of p after 1s"));
    EXPECT_EQ("'after' after 'fail': expected the end of the sentence: the call itself is meant, "
              "not one after it",
              EventMistake("on write fail after 1s", kOwn));
    EXPECT_EQ("the end after 'fail': expected open, close, write, read or enumeration",
              EventMistake("on \"x\" fail", kOwn));
}

TEST(EventAction, Delay) {
    EXPECT_EQ("Delay p by 20000 Write calls 1 time 0", ShownAction("delay write to p by 20ms"));
    EXPECT_EQ("Delay own by 3600000000 Open calls 2 time 0",
              ShownInScript("delay open by 1h 2 times"));
    EXPECT_EQ("Delay own by 5000 Close calls 1 time 0", ShownOn("close delay by 5ms"));
    EXPECT_EQ("Delay  by 1 Enumerate calls 0 time 1000000",
              ShownAction("delay enumeration by 1us for 1s"));
    EXPECT_EQ("the end after 'p': expected 'by'", ActionMistake("delay write to p"));
    EXPECT_EQ("'0ms' after 'by': expected a time from 1us to 3600s",
              ActionMistake("delay write to p by 0ms"));
    EXPECT_EQ("'61m' after 'by': expected a time from 1us to 3600s",
              ActionMistake("delay write to p by 61m"));
    EXPECT_EQ("'by' after 'delay': expected open, close, write, read or enumeration",
              ActionMistake("delay by 1s"));
}

TEST(EventAction, Shorten) {
    EXPECT_EQ("Shorten p count 3 Write calls 1 time 0",
              ShownAction("shorten write to p to 3 bytes"));
    EXPECT_EQ("Shorten p Write calls 2 time 0",
              ShownAction("shorten write to p to 0 bytes 2 times"));
    EXPECT_EQ("Shorten own count 1 Write calls 0 time 0",
              ShownInScript("shorten write to 1 byte always"));
    EXPECT_EQ("Shorten 3 count 5 Write calls 1 time 0",
              ShownInScript("shorten write to 3 to 5 bytes"));
    EXPECT_EQ("Shorten own count 8 Write calls 1 time 0", ShownInScript("shorten to 8 bytes"));
    EXPECT_EQ("Shorten own count 8 Write calls 1 time 0", ShownOn("\"x\" shorten to 8 bytes"));
    EXPECT_EQ("'to' after 'shorten': expected 'write'", ActionMistake("shorten to 8 bytes"));
    EXPECT_EQ("'to' after 'shorten': expected 'write'",
              EventMistake("on read shorten to 8 bytes", kOwn));
    EXPECT_EQ("'bytes' after '3': expected 'to'", ActionMistake("shorten write to 3 bytes"));
    EXPECT_EQ("'1048577' after 'to': expected a number from 0 to 1048576",
              ActionMistake("shorten write to p to 1048577 bytes"));
    EXPECT_EQ("'times' after '3': expected 'byte'", ActionMistake("shorten write to p to 3 times"));
}

TEST(EventAction, GivenToARunningScenarioQuotesMakeNoDifference) {
    EXPECT_EQ("Fail p Write calls 1 time 0", ShownAction(R"("fail" "write" "to" "p")"));
    EXPECT_EQ(R"(Send p "hello")", ShownAction("send hello to p"));
    EXPECT_EQ(R"(Send p "AT\r")", ShownAction(R"(send AT\r to p)"));
    EXPECT_EQ(R"(Send p "5")", ShownAction("send 5 to p"));
    EXPECT_EQ("SendRandom p count 5", ShownAction(R"("send" "5" "random" "bytes" "to" "p")"));
    EXPECT_EQ("the sentence is empty", ActionMistake(""));
    EXPECT_EQ("'hello': expected plug, pull, replug, switch, plug-port, unplug-port, send, reply, "
              "stall, resume, break, mend, fail, delay or shorten",
              ActionMistake("hello"));
    EXPECT_EQ("'x' after 'd': expected the end of the sentence", ActionMistake("pull d x"));
    EXPECT_EQ("'after' after 'd': expected the end of the sentence",
              ActionMistake("pull d after 1s"));
}

TEST(EventReader, ALongWordIsCutInAReason) {
    EXPECT_LT(EventMistake(std::string(100000, 'x')).size(), 300U);
    EXPECT_LT(EventMistake("at 1s pull \"" + std::string(100000, 'x')).size(), 300U);
}

// Whatever words stand in whatever order, there is an event or a reason.
TEST(EventReader, NoSentenceDoesHarm) {
    constexpr const char* kWords[] = {
        "at",          "every", "on",    "2s",      "50us",   "from",      "until",  "\"x\"",
        "\"\\x00\"",   "3",     "3rd",   "open",    "of",     "close",     "read",   "write",
        "to",          "pull",  "d",     "send",    "random", "bytes",     "times",  "reply",
        "stall",       "fail",  "delay", "shorten", "by",     "for",       "always", "after",
        "enumeration", "\"",    "\\",    "\"a\\",   "0",      "999999999", "byte",   "time"};
    std::mt19937 random(1); // the same words each time
    std::uniform_int_distribution<size_t> word(0, std::size(kWords) - 1);
    std::uniform_int_distribution<size_t> length(0, 9);
    int events = 0;
    for (int i = 0; i < 20000; ++i) {
        std::string sentence = i % 2 == 0 ? "on write " : "at 1s ";
        for (size_t left = length(random); left > 0; --left) {
            sentence += std::string(kWords[word(random)]) + " ";
        }
        events += EventMistake(sentence, kOwn) == "none" ? 1 : 0;
        EXPECT_NE("", ActionMistake(sentence));
    }
    EXPECT_GT(events, 10);
}
