// SPDX-License-Identifier: MIT
#include <sys/inotify.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <list>
#include <memory>
#include <string>
#include <vector>

#include "tests/adapters/adapter_under_test.h"
#include "tests/adapters/descriptors_used_up.h"
#include "tests/adapters/far_program.h"
#include "tests/adapters/notice_recorder.h"
#include "tests/adapters/virtual_bench.h"
#include "tests/harness/process_counts.h"
#include "tests/harness/wait_until.h"

namespace fs = std::filesystem;

namespace {

class Control : public VirtualBench {
  protected:
    Control() { UseScenario(kTwoDevices); }

    void Start() const { ASSERT_EQ("left(l0 l1) right(r0 r1)", m_Adapter.DevicesText()); }

    AdapterUnderTest m_Adapter;
    NoticeRecorder m_Recorder{m_Adapter};
};

// What the shell command writes, and its exit status at the end.
std::string Shell(const std::string& command) {
    std::string text;
    FILE* const pipe = popen((command + " 2>&1").c_str(), "re");
    char buffer[256];
    while (fgets(buffer, sizeof buffer, pipe) != nullptr) {
        text += buffer;
    }
    const int status = pclose(pipe);
    return text + "exit " + std::to_string(WEXITSTATUS(status));
}

} // namespace

TEST_F(Control, ListShowsDevicesPortsAndWhereTheFarEndsAre) {
    Start();
    const int handle = m_Adapter.OpenPort("l0");
    ASSERT_GT(handle, 0);
    ASSERT_EQ("ok", Command("pull right"));
    const std::string list = Command("list");
    EXPECT_EQ(0U, list.find("device \"left\" present\nport \"l0\" at /dev/pts/"));
    EXPECT_NE(std::string::npos, list.find(" open\nport \"l1\" at /dev/pts/"));
    EXPECT_NE(std::string::npos, list.find(" closed\ndevice \"right\" absent\nport \"r0\" absent"));
}

TEST_F(Control, ALinkLeadsToTheFarEndWhileThePortIsThere) {
    Start();
    EXPECT_TRUE(fs::is_symlink(PortLink("l0")));
    EXPECT_EQ(0U, fs::read_symlink(PortLink("l0")).string().find("/dev/pts/"));
    ASSERT_EQ("ok", Command("unplug-port l0"));
    EXPECT_FALSE(fs::is_symlink(PortLink("l0")));
    EXPECT_TRUE(fs::is_symlink(PortLink("l1")));
    ASSERT_EQ("ok", Command("plug-port l0"));
    EXPECT_TRUE(fs::is_symlink(PortLink("l0")));
}

TEST_F(Control, WhatCannotBeDoneIsRefusedWithAReasonAndNotTold) {
    Start();
    ASSERT_EQ(OS_ADAPT_OK, m_Adapter.Register(NoticeRecorder::OnNotice));
    EXPECT_EQ("error device is plugged in already", Command("plug left"));
    EXPECT_EQ("error no device 'nobody'", Command("pull nobody"));
    EXPECT_EQ("error no port 'left'", Command("unplug-port left"));
    EXPECT_EQ("error port is not unplugged", Command("plug-port l0"));
    EXPECT_EQ("error no device 'nobody'", Command("switch nobody x"));
    ASSERT_EQ("ok", Command("pull left"));
    EXPECT_EQ("error device is not plugged in", Command("pull left"));
    EXPECT_EQ("error device is not plugged in", Command("replug left"));
    EXPECT_EQ(1U, m_Recorder.Notices().size());
}

TEST_F(Control, MalformedLinesAreRefusedWithAReason) {
    Start();
    ControlClient client(ControlDirectory());
    EXPECT_EQ("error no command; try help", client.Ask(""));
    EXPECT_EQ("error no command; try help", client.Ask("  \t "));
    EXPECT_EQ("error unknown command 'PLUG'; try help", client.Ask("PLUG left"));
    EXPECT_EQ("error usage: plug DEVICE", client.Ask("plug"));
    EXPECT_EQ("error usage: plug DEVICE", client.Ask("plug two words"));
    EXPECT_EQ("error usage: list", client.Ask("list all"));
    EXPECT_EQ("error a quote is not closed", client.Ask("plug \"left"));
    EXPECT_EQ("error no device 'le\"ft'", client.Ask("plug \"le\\\"ft\""));
    EXPECT_EQ("error unknown command '?"
              "?'; try help",
              client.Ask(std::string("\x01\x7f", 2)));
    EXPECT_EQ("error unknown command '?'; try help", client.Ask(std::string("\0", 1)));
    EXPECT_EQ("error unknown command '%s%n'; try help", client.Ask("%s%n"));
    EXPECT_NE(std::string::npos, client.Ask("help").find("replug DEVICE"));
    EXPECT_EQ("ok", client.Ask("pull \"left\"\r"));
}

TEST_F(Control, ALineThatIsTooLongEndsItsConnectionOnly) {
    Start();
    ControlClient client(ControlDirectory());
    client.Send(std::string(5000, 'x'));
    EXPECT_EQ("error a line has at most 1024 bytes", client.Reply());
    EXPECT_TRUE(client.IsClosed());
    EXPECT_EQ("ok", Command("pull left"));
}

TEST_F(Control, ManyCommandsInOnePieceAreCarriedOutInOrder) {
    Start();
    ASSERT_EQ(OS_ADAPT_OK, m_Adapter.Register(NoticeRecorder::OnNotice));
    ControlClient client(ControlDirectory());
    std::string lines;
    for (int i = 0; i < 30; ++i) {
        lines += "pull left\nplug left\n";
    }
    client.Send(lines);
    for (int i = 0; i < 60; ++i) {
        ASSERT_EQ("ok", client.Reply()) << i;
    }
    EXPECT_EQ(60U, m_Recorder.Notices().size());
}

TEST_F(Control, AnEndOfInputAfterACommandStillGetsItsReply) {
    Start();
    ControlClient client(ControlDirectory());
    client.Send("pull left\n");
    client.EndInput();
    EXPECT_EQ("ok", client.Reply());
    EXPECT_TRUE(client.IsClosed());
}

TEST_F(Control, TheEndOfInputEndsTheLastCommandToo) {
    Start();
    ControlClient client(ControlDirectory());
    client.Send("pull left\npull right");
    client.EndInput();
    EXPECT_EQ("ok", client.Reply());
    EXPECT_EQ("ok", client.Reply());
    EXPECT_TRUE(client.IsClosed());
    EXPECT_EQ("", m_Adapter.DevicesText());
}

TEST_F(Control, AClientThatNeverReadsDoesNotStopOthers) {
    Start();
    const ControlClient deaf(ControlDirectory());
    for (int i = 0; i < 200; ++i) {
        deaf.Send("list\nlist\nlist\nlist\n");
        if (i % 20 == 0) {
            ASSERT_NE(std::string::npos, Command("list").find("ok"));
        }
    }
    EXPECT_EQ("ok", Command("pull left"));
}

TEST_F(Control, IdleClientsDoNotKeepOthersOut) {
    Start();
    const size_t before = OpenDescriptors();
    std::list<ControlClient> idle;
    for (int i = 0; i < 100; ++i) {
        idle.emplace_back(ControlDirectory());
    }
    EXPECT_EQ("ok", Command("pull left"));
    EXPECT_EQ("ok", Command("plug left"));
    // 100 of our own and a bounded number on the other side.
    EXPECT_LE(OpenDescriptors(), before + 100 + 16);
    idle.clear();
    EXPECT_TRUE(WaitUntil([&] { return OpenDescriptors() == before; }));
}

TEST_F(Control, AClientThatLeavesBeforeTheReplyHarmsNobody) {
    Start();
    ASSERT_EQ(OS_ADAPT_OK, m_Adapter.Register(NoticeRecorder::OnNotice));
    m_Recorder.Block();
    { ControlClient(ControlDirectory()).Send("pull left\nlist\nlist\n"); }
    ASSERT_TRUE(m_Recorder.WaitUntilInside());
    m_Recorder.LetGo();
    EXPECT_EQ("ok", Command("pull right"));
    EXPECT_EQ(2U, m_Recorder.Notices().size());
}

TEST_F(Control, AHostThatStaysInItsNoticeDelaysOneReplyByABound) {
    Start();
    ASSERT_EQ(OS_ADAPT_OK, m_Adapter.Register(NoticeRecorder::OnNotice));
    m_Recorder.Block();
    ControlClient client(ControlDirectory());
    client.Send("pull left\n");
    ASSERT_TRUE(m_Recorder.WaitUntilInside());
    EXPECT_NE(std::string::npos, Command("list").find("device \"left\" absent"));
    EXPECT_EQ("ok pending: the host has not finished its notice yet", client.Reply());
    EXPECT_EQ("error device is not plugged in", Command("pull left"));
    m_Recorder.LetGo();
    EXPECT_EQ("ok", Command("plug left"));
    EXPECT_EQ(2U, m_Recorder.Notices().size());
}

TEST_F(Control, WithoutDescriptorsClientsWaitAndThenAreServed) {
    Start();
    auto client = std::make_unique<ControlClient>(ControlDirectory());
    ASSERT_EQ("ok", client->Ask("pull left"));
    // A sanitizer needs a descriptor where it meets a type for the first time.
    ASSERT_EQ("error no device 'nobody'", client->Ask("pull nobody"));
    auto usedUp = std::make_unique<DescriptorsUsedUp>();
    EXPECT_NE(std::string::npos, client->Ask("plug left").find("error device 'left': "));
    usedUp.reset();
    EXPECT_EQ("ok", client->Ask("plug left"));
    EXPECT_EQ("left(l0 l1) right(r0 r1)", m_Adapter.DevicesText());
}

TEST_F(Control, EverythingIsPrivateAndGoesAway) {
    Start();
    struct stat info {};
    ASSERT_EQ(0, stat(ControlDirectory().c_str(), &info));
    EXPECT_EQ(0700U, info.st_mode & 0777U);
    ASSERT_EQ(0, stat((ControlDirectory() + "/ports").c_str(), &info));
    EXPECT_EQ(0700U, info.st_mode & 0777U);
    ASSERT_EQ(OS_ADAPT_OK, m_Adapter.UnRegister(nullptr));
    // The directory itself was there before.
    EXPECT_TRUE(fs::is_empty(ControlDirectory()));
}

TEST_F(Control, ADirectoryThatTheAdapterMadeIsRemoved) {
    setenv("KOVASMGR_VIRTUAL_DIR", (ControlDirectory() + "/own").c_str(), 1);
    Start();
    EXPECT_TRUE(fs::exists(ControlDirectory() + "/own/control"));
    m_Adapter.Unload();
    EXPECT_TRUE(fs::is_empty(ControlDirectory()));
}

TEST_F(Control, WithoutAChosenDirectoryThereIsOneForEachProcess) {
    unsetenv("KOVASMGR_VIRTUAL_DIR");
    setenv("XDG_RUNTIME_DIR", ControlDirectory().c_str(), 1);
    const std::string base = ControlDirectory() + "/kovasmgr";
    fs::create_directories(base + "/999999999/ports");
    fs::create_directories(base + "/999999998");
    fs::create_directories(base + "/not-a-process");
    fs::create_symlink("/dev/pts/99", base + "/999999999/ports/old");
    fs::permissions(base, fs::perms::owner_all);
    Start();
    const std::string own = base + "/" + std::to_string(getpid());
    EXPECT_EQ("ok", ControlClient(own).Ask("pull left"));
    EXPECT_FALSE(fs::exists(base + "/999999999"));
    EXPECT_FALSE(fs::exists(base + "/999999998"));
    EXPECT_TRUE(fs::exists(base + "/not-a-process"));
    ASSERT_EQ(OS_ADAPT_OK, m_Adapter.UnRegister(nullptr));
    EXPECT_FALSE(fs::exists(own));
}

TEST_F(Control, ARuntimeDirectoryThatOthersCanWriteToIsNotUsed) {
    unsetenv("KOVASMGR_VIRTUAL_DIR");
    fs::permissions(ControlDirectory(), fs::perms::all);
    setenv("XDG_RUNTIME_DIR", ControlDirectory().c_str(), 1);
    Start();
    EXPECT_TRUE(fs::is_empty(ControlDirectory()));
    const std::string own =
        "/tmp/kovasmgr-" + std::to_string(geteuid()) + "/" + std::to_string(getpid());
    EXPECT_EQ("ok", ControlClient(own).Ask("pull left"));
}

TEST_F(Control, ADirectoryThatIsNotPrivateIsRefusedAndThePortsWorkAllTheSame) {
    const std::string open = ControlDirectory() + "/open";
    fs::create_directory(open);
    fs::permissions(open, fs::perms::all);
    setenv("KOVASMGR_VIRTUAL_DIR", open.c_str(), 1);
    Start();
    EXPECT_EQ(1, LogLines("is open to other users (chmod 700 makes it private)"));
    EXPECT_TRUE(fs::is_empty(open));
    EXPECT_GT(m_Adapter.OpenPort("l0"), 0);
}

TEST_F(Control, ALinkInPlaceOfTheDirectoryIsRefused) {
    fs::create_directory(ControlDirectory() + "/real");
    fs::permissions(ControlDirectory() + "/real", fs::perms::owner_all);
    fs::create_directory_symlink(ControlDirectory() + "/real", ControlDirectory() + "/link");
    setenv("KOVASMGR_VIRTUAL_DIR", (ControlDirectory() + "/link").c_str(), 1);
    Start();
    EXPECT_EQ(1, LogLines("it must be a directory, and no link"));
    EXPECT_TRUE(fs::is_empty(ControlDirectory() + "/real"));
}

TEST_F(Control, ADirectoryOfAnotherUserIsRefused) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can give a directory away";
    }
    const std::string other = ControlDirectory() + "/other";
    fs::create_directory(other);
    fs::permissions(other, fs::perms::owner_all);
    ASSERT_EQ(0, chown(other.c_str(), 12345, 12345));
    setenv("KOVASMGR_VIRTUAL_DIR", other.c_str(), 1);
    Start();
    EXPECT_EQ(1, LogLines("belongs to another user"));
}

TEST_F(Control, ARelativeDirectoryIsRefused) {
    setenv("KOVASMGR_VIRTUAL_DIR", "somewhere", 1);
    Start();
    EXPECT_EQ(1, LogLines("must be an absolute path, not 'somewhere'"));
}

TEST_F(Control, APathTooLongForASocketIsRefusedWithALogLineAndTheLinksWork) {
    const std::string path = ControlDirectory() + "/" + std::string(100, 'd');
    setenv("KOVASMGR_VIRTUAL_DIR", path.c_str(), 1);
    Start();
    EXPECT_EQ(1, LogLines("at most 107 are possible; set KOVASMGR_VIRTUAL_DIR to a shorter one"));
    const int handle = m_Adapter.OpenPort("l0");
    const FarProgram far(path + "/ports/l0");
    ASSERT_TRUE(far.Send("hello"));
    EXPECT_EQ("hello", m_Adapter.ReadUntil(handle, "hello"));
}

TEST_F(Control, ADirectoryThatAnotherHostUsesIsLeftAlone) {
    Start();
    const pid_t child = fork();
    if (child == 0) {
        execl(KOVASMGR_SECOND_HOST, KOVASMGR_SECOND_HOST, KOVASMGR_VIRTUAL_ADAPTER, nullptr);
        _exit(127);
    }
    int status = 0;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_EQ(0, WEXITSTATUS(status));
    EXPECT_EQ("ok", Command("pull left"));
    EXPECT_TRUE(fs::is_symlink(PortLink("r0")));
}

TEST_F(Control, WhatAKilledHostLeftInAChosenDirectoryIsReplaced) {
    fs::create_directory(ControlDirectory() + "/ports");
    fs::permissions(ControlDirectory() + "/ports", fs::perms::owner_all);
    fs::create_symlink("/dev/pts/99", PortLink("l0"));
    fs::create_symlink("/dev/pts/99", PortLink("gone"));
    Start();
    EXPECT_NE("/dev/pts/99", fs::read_symlink(PortLink("l0")));
    EXPECT_FALSE(fs::is_symlink(PortLink("gone")));
    EXPECT_EQ("ok", Command("pull left"));
}

TEST_F(Control, ASocketThatAHostKilledAtItsStartLeftIsReplaced) {
    ASSERT_EQ("exit 0", Shell("cd " + ControlDirectory() +
                              " && python3 -c 'import socket; "
                              "socket.socket(socket.AF_UNIX).bind(\".new\")'"));
    Start();
    EXPECT_EQ("ok", Command("pull left"));
    EXPECT_FALSE(fs::exists(ControlDirectory() + "/.new"));
}

TEST_F(Control, TheSocketHasItsNameOnlyWhenItListens) {
    const int watch = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    ASSERT_GE(inotify_add_watch(watch, ControlDirectory().c_str(), IN_CREATE | IN_MOVED_TO), 0);
    Start();
    alignas(inotify_event) char events[4096];
    const ssize_t size = read(watch, events, sizeof events);
    close(watch);
    std::vector<std::string> seen;
    for (ssize_t at = 0; at < size;) {
        const auto* const event = reinterpret_cast<const inotify_event*>(events + at);
        seen.push_back(((event->mask & IN_MOVED_TO) != 0 ? "renamed to " : "made ") +
                       std::string(event->name));
        at += static_cast<ssize_t>(sizeof *event + event->len);
    }
    EXPECT_EQ((std::vector<std::string>{"made ports", "made .new", "renamed to control"}), seen);
}

TEST_F(Control, FilesOfSomebodyElseInAChosenDirectoryAreRefusedAndLeftAlone) {
    fs::create_directory(ControlDirectory() + "/ports");
    fs::permissions(ControlDirectory() + "/ports", fs::perms::owner_all);
    fs::create_symlink("/dev/pts/99", PortLink("l0"));
    std::ofstream(PortLink("letter")) << "dear";
    Start();
    EXPECT_EQ(1, LogLines("holds 'ports/letter', which no host has left there"));
    EXPECT_GT(m_Adapter.OpenPort("l0"), 0);
    ASSERT_EQ(OS_ADAPT_OK, m_Adapter.UnRegister(nullptr));
    EXPECT_EQ(4U, fs::file_size(PortLink("letter")));
    EXPECT_EQ("/dev/pts/99", fs::read_symlink(PortLink("l0")));
    fs::remove_all(ControlDirectory() + "/ports");
    std::ofstream(ControlDirectory() + "/control") << "mine";
    Start();
    EXPECT_EQ(1, LogLines("holds 'control', which no host has left there"));
    ASSERT_EQ(OS_ADAPT_OK, m_Adapter.UnRegister(nullptr));
    EXPECT_EQ(4U, fs::file_size(ControlDirectory() + "/control"));
}

TEST_F(Control, AFileThatComesWhileTheHostRunsIsNotRemovedAtTheEnd) {
    Start();
    std::ofstream(PortLink("letter")) << "dear";
    ASSERT_EQ(OS_ADAPT_OK, m_Adapter.UnRegister(nullptr));
    EXPECT_EQ(4U, fs::file_size(PortLink("letter")));
    EXPECT_FALSE(fs::is_symlink(PortLink("l0")));
    EXPECT_FALSE(fs::exists(ControlDirectory() + "/control"));
}

TEST_F(Control, TheProgramGivesCommands) {
    Start();
    const std::string program = KOVASMGR_VIRTUAL_PROGRAM;
    EXPECT_EQ("ok\nexit 0", Shell(program + " pull left"));
    EXPECT_EQ("error device is not plugged in\nexit 1",
              Shell(program + " --dir " + ControlDirectory() + " pull left"));
    EXPECT_NE(std::string::npos, Shell(program + " list").find("device \"left\" absent\n"));
    EXPECT_NE(std::string::npos, Shell(program + " --help").find("exit 0"));
    EXPECT_NE(std::string::npos, Shell(program).find("usage"));
    EXPECT_NE(std::string::npos, Shell(program + " --pid x list").find("exit 2"));
    EXPECT_NE(std::string::npos, Shell(program + " --pid").find("exit 2"));
    EXPECT_NE(std::string::npos, Shell(program + " --dir /nowhere list").find("exit 2"));
    EXPECT_EQ("error no command; try help\nexit 1", Shell(program + " ''"));
}

TEST_F(Control, TheProgramFindsTheOneHostThatRuns) {
    unsetenv("KOVASMGR_VIRTUAL_DIR");
    setenv("XDG_RUNTIME_DIR", ControlDirectory().c_str(), 1);
    const std::string program = KOVASMGR_VIRTUAL_PROGRAM;
    EXPECT_EQ("kovasmgr-virtual: process 999999998 is no host with virtual devices\nexit 2",
              Shell(program + " --pid 999999998 list"));
    Start();
    EXPECT_EQ("ok\nexit 0", Shell(program + " pull left"));
    EXPECT_EQ("ok\nexit 0", Shell(program + " --pid " + std::to_string(getpid()) + " plug left"));
}
