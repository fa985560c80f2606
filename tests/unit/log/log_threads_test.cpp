// SPDX-License-Identifier: MIT
#include <pthread.h>

#include <atomic>
#include <map>
#include <regex>
#include <sstream>
#include <thread>

#include "common/jthread.h"
#include "tests/harness/wait_until.h"
#include "tests/unit/log/log_test.h"

namespace {

constexpr int kThreads = 4;
constexpr int kLines = 500;

class LogThreads : public LogTest {
  protected:
    static void Write(int thread) {
        for (int line = 0; line < kLines; ++line) {
            INFO_LOG("thread %d line %d %s", thread, line, std::string(200, 'x').c_str());
        }
    }

    // Every line whole, every thread's lines in their order.
    static void ExpectWholeLines(const std::string& text, int linesEach) {
        const std::regex form("\\[TIME\\] INFO:thread ([0-9]+) line ([0-9]+) x{200}");
        std::map<std::string, int> next;
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);) {
            std::smatch parts;
            ASSERT_TRUE(std::regex_match(line, parts, form)) << line;
            EXPECT_EQ(std::stoi(parts[2]), next[parts[1]]++);
        }
        EXPECT_EQ(next.size(), static_cast<std::size_t>(kThreads));
        for (const auto& thread : next) {
            EXPECT_EQ(thread.second, linesEach);
        }
    }
};

TEST_F(LogThreads, LinesNeverInterleave) {
    OpenLog();
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back(Write, thread);
    }
    for (auto& thread : threads) {
        thread.join();
    }
    ExpectWholeLines(Log(), kLines);
}

TEST_F(LogThreads, NoLineIsLostWhileTheLogMoves) {
    OpenLog();
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back(Write, thread);
    }
    std::vector<std::string> files = {m_Scratch.LogFile()};
    for (int move = 0; move < 20; ++move) {
        files.push_back(m_Scratch.LogDirectory() + "/" + std::to_string(move));
        ASSERT_EQ(INIT_LOG(files.back().c_str(), true), 1);
    }
    for (auto& thread : threads) {
        thread.join();
    }
    std::string all;
    for (const std::string& file : files) {
        all += LogText(file);
    }
    ExpectWholeLines(all, kLines);
}

// Logs until it is killed.
class Chatter : public JThread {
  public:
    ~Chatter() override {
        WaitUntil([this] { return !IsRunning(); });
    }
    int Lines() const { return m_Lines; }

  protected:
    void* Thread() override {
        ThreadStarted();
        for (;;) {
            INFO_LOG("chatter %s", std::string(3000, 'x').c_str());
            ++m_Lines;
            pthread_testcancel();
        }
    }

  private:
    std::atomic<int> m_Lines{0};
};

TEST_F(LogThreads, AThreadThatIsKilledLeavesWholeLinesAndAFreeLog) {
    OpenLog();
    for (int round = 1; round <= 20; ++round) {
        Chatter chatter;
        ASSERT_EQ(chatter.Start(), 0);
        ASSERT_TRUE(WaitUntil([&] { return chatter.Lines() > 0; }));
        ASSERT_EQ(chatter.Kill(), 0);
        EXPECT_EQ(INFO_LOG("after"), 1);
    }
    std::istringstream lines(Log());
    const std::string whole = "[TIME] INFO:chatter " + std::string(3000, 'x');
    for (std::string line; std::getline(lines, line);) {
        EXPECT_TRUE(line == whole || line == "[TIME] INFO:after") << line;
    }
}

} // namespace
