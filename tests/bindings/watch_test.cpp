// SPDX-License-Identifier: MIT
#include <atomic>
#include <memory>
#include <thread>

#include "tests/bindings/binding_host.h"

using kovasmgr::Changes;
using kovasmgr::Errc;
using kovasmgr::Library;
using kovasmgr::Port;
using kovasmgr::Watch;

namespace {

class CppWatch : public BindingHost {
  protected:
    void Do(const std::string& command) const { ASSERT_EQ("ok", Command(command)); }

    ChangeBook m_Book;
    Library m_Library = Init();
};

} // namespace

TEST_F(CppWatch, TellsWhichDeviceWentAndCame) {
    const Watch watch = m_Library.WatchDevices(m_Book.Watcher());
    const int before = IdOf(m_Library, "sensor-0");
    Do("pull sensor");
    Do("plug sensor");
    const std::vector<Changes> all = m_Book.All();
    ASSERT_EQ(2U, all.size());
    EXPECT_EQ(NamesOf(all[0].went), Names{"sensor(sensor-0)"});
    EXPECT_TRUE(all[0].came.empty());
    EXPECT_EQ(before, all[0].went[0].ports[0].id);
    EXPECT_EQ(NamesOf(all[1].came), Names{"sensor(sensor-0)"});
    EXPECT_TRUE(all[1].went.empty());
    EXPECT_EQ(IdOf(m_Library, "sensor-0"), all[1].came[0].ports[0].id);
}

TEST_F(CppWatch, TellsWhichPortsOfADeviceThatStaysWentAndCame) {
    const Watch watch = m_Library.WatchDevices(m_Book.Watcher());
    Do("unplug-port far-1");
    Do("plug-port far-1");
    const std::vector<Changes> all = m_Book.All();
    ASSERT_EQ(2U, all.size());
    EXPECT_EQ(NamesOf(all[0].portsWent), Names{"bench(far-1)"});
    EXPECT_EQ(NamesOf(all[1].portsCame), Names{"bench(far-1)"});
    EXPECT_TRUE(all[0].went.empty() && all[1].came.empty());
}

TEST_F(CppWatch, TellsAReplugAsGoingAndComing) {
    const Watch watch = m_Library.WatchDevices(m_Book.Watcher());
    Do("replug modem");
    const std::vector<Changes> all = m_Book.All();
    ASSERT_EQ(2U, all.size());
    EXPECT_EQ(NamesOf(all[0].went), Names{"modem(modem-at)"});
    EXPECT_EQ(NamesOf(all[1].came), Names{"modem(modem-at)"});
}

TEST_F(CppWatch, BeginsWithWhatIsThere) {
    Do("pull sensor");
    const Watch watch = m_Library.WatchDevices(m_Book.Watcher());
    Do("pull modem");
    ASSERT_EQ(1U, m_Book.All().size());
    EXPECT_EQ(NamesOf(m_Book.All()[0].went), Names{"modem(modem-at)"});
}

TEST_F(CppWatch, IsToldAtOnceWhatHasChangedSinceASnapshot) {
    const kovasmgr::Snapshot before = m_Library.List();
    Do("pull sensor");
    const Watch watch = m_Library.WatchDevices(m_Book.Watcher(), before);
    ASSERT_EQ(1U, m_Book.All().size());
    EXPECT_EQ(NamesOf(m_Book.All()[0].went), Names{"sensor(sensor-0)"});
    Do("plug sensor");
    EXPECT_EQ(2U, m_Book.All().size());
}

TEST_F(CppWatch, IsToldOfAllWhenItKnowsOfNothingAndOfNothingWhenItKnowsAll) {
    const Watch first = m_Library.WatchDevices(m_Book.Watcher(), m_Library.List());
    EXPECT_TRUE(m_Book.All().empty());
    const Watch second = m_Library.WatchDevices(m_Book.Watcher(), kovasmgr::Snapshot());
    ASSERT_EQ(1U, m_Book.All().size());
    EXPECT_EQ(3U, m_Book.All()[0].came.size());
}

TEST_F(CppWatch, IsToldBesideOthersThatComeAndGo) {
    ChangeBook other;
    auto first = std::make_unique<Watch>(m_Library.WatchDevices(m_Book.Watcher()));
    const Watch second = m_Library.WatchDevices(other.Watcher());
    Do("pull sensor");
    first.reset();
    Do("plug sensor");
    EXPECT_EQ(1U, m_Book.All().size());
    EXPECT_EQ(2U, other.All().size());
}

TEST_F(CppWatch, NeedsAWatcher) {
    EXPECT_EQ(Errc::BadArgument, ErrorOf([&] { m_Library.WatchDevices({}); }));
}

TEST_F(CppWatch, DestroyedInItsOwnWatcherCostsItsSuccessorNothing) {
    std::atomic<int> calls{0};
    auto watch = std::make_unique<Watch>();
    *watch = m_Library.WatchDevices([&](const Changes& changes) {
        watch.reset();
        EXPECT_EQ(1U, changes.went.size()); // the callable and what it was given still live
        ++calls;
    });
    const Watch next = m_Library.WatchDevices(m_Book.Watcher());
    Do("pull sensor");
    Do("plug sensor");
    EXPECT_EQ(1, calls);
    EXPECT_EQ(2U, m_Book.All().size());
}

TEST_F(CppWatch, MakesAnotherFromItsWatcher) {
    Watch second;
    const Watch first = m_Library.WatchDevices([&](const Changes& changes) {
        if (!changes.went.empty()) {
            second = m_Library.WatchDevices(m_Book.Watcher());
        }
    });
    Do("pull sensor");
    EXPECT_TRUE(m_Book.All().empty());
    Do("plug sensor");
    EXPECT_EQ(1U, m_Book.All().size());
}

TEST_F(CppWatch, IsWaitedForByTheDestructor) {
    std::atomic<bool> isInside{false};
    std::atomic<bool> hasLeft{false};
    auto watch = std::make_unique<Watch>(m_Library.WatchDevices([&](const Changes&) {
        isInside = true;
        WaitUntil([] { return false; }, std::chrono::milliseconds(100));
        hasLeft = true;
    }));
    std::thread puller([&] { Do("pull sensor"); });
    EXPECT_TRUE(WaitUntil([&] { return isInside.load(); }));
    watch.reset();
    EXPECT_TRUE(hasLeft);
    puller.join();
}

TEST_F(CppWatch, OpensTheNewPortAtOnce) {
    Inbox inbox;
    Port port = Open(m_Library, "sensor-0", inbox.Receiver());
    const Watch watch = m_Library.WatchDevices([&](const Changes& changes) {
        if (!changes.came.empty()) {
            port = m_Library.Open(changes.came[0].ports[0].id, inbox.Receiver());
        }
    });
    ASSERT_TRUE(inbox.WaitFor("reading 2"));
    Do("replug sensor");
    const size_t before = inbox.Text().size();
    EXPECT_TRUE(WaitUntil([&] { return inbox.Text().size() > before; }));
}

TEST_F(CppWatch, LosesNothingWhileManyCome) {
    std::atomic<bool> stop{false};
    const Watch watch = m_Library.WatchDevices(m_Book.Watcher());
    std::thread maker([&] {
        while (!stop) {
            const Watch other = m_Library.WatchDevices([](const Changes&) {});
        }
    });
    for (int i = 0; i < 20; ++i) {
        Do("replug sensor");
    }
    stop = true;
    maker.join();
    EXPECT_EQ(40U, m_Book.All().size());
}
