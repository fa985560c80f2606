// SPDX-License-Identifier: MIT
//
// What happened in a scenario: the same bytes each time.
#include <stdlib.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "adapters/virtual/simulation/event_log.h"
#include "tests/adapters/simulated_host.h"
#include "tests/harness/log_text.h"
#include "tests/harness/wait_until.h"

namespace fs = std::filesystem;

namespace {

// Everything in it at once: time, bytes, calls, faults, random bytes, several ports.
constexpr const char* kBusy =
    "'every 7ms from 10ms until 300ms replug other', 'every 5ms send 9 random bytes to p2', "
    "'at 100ms plug other', 'on 3rd write to p1 fail', "
    "'on 5th write to p1 shorten to 1 bytes', 'on \"ba\" from p1 reply \"2\" after 1ms', "
    "'on \"a\" from p1 reply \"1\" after 3ms', 'on 2nd open of p2 send \"x\" to p1', "
    "'on 2nd enumeration fail'";

constexpr const char* kOther = R"(
[[device]]
name = "other"
[[device.port]]
name = "o1"
)";

class EventLogOf : public SimulatedHost {
  protected:
    // What a host does that does not look at the clock.
    void BeHost() const {
        const int p1 = Open("p1");
        for (int i = 0; i < 40; ++i) {
            m_Adapter.WriteText(p1, i % 3 == 0 ? "ba" : "xa");
            m_Adapter.ReadText(p1);
            m_Adapter.Close(Open("p2"));
        }
        long count = 0;
        m_Adapter.Enumerate(OS_ADAPT_ENUM_ALL, std::make_unique<_OS_ADAPT_DEVICEPORTLIST>().get());
        m_Adapter.Close(p1);
        m_Adapter.Write(p1, "x", 1, &count);
        EXPECT_TRUE(WaitForEnd());
        End();
    }

    std::string RunOnce(const std::string& keys) {
        Run(kBusy, std::string(kTwoPorts) + kOther, "end = '400ms'\n" + keys);
        BeHost();
        return EventFile();
    }
};

// Keeps all processors busy.
class Load {
  public:
    Load() {
        for (unsigned i = 0; i < 2 * std::thread::hardware_concurrency(); ++i) {
            m_Threads.emplace_back([this] {
                while (!m_Stop) {
                }
            });
        }
    }
    ~Load() {
        m_Stop = true;
        for (std::thread& thread : m_Threads) {
            thread.join();
        }
    }
    Load(const Load&) = delete;
    Load& operator=(const Load&) = delete;

  private:
    std::atomic<bool> m_Stop{false};
    std::vector<std::thread> m_Threads;
};

} // namespace

TEST_F(EventLogOf, ARunIsTheSameAgainAtAnySpeedAndUnderLoad) {
    const std::string first = RunOnce("");
    EXPECT_NE(std::string::npos, first.find("\"event\":\"write 3 failed\""));
    EXPECT_NE(std::string::npos, first.find("\"event\":\"write 5 took 1 bytes\""));
    EXPECT_NE(std::string::npos, first.find("\"event\":\"sent \\\"2\\\"\""));
    EXPECT_NE(std::string::npos,
              first.find("{\"track\":\"time\",\"at_us\":100000,\"event\":\"plug other\","
                         "\"error\":\"device is plugged in already\"}\n"));
    EXPECT_EQ(41, CountOf(first, "replug other"));
    EXPECT_EQ(first, RunOnce(""));
    EXPECT_EQ(first, RunOnce("speed = 20"));
    const Load load;
    EXPECT_EQ(first, RunOnce("speed = 20"));
    EXPECT_EQ(first, RunOnce("speed = 0.5"));
}

TEST_F(EventLogOf, ATrackFollowsTheOtherInTheScenariosOrder) {
    Run("'at 0s pull other'", std::string(kOther) + kTwoPorts);
    Open("p2");
    Open("p1");
    Command("stall p1");
    EXPECT_EQ("{\"track\":\"time\",\"at_us\":0,\"event\":\"pull other\"}\n"
              "{\"track\":\"commands\",\"n\":1,\"event\":\"stall p1\"}\n"
              "{\"track\":\"p1\",\"n\":1,\"event\":\"open\"}\n"
              "{\"track\":\"p2\",\"n\":1,\"event\":\"open\"}\n"
              "ok",
              Command("events"));
}

TEST_F(EventLogOf, TheFileIsThereAsAWholeWhenTheSessionHasEnded) {
    Run("'at 0s pull modem'");
    const std::string path = m_Scratch.Path() + "/events.jsonl";
    EXPECT_FALSE(fs::exists(path));
    End();
    EXPECT_EQ("{\"track\":\"time\",\"at_us\":0,\"event\":\"pull modem\"}\n", EventFile());
    const fs::directory_iterator entries(m_Scratch.Path());
    for (const auto& entry : entries) {
        EXPECT_EQ(std::string::npos, entry.path().string().find(".tmp"));
    }
}

TEST_F(EventLogOf, TheFileIsThereAtTheEndOfTheScenarioToo) {
    Run("'at 0s pull modem'", kTwoPorts, "end = '10ms'");
    const std::string path = m_Scratch.Path() + "/events.jsonl";
    ASSERT_TRUE(WaitUntil([&] { return fs::exists(path); }, std::chrono::seconds(60)));
    EXPECT_EQ("{\"track\":\"time\",\"at_us\":0,\"event\":\"pull modem\"}\n", EventFile());
}

TEST_F(EventLogOf, ASessionInWhichNothingHappensLeavesTheFileOfTheOneBefore) {
    Run("");
    Open("p1");
    End();
    const std::string text = EventFile();
    m_Adapter.Devices();
    End();
    EXPECT_EQ(text, EventFile());
}

TEST_F(EventLogOf, AFileThatCannotBeWrittenIsLogged) {
    setenv("KOVASMGR_VIRTUAL_EVENTS", "/nonexistent/events", 1);
    Run("'at 0s pull modem'");
    End();
    EXPECT_EQ(1, LogLines("the events cannot be written to '/nonexistent/events'"));
    setenv("KOVASMGR_VIRTUAL_EVENTS", "events", 1);
    m_Adapter.Devices();
    End();
    EXPECT_EQ(1, LogLines("KOVASMGR_VIRTUAL_EVENTS must be an absolute path, not 'events'"));
}

TEST(EventLog, WhatReadsCameToStandsBehindTheOtherCallsOfThePort) {
    EventLog log({"p", "q"});
    log.NoteRead(0, "read 1 failed");
    log.NotePort(0, "open");
    log.NotePort(2, "enumeration 1 failed");
    log.NotePort(1, "open");
    EXPECT_EQ("{\"track\":\"p\",\"n\":1,\"event\":\"open\"}\n"
              "{\"track\":\"p\",\"n\":2,\"event\":\"read 1 failed\"}\n"
              "{\"track\":\"q\",\"n\":1,\"event\":\"open\"}\n"
              "{\"track\":\"enumeration\",\"n\":1,\"event\":\"enumeration 1 failed\"}\n",
              log.Text());
}

TEST(EventLog, TextsAreJson) {
    EXPECT_EQ("\"a\\\"\\\\\\u000a\\u007f\xc3\xa4\"", QuoteJson("a\"\\\n\x7f\xc3\xa4"));
}

TEST(EventLog, ATrackIsBoundedAndSaysSo) {
    EventLog log({"p"});
    for (size_t i = 0; i < EventLog::kMaxLines + 10; ++i) {
        log.NotePort(0, "x");
    }
    log.SetError(log.NotePort(0, "x"), "nowhere");
    const std::string text = log.Text();
    EXPECT_EQ(static_cast<int>(EventLog::kMaxLines), CountOf(text, "\"event\":\"x\"}"));
    const std::string last = "{\"track\":\"p\",\"event\":\"there was more, which is not kept\"}\n";
    EXPECT_EQ(text.size() - last.size(), text.find(last));
}
