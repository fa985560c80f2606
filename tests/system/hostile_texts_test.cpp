// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstring>
#include <sstream>

#include "KOVASMgrLog.h"
#include "tests/system/attached_host.h"

namespace {

class HostileTexts : public AttachedHost {
  protected:
    std::size_t LongestLogLine() const {
        std::istringstream log(LogText(m_Scratch));
        std::size_t longest = 0;
        for (std::string line; std::getline(log, line);) {
            longest = std::max(longest, line.size());
        }
        return longest;
    }

    void CheckThatTheNameIsBorne(const std::string& name) {
        FakeDevices().Device(name, name).Port(name).Apply(*m_Fake);
        ASSERT_EQ(KOVAMGR_OK, Init());
        const auto list = Enumerate();
        ASSERT_EQ(1U, list->nDeviceCount);
        EXPECT_EQ(name, list->stDevice[0].stPort[0].szPortName);
        EXPECT_EQ(name, list->stDevice[0].szDeviceName);
        EXPECT_EQ(KOVAMGR_OK, KOVAMGR_Open(1));
        EXPECT_EQ(1, LogLines("Open " + name + " succeed."));
        FakeDevices().Apply(*m_Fake);
        EXPECT_TRUE(m_Fake->NotifyOnThread(OS_ADAPT_DEVICE_PULLOUT));
        EXPECT_EQ(0U, Enumerate()->nDeviceCount);
        EXPECT_EQ(KOVAMGR_OK, KOVAMGR_Release());
        EXPECT_LT(LongestLogLine(), 400U);
    }
};

class HostileFormat : public HostileTexts, public testing::WithParamInterface<const char*> {};

} // namespace

TEST_P(HostileFormat, ANameThatLooksLikeAFormatIsBorne) {
    CheckThatTheNameIsBorne(GetParam());
    FakeDevices::Many(1, 2).Apply(*m_Fake);
    CheckThatANewManagerWorks();
}

INSTANTIATE_TEST_SUITE_P(Names, HostileFormat,
                         testing::Values("%s", "%n", "%s%s%s%n%n%n", "%999999d", "%*d", "%.99999f",
                                         "%%", "%", "100%", "%1$s%2$n", "%lln", "%ls"));

TEST_F(HostileTexts, ADoubledPerCentSignInANameIsLoggedAsOne) {
    FakeDevices().Device("D").Port("5%%of%%").Apply(*m_Fake);
    ASSERT_EQ(KOVAMGR_OK, Init());
    EXPECT_EQ(1, LogLines("INFO:5%of%\n"));
}

TEST_F(HostileTexts, TextsWithoutATerminatorAreCutOneByteShortEverywhere) {
    FakeDevices table;
    table.Device(std::string(128, 'd'), std::string(128, 't')).Port(std::string(256, 'p'));
    table.Apply(*m_Fake);
    ASSERT_EQ(KOVAMGR_OK, Init());
    const auto list = Enumerate();
    ASSERT_EQ(1U, list->nDeviceCount);
    EXPECT_EQ(1U, list->stDevice[0].nPortCount) << "the bytes behind a name are not part of it";
    EXPECT_EQ(std::string(127, 'd'), list->stDevice[0].szDeviceName);
    EXPECT_EQ(std::string(127, 't'), list->stDevice[0].szDeviceText);
    EXPECT_EQ(std::string(255, 'p'), list->stDevice[0].stPort[0].szPortName);
    EXPECT_TRUE(m_Fake->NotifyOnThread(OS_ADAPT_DEVICE_INSERT));
    EXPECT_TRUE(m_Fake->NotifyOnThread(OS_ADAPT_DEVICE_PULLOUT));
    EXPECT_EQ(0, std::memcmp(list.get(), Enumerate().get(), sizeof *list)) << "it equals itself";
    EXPECT_EQ(KOVAMGR_OK, KOVAMGR_Open(1));
    EXPECT_EQ(1, JournalLines("Open " + std::string(255, 'p') + " -> 1"));
    EXPECT_EQ(KOVAMGR_OK, KOVAMGR_Release());
    FakeDevices::Many(1, 2).Apply(*m_Fake);
    CheckThatANewManagerWorks();
}

TEST_F(HostileTexts, EmptyAndRepeatedNamesAreBorne) {
    FakeDevices().Device("").Port("").Port("").Device("").Port("COM1").Apply(*m_Fake);
    ASSERT_EQ(KOVAMGR_OK, Init());
    EXPECT_EQ(1U, Enumerate()->nDeviceCount);
    EXPECT_EQ(2U, Enumerate()->stDevice[0].nPortCount);
    FakeDevices().Apply(*m_Fake);
    EXPECT_TRUE(m_Fake->NotifyOnThread(OS_ADAPT_DEVICE_PULLOUT));
    EXPECT_EQ(0U, Enumerate()->nDeviceCount);
}

TEST_F(HostileTexts, AMessageOfTenThousandBytesIsCutAt4499) {
    ASSERT_EQ(KOVAMGR_OK, Init());
    const std::string message(10000, 'm');
    EXPECT_EQ(1, INFO_LOG("%s", message.c_str()));
    EXPECT_EQ(1, ERRO_LOG("%s", message.c_str()));
    EXPECT_EQ(1, FATAL_LOG("%s", message.c_str()));
    EXPECT_EQ(1, LogLines("INFO:" + std::string(4499, 'm') + "\n"));
    EXPECT_EQ(1, LogLines("ERRO:" + std::string(4499, 'm') + "\n"));
    EXPECT_EQ(1, LogLines("FATAL:" + std::string(4499, 'm') + "\n"));
    EXPECT_EQ(1, INFO_LOG("%s", "the log works on"));
    EXPECT_EQ(1, LogLines("INFO:the log works on\n"));
}
