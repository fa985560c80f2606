// SPDX-License-Identifier: MIT
#include <pthread.h>
#include <sys/stat.h>
#include <termios.h>

#include <filesystem>

#include "tests/adapters/adapter_under_test.h"
#include "tests/adapters/descriptors_used_up.h"
#include "tests/adapters/far_program.h"
#include "tests/adapters/notice_recorder.h"
#include "tests/adapters/virtual_bench.h"
#include "tests/harness/wait_until.h"

namespace {

class Scenario : public VirtualBench {
  protected:
    // The reason that the log gives with the file and this line, and that there are no devices.
    void ExpectMistake(const std::string& text, int line, const std::string& reason) const {
        const AdapterUnderTest adapter;
        const std::string expected = UseScenario(text) + ":" + std::to_string(line) + ": " + reason;
        const int before = LogLines(expected);
        EXPECT_EQ("", adapter.DevicesText()) << text;
        EXPECT_EQ(before + 1, LogLines(expected)) << expected << "\n" << Log();
        EXPECT_EQ(OS_ADAPT_NO_HANDLE, adapter.OpenPort("p"));
    }
};

// Five lines, a mistake of a port is in the sixth.
constexpr const char* kDevice = "\n[[device]]\nname = \"d\"\n[[device.port]]\nname = \"p\"\n";

std::string PortWith(const std::string& line) { return kDevice + line + "\n"; }

} // namespace

TEST_F(Scenario, TheBuiltInOneHasAModemAndASensor) {
    const AdapterUnderTest adapter;
    EXPECT_EQ("virtual-modem(virtual-modem-0 virtual-modem-1) virtual-sensor(virtual-sensor-0)",
              adapter.DevicesText());
    EXPECT_STREQ("A modem that answers a few AT commands",
                 adapter.Devices()->stDevice[0].szDeviceText);
}

TEST_F(Scenario, TheModemAnswersCommandsAndSendsThemBack) {
    const AdapterUnderTest adapter;
    const int handle = adapter.OpenPort("virtual-modem-0");
    adapter.WriteText(handle, "AT\r");
    EXPECT_EQ("AT\r\r\nOK\r\n", adapter.ReadUntil(handle, "OK\r\n"));
    adapter.WriteText(handle, "at+csq\r\n");
    EXPECT_EQ("at+csq\r\r\n+CSQ: 21,99\r\n\r\nOK\r\n\n", adapter.ReadUntil(handle, "OK\r\n\n"));
    adapter.WriteText(handle, "ATE0\r");
    EXPECT_EQ("ATE0\r\r\nOK\r\n", adapter.ReadUntil(handle, "OK\r\n"));
    adapter.WriteText(handle, "AT+CGMI\r");
    EXPECT_EQ("\r\nKOVASMgr\r\n\r\nOK\r\n", adapter.ReadUntil(handle, "OK\r\n"));
    adapter.WriteText(handle, "AT+NONSENSE\r");
    EXPECT_EQ("\r\nERROR\r\n", adapter.ReadUntil(handle, "ERROR\r\n"));
    adapter.WriteText(handle, std::string(3000, 'A') + "\r");
    EXPECT_EQ("\r\nERROR\r\n", adapter.ReadUntil(handle, "ERROR\r\n"));
    adapter.WriteText(handle, "\r\r\rATI\r");
    EXPECT_EQ("\r\nVirtual modem\r\nRevision 1.0\r\n\r\nOK\r\n",
              adapter.ReadUntil(handle, "OK\r\n"));
}

TEST_F(Scenario, ThePortsOfTheModemAnswerIndependently) {
    const AdapterUnderTest adapter;
    const int first = adapter.OpenPort("virtual-modem-0");
    const int second = adapter.OpenPort("virtual-modem-1");
    adapter.WriteText(first, "ATE0\r");
    adapter.ReadUntil(first, "OK\r\n");
    adapter.WriteText(second, "AT\r");
    EXPECT_EQ("AT\r\r\nOK\r\n", adapter.ReadUntil(second, "OK\r\n"));
    EXPECT_EQ("", adapter.ReadText(first));
}

TEST_F(Scenario, TheSensorSendsNumberedReadingsWithoutBeingAsked) {
    const AdapterUnderTest adapter;
    const int handle = adapter.OpenPort("virtual-sensor-0");
    std::string text;
    ASSERT_TRUE(WaitUntil([&] {
        text += adapter.ReadText(handle);
        return CountOf(text, "\r\n") >= 4;
    }));
    const int number = std::stoi(text.substr(text.find("reading ") + 8));
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(1, CountOf(text, "reading " + std::to_string(number + i) + "\r\n")) << text;
    }
}

TEST_F(Scenario, AnEchoSendsEverythingBackInOrder) {
    UseScenario(PortWith("far = \"echo\""));
    const AdapterUnderTest adapter;
    const int handle = adapter.OpenPort("p");
    std::string sent;
    std::string back;
    ASSERT_TRUE(WaitUntil([&] {
        if (sent.size() < 100000) {
            const std::string block(1000, static_cast<char>(sent.size() / 1000));
            const long taken = adapter.WriteText(handle, block);
            sent += block.substr(0, static_cast<size_t>(taken));
        }
        back += adapter.ReadText(handle);
        return back.size() >= 100000;
    }));
    EXPECT_TRUE(sent == back);
}

TEST_F(Scenario, ASilentFarEndTakesEverythingAndAnswersNothing) {
    UseScenario(PortWith("far = \"silent\""));
    const AdapterUnderTest adapter;
    const int handle = adapter.OpenPort("p");
    for (int i = 0; i < 20; ++i) {
        ASSERT_EQ(20000, adapter.WriteText(handle, std::string(20000, 'x')));
    }
    EXPECT_EQ("", adapter.ReadText(handle));
}

TEST_F(Scenario, TextsAndProposedIdentifiersAreHandedOn) {
    const std::string longest(255, 'n');
    const std::string text(127, 't');
    UseScenario("[[device]]\nname = \"Gerät %s\"\ntext = \"" + text +
                "\"\n[[device.port]]\nname = \"" + longest + "\"\nid = 4711\n");
    const AdapterUnderTest adapter;
    const auto list = adapter.Devices();
    ASSERT_EQ(1, list->nDeviceCount);
    EXPECT_STREQ("Gerät %s", list->stDevice[0].szDeviceName);
    EXPECT_EQ(text, list->stDevice[0].szDeviceText);
    EXPECT_EQ(longest, list->stDevice[0].stPort[0].szPortName);
    EXPECT_EQ(4711, list->stDevice[0].stPort[0].nPortID);
    EXPECT_EQ(0, list->stDevice[0].stPort[0].nReserved);
    EXPECT_GT(adapter.OpenPort(longest), 0);
    EXPECT_TRUE(std::filesystem::is_symlink(PortLink(longest)));
}

TEST_F(Scenario, ADeviceThatIsNotPresentCanBePluggedIn) {
    UseScenario("[[device]]\nname = \"my device\"\npresent = false\n"
                "[[device.port]]\nname = \"../my port\"\n");
    const AdapterUnderTest adapter;
    EXPECT_EQ("", adapter.DevicesText());
    EXPECT_EQ("ok", Command("plug \"my device\""));
    EXPECT_EQ("my device(../my port)", adapter.DevicesText());
    EXPECT_TRUE(std::filesystem::is_symlink(PortLink("_._my_port")));
}

TEST_F(Scenario, AModeSwitchIsAPullOutAndThenAnInsertionAndOtherPortsStay) {
    UseScenario(R"(
[[device]]
name = "d"
mode = "normal"
[[device.port]]
name = "always"
[[device.port]]
name = "data"
mode = "normal"
[[device.port]]
name = "update"
mode = "update"
)");
    const AdapterUnderTest adapter;
    NoticeRecorder recorder(adapter);
    ASSERT_EQ("d(always data)", adapter.DevicesText());
    ASSERT_EQ(OS_ADAPT_OK, adapter.Register(NoticeRecorder::OnNotice));
    const int handle = adapter.OpenPort("always");
    const FarProgram far(PortLink("always"));
    EXPECT_EQ("error device has no port in that mode", Command("switch d updaet"));
    EXPECT_EQ("ok", Command("switch d update"));
    EXPECT_EQ((std::vector<std::string>{"- d(always)", "+ d(always update)"}), recorder.Notices());
    ASSERT_TRUE(far.Send("still there"));
    EXPECT_EQ("still there", adapter.ReadUntil(handle, "there"));
    EXPECT_NE(std::string::npos, Command("list").find("device \"d\" present"));
}

TEST_F(Scenario, AsMuchAsAnEnumerationCanReportIsPossible) {
    std::string text;
    for (int device = 0; device < 64; ++device) {
        text += "[[device]]\nname = \"d" + std::to_string(device) + "\"\n";
        for (int port = 0; port < 4; ++port) {
            text += "[[device.port]]\nname = \"p" + std::to_string(device) + "." +
                    std::to_string(port) + "\"\nfar = \"silent\"\n";
        }
    }
    UseScenario(text);
    const AdapterUnderTest adapter;
    EXPECT_EQ(64, adapter.Devices()->nDeviceCount);
    EXPECT_GT(adapter.OpenPort("p63.3"), 0);
    EXPECT_NE(std::string::npos, Command("list").find("port \"p63.3\" at "));
}

TEST_F(Scenario, AFileThatCannotBeReadIsNamed) {
    for (const char* path : {"/nowhere/scenario.toml", "/dev/null", "/"}) {
        setenv("KOVASMGR_VIRTUAL_SCENARIO", path, 1);
        const AdapterUnderTest adapter;
        EXPECT_EQ("", adapter.DevicesText());
        EXPECT_EQ(1, LogLines(std::string(path) + ":0: ")) << path;
    }
    const std::string fifo = m_Scratch.Path() + "/fifo";
    ASSERT_EQ(0, mkfifo(fifo.c_str(), 0600));
    setenv("KOVASMGR_VIRTUAL_SCENARIO", fifo.c_str(), 1);
    const AdapterUnderTest adapter;
    EXPECT_EQ("", adapter.DevicesText());
    EXPECT_EQ(1, LogLines(fifo + ":0: not a regular file"));
}

TEST_F(Scenario, ASyntaxErrorIsNamedWithItsLine) {
    ExpectMistake("\n\n[[device]\nname = 1", 3, "");
    ExpectMistake("name = \"unclosed\n", 1, "");
    ExpectMistake(std::string("\0\x01\xff\xfe", 4), 1, "");
}

TEST_F(Scenario, AnUnknownKeyIsNamed) {
    ExpectMistake("devices = 1\n", 1, "");
    ExpectMistake(std::string(kDevice) + "[other]\n", 6, "scenario has no key 'other'");
    ExpectMistake("[[device]]\nname = \"d\"\ncolour = 1\n[[device.port]]\nname = \"p\"\n", 3,
                  "device has no key 'colour'");
    ExpectMistake(PortWith("speed = 9600"), 6, "port has no key 'speed'");
    ExpectMistake(PortWith("send = \"text\""), 6, "port has no key 'send'");
    ExpectMistake(PortWith("echo = true"), 6, "port has no key 'echo'");
}

TEST_F(Scenario, AWrongTypeIsNamed) {
    ExpectMistake("device = 1\n", 1, "'device' must be written as [[...]] tables");
    ExpectMistake("device = [1]\n", 1, "'device' must be written as [[...]] tables");
    ExpectMistake("device = []\n", 1, "'device' must be written as [[...]] tables");
    ExpectMistake("[[device]]\nname = 1\n", 2, "'name' must be a text");
    ExpectMistake("[[device]]\nname = \"d\"\npresent = \"yes\"\n", 3,
                  "'present' must be true or false");
    ExpectMistake(PortWith("id = \"1\""), 6, "'id' must be a whole number from 0 to 2147483647");
    ExpectMistake(PortWith("id = -1"), 6, "'id' must be a whole number");
    ExpectMistake(PortWith("id = 2147483648"), 6, "'id' must be a whole number");
    ExpectMistake(PortWith("id = 1.5"), 6, "'id' must be a whole number");
    ExpectMistake(PortWith("far = 1"), 6, "'far' must be a text");
    ExpectMistake(PortWith("far = \"near\""), 6,
                  "'far' must be one of: external silent echo at periodic scripted recording");
    ExpectMistake(PortWith("far = \"at\"\nreplies = 1"), 7, "'replies' must be a table of texts");
    ExpectMistake(PortWith("far = \"at\"\n[device.port.replies]\nAT = 1"), 8,
                  "'replies' must hold texts only");
}

TEST_F(Scenario, WhatIsMissingIsNamed) {
    ExpectMistake("", 1, "scenario has no device");
    ExpectMistake("\n[[device]]\ntext = \"t\"\n", 2, "device lacks 'name'");
    ExpectMistake("\n[[device]]\nname = \"d\"\n", 2, "device has no port");
    ExpectMistake("\n[[device]]\nname = \"d\"\n\n[[device.port]]\nid = 1\n", 5,
                  "port lacks 'name'");
    ExpectMistake(PortWith("far = \"periodic\""), 4, "port lacks 'send'");
}

TEST_F(Scenario, WhatIsThereTwiceIsNamed) {
    ExpectMistake(std::string(kDevice) + kDevice, 8, "device 'd' is there twice");
    ExpectMistake(PortWith("[[device.port]]\nname = \"p\""), 7, "port 'p' is there twice");
    ExpectMistake(PortWith("[[device]]\nname = \"e\"\n[[device.port]]\nname = \"p\""), 9,
                  "port 'p' is there twice");
    ExpectMistake(PortWith("id = 7\n[[device.port]]\nname = \"q\"\nid = 7"), 9,
                  "id 7 is there twice");
    ExpectMistake("[[device]]\nname = \"d\"\n[[device.port]]\nname = \"a/b\"\n[[device.port]]\n"
                  "name = \"a_b\"\n",
                  6, "port 'a_b' has the same link name as another: a_b");
    ExpectMistake(PortWith("name = \"p\""), 6, "");
}

TEST_F(Scenario, WhatIsTooMuchIsNamed) {
    ExpectMistake("[[device]]\nname = \"" + std::string(128, 'n') + "\"\n", 2,
                  "'name' must have 1 to 127 bytes, not 128");
    ExpectMistake("[[device]]\nname = \"\"\n", 2, "'name' must have 1 to 127 bytes, not 0");
    ExpectMistake("[[device]]\nname = \"d\"\ntext = \"" + std::string(128, 't') + "\"\n", 3,
                  "'text' must have 1 to 127 bytes, not 128");
    ExpectMistake("[[device]]\nname = \"d\"\n[[device.port]]\nname = \"" + std::string(256, 'p') +
                      "\"\n",
                  4, "'name' must have 1 to 255 bytes, not 256");
    ExpectMistake("[[device]]\nname = \"a\\nb\"\n", 2,
                  "'name' must not contain control characters");
    ExpectMistake(PortWith("far = \"periodic\"\nsend = \"x\"\nevery_ms = 0"), 8,
                  "'every_ms' must be a whole number from 1 to 3600000");
    std::string ports = "[[device]]\nname = \"d\"\n";
    std::string devices;
    for (int i = 0; i < 1025; ++i) {
        const std::string number = std::to_string(i);
        ports += "[[device.port]]\nname = \"p" + number + "\"\n";
        devices +=
            "[[device]]\nname = \"d" + number + "\"\n[[device.port]]\nname = \"p" + number + "\"\n";
    }
    ExpectMistake(ports, 131, "device has more than 64 of 'port'");
    ExpectMistake(devices, 4097, "scenario has more than 1024 of 'device'");
}

TEST_F(Scenario, ALineThatIsTooLongOrHasTooManyDotsIsNamed) {
    const std::string dots(65, '.');
    std::string key = "a";
    for (int i = 0; i < 65; ++i) {
        key += " . a";
    }
    ExpectMistake(PortWith("#" + std::string(4096, 'x')), 6, "the line has more than 4096 bytes");
    ExpectMistake(PortWith(key + " = 1"), 6, "the line has more than 64 dots");
    std::string endless = "a";
    for (int i = 0; i < 300000; ++i) {
        endless += ".a";
    }
    ExpectMistake(endless + " = 1\n", 1, "the line has more than 4096 bytes");
    UseScenario(PortWith("# " + dots));
    EXPECT_EQ("d(p)", AdapterUnderTest().DevicesText());
}

TEST_F(Scenario, TheDeepestFileIsReadOnASmallStack) {
    std::string key = "a";
    for (int i = 0; i < 64; ++i) {
        key += ".a";
    }
    std::string text = "[" + key + "]\n" + key + " = [\n";
    std::string end = "]\n";
    for (int i = 0; i < 7; ++i) {
        text += "{" + key + " = [\n";
        end = "]}\n" + end;
    }
    UseScenario(text + end);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, size_t{512} * 1024);
    pthread_t thread{};
    AdapterUnderTest adapter;
    ASSERT_EQ(0, pthread_create(
                     &thread, &attributes,
                     [](void* it) -> void* {
                         int handle = 0;
                         static_cast<AdapterUnderTest*>(it)->Open("p", &handle);
                         return nullptr;
                     },
                     &adapter));
    pthread_attr_destroy(&attributes);
    ASSERT_EQ(0, pthread_join(thread, nullptr));
    EXPECT_EQ(1, LogLines("scenario has no device"));
    EXPECT_EQ(0, LogLines("TOML_MAX_NESTED_VALUES"));
}

TEST_F(Scenario, AReplyThatIsTooLongIsNamed) {
    const std::string longest(1024, 'x');
    ExpectMistake(PortWith("far = \"at\"\nreplies = {\"A\" = \"" + longest + "x\"}"), 7,
                  "'replies' must hold texts of at most 1024 bytes, not 1025");
    UseScenario(PortWith("far = \"at\"\necho = false\nreplies = {\"A\" = \"" + longest + "\"}"));
    const AdapterUnderTest adapter;
    const int handle = adapter.OpenPort("p");
    std::string commands;
    for (int i = 0; i < 500; ++i) {
        commands += "A\r";
    }
    ASSERT_EQ(1000, adapter.WriteText(handle, commands));
    std::string text;
    EXPECT_TRUE(WaitUntil([&] {
        text += adapter.ReadText(handle);
        return CountOf(text, "OK\r\n") == 500;
    }));
    EXPECT_EQ(500, CountOf(text, longest));
}

TEST_F(Scenario, AnOpeningStartsAnewWithAScriptedFarEnd) {
    UseScenario(PortWith("far = \"at\""));
    const AdapterUnderTest adapter;
    int handle = adapter.OpenPort("p");
    adapter.WriteText(handle, "AT+HALF");
    ASSERT_EQ("AT+HALF", adapter.ReadUntil(handle, "HALF"));
    ASSERT_EQ(OS_ADAPT_OK, adapter.Close(handle));
    handle = adapter.OpenPort("p");
    adapter.WriteText(handle, "AT\r");
    EXPECT_EQ("AT\r\r\nOK\r\n", adapter.ReadUntil(handle, "OK\r\n"));
    // Nobody fetches the answers, so commands wait too.
    const std::string block(16384, '\r');
    while (adapter.WriteText(handle, block) > 0) {
    }
    handle = adapter.OpenPort("p");
    adapter.WriteText(handle, "AT\r");
    EXPECT_EQ("AT\r\r\nOK\r\n", adapter.ReadUntil(handle, "OK\r\n"));
}

TEST_F(Scenario, AnOpeningLetsAFarEndSendThatAProgramStopped) {
    UseScenario(PortWith("far = \"echo\""));
    const AdapterUnderTest adapter;
    ASSERT_GT(adapter.OpenPort("p"), 0);
    const FarProgram far(PortLink("p"));
    ASSERT_EQ(0, tcflow(far.Terminal(), TCOOFF));
    const int handle = adapter.OpenPort("p");
    adapter.WriteText(handle, "hello");
    EXPECT_EQ("hello", adapter.ReadUntil(handle, "hello"));
}

TEST_F(Scenario, AModeSwitchThatFailsLeavesTheDeviceAsItWas) {
    UseScenario(PortWith("mode = \"x\"\n[[device.port]]\nname = \"q\"\nmode = \"y\"\n"
                         "[[device.port]]\nname = \"r\"\nmode = \"y\"\n"
                         "[[device]]\nname = \"e\"\n[[device.port]]\nname = \"s\"")
                    .replace(1, 10, "[[device]]\nmode = \"x\""));
    const AdapterUnderTest adapter;
    ASSERT_EQ("d(p) e(s)", adapter.DevicesText());
    ControlClient client(ControlDirectory());
    ASSERT_NE("", client.Ask("list"));
    {
        const DescriptorsUsedUp usedUp;
        EXPECT_EQ(0U, client.Ask("switch d y").find("error device 'd'"));
    }
    EXPECT_EQ("d(p) e(s)", adapter.DevicesText());
    EXPECT_GT(adapter.OpenPort("p"), 0);
    EXPECT_EQ("ok", client.Ask("switch d y"));
    EXPECT_EQ("d(q r) e(s)", adapter.DevicesText());
    EXPECT_EQ("ok", client.Ask("switch d x"));
}

TEST_F(Scenario, ALineBreakInItsPathForgesNoLogLine) {
    setenv("KOVASMGR_VIRTUAL_SCENARIO", "/nowhere\nERRO:OSAdapt: forged", 1);
    const AdapterUnderTest adapter;
    EXPECT_EQ("", adapter.DevicesText());
    EXPECT_EQ(1, LogLines("/nowhere?ERRO:OSAdapt: forged:0: "));
}

TEST_F(Scenario, AStartModeWithoutPortsIsNamed) {
    ExpectMistake("\n[[device]]\nname = \"d\"\nmode = \"x\"\n[[device.port]]\nname = \"p\"\n"
                  "mode = \"y\"\n",
                  4, "device 'd' has no port in the mode it starts in");
}

TEST_F(Scenario, WithAMistakeTheAdapterWorksOnWithoutDevices) {
    UseScenario("nonsense");
    const AdapterUnderTest adapter;
    NoticeRecorder recorder(adapter);
    EXPECT_EQ(OS_ADAPT_OK, adapter.Register(NoticeRecorder::OnNotice));
    EXPECT_EQ("ok", Command("list"));
    EXPECT_EQ("error no device 'd'", Command("plug d"));
    EXPECT_EQ(OS_ADAPT_OK, adapter.UnRegister(NoticeRecorder::OnNotice));
}

TEST_F(Scenario, ARecordingStandsInForOneAndWhatIsLeftOutIsLogged) {
    const std::string start = "{\"t_us\":1,\"result\":30000,\"call\":";
    const std::string path =
        UseScenario("{\"kovasmgr_recording\":1}\n" + start +
                    "\"enumerate\",\"devices\":[{\"name\":\"d\",\"text\":\"t\",\"ports\":[{"
                    "\"name\":\"p\",\"id\":7}]}]}\n" +
                    start + "\"open\",\"port\":\"p\"}\n" + start +
                    "\"write\",\"port\":\"p\",\"data\":\"QVQN\",\"count\":3}\n" + start +
                    "\"read\",\"port\":\"p\",\"data\":\"T0s=\",\"count\":2}\n" + start + "\"re");
    const AdapterUnderTest adapter;
    EXPECT_EQ("d(p)", adapter.DevicesText());
    EXPECT_EQ(1, LogLines(path + ":6: the recording ends within a line, which is left out"));
    const int handle = adapter.OpenPort("p");
    adapter.WriteText(handle, "AT\r");
    EXPECT_EQ("OK", adapter.ReadUntil(handle, "OK"));
}

TEST_F(Scenario, TheSampleHasNoMistake) {
    setenv("KOVASMGR_VIRTUAL_SCENARIO", KOVASMGR_SAMPLE_SCENARIO, 1);
    const AdapterUnderTest adapter;
    EXPECT_EQ("bench(bench-open bench-echo bench-silent) modem(modem-at modem-gps)",
              adapter.DevicesText());
    EXPECT_EQ("ok", Command("plug spare"));
    EXPECT_EQ("error device has no port in that mode", Command("switch modem other"));
    EXPECT_EQ("ok", Command("switch modem update"));
    EXPECT_EQ("bench(bench-open bench-echo bench-silent) modem(modem-update) spare(spare-0)",
              adapter.DevicesText());
}
