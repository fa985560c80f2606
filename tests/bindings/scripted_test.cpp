// SPDX-License-Identifier: MIT
// What only a scripted adapter can show: the calls it gets, and its failures.
#include <pthread.h>

#include <atomic>
#include <memory>
#include <stdexcept>

#include <unistd.h>

#include "tests/bindings/binding_host.h"
#include "tests/harness/fake_adapter_library.h"
#include "tests/harness/fake_devices.h"

using kovasmgr::ByteView;
using kovasmgr::Errc;
using kovasmgr::Library;
using kovasmgr::Port;
using kovasmgr::Written;

namespace {

class CppScripted : public testing::Test {
  protected:
    CppScripted() {
        FakeDevices().Device("Modem").Port("COM1").Apply(*m_Fake);
        m_Library = std::make_unique<Library>(m_Scratch.LogDirectory());
        m_Fake->ClearJournal();
    }

    // What is written in each call, for as long as all is taken.
    std::vector<size_t> PartsOf(size_t size) {
        const Port port = m_Library->Open(1);
        const std::string bytes = Pattern(size);
        EXPECT_EQ(size, port.Write(bytes).count);
        std::vector<size_t> parts;
        std::string all;
        for (const std::string& part : m_Fake->Written("COM1")) {
            parts.push_back(part.size());
            all += part;
        }
        EXPECT_TRUE(bytes == all);
        return parts;
    }

    ScratchDirectory m_Scratch{"complete"};
    FakeAdapterLibrary m_Fake;
    std::unique_ptr<Library> m_Library;
};

} // namespace

TEST_F(CppScripted, AWriteOf16384BytesIsOneCall) {
    EXPECT_EQ((std::vector<size_t>{16384}), PartsOf(16384));
}

TEST_F(CppScripted, ALargerWriteIsSeveralCalls) {
    EXPECT_EQ((std::vector<size_t>{16384, 3619}), PartsOf(20003));
}

TEST_F(CppScripted, AWriteOf200KiBIsThirteenCalls) { EXPECT_EQ(13U, PartsOf(204800).size()); }

TEST_F(CppScripted, AShortCountEndsTheWrite) {
    const Port port = m_Library->Open(1);
    m_Fake->SetWriteCount(100);
    const Written written = port.Write(Pattern(40000));
    EXPECT_EQ(100U, written.count);
    EXPECT_FALSE(written.error);
    EXPECT_FALSE(written.Whole());
    EXPECT_EQ(1U, m_Fake->Written("COM1").size());
}

TEST_F(CppScripted, AFailureInTheMiddleTellsWhatWasSent) {
    const Port port = m_Library->Open(1);
    m_Fake->FailFrom(FakeCall::kWrite, 2);
    const Written written = port.Write(Pattern(40000));
    EXPECT_EQ(16384U, written.count);
    EXPECT_EQ(Errc::AdapterFailed, written.error);
}

TEST_F(CppScripted, ACountBeyondWhatWasSentIsCut) {
    const Port port = m_Library->Open(1);
    m_Fake->SetWriteCount(9000);
    EXPECT_EQ(3U, port.Write("abc").count);
}

TEST_F(CppScripted, AFailingOpeningLeavesNoReceiver) {
    m_Fake->SetResult(FakeCall::kOpen, OS_ADAPT_FAILED);
    EXPECT_EQ(Errc::AdapterFailed, ErrorOf([&] { m_Library->Open(1, [](ByteView) { FAIL(); }); }));
    m_Fake->SetResult(FakeCall::kOpen, OS_ADAPT_OK);
    const Port port = m_Library->Open(1);
    m_Fake->PushData("COM1", "x");
    EXPECT_TRUE(WaitUntil([&] { return m_Fake->PendingReads("COM1") == 0; }));
}

TEST_F(CppScripted, AReceiverGetsWhatArrivesWithTheOpening) {
    m_Fake->PushData("COM1", "at once");
    Inbox inbox;
    const Port port = m_Library->Open(1, inbox.Receiver());
    EXPECT_TRUE(inbox.WaitFor("at once"));
}

TEST_F(CppScripted, AFailingCloseLeavesPortAndReceiver) {
    Inbox inbox;
    Port port = m_Library->Open(1, inbox.Receiver());
    m_Fake->SetResult(FakeCall::kClose, OS_ADAPT_FAILED);
    EXPECT_EQ(Errc::AdapterFailed, port.Close());
    EXPECT_TRUE(port.IsOpen());
    m_Fake->PushData("COM1", "still");
    EXPECT_TRUE(inbox.WaitFor("still"));
    m_Fake->SetResult(FakeCall::kClose, OS_ADAPT_OK);
    EXPECT_FALSE(port.Close());
    EXPECT_FALSE(port.IsOpen());
}

TEST_F(CppScripted, AFailingCloseAtTheEndEndsTheReceiver) {
    std::atomic<int> calls{0};
    auto port = std::make_unique<Port>(m_Library->Open(1, [&](ByteView) { ++calls; }));
    m_Fake->SetResult(FakeCall::kClose, OS_ADAPT_FAILED);
    port.reset();
    m_Fake->PushData("COM1", "x");
    EXPECT_TRUE(WaitUntil([&] { return m_Fake->PendingReads("COM1") == 0; }));
    EXPECT_EQ(0, calls);
}

// The library cancels the thread, whose stack unwinds through the binding.
TEST_F(CppScripted, AReceiverThatHangsIsEndedByTheLibrary) {
    std::atomic<bool> isInside{false};
    std::atomic<bool> hasUnwound{false};
    struct Note {
        std::atomic<bool>& flag;
        ~Note() { flag = true; }
    };
    int ends[2];
    ASSERT_EQ(0, pipe(ends));
    Port port = m_Library->Open(1, [&](ByteView) {
        const Note note{hasUnwound};
        isInside = true;
        char byte;
        EXPECT_EQ(1, read(ends[0], &byte, 1)); // nobody ever writes
    });
    m_Fake->PushData("COM1", "x");
    ASSERT_TRUE(WaitUntil([&] { return isInside.load(); }));
    m_Library.reset();
    EXPECT_TRUE(hasUnwound);
    port = Port();
    m_Library = std::make_unique<Library>(m_Scratch.LogDirectory());
    EXPECT_EQ(1U, m_Library->List().present);
    close(ends[0]);
    close(ends[1]);
}

TEST_F(CppScripted, AReceiverThatThrowsEndsTheProcess) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_DEATH(
        {
            const Port port =
                m_Library->Open(1, [](ByteView) { throw std::runtime_error("my mistake"); });
            m_Fake->PushData("COM1", "x");
            WaitUntil([] { return false; });
        },
        "my mistake");
}

TEST_F(CppScripted, AWatcherThatThrowsEndsTheProcess) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_DEATH(
        {
            const kovasmgr::Watch watch = m_Library->WatchDevices(
                [](const kovasmgr::Changes&) { throw std::runtime_error("my mistake"); });
            FakeDevices().Apply(*m_Fake);
            m_Fake->NotifyOnThread(1);
        },
        "my mistake");
}

TEST_F(CppScripted, ANoticeWithoutAChangeTellsNobody) {
    ChangeBook book;
    const kovasmgr::Watch watch = m_Library->WatchDevices(book.Watcher());
    EXPECT_TRUE(m_Fake->NotifyOnThread(0));
    EXPECT_TRUE(m_Fake->NotifyOnThread(5));
    EXPECT_TRUE(book.All().empty());
}
