// SPDX-License-Identifier: MIT
#include <atomic>
#include <filesystem>
#include <memory>

#include "tests/bindings/binding_host.h"
#include "tests/harness/process_counts.h"

using kovasmgr::Errc;
using kovasmgr::Library;
using kovasmgr::Port;

namespace {

class CppLibrary : public BindingHost {};

} // namespace

TEST_F(CppLibrary, ListsDevicesWithTheirPorts) {
    const Library library = Init();
    const kovasmgr::Snapshot snapshot = library.List();
    EXPECT_EQ(NamesOf(snapshot.devices),
              (Names{"modem(modem-at)", "sensor(sensor-0)", "bench(far-0 far-1 echo-0 silent-0)"}));
    EXPECT_EQ(3U, snapshot.present);
    EXPECT_EQ("A modem", snapshot.devices[0].text);
    EXPECT_EQ(4711, snapshot.FindPort("far-0")->id);
    EXPECT_EQ(KOVAMGR_PORT_TYPE_COMM, snapshot.FindPort("far-0")->type);
}

TEST_F(CppLibrary, InNoDirectoryIsABadArgument) {
    EXPECT_EQ(Errc::BadArgument, ErrorOf([] { Library("/no/such/directory"); }));
    EXPECT_EQ(Errc::BadArgument, ErrorOf([] { Library(""); }));
    EXPECT_EQ(KOVAMGR_ERR_NOT_INIT, KOVAMGR_GetPortState(0));
}

TEST_F(CppLibrary, WithoutAnAdapterFailsAndCanBeTriedAgain) {
    std::filesystem::rename("libOSAdapt.so", "elsewhere.so");
    EXPECT_EQ(Errc::AdapterFailed, ErrorOf([&] { Init(); }));
    std::filesystem::rename("elsewhere.so", "libOSAdapt.so");
    EXPECT_EQ(3U, Init().List().present);
}

TEST_F(CppLibrary, ExistsOnceAtATime) {
    const Library library = Init();
    EXPECT_EQ(Errc::AlreadyInitialised, ErrorOf([&] { Init(); }));
    EXPECT_EQ(3U, library.List().present);
}

TEST_F(CppLibrary, DoesNotTakeOverWhatACHostHasInitialised) {
    ASSERT_EQ(KOVAMGR_OK, KOVAMGR_Init(m_Scratch.LogDirectory().c_str()));
    EXPECT_EQ(Errc::AlreadyInitialised, ErrorOf([&] { Init(); }));
    EXPECT_EQ(KOVAMGR_PORT_STATE_READY, KOVAMGR_GetPortState(0));
    KOVAMGR_Release();
}

TEST_F(CppLibrary, ReleasesAtItsEndAndLeavesNothingBehind) {
    { const Library first = Init(); }
    const size_t threads = RunningThreads();
    const size_t descriptors = OpenDescriptors();
    for (int i = 0; i < 5; ++i) {
        const Library library = Init();
        const Port port = Open(library, "echo-0", [](kovasmgr::ByteView) {});
        EXPECT_TRUE(port.IsOpen());
    }
    EXPECT_EQ(KOVAMGR_ERR_NOT_INIT, KOVAMGR_GetPortState(0));
    EXPECT_EQ(threads, RunningThreads());
    EXPECT_EQ(descriptors, OpenDescriptors());
}

TEST_F(CppLibrary, MovesAndIsReleasedOnce) {
    Library first = Init();
    Library second(std::move(first));
    EXPECT_EQ(Errc::NotInitialised,
              ErrorOf([&] { first.List(); })); // NOLINT: moved from, on purpose
    EXPECT_EQ(3U, second.List().present);
    first = std::move(second);
    EXPECT_EQ(3U, first.List().present);
    first = Library();
    EXPECT_EQ(KOVAMGR_ERR_NOT_INIT, KOVAMGR_GetPortState(0));
}

TEST_F(CppLibrary, ThatIsGoneLeavesItsPortsWithoutEffect) {
    auto library = std::make_unique<Library>(Init());
    Port port = Open(*library, "far-0");
    library.reset();
    EXPECT_EQ(Errc::NotInitialised, port.Write("x").error);
    EXPECT_FALSE(port.Close());
    EXPECT_FALSE(port.IsOpen());
}

// The identifier is the same in both lives: the adapter proposes it.
TEST_F(CppLibrary, ThatIsGoneLeavesPortsThatDoNotReachIntoTheNextOne) {
    auto library = std::make_unique<Library>(Init());
    Port old = Open(*library, "far-0");
    library.reset();
    library = std::make_unique<Library>(Init());
    Inbox inbox;
    const Port port = Open(*library, "far-0", inbox.Receiver());
    EXPECT_EQ(Errc::NotInitialised, old.Write("x").error);
    old = Port();
    const FarProgram far(PortLink("far-0"));
    ASSERT_TRUE(far.Send("still open"));
    EXPECT_TRUE(inbox.WaitFor("still open"));
}

TEST_F(CppLibrary, ThatIsGoneLeavesAWatchWithoutEffect) {
    auto library = std::make_unique<Library>(Init());
    ChangeBook book;
    kovasmgr::Watch watch = library->WatchDevices(book.Watcher());
    library.reset();
    library = std::make_unique<Library>(Init());
    ASSERT_EQ("ok", Command("pull sensor"));
    EXPECT_TRUE(book.All().empty());
}

TEST_F(CppLibrary, FromAReceiverIsNeitherMadeNorReleased) {
    auto library = std::make_unique<Library>(Init());
    std::atomic<bool> hasRun{false};
    std::error_code error;
    const Port port = Open(*library, "sensor-0", [&](kovasmgr::ByteView) {
        if (!hasRun) {
            error = ErrorOf([&] { Init(); });
            hasRun = true;
        }
    });
    ASSERT_TRUE(WaitUntil([&] { return hasRun.load(); }));
    library.reset();
    EXPECT_EQ(Errc::AlreadyInitialised, error);
}

TEST_F(CppLibrary, DestroyedInAWatcherStaysInitialised) {
    auto library = std::make_unique<Library>(Init());
    const kovasmgr::Watch watch =
        library->WatchDevices([&](const kovasmgr::Changes&) { library.reset(); });
    ASSERT_EQ("ok", Command("pull sensor"));
    EXPECT_EQ(nullptr, library);
    EXPECT_EQ(KOVAMGR_PORT_STATE_READY, KOVAMGR_GetPortState(0));
    EXPECT_EQ(1, LogLines("KOVAMGR_Release does nothing when it is called from a callback."));
    EXPECT_EQ(Errc::AlreadyInitialised, ErrorOf([&] { Init(); }));
    KOVAMGR_Release();
}
