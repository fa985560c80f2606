// SPDX-License-Identifier: MIT
#include "adapters/linux/line_config.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "tests/adapters/linux/as_user.h"
#include "tests/harness/scratch_directory.h"

namespace {

void WriteFile(const std::string& path, const std::string& text) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << text;
}

class LineConfig : public testing::Test {
  protected:
    LineConfig()
        : m_System(m_Scratch.Path() + "/system.toml"), m_User(m_Scratch.Path() + "/user.toml") {
        unsetenv("OSADAPT_LINE");
        m_Facts.node = "/dev/ttyUSB3";
        m_Facts.vendorId = "0403";
        m_Facts.productId = "6001";
        m_Facts.serial = "A50285BI";
        m_Facts.place = "1-1.4";
        m_Facts.interfaceNumber = 2;
    }

    LineSettings Settings() const {
        return ConfiguredLine(m_Facts, "FTDI FT232R A50285BI", {m_System, m_User});
    }

    std::string Line() const { return LineText(Settings()); }

    std::string Mistake() const {
        try {
            Settings();
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "";
    }

    // The line that an entry with these keys gives.
    std::string LineWith(const std::string& keys) const {
        WriteFile(m_User, "[[port]]\n" + keys + "\nline = \"300\"\n");
        return Line();
    }

    std::string MistakeWith(const std::string& text) const {
        WriteFile(m_User, text);
        const std::string mistake = Mistake();
        return mistake.substr(0, m_User.size()) == m_User ? mistake.substr(m_User.size()) : mistake;
    }

    ScratchDirectory m_Scratch;
    std::string m_System;
    std::string m_User;
    PortFacts m_Facts;
};

} // namespace

TEST_F(LineConfig, IsTheDefaultWhenThereIsNone) { EXPECT_EQ("115200 8N1", Line()); }

TEST_F(LineConfig, IsTakenWordForWordFromTheVariableTheSystemsFileAndTheUsersFile) {
    setenv("OSADAPT_LINE", "300 7E1 dtr=off", 1);
    EXPECT_EQ("300 7E1 dtr=off", Line());
    WriteFile(m_System, "line = \"600 7O1\"\n");
    EXPECT_EQ("600 7O1 dtr=off", Line());
    WriteFile(m_User, "line = \"1200\"\n");
    EXPECT_EQ("1200 7O1 dtr=off", Line());
}

TEST_F(LineConfig, IsReadAnewEachTime) {
    WriteFile(m_User, "line = \"1200\"\n");
    EXPECT_EQ("1200 8N1", Line());
    WriteFile(m_User, "line = \"2400\"\n");
    EXPECT_EQ("2400 8N1", Line());
    std::filesystem::remove(m_User);
    EXPECT_EQ("115200 8N1", Line());
}

TEST_F(LineConfig, OfAnEntryIsForThePortsThatItMatches) {
    const char* matching[] = {"id = \"0403:6001\"",
                              "serial = \"A50285BI\"",
                              "place = \"1-1.4\"",
                              "interface = 2",
                              "node = \"/dev/ttyUSB3\"",
                              "node = \"/dev/ttyUSB*\"",
                              "node = \"/dev/tty[A-Z]*\"",
                              "name = \"FTDI*\"",
                              "name = \"*A50285BI\"",
                              "id = \"0403:6001\"\ninterface = 2\nnode = \"*\"\nplace = \"1-1.4\""};
    for (const char* keys : matching) {
        EXPECT_EQ("300 8N1", LineWith(keys)) << keys;
    }
    const char* others[] = {"id = \"0403:6011\"",
                            "id = \"1a86:7523\"",
                            "serial = \"A50285B\"",
                            "serial = \"A50285B*\"",
                            "place = \"1-1\"",
                            "interface = 0",
                            "node = \"/dev/ttyUSB\"",
                            "node = \"ttyUSB*\"",
                            "name = \"ftdi*\"",
                            "name = \"CH340*\"",
                            "id = \"0403:6001\"\ninterface = 1",
                            "node = \"*\"\nserial = \"B\""};
    for (const char* keys : others) {
        EXPECT_EQ("115200 8N1", LineWith(keys)) << keys;
    }
}

TEST_F(LineConfig, ComparesAnIdInAnyCase) {
    m_Facts.vendorId = "1a86";
    m_Facts.productId = "75c3";
    EXPECT_EQ("300 8N1", LineWith("id = \"1A86:75C3\""));
}

TEST_F(LineConfig, OfADeviceWithoutASerialNumberMatchesNoSerialNumber) {
    m_Facts.serial.clear();
    EXPECT_EQ("115200 8N1", LineWith("serial = \"A50285BI\""));
}

TEST_F(LineConfig, TakesAllEntriesThatMatchInTheirOrder) {
    WriteFile(m_User, "line = \"300 7E1 rtscts\"\n"
                      "[[port]]\nid = \"0403:6001\"\nline = \"600 dtr=off\"\n"
                      "[[port]]\nid = \"ffff:ffff\"\nline = \"xonxoff\"\n"
                      "[[port]]\nnode = \"*\"\nline = \"1200\"\n");
    EXPECT_EQ("1200 7E1 flow=rtscts dtr=off", Line());
}

TEST_F(LineConfig, MistakesAreToldWithFileLineAndReason) {
    const struct {
        const char* text;
        const char* mistake;
    } cases[] = {
        {"line = \"300\"\nlines = \"300\"\n", ":2: file has no key 'lines'"},
        {"\n\n\n\n\n\nline = 300\n", ":7: 'line' must be a text"},
        {"\n\n\n\n\n\nline = \"9600 8X1\"\n", ":7: '8x1': not a line setting"},
        {"line = \"\"\n", ":1: 'line' must have 1 to 255 bytes, not 0"},
        {"line = \"9600 break\"\n", ":1: 'break' is for a port that is open"},
        {"\nport = 3\n", ":2: 'port' must be written as [[...]] tables"},
        {"[port]\nid = \"0403:6001\"\n", ":1: 'port' must be written as [[...]] tables"},
        {"[[port]]\nid = \"0403:6001\"\n", ":1: port lacks 'line'"},
        {"[[port]]\nline = \"300\"\n", ":1: port says of no port"},
        {"[[port]]\nline = \"300\"\nid = 403\n", ":3: 'id' must be a text"},
        {"[[port]]\nline = \"300\"\nid = \"403:6001\"\n", ":3: 'id' must look like"},
        {"[[port]]\nline = \"300\"\nid = \"0403:6001:1\"\n", ":3: 'id' must look like"},
        {"[[port]]\nline = \"300\"\nid = \"04036001\"\n", ":3: 'id' must look like"},
        {"[[port]]\nline = \"300\"\nid = \"0403\"\n", ":3: 'id' must look like"},
        {"[[port]]\nline = \"300\"\nid = \"0403:\"\n", ":3: 'id' must look like"},
        {"[[port]]\nline = \"300\"\ninterface = \"0\"\n",
         ":3: 'interface' must be a whole number from 0 to 255"},
        {"[[port]]\nline = \"300\"\ninterface = -1\n", ":3: 'interface' must be a whole number"},
        {"[[port]]\nline = \"300\"\nnode = \"\"\n", ":3: 'node' must have 1 to 255 bytes"},
        {"[[port]]\nline = \"300\"\nnode = \"*\"\nbaud = 300\n", ":4: port has no key 'baud'"},
        {"[[port]]\nline = \"300\nnode = \"*\"\n", ":2: "},
        {"line = \"\xff\xfe\"\n", ":1: "},
    };
    for (const auto& it : cases) {
        const std::string mistake = MistakeWith(it.text);
        EXPECT_EQ(it.mistake, mistake.substr(0, std::string(it.mistake).size())) << mistake;
    }
}

TEST_F(LineConfig, InAnEntryConcernsTheMatchingPortsOnlyWhenItsLineIsWrong) {
    WriteFile(m_User, "[[port]]\nid = \"0403:6001\"\nline = \"wrong\"\n");
    EXPECT_NE("", Mistake());
    m_Facts.productId = "6011";
    EXPECT_EQ("", Mistake());
    WriteFile(m_User, "[[port]]\nid = \"0403:6001\"\nlines = \"300\"\n");
    EXPECT_NE("", Mistake());
}

TEST_F(LineConfig, MistakeInTheVariableNamesTheVariable) {
    setenv("OSADAPT_LINE", "9600 8Q1", 1);
    EXPECT_EQ("OSADAPT_LINE: '8q1': not a line setting", Mistake().substr(0, 39));
    setenv("OSADAPT_LINE", "break", 1);
    EXPECT_EQ("OSADAPT_LINE: 'break' is for a port that is open", Mistake().substr(0, 48));
}

TEST_F(LineConfig, MistakeInTheSystemsFileIsToldThoughTheUsersFileIsRight) {
    WriteFile(m_System, "wrong\n");
    WriteFile(m_User, "line = \"300\"\n");
    EXPECT_EQ(m_System + ":1: ", Mistake().substr(0, m_System.size() + 4));
}

TEST_F(LineConfig, ThatIsNoRegularFileIsRefusedWithoutWaiting) {
    ASSERT_EQ(0, mkfifo(m_User.c_str(), 0600));
    EXPECT_EQ(m_User + ":0: not a regular file", Mistake());
    std::filesystem::remove(m_User);
    std::filesystem::create_directory(m_User);
    EXPECT_EQ(m_User + ":0: not a regular file", Mistake());
    std::filesystem::remove(m_User);
    std::filesystem::create_symlink("/dev/zero", m_User);
    EXPECT_EQ(m_User + ":0: not a regular file", Mistake());
}

TEST_F(LineConfig, ThatIsTooLargeIsRefused) {
    EXPECT_EQ(":0: larger than 1 MiB", MistakeWith(std::string(size_t{2} << 20, '#')));
    EXPECT_EQ(":1: the line has more than 4096 bytes", MistakeWith(std::string(5000, '#')));
}

TEST_F(LineConfig, ThatNestsWithoutEndIsRefused) {
    EXPECT_NE("", MistakeWith("line = " + std::string(4000, '[')));
    std::string dots = "a";
    for (int i = 0; i < 1000; ++i) {
        dots += ".a";
    }
    EXPECT_EQ(":1: the line has more than 64 dots", MistakeWith(dots + " = 1\n"));
}

TEST_F(LineConfig, ThatMayNotBeReadIsToldWithTheReason) {
    std::filesystem::permissions(m_Scratch.Path(), std::filesystem::perms(0755));
    WriteFile(m_User, "line = \"300\"\n");
    std::filesystem::permissions(m_User, std::filesystem::perms::none);
    EXPECT_EQ(m_User + ":0: Permission denied (errno 13)", AsUser([&] { return Mistake(); }));
}

TEST_F(LineConfig, OfTheUserStandsWhereTheVariablesSay) {
    EXPECT_EQ("/etc/kovasmgr/linux.toml", StandardLineFiles().system);
    setenv("XDG_CONFIG_HOME", "/config", 1);
    setenv("HOME", "/home/user", 1);
    EXPECT_EQ("/config/kovasmgr/linux.toml", StandardLineFiles().user);
    setenv("XDG_CONFIG_HOME", "relative", 1);
    EXPECT_EQ("/home/user/.config/kovasmgr/linux.toml", StandardLineFiles().user);
    unsetenv("XDG_CONFIG_HOME");
    EXPECT_EQ("/home/user/.config/kovasmgr/linux.toml", StandardLineFiles().user);
    unsetenv("HOME");
    EXPECT_EQ("", StandardLineFiles().user);
}

TEST_F(LineConfig, OfTheUserIsFoundByItself) {
    setenv("XDG_CONFIG_HOME", m_Scratch.Path().c_str(), 1);
    WriteFile(m_Scratch.Path() + "/kovasmgr/linux.toml", "line = \"300 7E1 rts=off\"\n");
    EXPECT_EQ("300 7E1 rts=off", LineText(ConfiguredLine(m_Facts, "FTDI")).substr(0, 15));
}
