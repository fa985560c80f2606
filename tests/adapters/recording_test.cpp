// SPDX-License-Identifier: MIT
//
// Recordings of hosts, and the scenarios that they become.
#include <gtest/gtest.h>

#include <fstream>
#include <random>

#include "adapters/virtual/language/scenario.h"
#include "adapters/virtual/recording/recorded_data.h"
#include "tests/harness/scratch_directory.h"

namespace {

using std::chrono::microseconds;

constexpr const char* kHeader = "{\"kovasmgr_recording\":1,\"host\":\"test\"}\n";

// What an enumeration found: {"d", {"p", "q"}} is a device with two ports.
struct Found {
    std::string device;
    std::vector<std::string> ports;
};

std::string Call(long time, const std::string& call, const std::string& details,
                 int result = 30000) {
    return "{\"n\":1,\"t_us\":" + std::to_string(time) + ",\"thread\":1,\"call\":\"" + call +
           "\"," + details + ",\"result\":" + std::to_string(result) + ",\"took_us\":5}\n";
}

std::string Enumerate(long time, const std::vector<Found>& all) {
    std::string devices;
    for (const Found& found : all) {
        std::string ports;
        for (const std::string& port : found.ports) {
            ports += (ports.empty() ? "" : ",");
            ports += "{\"name\":\"" + port + "\",\"id\":0}";
        }
        devices += (devices.empty() ? "" : ",");
        devices +=
            "{\"name\":\"" + found.device + "\",\"text\":\"text\",\"ports\":[" + ports + "]}";
    }
    return Call(time, "enumerate", "\"which\":4,\"devices\":[" + devices + "]");
}

std::string Open(long time, const std::string& port) {
    return Call(time, "open", "\"port\":\"" + port + "\",\"handle\":3");
}

std::string Transfer(long time, const std::string& call, const std::string& port,
                     const std::string& data, long count) {
    return Call(time, call,
                "\"handle\":3,\"port\":\"" + port + "\",\"length\":99,\"data\":\"" + data +
                    "\",\"count\":" + std::to_string(count));
}

const std::vector<Found> kOne = {{"d", {"p"}}};

ScenarioResult ReadLines(const std::string& lines) {
    return ReadScenario(kHeader + lines, "r.jsonl");
}

Scenario Read(const std::string& lines) {
    ScenarioResult result = ReadLines(lines);
    EXPECT_EQ("", result.error);
    EXPECT_TRUE(result.notes.empty());
    return std::move(result.scenario);
}

std::string MistakeIn(const std::string& lines) { return ReadLines(lines).error; }

std::vector<RecordedOpening> Openings(const std::string& lines) {
    return Read(Enumerate(0, kOne) + lines).devices.at(0).ports.at(0).openings;
}

std::vector<std::string> EventsOf(const Scenario& scenario) {
    std::vector<std::string> texts;
    for (const Event& event : scenario.events) {
        texts.push_back(event.text);
    }
    return texts;
}

} // namespace

TEST(Recording, EndsASecondAfterItsLastCall) {
    const ScenarioResult result = ReadLines(Enumerate(1000, kOne) + Open(2000, "p") +
                                            Transfer(501000, "read", "p", "QQ==", 1));
    ASSERT_EQ("", result.error);
    EXPECT_EQ(microseconds(1500000), result.scenario.end);
}

TEST(Base64, GivesAllBytes) {
    EXPECT_EQ("", DecodeBase64(""));
    EXPECT_EQ("f", DecodeBase64("Zg=="));
    EXPECT_EQ("fo", DecodeBase64("Zm8="));
    EXPECT_EQ("foo", DecodeBase64("Zm9v"));
    EXPECT_EQ("foobar", DecodeBase64("Zm9vYmFy"));
    EXPECT_EQ(std::string("\x00\xff\xfb\xf0", 4), DecodeBase64("AP/78A=="));
    for (const char* text :
         {"Z", "Zg", "Zg=", "Zg===", "====", "Z===", "Zg=a", "Zm 9", "Zm9\n", "Zm-v", "=m9v"}) {
        EXPECT_FALSE(DecodeBase64(text)) << text;
    }
}

TEST(Recording, TheFirstListSaysWhatIsThereAtTheStart) {
    const Scenario scenario = Read(Enumerate(700, {{"d", {"p", "q"}}, {"e", {"r"}}}));
    ASSERT_EQ(2U, scenario.devices.size());
    EXPECT_EQ("d", scenario.devices[0].name);
    EXPECT_EQ("text", scenario.devices[0].text);
    EXPECT_TRUE(scenario.devices[0].present);
    ASSERT_EQ(2U, scenario.devices[0].ports.size());
    EXPECT_EQ("q", scenario.devices[0].ports[1].name);
    EXPECT_TRUE(scenario.devices[0].ports[1].present);
    EXPECT_EQ(FarEndKind::Recording, scenario.devices[0].ports[1].farEnd);
    EXPECT_EQ("r", scenario.devices[1].ports.at(0).name);
    EXPECT_TRUE(scenario.events.empty());
}

TEST(Recording, WhatCameAndWentLaterBecomesEvents) {
    const Scenario scenario =
        Read(Call(1000, "register", "\"x\":1") + Enumerate(2000, {{"d", {"p"}}, {"e", {"r"}}}) +
             Enumerate(3000, {{"e", {"r"}}}) + Enumerate(4000, {{"e", {"r", "s"}}, {"d", {"p"}}}) +
             Enumerate(5000, {{"d", {"p"}}, {"e", {"s"}}, {"f", {"t"}}}) + Enumerate(6000, {}));
    EXPECT_EQ((std::vector<std::string>{"at 2000us pull \"d\"", "at 3000us plug \"d\"",
                                        "at 3000us plug-port \"s\"", "at 4000us unplug-port \"r\"",
                                        "at 4000us plug \"f\"", "at 5000us pull \"d\"",
                                        "at 5000us pull \"e\"", "at 5000us pull \"f\""}),
              EventsOf(scenario));
    EXPECT_EQ(microseconds(2000), scenario.events[0].trigger.time);
    EXPECT_EQ(ActionKind::Pull, scenario.events[0].action.kind);
    EXPECT_EQ("d", scenario.events[0].action.target);
    EXPECT_EQ(4U, scenario.events[0].line);
    EXPECT_EQ(ActionKind::PlugPort, scenario.events[2].action.kind);
    EXPECT_FALSE(scenario.devices.at(1).ports.at(1).present);
    EXPECT_FALSE(scenario.devices.at(2).present);
    EXPECT_TRUE(scenario.devices.at(2).ports.at(0).present);
}

TEST(Recording, ADeviceThatComesBackWithAnotherPortHasThatFromThenOn) {
    const Scenario scenario = Read(Enumerate(0, {{"d", {"p"}}}) + Enumerate(1, {}) +
                                   Enumerate(2, {{"d", {"q"}}}) + Enumerate(3, {{"d", {"q"}}}));
    EXPECT_EQ((std::vector<std::string>{"at 1us pull \"d\"", "at 2us unplug-port \"p\"",
                                        "at 2us plug-port \"q\"", "at 2us plug \"d\""}),
              EventsOf(scenario));
    EXPECT_FALSE(scenario.devices.at(0).ports.at(1).present);
}

TEST(Recording, APieceComesAfterWhatTheHostHadSentBefore) {
    const auto openings = Openings(
        Open(1000, "p") + Transfer(2000, "write", "p", "QVQN", 3) +
        Transfer(2500, "read", "p", "T0s=", 2) + Transfer(2600, "read", "p", "DQo=", 2) +
        Transfer(3000, "write", "p", "QUJDRA==", 2) + Transfer(3001, "read", "p", "WA==", 1));
    ASSERT_EQ(1U, openings.size());
    EXPECT_EQ("AT\rAB", openings[0].fromHost);
    ASSERT_EQ(3U, openings[0].pieces.size());
    EXPECT_EQ("OK", openings[0].pieces[0].bytes);
    EXPECT_EQ(3U, openings[0].pieces[0].hostBytes);
    EXPECT_EQ(microseconds(495), openings[0].pieces[0].delay);
    EXPECT_EQ("\r\n", openings[0].pieces[1].bytes);
    EXPECT_EQ(3U, openings[0].pieces[1].hostBytes);
    EXPECT_EQ(microseconds(100), openings[0].pieces[1].delay);
    EXPECT_EQ(5U, openings[0].pieces[2].hostBytes);
    EXPECT_EQ(microseconds(0), openings[0].pieces[2].delay);
}

TEST(Recording, EachOpeningIsPlayedForItself) {
    const auto openings = Openings(Open(0, "p") + Transfer(10, "write", "p", "QQ==", 1) +
                                   Open(100, "p") + Transfer(200, "read", "p", "Qg==", 1));
    ASSERT_EQ(2U, openings.size());
    EXPECT_EQ("A", openings[0].fromHost);
    EXPECT_EQ("", openings[1].fromHost);
    EXPECT_EQ(0U, openings[1].pieces.at(0).hostBytes);
    EXPECT_EQ(microseconds(95), openings[1].pieces[0].delay);
}

TEST(Recording, WhatFailedOrWasEmptyIsLeftOut) {
    const auto openings = Openings(
        Call(0, "open", "\"port\":\"p\"", 30001) + Open(1, "p") +
        Call(2, "write", "\"handle\":3,\"port\":\"p\",\"data\":\"QQ==\",\"fault\":\"fail\"",
             30001) +
        Transfer(3, "read", "p", "", 0) + Call(4, "read", "\"handle\":3", 30001) +
        Transfer(5, "write", "p", "QQ==", 0) + Call(6, "notice", "\"status\":\"insert\"") +
        Call(7, "close", "\"handle\":3,\"port\":\"p\"") + "{\"note\":\"another kind of line\"}\n");
    ASSERT_EQ(1U, openings.size());
    EXPECT_EQ("", openings[0].fromHost);
    EXPECT_TRUE(openings[0].pieces.empty());
}

TEST(Recording, APortThatWasOpenAlreadyIsPlayedFromThere) {
    const auto openings = Openings(Transfer(3, "read", "p", "QQ==", 1));
    ASSERT_EQ(1U, openings.size());
    EXPECT_EQ("A", openings[0].pieces.at(0).bytes);
}

TEST(Recording, ALastLineThatIsCutIsLeftOut) {
    const std::string whole = Enumerate(0, kOne) + Open(1, "p");
    const std::string last = Transfer(2, "read", "p", "QQ==", 1);
    for (size_t length = 1; length + 1 < last.size(); ++length) {
        const ScenarioResult result = ReadLines(whole + last.substr(0, length));
        EXPECT_EQ("", result.error);
        ASSERT_EQ(1U, result.notes.size()) << length;
        EXPECT_EQ(0U, result.notes[0].find("r.jsonl:4: the recording ends within a line, which is "
                                           "left out: the line is not a JSON object"));
    }
    EXPECT_TRUE(ReadLines(whole + last.substr(0, last.size() - 1)).notes.empty());
    EXPECT_EQ("r.jsonl:4: the line is not a JSON object", MistakeIn(whole + "{\n"));
}

TEST(Recording, APortThatIsInNoListOrMovesIsNamed) {
    ScenarioResult result = ReadLines(Enumerate(0, kOne) + Open(1, "x"));
    EXPECT_EQ("", result.error);
    EXPECT_EQ(std::vector<std::string>{"r.jsonl:1: port 'x' was in no list; it is left out"},
              result.notes);
    result = ReadLines(Enumerate(0, kOne) + Enumerate(1, {{"e", {"p"}}}));
    EXPECT_EQ("", result.error);
    EXPECT_EQ(1U, result.scenario.devices.size());
    EXPECT_EQ(std::vector<std::string>{"r.jsonl:1: port 'p' was a second device's as well; it is "
                                       "played as the first one's only"},
              result.notes);
}

TEST(Recording, AMistakeIsNamedWithItsLine) {
    EXPECT_EQ("r.jsonl:1: the recording is of a later version; this one knows version 1",
              ReadScenario("{\"kovasmgr_recording\":2}\n", "r.jsonl").error);
    EXPECT_EQ("r.jsonl:1: 'kovasmgr_recording' must be a whole number from 1 to 2147483647",
              ReadScenario("{\"kovasmgr_recording\":\"1\"}\n", "r.jsonl").error);
    EXPECT_EQ("r.jsonl:1: the line is not a JSON object",
              ReadScenario("{\"kovasmgr_recording\"\n", "r.jsonl").error);
    EXPECT_EQ("r.jsonl:1: the recording has no device; the host never had a list", MistakeIn(""));
    EXPECT_EQ("r.jsonl:2: the line is not a JSON object", MistakeIn("\n" + Open(1, "p")));
    EXPECT_EQ("r.jsonl:2: the line is not a JSON object", MistakeIn("[1]\n"));
    EXPECT_EQ("r.jsonl:2: the line lacks 't_us'", MistakeIn("{\"call\":\"open\"}\n"));
    EXPECT_EQ("r.jsonl:2: 't_us' must be a whole number from 0 to 1000000000000",
              MistakeIn("{\"call\":\"open\",\"t_us\":-1}\n"));
    EXPECT_EQ("r.jsonl:2: 't_us' must be a whole number from 0 to 1000000000000",
              MistakeIn("{\"call\":\"open\",\"t_us\":18446744073709551615}\n"));
    EXPECT_EQ("r.jsonl:2: 't_us' must be a whole number from 0 to 1000000000000",
              MistakeIn("{\"call\":\"open\",\"t_us\":1.5}\n"));
    EXPECT_EQ("r.jsonl:2: 'call' must be a text", MistakeIn("{\"call\":1}\n"));
    EXPECT_EQ("r.jsonl:2: the line lacks 'port'", MistakeIn(Call(0, "open", "\"handle\":3")));
    EXPECT_EQ("r.jsonl:2: 'port' is empty", MistakeIn(Open(0, "")));
    EXPECT_EQ("r.jsonl:2: the line lacks 'data'",
              MistakeIn(Call(0, "read", "\"port\":\"p\",\"count\":1")));
    EXPECT_EQ("r.jsonl:2: 'data' must be base64", MistakeIn(Transfer(0, "read", "p", "?", 1)));
    EXPECT_EQ("r.jsonl:2: 'data' has 1 bytes, fewer than 'count'",
              MistakeIn(Transfer(0, "read", "p", "QQ==", 2)));
    EXPECT_EQ("r.jsonl:2: 'count' must be a whole number from 0 to 2147483647",
              MistakeIn(Transfer(0, "read", "p", "QQ==", -1)));
    EXPECT_EQ("r.jsonl:2: 'devices' must be an array",
              MistakeIn(Call(0, "enumerate", "\"devices\":{}")));
    EXPECT_EQ("r.jsonl:2: 'devices' must hold objects only",
              MistakeIn(Call(0, "enumerate", "\"devices\":[1]")));
    EXPECT_EQ("r.jsonl:2: 'name' is empty", MistakeIn(Enumerate(0, {{"", {"p"}}})));
    EXPECT_EQ("r.jsonl:1: port 'a_b' has the same link name as another: a_b",
              MistakeIn(Enumerate(0, {{"d", {"a/b", "a_b"}}})));
}

TEST(Recording, MoreThanAScenarioMayHoldIsNamed) {
    std::vector<Found> devices;
    std::vector<std::string> ports;
    for (int i = 0; i < 1025; ++i) {
        devices.push_back({"d" + std::to_string(i), {"p" + std::to_string(i)}});
        ports.push_back("q" + std::to_string(i));
    }
    EXPECT_EQ("r.jsonl:2: more than 1024 devices", MistakeIn(Enumerate(0, devices)));
    ports.resize(65);
    EXPECT_EQ("r.jsonl:2: more than 64 ports of a device or 4096 in all",
              MistakeIn(Enumerate(0, {{"d", ports}})));
    std::string lines;
    for (int i = 0; i < 35000; ++i) {
        lines += Enumerate(i, kOne) + Enumerate(i, {});
    }
    EXPECT_NE(std::string::npos, MistakeIn(lines).find(": more than 65536 events"));
}

TEST(Recording, ANameThatIsTooLongForAListIsCut) {
    std::string device = "xx";
    for (int i = 0; i < 50; ++i) {
        device += "\xef\xbf\xbd";
    }
    const std::string port = std::string(300, 'p');
    const Scenario scenario = Read(Enumerate(0, {{device, {port, "a\\tb"}}}) + Open(1, port));
    EXPECT_EQ(device.substr(0, 2 + 41 * 3), scenario.devices.at(0).name);
    EXPECT_EQ(port.substr(0, 255), scenario.devices[0].ports.at(0).name);
    EXPECT_EQ(1U, scenario.devices[0].ports[0].openings.size());
    EXPECT_EQ("a?b", scenario.devices[0].ports.at(1).name);
}

TEST(Recording, DeepNestingIsRefusedAndNotFollowed) {
    const std::string deep(2000000, '[');
    EXPECT_EQ("r.jsonl:2: the line is nested too deep", MistakeIn("{\"x\":" + deep + "\n"));
    EXPECT_EQ("r.jsonl:1: the line is nested too deep",
              ReadScenario("{\"kovasmgr_recording\":" + deep, "r.jsonl").error);
}

// Whatever a recording holds, it is a scenario or has a mistake.
TEST(Recording, NoBytesDoHarm) {
    const std::string good = kHeader + Enumerate(0, {{"d", {"p", "q"}}}) + Open(1, "p") +
                             Transfer(2, "write", "p", "QVQN", 3) +
                             Transfer(3, "read", "p", "T0s=", 2) + Enumerate(4, {});
    std::mt19937 random(1); // the same bytes each time
    std::uniform_int_distribution<size_t> place(1, good.size() - 1);
    std::uniform_int_distribution<int> byte(0, 255);
    int mistakes = 0;
    for (int i = 0; i < 5000; ++i) {
        std::string text = good;
        for (int left = 1 + i % 4; left > 0; --left) {
            text[place(random)] = static_cast<char>(byte(random));
        }
        const ScenarioResult result = ReadScenario(text, "r.jsonl");
        mistakes += result.error.empty() ? 0 : 1;
        EXPECT_NE(result.error.empty(), result.scenario.devices.empty()) << text;
    }
    EXPECT_GT(mistakes, 100);
    EXPECT_LT(mistakes, 5000);
}

TEST(Recording, AScenarioNamesOneForAPort) {
    const ScratchDirectory scratch;
    std::ofstream(scratch.Path() + "/r.jsonl")
        << kHeader << Enumerate(0, {{"d", {"p", "q"}}}) << Open(1, "p")
        << Transfer(2, "read", "p", "QQ==", 1) << Open(3, "q")
        << Transfer(4, "read", "q", "Qg==", 1);
    const std::string path = scratch.Path() + "/s.toml";
    std::ofstream(path) << R"([[device]]
name = "mine"
[[device.port]]
name = "p"
far = "recording"
file = "r.jsonl"
[[device.port]]
name = "other"
far = "recording"
file = ")" << scratch.Path()
                        << R"(/r.jsonl"
port = "q"
)";
    const ScenarioResult result = ReadScenarioFile(path);
    EXPECT_EQ("", result.error);
    ASSERT_EQ(1U, result.scenario.devices.size());
    const auto& ports = result.scenario.devices[0].ports;
    EXPECT_EQ("A", ports.at(0).openings.at(0).pieces.at(0).bytes);
    EXPECT_EQ("B", ports.at(1).openings.at(0).pieces.at(0).bytes);
    EXPECT_EQ("other", ports[1].name);
}

TEST(Recording, AMistakeInOneThatAScenarioNamesIsNamed) {
    const ScratchDirectory scratch;
    const std::string folder = scratch.Path() + "/";
    std::ofstream(folder + "r.jsonl") << kHeader << Enumerate(0, kOne);
    std::ofstream(folder + "bad.jsonl") << kHeader << "x\n";
    const auto mistake = [&](const std::string& keys) {
        return ReadScenario("[[device]]\nname = \"d\"\n[[device.port]]\nname = \"q\"\n"
                            "far = \"recording\"\n" +
                                keys,
                            folder + "s.toml")
            .error;
    };
    const std::string start = folder + "s.toml:";
    EXPECT_EQ(start + "3: port lacks 'file'", mistake(""));
    EXPECT_EQ(start + "6: recording 'r.jsonl' has no port 'q'", mistake("file = \"r.jsonl\"\n"));
    EXPECT_EQ(start + "6: recording 'r.jsonl' has no port 'x'",
              mistake("file = \"r.jsonl\"\nport = \"x\"\n"));
    EXPECT_EQ(start + "6: recording '" + folder +
                  "none.jsonl': No such file or directory (errno 2)",
              mistake("file = \"none.jsonl\"\n"));
    EXPECT_EQ(start + "6: " + folder + "bad.jsonl:2: the line is not a JSON object",
              mistake("file = \"bad.jsonl\"\n"));
    EXPECT_EQ(start + "6: 'file' must have 1 to 4095 bytes, not 0", mistake("file = \"\"\n"));
}
