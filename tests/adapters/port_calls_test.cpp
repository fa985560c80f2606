// SPDX-License-Identifier: MIT
#include "adapters/shared/port_calls.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <string>
#include <vector>

#include "OSAdapt.h"
#include "adapters/shared/terminal.h"
#include "tests/harness/scratch_directory.h"
#include "tests/harness/wait_until.h"

namespace {

using Clock = std::chrono::steady_clock;

// Pseudo-terminals, the host's ends of them open in a table.
class PortCalls : public testing::Test {
  protected:
    int Add(const std::string& portName) {
        UniqueFd master(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK));
        unlockpt(master.Get());
        m_FarEnds.emplace_back(open(ptsname(master.Get()), O_RDWR | O_NOCTTY | O_CLOEXEC));
        EXPECT_EQ(0, MakeRaw(m_FarEnds.back().Get()));
        m_Terminal = std::make_shared<OpenTerminal>(std::move(master));
        return m_Table.Add(portName, m_Terminal);
    }

    std::string Read(int handle) {
        char buffer[64];
        long count = -1;
        EXPECT_EQ(OS_ADAPT_OK, ReadPort(m_Table, handle, buffer, sizeof buffer, &count));
        return std::string(buffer, static_cast<size_t>(count));
    }

    long Write(int handle, const std::string& text) {
        long written = -1;
        EXPECT_EQ(OS_ADAPT_OK, WritePort(m_Table, handle, text.data(),
                                         static_cast<long>(text.size()), &written));
        return written;
    }

    // How often this thread has called read(2) and its like; -1 when the kernel does not count.
    static long ReadCalls() {
        std::ifstream counts("/proc/thread-self/io");
        for (std::string key; counts >> key;) {
            long count = 0;
            if (key == "syscr:" && counts >> count) {
                return count;
            }
        }
        return -1;
    }

    ScratchDirectory m_Scratch;
    HandleTable m_Table;
    std::vector<UniqueFd> m_FarEnds;
    std::shared_ptr<OpenTerminal> m_Terminal; // the last one
};

} // namespace

TEST_F(PortCalls, SweepsOverIdlePortsCallTheKernelForNone) {
    if (ReadCalls() < 0) {
        GTEST_SKIP() << "the kernel does not count read calls";
    }
    std::vector<int> handles;
    for (int i = 0; i < 16; ++i) {
        handles.push_back(Add("port" + std::to_string(i)));
    }
    const long before = ReadCalls();
    for (int sweep = 0; sweep < 20; ++sweep) {
        for (const int handle : handles) {
            ASSERT_EQ("", Read(handle));
        }
    }
    EXPECT_LE(ReadCalls() - before, 20); // what counting takes, and each port's first read
}

TEST_F(PortCalls, WhatArrivesAtOneOfManyPortsIsReadThere) {
    const int first = Add("a");
    const int second = Add("b");
    ASSERT_EQ(2, write(m_FarEnds[1].Get(), "hi", 2));
    std::string text;
    EXPECT_TRUE(WaitUntil([&] {
        EXPECT_EQ("", Read(first));
        text += Read(second);
        return text == "hi";
    }));
}

TEST_F(PortCalls, ALineThatWasHungUpFailsOneReadAfterWhatItSent) {
    const int handle = Add("a");
    ASSERT_EQ("", Read(handle));
    ASSERT_EQ(3, write(m_FarEnds[0].Get(), "end", 3));
    std::string text;
    ASSERT_TRUE(WaitUntil([&] { return (text += Read(handle)) == "end"; }));
    m_FarEnds[0].Reset();
    char byte = 0;
    long count = 0;
    EXPECT_NE(OS_ADAPT_OK, ReadPort(m_Table, handle, &byte, 1, &count));
    EXPECT_EQ("", Read(handle));
    EXPECT_EQ("", Read(handle));
}

TEST_F(PortCalls, AWriteWaitsAsLongAsItsTerminalSays) {
    const int handle = Add("a");
    const std::string block(100000, 'x');
    for (const int milliseconds : {20, 200}) {
        m_Terminal->SetWriteTime(std::chrono::milliseconds(milliseconds));
        while (Write(handle, block) > 0) {
        }
        const auto start = Clock::now();
        EXPECT_EQ(0, Write(handle, block));
        EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(milliseconds - 1));
        EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(milliseconds + 600));
    }
}
