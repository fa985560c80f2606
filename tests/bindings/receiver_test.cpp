// SPDX-License-Identifier: MIT
#include <atomic>
#include <memory>
#include <stdexcept>
#include <thread>

#include "tests/bindings/binding_host.h"

using kovasmgr::ByteView;
using kovasmgr::Errc;
using kovasmgr::Library;
using kovasmgr::Port;

namespace {

class CppReceiver : public BindingHost {
  protected:
    CppReceiver() { m_Far = std::make_unique<FarProgram>(PortLink("far-0")); }

    void Send(const std::string& bytes) const { ASSERT_TRUE(m_Far->Send(bytes)); }

    Library m_Library = Init();
    Inbox m_Inbox;
    std::unique_ptr<FarProgram> m_Far; // of far-0
};

// Says when the last callable that has it is gone.
std::shared_ptr<int> Token(std::atomic<bool>& isGone) {
    return {new int(0), [&isGone](const int* token) {
                delete token;
                isGone = true;
            }};
}

} // namespace

TEST_F(CppReceiver, WritesTheAnswer) {
    const Port port = Open(m_Library, "far-0", [&](ByteView bytes) {
        EXPECT_TRUE(port.Write("got " + std::string(bytes.Text())).Whole());
    });
    Send("it");
    EXPECT_EQ("got it", m_Far->Receive(6));
}

TEST_F(CppReceiver, ListsOpensAndClosesOtherPorts) {
    Port other;
    const Port port = Open(m_Library, "far-0", [&](ByteView bytes) {
        EXPECT_EQ(3U, m_Library.List().present);
        other = bytes.Text() == "open" ? Open(m_Library, "echo-0", m_Inbox.Receiver()) : Port();
        m_Inbox.Add(bytes);
    });
    Send("open");
    ASSERT_TRUE(m_Inbox.WaitFor("open"));
    Send("close");
    ASSERT_TRUE(m_Inbox.WaitFor("close"));
    EXPECT_EQ(KOVAMGR_ERR_NO_HANDLE, KOVAMGR_Write(IdOf(m_Library, "echo-0"), "x", 1, 0, nullptr));
}

TEST_F(CppReceiver, ClosesItsOwnPort) {
    std::atomic<bool> hasRun{false};
    Port port = Open(m_Library, "far-0", [&](ByteView) {
        EXPECT_FALSE(port.Close());
        EXPECT_FALSE(port.IsOpen());
        hasRun = true;
    });
    Send("x");
    ASSERT_TRUE(WaitUntil([&] { return hasRun.load(); }));
    EXPECT_EQ(KOVAMGR_ERR_NO_HANDLE, KOVAMGR_Write(4711, "x", 1, 0, nullptr));
}

// What the callable has captured is still there after the Port is gone, and goes afterwards.
TEST_F(CppReceiver, DestroysItsOwnPortAndLivesUntilItReturns) {
    std::atomic<bool> isGone{false};
    std::atomic<bool> wasThere{false};
    auto port = std::make_unique<Port>();
    *port = m_Library.Prepare(4711, [&, token = Token(isGone)](ByteView) {
        port.reset();
        wasThere = !isGone && *token == 0;
    });
    ASSERT_FALSE(port->Open());
    Send("x");
    ASSERT_TRUE(WaitUntil([&] { return isGone.load(); }));
    EXPECT_TRUE(wasThere);
    EXPECT_EQ(nullptr, port);
}

TEST_F(CppReceiver, OpensItsOwnPortAnewWithAnotherReceiver) {
    Port port = Open(m_Library, "far-0",
                     [&](ByteView) { port = Open(m_Library, "far-0", m_Inbox.Receiver()); });
    Send("first");
    ASSERT_TRUE(WaitUntil([&] {
        Send("second");
        return m_Inbox.Text().find("second") != std::string::npos;
    }));
    EXPECT_TRUE(port.Write("x").Whole());
}

TEST_F(CppReceiver, DoesNotRunAnyMoreOnceTheDestructorHasReturned) {
    const std::string answer(64, 'x');
    for (int i = 0; i < 50; ++i) {
        std::atomic<bool> isOver{false};
        std::atomic<int> calls{0};
        auto port = std::make_unique<Port>(Open(m_Library, "sensor-0", [&](ByteView) {
            EXPECT_FALSE(isOver);
            ++calls;
        }));
        if (i % 10 == 0) {
            EXPECT_TRUE(WaitUntil([&] { return calls > 0; }));
        }
        port.reset();
        isOver = true;
    }
}

TEST_F(CppReceiver, IsWaitedForByTheDestructor) {
    std::atomic<bool> isInside{false};
    std::atomic<bool> mayLeave{false};
    std::atomic<bool> hasLeft{false};
    auto port = std::make_unique<Port>(Open(m_Library, "far-0", [&](ByteView) {
        isInside = true;
        WaitUntil([&] { return mayLeave.load(); });
        WaitUntil([] { return false; }, std::chrono::milliseconds(50));
        hasLeft = true;
    }));
    Send("x");
    ASSERT_TRUE(WaitUntil([&] { return isInside.load(); }));
    mayLeave = true;
    port.reset();
    EXPECT_TRUE(hasLeft);
}

TEST_F(CppReceiver, IsWaitedForAlsoWhereThePortStaysOpen) {
    std::atomic<bool> isInside{false};
    std::atomic<bool> hasLeft{false};
    const Port other = Open(m_Library, "far-0", m_Inbox.Receiver());
    auto port = std::make_unique<Port>(Open(m_Library, "far-0", [&](ByteView) {
        isInside = true;
        WaitUntil([] { return false; }, std::chrono::milliseconds(100));
        hasLeft = true;
    }));
    Send("x");
    ASSERT_TRUE(WaitUntil([&] { return isInside.load(); }));
    port.reset();
    EXPECT_TRUE(hasLeft);
}

TEST_F(CppReceiver, IsDestroyedWithItsPort) {
    std::atomic<bool> isGone{false};
    auto port =
        std::make_unique<Port>(Open(m_Library, "far-0", [token = Token(isGone)](ByteView) {}));
    EXPECT_FALSE(isGone);
    port.reset();
    EXPECT_TRUE(isGone);
}

TEST_F(CppReceiver, OfAPortThatWentIsDestroyedWithItsObject) {
    std::atomic<bool> isGone{false};
    auto port =
        std::make_unique<Port>(Open(m_Library, "far-0", [token = Token(isGone)](ByteView) {}));
    ASSERT_EQ("ok", Command("pull bench"));
    EXPECT_FALSE(isGone);
    port.reset();
    EXPECT_TRUE(isGone);
}

TEST_F(CppReceiver, MakesNoWatchAndMayDestroyOne) {
    std::atomic<bool> hasRun{false};
    ChangeBook book;
    auto watch = std::make_unique<kovasmgr::Watch>(m_Library.WatchDevices(book.Watcher()));
    const Port port = Open(m_Library, "far-0", [&](ByteView) {
        EXPECT_EQ(Errc::NotFromReceiver,
                  ErrorOf([&] { m_Library.WatchDevices([](const kovasmgr::Changes&) {}); }));
        watch.reset();
        hasRun = true;
    });
    Send("x");
    ASSERT_TRUE(WaitUntil([&] { return hasRun.load(); }));
    ASSERT_EQ("ok", Command("pull sensor"));
    EXPECT_TRUE(book.All().empty());
}

// The watcher waits for the port lock, which the receiver holds.
TEST_F(CppReceiver, DoesNotWaitForAWatcherWhenItDestroysAWatch) {
    std::atomic<bool> isInWatcher{false};
    std::atomic<bool> isInReceiver{false};
    const kovasmgr::Watch first = m_Library.WatchDevices([&](const kovasmgr::Changes&) {
        isInWatcher = true;
        WaitUntil([&] { return isInReceiver.load(); });
        EXPECT_EQ(2U, m_Library.List().present);
    });
    kovasmgr::Watch second = m_Library.WatchDevices([](const kovasmgr::Changes&) {});
    const Port port = Open(m_Library, "far-0", [&](ByteView) {
        isInReceiver = true;
        second = kovasmgr::Watch();
    });
    std::thread puller([&] { EXPECT_EQ("ok", Command("pull sensor")); });
    EXPECT_TRUE(WaitUntil([&] { return isInWatcher.load(); }));
    Send("x");
    puller.join();
}

TEST_F(CppReceiver, ManyPortsOpenAndCloseWhileDataArrive) {
    std::atomic<bool> stop{false};
    const auto work = [&](const std::string& name) {
        while (!stop) {
            const Port port = Open(m_Library, name, [](ByteView) {});
            EXPECT_TRUE(port.Write("x").Whole());
        }
    };
    std::thread first(work, "echo-0");
    std::thread second(work, "silent-0");
    const Port sensor = Open(m_Library, "sensor-0", m_Inbox.Receiver());
    EXPECT_TRUE(m_Inbox.WaitFor("reading 20"));
    stop = true;
    first.join();
    second.join();
}
