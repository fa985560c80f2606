// SPDX-License-Identifier: MIT
//
// What a scenario file says, and what is said about its mistakes. What the adapter makes of it is in
// scenario_test.cpp.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <fstream>

#include "adapters/virtual/language/scenario.h"
#include "tests/harness/log_text.h"
#include "tests/harness/scratch_directory.h"

namespace {

// Five lines, more of the port comes in the sixth.
constexpr const char* kDevice = "\n[[device]]\nname = \"d\"\n[[device.port]]\nname = \"p\"\n";

Scenario Read(const std::string& text) {
    ScenarioResult result = ReadScenario(text, "file");
    EXPECT_EQ("", result.error) << text;
    return std::move(result.scenario);
}

std::string MistakeIn(const std::string& text) { return ReadScenario(text, "file").error; }

// Of a text before all tables.
Scenario ReadTop(const std::string& text) { return Read(text + kDevice); }
std::string MistakeInTop(const std::string& text) { return MistakeIn(text + kDevice); }

// Of a text in the port's table, from line 6 on.
Scenario ReadPort(const std::string& text) { return Read(kDevice + text); }
std::string MistakeInPort(const std::string& text) { return MistakeIn(kDevice + text); }

std::string Copies(const std::string& device, const std::string& port) {
    return "[[device]]\nname = \"d{n}\"\n" + device + "\n[[device.port]]\nname = \"p{n}-{p}\"\n" +
           port + "\n";
}

class Environment {
  public:
    ~Environment() {
        for (const char* name :
             {"KOVASMGR_VIRTUAL_SCENARIO", "KOVASMGR_VIRTUAL_SEED", "KOVASMGR_VIRTUAL_SPEED"}) {
            unsetenv(name);
        }
    }
    static void Set(const char* name, const std::string& value) { setenv(name, value.c_str(), 1); }
};

} // namespace

TEST(ScenarioReader, WhatIsNotSaidHasADefault) {
    const Scenario scenario = ReadTop("");
    EXPECT_EQ(1U, scenario.seed);
    EXPECT_EQ(1.0, scenario.speed);
    EXPECT_FALSE(scenario.end);
    EXPECT_EQ("", scenario.description);
    EXPECT_TRUE(scenario.events.empty());
    ASSERT_EQ(1U, scenario.devices.size());
    const PortSpec& port = scenario.devices[0].ports.at(0);
    EXPECT_EQ(FarEndKind::External, port.farEnd);
    EXPECT_FALSE(port.baud);
    EXPECT_TRUE(port.present);
    EXPECT_TRUE(port.openings.empty());
}

TEST(ScenarioReader, SeedSpeedEndAndDescription) {
    Scenario scenario =
        ReadTop("seed = 9223372036854775807\nspeed = 0.001\nend = \"1.5s\"\ndescription = \"é\"\n");
    EXPECT_EQ(uint64_t{INT64_MAX}, scenario.seed);
    EXPECT_EQ(0.001, scenario.speed);
    EXPECT_EQ(std::chrono::milliseconds(1500), scenario.end);
    EXPECT_EQ("é", scenario.description);
    scenario = ReadTop("seed = 0\nspeed = 1000\n");
    EXPECT_EQ(0U, scenario.seed);
    EXPECT_EQ(1000.0, scenario.speed);
}

TEST(ScenarioReader, AMistakeAtTheTopIsNamed) {
    EXPECT_EQ("file:1: 'seed' must be a whole number from 0 to 9223372036854775807",
              MistakeInTop("seed = -1\n"));
    EXPECT_EQ("file:2: 'seed' must be a whole number from 0 to 9223372036854775807",
              MistakeInTop("\nseed = 1.0\n"));
    const std::string speed = "file:1: 'speed' must be a number from 0.001 to 1000";
    for (const char* value : {"0", "-1", "1000.1", "0.0009", "nan", "inf", "\"1\"", "true"}) {
        EXPECT_EQ(speed, MistakeInTop(std::string("speed = ") + value + "\n")) << value;
    }
    EXPECT_EQ("file:1: 'end' must be a time such as 10s, 500ms or 1.5s",
              MistakeInTop("end = \"10\"\n"));
    EXPECT_EQ("file:1: 'end' must be a text", MistakeInTop("end = 10\n"));
    EXPECT_EQ("file:1: 'description' must have 1 to 200 bytes, not 201",
              MistakeInTop("description = \"" + std::string(201, 'x') + "\"\n"));
    EXPECT_EQ("file:1: 'description' must not contain control characters",
              MistakeInTop("description = \"a\\nb\"\n"));
    EXPECT_EQ("file:1: scenario has no key 'sped'", MistakeInTop("sped = 1\n"));
}

TEST(ScenarioReader, ABracketWithoutANameDoesNotEndTheProcess) {
    for (const char* text : {"[ = 1", "[=", "[[ = ]]", "[ {", "[ [", "[\n", "[#", "[", "[["}) {
        EXPECT_EQ(0U, MistakeIn("\n" + std::string(text)).find("file:2: ")) << text;
    }
}

TEST(ScenarioReader, ACharacterThatIsNotAsciiStandsInQuotesOrAComment) {
    for (const char* text :
         {"seed = Ř", "seed = 1Ř", "é = 1", "[é]", "end = 1s\xc2\xa0", R"(end = "1s"é)",
          "end = 'é' é", "seed = 4-\"é", "seed = é", "seed = 1 é", "[[é]]", "seed é= 1",
          "seed = [é]", "seed = {é}", "seed = 1979-05-27é", "seed = trué", "seed = 0xé"}) {
        EXPECT_EQ(0U, MistakeIn("\n" + std::string(text) + "\n" + kDevice).find("file:2: "))
            << text;
    }
    for (const char* text : {"# é\n", "\xef\xbb\xbf# x\n", "description = \"é ' \\\" é\" # é\n"}) {
        EXPECT_EQ("", MistakeInTop(text)) << text;
    }
}

TEST(ScenarioReader, EventsKeepTheirOrderAndTheirLines) {
    const Scenario scenario = ReadTop("events = [\n  'at 2s pull d', # first\n\n"
                                      "  'at 1s send \"x\" to p' ]\n");
    ASSERT_EQ(2U, scenario.events.size());
    EXPECT_EQ("at 2s pull d", scenario.events[0].text);
    EXPECT_EQ(2U, scenario.events[0].line);
    EXPECT_EQ("at 1s send \"x\" to p", scenario.events[1].text);
    EXPECT_EQ(4U, scenario.events[1].line);
}

TEST(ScenarioReader, ScriptsComeAfterEventsInDeviceOrderWithTheirPortsNames) {
    const Scenario scenario = Read(R"(events = ['at 1s pull e']
[[device]]
name = "d"
[[device.port]]
name = "d0"
script = ['on "x" reply "y"', 'at 3s stall']
[[device]]
name = "e"
[[device.port]]
name = "e0"
far = "at"
script = ['on 2nd write fail']
)");
    ASSERT_EQ(4U, scenario.events.size());
    EXPECT_EQ("e", scenario.events[0].action.target);
    EXPECT_EQ("d0", scenario.events[1].trigger.port);
    EXPECT_EQ("d0", scenario.events[1].action.target);
    EXPECT_EQ(6U, scenario.events[1].line);
    EXPECT_EQ("d0", scenario.events[2].action.target);
    EXPECT_EQ("e0", scenario.events[3].trigger.port);
    EXPECT_EQ("e0", scenario.events[3].action.target);
    EXPECT_EQ(12U, scenario.events[3].line);
}

TEST(ScenarioReader, AMistakeInASentenceHasTheLineOfThatEntry) {
    EXPECT_EQ("file:3: 'soon' after 'at': expected a time such as 2s, 50ms or 1.5s",
              MistakeInTop("events = [\n  'at 2s pull d',\n  'at soon pull d',\n"
                           "  'at later pull d' ]\n"));
    EXPECT_EQ("file:7: 'x': expected 'at', 'every' or 'on'",
              MistakeInPort("script = [\n'x',\n]\n"));
    EXPECT_EQ("file:1: the sentence is empty", MistakeInTop("events = ['']\n"));
    EXPECT_EQ("file:1: 'events' must be an array of texts", MistakeInTop("events = 'at 2s'\n"));
    EXPECT_EQ("file:2: 'events' must hold texts only",
              MistakeInTop("events = ['at 2s pull d',\n1]\n"));
    EXPECT_EQ("file:6: 'script' must be an array of texts", MistakeInPort("script = {}\n"));
    EXPECT_EQ(0U, MistakeInTop("events = ['at 1s \"send\" \"x\"']\n")
                      .find("file:1: 'send' after '1s': expected plug, "));
}

TEST(ScenarioReader, ANameInASentenceThatIsNoneIsNamed) {
    EXPECT_EQ("file:1: no device 'x'", MistakeInTop("events = ['at 1s pull x']\n"));
    EXPECT_EQ("file:1: no device 'p'", MistakeInTop("events = ['at 1s plug p']\n"));
    EXPECT_EQ("file:1: no device 'x'", MistakeInTop("events = ['at 1s replug x']\n"));
    EXPECT_EQ("file:1: no device 'x'", MistakeInTop("events = ['at 1s switch x y']\n"));
    EXPECT_EQ("file:1: device 'd' has no port in mode 'y'",
              MistakeInTop("events = ['at 1s switch d y']\n"));
    EXPECT_EQ("file:1: no port 'd'", MistakeInTop("events = ['at 1s stall d']\n"));
    EXPECT_EQ("file:1: no port 'x'", MistakeInTop("events = ['on write to x pull d']\n"));
    EXPECT_EQ("file:1: no port 'x'", MistakeInTop("events = ['on \"a\" from x pull d']\n"));
    EXPECT_EQ("file:1: no port 'x'", MistakeInTop("events = ['at 1s fail write to x']\n"));
    EXPECT_EQ("file:6: no port 'x'", MistakeInPort("script = ['at 1s send \"a\" to x']\n"));
    EXPECT_EQ("file:1: '\"' after 'write': expected 'to' and the name of a port",
              MistakeInTop("events = ['at 1s fail write \"\\\"\"']\n"));
    Read("events = ['at 1s switch d y', 'at 2s switch d x', 'at 1s fail enumeration']\n"
         "[[device]]\nname = \"d\"\nmode = \"x\"\n[[device.port]]\nname = \"p\"\nmode = \"x\"\n"
         "[[device.port]]\nname = \"q\"\nmode = \"y\"\n");
}

TEST(ScenarioReader, ACountMakesCopiesWithTheirNumbers) {
    const Scenario scenario = Read(R"(
[[device]]
name = "unit-{n}"
text = "Unit {n}"
count = 3
[[device.port]]
name = "unit-{n}-{p}"
count = 2
far = "periodic"
send = "{n}{p}"
script = ['every 1s send "{n}"', 'at 2s pull unit-{n}', 'at 3s stall unit-1-{p}']
[[device.port]]
name = "last-{n}"
)");
    ASSERT_EQ(3U, scenario.devices.size());
    const DeviceSpec& second = scenario.devices[1];
    EXPECT_EQ("unit-2", second.name);
    EXPECT_EQ("Unit 2", second.text);
    ASSERT_EQ(3U, second.ports.size());
    EXPECT_EQ("unit-2-1", second.ports[0].name);
    EXPECT_EQ("unit-2-2", second.ports[1].name);
    EXPECT_EQ("last-2", second.ports[2].name);
    EXPECT_EQ("{n}{p}", second.ports[0].send);
    ASSERT_EQ(18U, scenario.events.size());
    EXPECT_EQ("unit-2-2", scenario.events[9].action.target);
    EXPECT_EQ("{n}", scenario.events[9].action.bytes);
    EXPECT_EQ("unit-2", scenario.events[10].action.target);
    EXPECT_EQ("unit-1-2", scenario.events[11].action.target);
    EXPECT_EQ(11U, scenario.events[11].line);
}

TEST(ScenarioReader, WithoutACountANameStaysAsItIs) {
    const Scenario scenario =
        Read("[[device]]\nname = \"d{n}\"\n[[device.port]]\nname = \"p{n}{p}\"\n");
    EXPECT_EQ("d{n}", scenario.devices[0].name);
    EXPECT_EQ("p{n}{p}", scenario.devices[0].ports[0].name);
    EXPECT_EQ("d1", Read(Copies("count = 1", "count = 1")).devices[0].name);
}

TEST(ScenarioReader, AMistakeInACountIsNamed) {
    EXPECT_EQ("file:3: 'count' must be a whole number from 1 to 1024",
              MistakeIn(Copies("count = 0", "")));
    EXPECT_EQ("file:6: 'count' must be a whole number from 1 to 64",
              MistakeIn(Copies("", "count = 65")));
    EXPECT_EQ("file:2: 'name' must have {n} in it where there are several",
              MistakeIn("[[device]]\nname = \"d\"\ncount = 2\n[[device.port]]\nname = \"p{n}\"\n"));
    EXPECT_EQ("file:5: 'name' must have {n} in it where there are several",
              MistakeIn("[[device]]\nname = \"d{n}\"\ncount = 2\n[[device.port]]\nname = \"p\"\n"));
    EXPECT_EQ("file:5: 'name' must have {p} in it where there are several",
              MistakeInPort("count = 2\n"));
    EXPECT_EQ("file:8: device 'd3' is there twice",
              MistakeIn(Copies("count = 3", "") + "[[device]]\nname = \"d3\"\n[[device.port]]\n"
                                                  "name = \"p\"\n"));
    EXPECT_EQ("file:6: id 7 is there twice", MistakeIn(Copies("count = 2", "id = 7")));
    EXPECT_EQ("file:2: 'name' must have at most 127 bytes, not 128",
              MistakeIn("[[device]]\nname = \"{n}" + std::string(124, 'x') +
                        "\"\ncount = 1000\n[[device.port]]\nname = \"p{n}\"\n"));
}

TEST(ScenarioReader, AsMuchAsItMayHold) {
    EXPECT_EQ(1024U, Read(Copies("count = 1024", "")).devices.size());
    const Scenario scenario = Read(Copies("count = 64", "count = 64"));
    EXPECT_EQ(64U, scenario.devices[63].ports.size());
    EXPECT_EQ("p64-64", scenario.devices[63].ports[63].name);
}

TEST(ScenarioReader, MoreThanItMayHoldIsNamed) {
    const std::string one = "[[device]]\nname = \"d\"\n[[device.port]]\nname = \"p\"\n";
    EXPECT_EQ("file:7: scenario has more than 1024 devices",
              MistakeIn(one + Copies("count = 1024", "")));
    EXPECT_EQ("file:3: scenario has more than 4096 ports",
              MistakeIn(Copies("count = 65", "count = 64")));
    EXPECT_EQ("file:3: device has more than 64 ports",
              MistakeIn(Copies("count = 1", "count = 63\n[[device.port]]\nname = \"q{n}\"\n"
                                            "[[device.port]]\nname = \"r{n}\"")));
    std::string sentences = "script = [";
    for (int i = 0; i < 65; ++i) {
        sentences += "'at 1s stall', ";
    }
    EXPECT_EQ("file:6: more than 65536 events in all",
              MistakeIn(Copies("count = 1024", sentences + "]")));
    std::string texts;
    for (int i = 0; i < 65537; ++i) {
        texts += "'',\n";
    }
    EXPECT_EQ("file:65538: 'events' has more than 65536 texts",
              MistakeInTop("events = [\n" + texts + "]\n"));
    std::string replies;
    for (int i = 0; i < 512; ++i) {
        replies += "A" + std::to_string(i) + " = \"" + std::string(1000, 'x') + "\"\n";
    }
    EXPECT_EQ("file:3: far ends have more than 67108864 bytes of texts",
              MistakeIn(Copies("count = 200", "far = \"at\"\n[device.port.replies]\n" + replies)));
}

TEST(ScenarioReader, NewKeysOfAPort) {
    EXPECT_EQ(9600, ReadPort("baud = 9600\n").devices[0].ports[0].baud);
    EXPECT_FALSE(ReadPort("present = false\n").devices[0].ports[0].present);
    EXPECT_EQ(FarEndKind::Scripted,
              ReadPort("far = \"scripted\"\nscript = []\n").devices[0].ports[0].farEnd);
    EXPECT_EQ("file:6: 'baud' must be a whole number from 1 to 10000000",
              MistakeInPort("baud = 0\n"));
    EXPECT_EQ("file:6: 'baud' must be a whole number from 1 to 10000000",
              MistakeInPort("baud = 9600.0\n"));
    EXPECT_EQ("file:6: 'far' must be one of: external silent echo at periodic scripted recording",
              MistakeInPort("far = \"script\"\n"));
    EXPECT_EQ("file:7: port has no key 'file'", MistakeInPort("far = \"at\"\nfile = \"x\"\n"));
}

TEST(ScenarioReader, SeedAndSpeedOfTheEnvironmentOverride) {
    const ScratchDirectory scratch;
    const std::string path = scratch.Path() + "/s.toml";
    std::ofstream(path) << "seed = 5\nspeed = 2.0\n" << kDevice;
    const Environment environment;
    Environment::Set("KOVASMGR_VIRTUAL_SCENARIO", path);
    EXPECT_EQ(5U, LoadScenario().scenario.seed);
    EXPECT_EQ(2.0, LoadScenario().scenario.speed);
    Environment::Set("KOVASMGR_VIRTUAL_SEED", "18");
    Environment::Set("KOVASMGR_VIRTUAL_SPEED", "0.5");
    const ScenarioResult result = LoadScenario();
    EXPECT_EQ("", result.error);
    EXPECT_EQ(18U, result.scenario.seed);
    EXPECT_EQ(0.5, result.scenario.speed);
    EXPECT_EQ(5U, ReadScenarioFile(path).scenario.seed);
}

TEST(ScenarioReader, AMistakeInTheEnvironmentIsNamed) {
    const Environment environment;
    for (const char* value : {"-1", "x", "1x", " 1", "9223372036854775808", "1.5"}) {
        Environment::Set("KOVASMGR_VIRTUAL_SEED", value);
        const ScenarioResult result = LoadScenario();
        EXPECT_EQ("KOVASMGR_VIRTUAL_SEED:0: must be a whole number from 0 to 9223372036854775807, "
                  "not '" +
                      std::string(value) + "'",
                  result.error);
        EXPECT_TRUE(result.scenario.devices.empty());
    }
    unsetenv("KOVASMGR_VIRTUAL_SEED");
    for (const char* value : {"0", "1001", "x", "1,5", "nan", "inf"}) {
        Environment::Set("KOVASMGR_VIRTUAL_SPEED", value);
        EXPECT_EQ("KOVASMGR_VIRTUAL_SPEED:0: must be a number from 0.001 to 1000, not '" +
                      std::string(value) + "'",
                  LoadScenario().error);
    }
}

TEST(ScenarioReader, AFileOfMoreThanAMebibyteIsRefused) {
    const ScratchDirectory scratch;
    const std::string path = scratch.Path() + "/s.toml";
    std::ofstream(path) << "#" << std::string(size_t{1024} * 1024, '\n') << kDevice;
    EXPECT_EQ(path + ":0: larger than 1 MiB", ReadScenarioFile(path).error);
}
