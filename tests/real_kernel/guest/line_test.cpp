// SPDX-License-Identifier: MIT
// The settings of a line, read back from the kernel.
#include <dlfcn.h>

#include <cstdlib>

#include "OSAdaptLine.h"
#include "tests/real_kernel/guest/guest_host.h"
#include "tests/real_kernel/guest/line_state.h"
#include "tests/real_kernel/guest/steering.h"

namespace {

constexpr int kOk = 30000; // what an adapter's functions return for success

class Line : public GuestHost {
  protected:
    void SetUp() override {
        Start();
        Ask("plug 0 A50285BI");
        m_Port = WaitFor("A50285BI").ports.at(0);
    }
    void TearDown() override {
        Ask("pull 0");
        EXPECT_TRUE(WaitUntilGone("A50285BI"));
        GuestHost::TearDown();
    }

    void OpenWith(const char* settings) const {
        setenv("OSADAPT_LINE", settings, 1);
        Open(m_Port);
    }

    LineState State() const { return LineState::OfThisProcess(m_Port.name); }

    static void ExpectStty(const LineState& state, const std::vector<std::string>& words) {
        const std::string text = state.Stty();
        for (const std::string& word : words) {
            EXPECT_NE(std::string::npos, text.find(" " + word + " ")) << word << " not in" << text;
        }
    }

    /// The adapter's own function, as a host reaches it.
    int SetLine(const char* settings) const {
        void* const adapter = dlopen("/guest/libOSAdapt.so", RTLD_LAZY | RTLD_NOLOAD);
        void* const function = adapter == nullptr ? nullptr : dlsym(adapter, "OSADAPT_SetLine");
        const int result = function == nullptr ? -1
                                               : reinterpret_cast<decltype(&OSADAPT_SetLine)>(
                                                     function)(m_Port.name.c_str(), settings);
        if (adapter != nullptr) {
            dlclose(adapter);
        }
        return result;
    }

    Port m_Port;
};

} // namespace

TEST_F(Line, IsRawAt115200BaudUnlessTold) {
    OpenWith("");
    ExpectStty(State(), {"speed 115200 baud", "cs8", "-parenb", "-cstopb", "-crtscts", "-ixon",
                         "-icanon", "-echo", "-opost", "-isig"});
    EXPECT_EQ("DTR RTS", State().ModemLines());
}

TEST_F(Line, IsAsTheEnvironmentSays) {
    OpenWith("9600,7E2 flow=rtscts");
    ExpectStty(State(), {"speed 9600 baud", "cs7", "parenb", "-parodd", "cstopb", "crtscts"});
}

TEST_F(Line, TakesABaudRateThatHasNoNameOfItsOwn) {
    OpenWith("250000,8N1");
    EXPECT_EQ(250000U, State().BaudRate());
}

TEST_F(Line, ModemLinesAreAsTold) {
    OpenWith("dtr=off rts=on");
    EXPECT_EQ("RTS", State().ModemLines());
}

TEST_F(Line, CanBeChangedWhileThePortIsOpen) {
    OpenWith("");
    EXPECT_EQ(kOk, SetLine("31250,8O1 dtr=off rts=off")) << LogText();
    const LineState state = State();
    EXPECT_EQ(31250U, state.BaudRate());
    EXPECT_EQ("", state.ModemLines());
    ExpectStty(state, {"parenb", "parodd"});
    EXPECT_EQ(kOk, SetLine("dtr=on rts=on"));
    EXPECT_EQ("DTR RTS", state.ModemLines());
    EXPECT_EQ(31250U, state.BaudRate());
    EXPECT_NE(kOk, SetLine("9600,8X1"));
    EXPECT_EQ(31250U, state.BaudRate());
}

TEST_F(Line, IsAtTheCloseAsItWasAtTheOpen) {
    const LineState before = LineState::Beside(m_Port.name);
    before.SetOldFashioned();
    OpenWith("57600,8N1");
    EXPECT_EQ(57600U, before.BaudRate());
    EXPECT_EQ(KOVAMGR_OK, KOVAMGR_Close(m_Port.id));
    EXPECT_EQ(9600U, before.BaudRate());
    ExpectStty(before, {"cs7", "speed 9600 baud"});
}

TEST_F(Line, AMistakeIsLoggedAndThePortStaysClosed) {
    setenv("OSADAPT_LINE", "9600,8X1", 1);
    EXPECT_EQ(KOVAMGR_ERR_OSADAPT, KOVAMGR_Open(m_Port.id));
    EXPECT_NE(std::string::npos, LogText().find("OSADAPT_LINE")) << LogText();
    EXPECT_EQ(0, DescriptorsOf("/dev/ttyUSB"));
}
