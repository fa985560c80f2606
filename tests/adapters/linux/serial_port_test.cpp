// SPDX-License-Identifier: MIT
#include "adapters/linux/serial_port.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <thread>

#include "adapters/shared/terminal.h"
#include "tests/adapters/descriptors_used_up.h"
#include "tests/adapters/linux/pty_pair.h"
#include "tests/harness/process_counts.h"
#include "tests/harness/wait_until.h"

namespace {

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

std::string AllByteValues() {
    std::string bytes;
    for (int value = 0; value < 256; ++value) {
        bytes += static_cast<char>(value);
    }
    return bytes;
}

LineSettings Line(const std::string& text) {
    LineSettings settings;
    Apply(ParseLineChange(text), settings);
    return settings;
}

bool IsAsleep(pid_t thread) {
    std::ifstream stat("/proc/self/task/" + std::to_string(thread) + "/stat");
    std::string number;
    std::string name;
    std::string state;
    stat >> number >> name >> state;
    return state == "S";
}

class SerialPortTest : public testing::Test {
  protected:
    std::shared_ptr<SerialPort> Open(const std::string& line = "") const {
        return SerialPort::Open(m_Pty.Facts(), Line(line));
    }

    // The reason of a port that does not open.
    std::string Refusal(const PortFacts& facts, const std::string& line = "") const {
        try {
            SerialPort::Open(facts, Line(line));
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "opened";
    }

    std::string RefusalOfLine(const std::string& line) const {
        return Refusal(m_Pty.Facts(), line);
    }

    // What a change of an open port throws.
    static std::string BreakFailure(SerialPort& port, int milliseconds) {
        try {
            port.SendBreak(std::chrono::milliseconds(milliseconds));
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "";
    }

    static std::string ChangeFailure(SerialPort& port, const std::string& text) {
        try {
            port.Change(Line(text), ParseLineChange(text));
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "";
    }

    static std::string ReadUntil(const SerialPort& port, size_t size) {
        std::string bytes;
        WaitUntil([&] {
            char buffer[4096];
            bytes.append(buffer, ReadAvailable(port.Descriptor(), buffer, sizeof buffer).count);
            return bytes.size() >= size;
        });
        return bytes;
    }

    void ExpectAsBefore() const {
        const termios now = m_Pty.Settings();
        EXPECT_EQ(m_Before.c_iflag, now.c_iflag);
        EXPECT_EQ(m_Before.c_oflag, now.c_oflag);
        EXPECT_EQ(m_Before.c_cflag, now.c_cflag);
        EXPECT_EQ(m_Before.c_lflag, now.c_lflag);
        EXPECT_EQ(m_Before.c_cc[VMIN], now.c_cc[VMIN]);
        EXPECT_EQ(cfgetospeed(&m_Before), cfgetospeed(&now));
    }

    PtyPair m_Pty;
    const termios m_Before = m_Pty.Settings();
};

} // namespace

TEST_F(SerialPortTest, AllByteValuesPassUnchangedInBothDirections) {
    const auto port = Open();
    const std::string bytes = AllByteValues();
    ASSERT_EQ(256U, WriteAvailable(port->Descriptor(), bytes.data(), bytes.size()).count);
    EXPECT_EQ(bytes, m_Pty.Receive(256));
    ASSERT_TRUE(m_Pty.Send(bytes));
    EXPECT_EQ(bytes, ReadUntil(*port, 256));
}

TEST_F(SerialPortTest, IsOpenedWithTheDefaultLine) {
    const auto port = Open();
    const termios settings = m_Pty.Settings();
    EXPECT_EQ(B115200, cfgetospeed(&settings));
    EXPECT_EQ(B115200, cfgetispeed(&settings));
    EXPECT_EQ(static_cast<tcflag_t>(CS8), settings.c_cflag & (CSIZE | PARENB | CSTOPB | CRTSCTS));
    EXPECT_EQ(0U, settings.c_iflag);
    EXPECT_EQ(0U, settings.c_oflag);
    EXPECT_EQ(0U, settings.c_lflag);
    EXPECT_NE(0U, settings.c_cflag & CLOCAL);
    EXPECT_EQ(1000, port->WriteTime().count());
}

TEST_F(SerialPortTest, TakesAnyBaudRate) {
    for (const uint32_t rate :
         {50U, 300U, 9600U, 31250U, 74880U, 115200U, 250000U, 4000000U, 12000000U}) {
        const auto port = Open(std::to_string(rate));
        // speed, as the terminal's own structure has it
        struct {
            unsigned flags[4];
            unsigned char line;
            unsigned char characters[19];
            unsigned input;
            unsigned output;
        } settings{};
        ASSERT_EQ(0, ioctl(port->Descriptor(), _IOR('T', 0x2A, settings), &settings));
        EXPECT_EQ(rate, settings.output);
        EXPECT_EQ(rate, settings.input);
    }
}

TEST_F(SerialPortTest, TakesABaudRateForAnotherWithinThreePercent) {
    EXPECT_TRUE(IsNear(115200, 115200));
    EXPECT_TRUE(IsNear(115200, 117647)); // what a divisor of 24 MHz makes of it
    EXPECT_TRUE(IsNear(100, 103));
    EXPECT_TRUE(IsNear(100, 97));
    EXPECT_TRUE(IsNear(4294967295, 4200000000));
    EXPECT_FALSE(IsNear(100, 104));
    EXPECT_FALSE(IsNear(100, 96));
    EXPECT_FALSE(IsNear(115200, 9600));
    EXPECT_FALSE(IsNear(115200, 0));
    EXPECT_FALSE(IsNear(1, 4294967295));
}

TEST_F(SerialPortTest, TakesStopBitsFlowControlAndWriteTime) {
    {
        const auto port = Open("8N2 rtscts write_timeout=500");
        EXPECT_EQ(static_cast<tcflag_t>(CSTOPB | CRTSCTS),
                  m_Pty.Settings().c_cflag & (CSTOPB | CRTSCTS));
        EXPECT_EQ(500, port->WriteTime().count());
    }
    const auto port = Open("xonxoff");
    EXPECT_EQ(static_cast<tcflag_t>(IXON | IXOFF), m_Pty.Settings().c_iflag);
}

TEST_F(SerialPortTest, DoesNotOpenWithSettingsThatTheDriverDidNotTake) {
    const struct {
        const char* line;
        const char* reason;
    } cases[] = {{"8E1", "the driver refused parity even; "},
                 {"8O1", "the driver refused parity odd; "},
                 {"8M1", "the driver refused parity mark; "},
                 {"7N1", "the driver refused 7 data bits; "},
                 {"5N2", "the driver refused 5 data bits; "},
                 {"dtr=off", "the driver refused dtr=off; "},
                 {"rts=on", "the driver refused rts=on; "},
                 {"low_latency=on", "the driver refused low_latency=on; "},
                 {"low_latency=off", "the driver refused low_latency=off; "}};
    for (const auto& it : cases) {
        EXPECT_EQ(it.reason + std::string("set the line otherwise (OSADAPT_LINE, linux.toml or "
                                          "OSADAPT_SetLine)"),
                  RefusalOfLine(it.line));
        ExpectAsBefore();
    }
    EXPECT_NE(nullptr, Open()); // and it is not left occupied
}

TEST_F(SerialPortTest, IdleIsToldFromHungUp) {
    const auto port = Open();
    char byte = 0;
    EXPECT_EQ(0, ReadAvailable(port->Descriptor(), &byte, 1).error);
    m_Pty.PullOut();
    EXPECT_EQ(EIO, ReadAvailable(port->Descriptor(), &byte, 1).error);
}

TEST_F(SerialPortTest, OpeningThrowsNothingAwayThatWasSentBefore) {
    // Another program has made the terminal ready to receive and looks on.
    const UniqueFd other(open(m_Pty.Node().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK));
    ASSERT_EQ(0, MakeRaw(other.Get()));
    ASSERT_TRUE(m_Pty.Send("early"));
    ASSERT_TRUE(WaitUntil([&] {
        int waiting = 0;
        return ioctl(other.Get(), FIONREAD, &waiting) == 0 && waiting == 5;
    }));
    EXPECT_EQ("early", ReadUntil(*Open(), 5));
}

TEST_F(SerialPortTest, IsForOneAlone) {
    const auto port = Open();
    int isExclusive = 0;
    EXPECT_EQ(0, ioctl(port->Descriptor(), TIOCGEXCL, &isExclusive));
    EXPECT_NE(0, isExclusive);
    EXPECT_EQ("it is in use by this program itself; close it there first", Refusal(m_Pty.Facts()));
}

TEST_F(SerialPortTest, IsFreeForOthersAfterItsEnd) {
    Open().reset();
    const int other = open(m_Pty.Node().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_GE(other, 0);
    int isExclusive = 1;
    EXPECT_EQ(0, ioctl(other, TIOCGEXCL, &isExclusive));
    EXPECT_EQ(0, isExclusive);
    EXPECT_EQ(0, flock(other, LOCK_EX | LOCK_NB));
    close(other);
}

TEST_F(SerialPortTest, IsFreeForOthersAlsoWhenAChildOfTheHostHasACopy) {
    auto port = Open();
    const int copy = dup(port->Descriptor());
    port.reset();
    EXPECT_NE(nullptr, Open());
    close(copy);
}

TEST_F(SerialPortTest, PutsBackTheSettingsThatItFound) {
    {
        const auto port = Open("9600 8N2 rtscts");
        EXPECT_NE(m_Before.c_lflag, m_Pty.Settings().c_lflag);
        port->Change(Line("300"), ParseLineChange("300"));
    }
    ExpectAsBefore();
}

TEST_F(SerialPortTest, EndsInBoundedTimeWhenNobodyReads) {
    auto port = Open();
    const std::string block(65536, 'x');
    while (WriteAvailable(port->Descriptor(), block.data(), block.size()).count > 0) {
    }
    const size_t threads = RunningThreads();
    const auto start = Clock::now();
    port.reset();
    EXPECT_LT(SecondsSince(start), 2.0);
    EXPECT_EQ(threads, RunningThreads());
}

TEST_F(SerialPortTest, WhatWasWrittenJustBeforeTheEndStillArrives) {
    const std::string bytes = AllByteValues() + AllByteValues();
    auto port = Open();
    ASSERT_EQ(512U, WriteAvailable(port->Descriptor(), bytes.data(), bytes.size()).count);
    port.reset();
    EXPECT_EQ(bytes, m_Pty.Receive(512));
}

TEST_F(SerialPortTest, LeavesNoDescriptorAndNoThreadBehind) {
    const size_t descriptors = OpenDescriptors();
    const size_t threads = RunningThreads();
    for (int i = 0; i < 20; ++i) {
        Open();
        RefusalOfLine("7E1");
    }
    EXPECT_EQ(descriptors, OpenDescriptors());
    EXPECT_EQ(threads, RunningThreads());
}

TEST_F(SerialPortTest, EndsAlsoWithoutADescriptorLeft) {
    Open(); // a sanitizer needs descriptors when it meets the class for the first time
    auto port = Open("9600");
    const size_t descriptors = OpenDescriptors();
    {
        const DescriptorsUsedUp none;
        port.reset();
    }
    EXPECT_EQ(descriptors - 1, OpenDescriptors());
    ExpectAsBefore();
}

TEST_F(SerialPortTest, EndsQuicklyWhenItsDeviceIsGone) {
    auto port = Open();
    m_Pty.PullOut();
    const auto start = Clock::now();
    port.reset();
    EXPECT_LT(SecondsSince(start), 0.8);
}

TEST_F(SerialPortTest, ACancellationThatIsPendingHarmsNeitherOpeningNorTheEnd) {
    const size_t descriptors = OpenDescriptors();
    // A frame that is cancelled must not have objects of its own, for the sanitizers' sake.
    bool hasEnded = false;
    const std::function<void()> call = [&] {
        Open();
        hasEnded = true;
    };
    pthread_t thread{};
    ASSERT_EQ(0, pthread_create(
                     &thread, nullptr,
                     [](void* argument) -> void* {
                         pthread_cancel(pthread_self());
                         (*static_cast<const std::function<void()>*>(argument))();
                         pthread_testcancel();
                         return nullptr;
                     },
                     const_cast<std::function<void()>*>(&call)));
    void* result = nullptr;
    ASSERT_EQ(0, pthread_join(thread, &result));
    EXPECT_EQ(PTHREAD_CANCELED, result);
    EXPECT_TRUE(hasEnded);
    EXPECT_EQ(descriptors, OpenDescriptors());
    ExpectAsBefore();
}

TEST_F(SerialPortTest, ChangesWhatAChangeNamesWhileItIsOpen) {
    const auto port = Open("9600 8N2 rtscts");
    port->Change(Line("300 8N2 rtscts write_timeout=20"), ParseLineChange("300 write_timeout=20"));
    const termios settings = m_Pty.Settings();
    EXPECT_EQ(B300, cfgetospeed(&settings));
    EXPECT_EQ(static_cast<tcflag_t>(CSTOPB | CRTSCTS), settings.c_cflag & (CSTOPB | CRTSCTS));
    EXPECT_EQ(20, port->WriteTime().count());
    port->Change(Line(""));
    EXPECT_EQ(static_cast<tcflag_t>(0), m_Pty.Settings().c_cflag & (CSTOPB | CRTSCTS));
    EXPECT_EQ(1000, port->WriteTime().count());
}

TEST_F(SerialPortTest, LeavesTheTerminalAloneWhenAChangeDoesNotNameIt) {
    const auto port = Open("9600");
    termios others = m_Pty.Settings();
    others.c_cflag |= CSTOPB;
    m_Pty.Set(others);
    port->Change(Line("9600 write_timeout=20"), ParseLineChange("write_timeout=20"));
    EXPECT_NE(0U, m_Pty.Settings().c_cflag & CSTOPB);
}

TEST_F(SerialPortTest, IsAsBeforeAfterAChangeThatTheDriverRefused) {
    const auto port = Open("9600 write_timeout=20");
    EXPECT_EQ("the driver refused parity even", ChangeFailure(*port, "300 8E2"));
    EXPECT_EQ("the driver refused dtr=off", ChangeFailure(*port, "300 dtr=off"));
    EXPECT_EQ("the driver refused low_latency=on", ChangeFailure(*port, "300 low_latency=on"));
    const termios settings = m_Pty.Settings();
    EXPECT_EQ(B9600, cfgetospeed(&settings));
    EXPECT_EQ(0U, settings.c_cflag & CSTOPB);
    EXPECT_EQ(20, port->WriteTime().count());
}

TEST_F(SerialPortTest, ABreakTakesItsTime) {
    const auto port = Open();
    const auto start = Clock::now();
    EXPECT_EQ("", BreakFailure(*port, 100));
    EXPECT_GE(SecondsSince(start), 0.1);
}

TEST_F(SerialPortTest, ABreakEndsWhenTheDeviceGoes) {
    const auto port = Open();
    std::string failure;
    std::atomic<pid_t> thread{0};
    const auto start = Clock::now();
    std::thread breaking([&] {
        thread = gettid();
        failure = BreakFailure(*port, 5000);
    });
    EXPECT_TRUE(WaitUntil([&] { return thread != 0 && IsAsleep(thread); }));
    m_Pty.PullOut();
    breaking.join();
    EXPECT_LT(SecondsSince(start), 4.0);
    EXPECT_EQ("the device is gone; open the port again when it is back", failure);
    EXPECT_EQ(failure, ChangeFailure(*port, "300"));
}

TEST_F(SerialPortTest, NobodyWaitsForABreakAndNothingIsSetByIt) {
    const auto port = Open("9600");
    std::atomic<pid_t> thread{0};
    std::thread breaking([&] {
        thread = gettid();
        BreakFailure(*port, 5000);
    });
    EXPECT_TRUE(WaitUntil([&] { return thread != 0 && IsAsleep(thread); }));
    const auto start = Clock::now();
    EXPECT_EQ("", ChangeFailure(*port, "300"));
    EXPECT_LT(SecondsSince(start), 4.0);
    m_Pty.PullOut();
    breaking.join();
    EXPECT_EQ(300U, port->Settings().baudRate);
}

TEST_F(SerialPortTest, AHostThatLeadsASessionOutlivesTheHangUp) {
    const pid_t child = fork();
    if (child == 0) {
        setsid();
        const auto port = Open();
        m_Pty.PullOut();
        const bool isHungUp = WaitUntil([&] {
            char byte = 0;
            return ReadAvailable(port->Descriptor(), &byte, 1).error == EIO;
        });
        const bool hasNoTerminal = open("/dev/tty", O_RDONLY | O_CLOEXEC) < 0;
        _exit(isHungUp && hasNoTerminal ? 0 : 1);
    }
    m_Pty.PullOut();
    int status = -1;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_EQ(0, status);
}
