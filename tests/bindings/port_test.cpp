// SPDX-License-Identifier: MIT
#include <memory>
#include <thread>
#include <type_traits>

#include "tests/bindings/binding_host.h"

using kovasmgr::ByteView;
using kovasmgr::Errc;
using kovasmgr::Library;
using kovasmgr::Port;
using kovasmgr::Written;

namespace {

constexpr size_t kMuch = 200 * 1024;

class CppPort : public BindingHost {
  protected:
    Library m_Library = Init();
    Inbox m_Inbox;
};

} // namespace

static_assert(!std::is_copy_constructible_v<Port> && !std::is_copy_constructible_v<Library>);
static_assert(std::is_nothrow_move_constructible_v<Port> &&
              std::is_nothrow_move_assignable_v<Port>);
static_assert(!std::is_copy_constructible_v<kovasmgr::Watch>);

TEST_F(CppPort, HasADialogueWithAModem) {
    const Port port = Open(m_Library, "modem-at", m_Inbox.Receiver());
    EXPECT_TRUE(port.Write("ATI\r").Whole());
    EXPECT_TRUE(m_Inbox.WaitFor("Virtual modem\r\n"));
    EXPECT_TRUE(m_Inbox.WaitFor("OK\r\n"));
    EXPECT_TRUE(port.Write("AT+NONE\r").Whole());
    EXPECT_TRUE(m_Inbox.WaitFor("ERROR\r\n"));
}

TEST_F(CppPort, ReceivesASensorsData) {
    const Port port = Open(m_Library, "sensor-0", m_Inbox.Receiver());
    EXPECT_TRUE(m_Inbox.WaitFor("reading 1\r\nreading 2\r\nreading 3\r\n")) << m_Inbox.Text();
}

TEST_F(CppPort, PassesAllByteValues) {
    std::string all;
    for (int value = 0; value < 256; ++value) {
        all.push_back(static_cast<char>(value));
    }
    const Port port = Open(m_Library, "echo-0", m_Inbox.Receiver());
    EXPECT_TRUE(port.Write(all).Whole());
    EXPECT_TRUE(m_Inbox.WaitFor(all));
}

TEST_F(CppPort, WithoutAReceiverWritesAndDiscards) {
    const Port port = Open(m_Library, "far-0");
    const FarProgram far(PortLink("far-0"));
    ASSERT_TRUE(far.Send("for nobody"));
    EXPECT_TRUE(port.Write("hello").Whole());
    EXPECT_EQ("hello", far.Receive(5));
}

TEST_F(CppPort, Writes200KiBInOneCall) {
    const Port port = Open(m_Library, "far-0");
    const FarProgram far(PortLink("far-0"));
    const std::string bytes = Pattern(kMuch);
    std::string atFarEnd;
    std::thread receiver([&] { atFarEnd = far.Receive(kMuch); });
    const Written written = port.Write(bytes);
    receiver.join();
    EXPECT_TRUE(written.Whole());
    EXPECT_EQ(kMuch, written.count);
    EXPECT_TRUE(bytes == atFarEnd);
}

TEST_F(CppPort, Receives200KiB) {
    const Port port = Open(m_Library, "far-0", m_Inbox.Receiver());
    const FarProgram far(PortLink("far-0"));
    const std::string bytes = Pattern(kMuch);
    EXPECT_TRUE(far.Send(bytes));
    ASSERT_TRUE(m_Inbox.WaitForSize(kMuch));
    EXPECT_TRUE(bytes == m_Inbox.Text());
}

TEST_F(CppPort, TellsHowMuchWasSentWhenTheFarEndDoesNotKeepUp) {
    const Port port = Open(m_Library, "far-0");
    const std::string bytes = Pattern(kMuch);
    const Written written = port.Write(bytes);
    EXPECT_FALSE(written.Whole());
    EXPECT_FALSE(written.error) << written.error.message();
    EXPECT_EQ(kMuch, written.requested);
    ASSERT_GT(written.count, 0U);
    ASSERT_LT(written.count, kMuch);
    const FarProgram far(PortLink("far-0"));
    EXPECT_TRUE(bytes.substr(0, written.count) == far.Receive(written.count));
}

TEST_F(CppPort, WritingNothingIsComplete) {
    const Port port = Open(m_Library, "far-0");
    EXPECT_TRUE(port.Write("").Whole());
    EXPECT_TRUE(port.Write(ByteView()).Whole());
}

TEST_F(CppPort, ThatDoesNotExistIsNotOpened) {
    EXPECT_EQ(Errc::BadArgument, ErrorOf([&] { m_Library.Open(4712); }));
    EXPECT_EQ(Errc::BadArgument, ErrorOf([&] { m_Library.Open(4712, m_Inbox.Receiver()); }));
    EXPECT_EQ(Errc::BadArgument, ErrorOf([&] { m_Library.Open(-1); }));
}

TEST_F(CppPort, ThatTheAdapterCannotOpenIsNotHeld) {
    ASSERT_EQ("ok", Command("unplug-port far-1"));
    const int id = IdOf(m_Library, "far-0");
    EXPECT_EQ(-1, IdOf(m_Library, "far-1"));
    EXPECT_EQ(Errc::BadArgument, ErrorOf([&] { Open(m_Library, "far-1"); }));
    EXPECT_TRUE(m_Library.Open(id).IsOpen());
}

TEST_F(CppPort, HoldsNothingByDefault) {
    Port port;
    EXPECT_FALSE(port.IsOpen());
    EXPECT_EQ(-1, port.Id());
    EXPECT_EQ(Errc::NotOpen, port.Write("x").error);
    EXPECT_EQ(Errc::NotOpen, port.Open());
    EXPECT_FALSE(port.Close());
}

TEST_F(CppPort, IsPreparedAndOpenedLater) {
    Port port = m_Library.Prepare(4711, m_Inbox.Receiver());
    EXPECT_FALSE(port.IsOpen());
    EXPECT_EQ(4711, port.Id());
    EXPECT_EQ(Errc::NotOpen, port.Write("x").error);
    EXPECT_FALSE(port.Open());
    EXPECT_FALSE(port.Open());
    EXPECT_TRUE(port.IsOpen());
    EXPECT_TRUE(port.Write("x").Whole());
    const FarProgram far(PortLink("far-0"));
    ASSERT_TRUE(far.Send("to the receiver"));
    EXPECT_TRUE(m_Inbox.WaitFor("to the receiver"));
}

TEST_F(CppPort, StaysPreparedWhenItCannotBeOpened) {
    ASSERT_EQ("ok", Command("pull bench"));
    Port port = m_Library.Prepare(4711, m_Inbox.Receiver());
    EXPECT_EQ(Errc::BadArgument, port.Open());
    EXPECT_FALSE(port.IsOpen());
    ASSERT_EQ("ok", Command("plug bench"));
    EXPECT_FALSE(port.Open());
    EXPECT_TRUE(port.Write("x").Whole());
}

TEST_F(CppPort, PreparedAndDroppedDoesNotCloseAnothers) {
    const Port open = Open(m_Library, "far-0", m_Inbox.Receiver());
    {
        const Port prepared = m_Library.Prepare(4711, [](ByteView) { FAIL(); });
    }
    EXPECT_TRUE(open.Write("x").Whole());
}

TEST_F(CppPort, PreparedByAnotherIsClosedAllTheSame) {
    Port prepared = m_Library.Prepare(4711, m_Inbox.Receiver());
    { const Port open = Open(m_Library, "far-0"); }
    EXPECT_EQ(KOVAMGR_ERR_NO_HANDLE, KOVAMGR_Write(4711, "x", 1, 0, nullptr));
}

TEST_F(CppPort, ClosesOnce) {
    Port port = Open(m_Library, "far-0", m_Inbox.Receiver());
    EXPECT_EQ(4711, port.Id());
    EXPECT_FALSE(port.Close());
    EXPECT_FALSE(port.IsOpen());
    EXPECT_EQ(Errc::NotOpen, port.Write("x").error);
    EXPECT_FALSE(port.Close());
    EXPECT_EQ(KOVAMGR_ERR_NO_HANDLE, KOVAMGR_Write(4711, "x", 1, 0, nullptr));
}

TEST_F(CppPort, ClosesAtItsEnd) {
    { const Port port = Open(m_Library, "far-0", m_Inbox.Receiver()); }
    EXPECT_EQ(KOVAMGR_ERR_NO_HANDLE, KOVAMGR_Write(4711, "x", 1, 0, nullptr));
    EXPECT_TRUE(Open(m_Library, "far-0").Write("x").Whole());
}

TEST_F(CppPort, MovesWithItsReceiver) {
    Port first = Open(m_Library, "far-0", m_Inbox.Receiver());
    Port second(std::move(first));
    EXPECT_FALSE(first.IsOpen()); // NOLINT: moved from, on purpose
    EXPECT_EQ(-1, first.Id());
    const FarProgram far(PortLink("far-0"));
    ASSERT_TRUE(far.Send("moved"));
    EXPECT_TRUE(m_Inbox.WaitFor("moved"));
    first = std::move(second);
    EXPECT_TRUE(first.Write("x").Whole());
    first = Port();
    EXPECT_EQ(KOVAMGR_ERR_NO_HANDLE, KOVAMGR_Write(4711, "x", 1, 0, nullptr));
}

TEST_F(CppPort, OpenedTwiceServesBothAndIsClosedByTheLast) {
    Inbox other;
    auto first = std::make_unique<Port>(Open(m_Library, "far-0", m_Inbox.Receiver()));
    Port second = Open(m_Library, "far-0", other.Receiver());
    const FarProgram far(PortLink("far-0"));
    ASSERT_TRUE(far.Send("both"));
    EXPECT_TRUE(m_Inbox.WaitFor("both") && other.WaitFor("both"));
    first.reset();
    EXPECT_TRUE(second.Write("x").Whole());
    ASSERT_TRUE(far.Send("one"));
    EXPECT_TRUE(other.WaitFor("one"));
    EXPECT_EQ("both", m_Inbox.Text());
    EXPECT_FALSE(second.Close());
    EXPECT_EQ(KOVAMGR_ERR_NO_HANDLE, KOVAMGR_Write(4711, "x", 1, 0, nullptr));
}

// The same trampoline serves another port afterwards.
TEST_F(CppPort, ThatSharesItsPortLeavesNothingBehindOnIt) {
    Inbox before;
    Port first = Open(m_Library, "far-0", before.Receiver());
    const Port second = Open(m_Library, "far-0", m_Inbox.Receiver());
    first = Port();
    Inbox other;
    const Port third = Open(m_Library, "far-1", other.Receiver());
    const FarProgram far(PortLink("far-0"));
    ASSERT_TRUE(far.Send("for one"));
    ASSERT_TRUE(m_Inbox.WaitFor("for one"));
    EXPECT_EQ("", before.Text() + other.Text());
}

TEST_F(CppPort, WhoseDeviceWentSaysSo) {
    Port port = Open(m_Library, "far-0", m_Inbox.Receiver());
    ASSERT_EQ("ok", Command("pull bench"));
    EXPECT_TRUE(port.IsOpen());
    EXPECT_EQ(Errc::BadArgument, port.Write("x").error);
    EXPECT_FALSE(port.Close());
}

// The identifier is the same as before: the adapter proposes it.
TEST_F(CppPort, WhoseDeviceWentIsOpenedAgainUnderTheSameObject) {
    Port port = Open(m_Library, "far-0", m_Inbox.Receiver());
    ASSERT_EQ("ok", Command("replug bench"));
    EXPECT_EQ(Errc::NotOpen, port.Write("x").error);
    port = Open(m_Library, "far-0", m_Inbox.Receiver());
    EXPECT_EQ(4711, port.Id());
    const FarProgram far(PortLink("far-0"));
    ASSERT_TRUE(far.Send("again"));
    EXPECT_TRUE(m_Inbox.WaitFor("again"));
    EXPECT_EQ("again", m_Inbox.Text());
    EXPECT_TRUE(port.Write("x").Whole());
}
