// SPDX-License-Identifier: MIT
#include <filesystem>

#include "KOVASMgrWriteLog.h"
#include "tests/unit/log/log_test.h"

namespace {

class LogLine : public LogTest {};

TEST_F(LogLine, IsDroppedBeforeTheLogIsOpenAndNoFileIsCreated) {
    EXPECT_EQ(INFO_LOG("early"), 0);
    EXPECT_EQ(ERRO_LOG("early"), 0);
    EXPECT_EQ(FATAL_LOG("early"), 0);
    EXPECT_TRUE(std::filesystem::is_empty(m_Scratch.LogDirectory()));
    EXPECT_FALSE(std::filesystem::exists("KOVASMgr.log"));
}

TEST_F(LogLine, StartsWithTimeAndLevel) {
    OpenLog();
    EXPECT_EQ(INFO_LOG("one"), 1);
    EXPECT_EQ(ERRO_LOG("two"), 1);
    EXPECT_EQ(FATAL_LOG("three"), 1);
    EXPECT_EQ(Log(), "[TIME] INFO:one\n[TIME] ERRO:two\n[TIME] FATAL:three\n");
}

TEST_F(LogLine, FormatsItsArguments) {
    OpenLog();
    EXPECT_EQ(INFO_LOG("Open %s succeed.", "COM1"), 1);
    EXPECT_EQ(ERRO_LOG("%d%% of %5.1f", 50, 2.25), 1);
    EXPECT_EQ(FATAL_LOG("%c%lx", 'x', 255L), 1);
    EXPECT_EQ(Log(),
              "[TIME] INFO:Open COM1 succeed.\n[TIME] ERRO:50% of   2.2\n[TIME] FATAL:xff\n");
}

TEST_F(LogLine, KeepsALineEndOfTheMessage) {
    OpenLog();
    INFO_LOG("Read failed.\n");
    INFO_LOG("ReadThread() Exit \n");
    EXPECT_EQ(Log(), "[TIME] INFO:Read failed.\n\n[TIME] INFO:ReadThread() Exit \n\n");
}

TEST_F(LogLine, MayBeEmpty) {
    OpenLog();
    EXPECT_EQ(INFO_LOG("%s", ""), 1);
    EXPECT_EQ(Log(), "[TIME] INFO:\n");
}

TEST_F(LogLine, IsNotWrittenForANullFormat) {
    OpenLog();
    const char* const null = nullptr;
    EXPECT_EQ(INFO_LOG(null), 0);
    EXPECT_EQ(ERRO_LOG(null), 0);
    EXPECT_EQ(FATAL_LOG(null), 0);
    EXPECT_EQ(Log(), "");
}

TEST_F(LogLine, OfTenThousandBytesIsCutAt4499) {
    OpenLog();
    EXPECT_EQ(INFO_LOG("%s", std::string(10000, 'x').c_str()), 1);
    EXPECT_EQ(INFO_LOG("next"), 1);
    EXPECT_EQ(Log(), "[TIME] INFO:" + std::string(4499, 'x') + "\n[TIME] INFO:next\n");
}

TEST_F(LogLine, IsCutAtEveryLevel) {
    OpenLog();
    EXPECT_EQ(ERRO_LOG("%s", std::string(10000, 'x').c_str()), 1);
    EXPECT_EQ(FATAL_LOG("%s", std::string(10000, 'y').c_str()), 1);
    EXPECT_EQ(Log(), "[TIME] ERRO:" + std::string(4499, 'x') +
                         "\n[TIME] FATAL:" + std::string(4499, 'y') + "\n");
}

TEST_F(LogLine, Of4499BytesIsWhole) {
    OpenLog();
    EXPECT_EQ(INFO_LOG("%s", (std::string(4498, 'x') + "!").c_str()), 1);
    EXPECT_EQ(INFO_LOG("%s", (std::string(4499, 'x') + "!").c_str()), 1);
    EXPECT_EQ(Log(), "[TIME] INFO:" + std::string(4498, 'x') +
                         "!\n[TIME] INFO:" + std::string(4499, 'x') + "\n");
}

class WriterOfItsOwn : public LogTest {
  protected:
    bool Open() { return m_Log.init("own.log", true); }
    static std::string Text() { return LogText("own.log"); }

    CWRITE_LOG m_Log;
};

TEST_F(WriterOfItsOwn, NamesThreeLevels) {
    ASSERT_TRUE(Open());
    EXPECT_EQ(m_Log.PrintLog(static_cast<LOG_LEVEL>(0), "a"), 1);
    EXPECT_EQ(m_Log.PrintLog(static_cast<LOG_LEVEL>(1), "b"), 1);
    EXPECT_EQ(m_Log.PrintLog(static_cast<LOG_LEVEL>(2), "c"), 1);
    EXPECT_EQ(Text(), "[TIME] INFO:a\n[TIME] ERRO:b\n[TIME] FATAL:c\n");
}

TEST_F(WriterOfItsOwn, WritesOtherLevelsWithoutAName) {
    ASSERT_TRUE(Open());
    EXPECT_EQ(m_Log.PrintLog(static_cast<LOG_LEVEL>(7), "seven"), 1);
    EXPECT_EQ(m_Log.PrintLog(static_cast<LOG_LEVEL>(3), "three"), 1);
    EXPECT_EQ(m_Log.PrintLog(static_cast<LOG_LEVEL>(-1), "minus one"), 1);
    EXPECT_EQ(Text(), "[TIME] seven\n[TIME] three\n[TIME] minus one\n");
}

TEST_F(WriterOfItsOwn, WritesNothingForANullText) {
    ASSERT_TRUE(Open());
    EXPECT_EQ(m_Log.PrintLog(LOG_LEVEL_INFO, nullptr), 0);
    EXPECT_EQ(Text(), "");
}

TEST_F(WriterOfItsOwn, WritesNothingWhileClosed) {
    EXPECT_EQ(m_Log.PrintLog(LOG_LEVEL_INFO, "text"), 0);
    EXPECT_EQ(m_Log.PrintLog(LOG_LEVEL_INFO, nullptr), 0);
}

TEST_F(WriterOfItsOwn, TakesTheTextAsItIs) {
    ASSERT_TRUE(Open());
    EXPECT_EQ(m_Log.PrintLog(LOG_LEVEL_INFO, "100 %s %n"), 1);
    EXPECT_EQ(Text(), "[TIME] INFO:100 %s %n\n");
}

TEST_F(WriterOfItsOwn, WritesATextOfAnyLength) {
    ASSERT_TRUE(Open());
    EXPECT_EQ(m_Log.PrintLog(LOG_LEVEL_INFO, std::string(10000, 'x').c_str()), 1);
    EXPECT_EQ(Text(), "[TIME] INFO:" + std::string(10000, 'x') + "\n");
}

TEST_F(WriterOfItsOwn, ClosesItsFileAtItsEnd) {
    {
        CWRITE_LOG other;
        ASSERT_TRUE(other.init("other.log", true));
        other.PrintLog(LOG_LEVEL_INFO, "text");
    }
    EXPECT_EQ(LogText("other.log"), "[TIME] INFO:text\n");
}

} // namespace
