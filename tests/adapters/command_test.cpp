// SPDX-License-Identifier: MIT
//
// kovasmgr-virtual against hosts that are strange, broken or slow.
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <functional>
#include <stdexcept>
#include <thread>

#include "adapters/shared/unique_fd.h"
#include "tests/adapters/adapter_under_test.h"
#include "tests/adapters/virtual_bench.h"

namespace {

// A socket in the place of a host's.
class FakeHost {
  public:
    explicit FakeHost(const std::string& directory, uid_t user = geteuid())
        : m_Listener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::snprintf(address.sun_path, sizeof address.sun_path, "%s/control", directory.c_str());
        if (bind(m_Listener.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) !=
            0) {
            throw std::runtime_error("cannot bind");
        }
        // What clients see is who listens.
        const uid_t self = geteuid();
        if (seteuid(user) != 0 || listen(m_Listener.Get(), 0) != 0 || seteuid(self) != 0) {
            throw std::runtime_error("cannot listen");
        }
    }

    ~FakeHost() {
        m_IsEnding = true;
        shutdown(m_Listener.Get(), SHUT_RDWR);
        if (m_Thread.joinable()) {
            m_Thread.join();
        }
    }

    FakeHost(const FakeHost&) = delete;
    FakeHost& operator=(const FakeHost&) = delete;

    // Takes one command and answers it.
    void Answer(const std::string& reply) {
        Serve([this, reply](int client) {
            Read(client);
            send(client, reply.data(), reply.size(), MSG_NOSIGNAL);
        });
    }

    // Takes one command and answers it bit by bit, without an end.
    void AnswerForever() {
        Serve([this](int client) {
            Read(client);
            pollfd entry{client, 0, 0};
            while (!m_IsEnding && send(client, "x\n", 2, MSG_NOSIGNAL) == 2) {
                poll(&entry, 1, 100);
            }
        });
    }

    // Closes a connection without having read anything from it.
    void Drop() {
        Serve([](int client) {
            pollfd entry{client, POLLIN, 0};
            poll(&entry, 1, 10000);
        });
    }

    // What has been received; ends the service.
    std::string Received() {
        m_Thread.join();
        return m_Received;
    }

  private:
    void Serve(const std::function<void(int)>& serve) {
        m_Thread = std::thread([this, serve] {
            const UniqueFd client(accept4(m_Listener.Get(), nullptr, nullptr, SOCK_CLOEXEC));
            if (client.IsOpen()) {
                serve(client.Get());
            }
        });
    }

    void Read(int client) {
        char buffer[1024];
        for (ssize_t count; (count = recv(client, buffer, sizeof buffer, 0)) > 0;) {
            m_Received.append(buffer, static_cast<size_t>(count));
        }
    }

    UniqueFd m_Listener;
    std::atomic<bool> m_IsEnding{false};
    std::string m_Received;
    std::thread m_Thread;
};

class ControlProgram : public VirtualBench {
  protected:
    // What the program writes when the shell gives it these arguments, and its exit status.
    static std::string Run(const std::string& arguments) {
        const std::string program = KOVASMGR_VIRTUAL_PROGRAM;
        std::string text;
        FILE* const pipe = popen((program + " " + arguments + " 2>&1").c_str(), "re");
        char buffer[256];
        for (size_t count; (count = fread(buffer, 1, sizeof buffer, pipe)) > 0;) {
            text.append(buffer, count);
        }
        const int status = pclose(pipe);
        return text + "exit " + std::to_string(WEXITSTATUS(status));
    }

    std::string RunAgainst(const std::string& reply) const {
        unlink((ControlDirectory() + "/control").c_str());
        FakeHost host(ControlDirectory());
        host.Answer(reply);
        return Run("list");
    }
};

constexpr const char* kGone = "kovasmgr-virtual: the host went away\nexit 2";

} // namespace

TEST_F(ControlProgram, AHostOfAnotherUserIsRefusedAndLearnsNothing) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can act as another user";
    }
    FakeHost host(ControlDirectory(), 12345);
    host.Answer("ok\n");
    EXPECT_EQ("kovasmgr-virtual: " + ControlDirectory() +
                  "/control: the host belongs to another user (12345)\nexit 2",
              Run("list"));
    EXPECT_EQ("", host.Received());
}

TEST_F(ControlProgram, ControlBytesAreReplacedInWhatIsPrinted) {
    EXPECT_EQ("a?[2J?b??\nok\nexit 0", RunAgainst(std::string("a\033[2J\0b\r\x7f\nok\n", 13)));
    EXPECT_EQ("kovasmgr-virtual: bad option '-?x'; --help explains\nexit 2",
              Run("\"$(printf -- '-\\033x')\""));
}

TEST_F(ControlProgram, WordsAreQuotedWhereTheyMustBe) {
    FakeHost host(ControlDirectory());
    host.Answer("ok\n");
    EXPECT_EQ("ok\nexit 0", Run(R"('pull it' 'a"b' '' 'c\d' 'e\ f')"));
    EXPECT_EQ(R"("pull it" "a\"b" "" c\d "e\\ f")"
              "\n",
              host.Received());
}

TEST_F(ControlProgram, BytesToSendKeepTheirBackslashes) {
    UseScenario(kTwoDevices);
    const AdapterUnderTest adapter;
    ASSERT_EQ("left(l0 l1) right(r0 r1)", adapter.DevicesText());
    const int handle = adapter.OpenPort("l0");
    EXPECT_EQ("ok\nexit 0", Run(R"(send 'AT\r' to l0)"));
    EXPECT_EQ("ok\nexit 0", Run(R"(send 'a b\r' to l0)"));
    EXPECT_EQ("ok\nexit 0", Run(R"(send '"c\x00"' to l0 2 times)"));
    const std::string all("AT\ra b\rc\0c\0", 11);
    EXPECT_EQ(all, adapter.ReadUntil(handle, all));
}

TEST_F(ControlProgram, AFaultIsOrderedInTheWordsOfAScenario) {
    UseScenario(kTwoDevices);
    const AdapterUnderTest adapter;
    ASSERT_EQ("left(l0 l1) right(r0 r1)", adapter.DevicesText());
    const int handle = adapter.OpenPort("l0");
    EXPECT_EQ("ok\nexit 0", Run("fail write to l0"));
    EXPECT_EQ(-1, adapter.WriteText(handle, "x"));
    EXPECT_EQ(1, adapter.WriteText(handle, "x"));
    EXPECT_EQ("error no port 'l9'\nexit 1", Run("fail write to l9"));
}

TEST_F(ControlProgram, AnArgumentWithALineBreakIsRefused) {
    UseScenario(kTwoDevices);
    AdapterUnderTest adapter;
    ASSERT_EQ("left(l0 l1) right(r0 r1)", adapter.DevicesText());
    const std::string refusal = "kovasmgr-virtual: an argument has a line break in it\nexit 2";
    EXPECT_EQ(refusal, Run("\"$(printf 'list\\npull left')\""));
    EXPECT_EQ(refusal, Run("pull \"$(printf 'x\\npull left')\""));
    EXPECT_EQ(refusal, Run("pull \"$(printf 'left\\rx')\""));
    EXPECT_EQ("error unknown command 'pull left'; try help\nexit 1", Run("'pull left'"));
    EXPECT_EQ("left(l0 l1) right(r0 r1)", adapter.DevicesText());
}

TEST_F(ControlProgram, ALineThatTheHostRefusesToReadGetsItsReply) {
    UseScenario(kTwoDevices);
    AdapterUnderTest adapter;
    ASSERT_EQ("left(l0 l1) right(r0 r1)", adapter.DevicesText());
    EXPECT_EQ("error a line has at most 1024 bytes\nexit 1",
              Run("pull " + std::string(100000, 'x')));
}

TEST_F(ControlProgram, AReplyWithoutItsLastLineMeansThatTheHostWentAway) {
    EXPECT_EQ(kGone, RunAgainst(""));
    EXPECT_EQ(kGone, RunAgainst("\n"));
    EXPECT_EQ(kGone, RunAgainst("ok"));
    EXPECT_EQ(kGone, RunAgainst("device \"left\" present\n"));
    EXPECT_EQ(kGone, RunAgainst("ok\ndevice"));
    EXPECT_EQ(kGone, RunAgainst("okay\n"));
    EXPECT_EQ("ok pending: x\nexit 0", RunAgainst("ok pending: x\n"));
    EXPECT_EQ("a\nerror x\nexit 1", RunAgainst("a\nerror x\n"));
}

TEST_F(ControlProgram, AConnectionThatBreaksMeansThatTheHostWentAway) {
    FakeHost host(ControlDirectory());
    host.Drop();
    EXPECT_EQ(kGone, Run("list"));
}

TEST_F(ControlProgram, AHostThatNeverComesToAnEndIsGivenUp) {
    FakeHost host(ControlDirectory());
    host.AnswerForever();
    EXPECT_EQ("kovasmgr-virtual: the host does not answer\nexit 2", Run("list"));
}

TEST_F(ControlProgram, AHostThatDoesNotAcceptIsGivenUp) {
    const FakeHost host(ControlDirectory());
    // The first client fills the queue of those that wait.
    const ControlClient waiting(ControlDirectory());
    EXPECT_EQ("kovasmgr-virtual: the host does not answer\nexit 2", Run("list"));
}

TEST_F(ControlProgram, OptionsThatContradictAreRefused) {
    const std::string directory = " --dir " + ControlDirectory();
    const std::string refusal =
        "kovasmgr-virtual: one of --pid and --dir is enough; --help explains\nexit 2";
    FakeHost host(ControlDirectory());
    EXPECT_EQ("kovasmgr-virtual: --dir needs the name of a directory\nexit 2",
              Run("--dir '' list"));
    EXPECT_EQ(refusal, Run(directory + " --pid 1 list"));
    EXPECT_EQ(refusal, Run(directory + directory + " list"));
}
