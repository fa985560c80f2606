// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "adapters/spy/fault.h"
#include "adapters/spy/fault_plan.h"

namespace {

using std::chrono::milliseconds;

// The message of the mistake; "" for a plan without one.
std::string Mistake(const std::string& plan) {
    try {
        ReadFaults(plan);
        return "";
    } catch (const std::runtime_error& error) {
        return error.what();
    }
}

Fault Only(const std::string& plan) {
    const std::vector<Fault> faults = ReadFaults(plan);
    EXPECT_EQ(1U, faults.size());
    return faults.at(0);
}

// Which of the first ten calls something happens to: "..x.......".
std::string Pattern(const std::string& plan) {
    FaultPlan faults(ReadFaults(plan));
    std::string pattern;
    for (int i = 0; i < 10; ++i) {
        pattern += faults.Next(OSADAPT_SPY_WRITE, nullptr).Text().empty() ? '.' : 'x';
    }
    return pattern;
}

} // namespace

TEST(SpyFaults, APlanNamesKindsNumbersAndFaults) {
    const auto faults = ReadFaults("write:3=fail,read:*=delay:20ms,enumerate:2=result:-7,"
                                   "open:1=fail-with-handle,write:2=short:5");
    ASSERT_EQ(5U, faults.size());
    EXPECT_EQ(OSADAPT_SPY_WRITE, faults[0].call);
    EXPECT_EQ(3U, faults[0].first);
    EXPECT_EQ(3U, faults[0].last);
    EXPECT_EQ(FaultKind::Fail, faults[0].kind);
    EXPECT_EQ(UINT64_MAX, faults[1].last);
    EXPECT_EQ(milliseconds(20), faults[1].delay);
    EXPECT_EQ("delay:20ms", faults[1].text);
    EXPECT_EQ(-7, faults[2].number);
    EXPECT_EQ(FaultKind::FailWithHandle, faults[3].kind);
    EXPECT_EQ(5, faults[4].number);
}

TEST(SpyFaults, APlanMayBeEmptyAndHaveBlanks) {
    EXPECT_TRUE(ReadFaults("").empty());
    EXPECT_TRUE(ReadFaults("  ").empty());
    EXPECT_EQ(2U, ReadFaults(" write : 3 = fail , close : 1 - 2 = delay:1s ").size());
}

TEST(SpyFaults, APortsNameStandsBehindItsKind) {
    EXPECT_EQ("modem-0", Only("write@modem-0:1=fail").port);
    EXPECT_EQ("/dev/ttyUSB0", Only("open@/dev/ttyUSB0:*=fail").port);
    EXPECT_EQ("a:b,c=d\"\\", Only(R"(read@"a:b,c=d\"\\":1=fail)").port);
}

TEST(SpyFaults, TimesHaveUnitsAndFractions) {
    EXPECT_EQ(std::chrono::microseconds(250), Only("read:1=delay:250us").delay);
    EXPECT_EQ(milliseconds(1500), Only("read:1=delay:1.5s").delay);
    EXPECT_EQ(milliseconds(60000), Only("read:1=delay:1m").delay);
    EXPECT_EQ(milliseconds(0), Only("read:1=delay:0s").delay);
}

TEST(SpyFaults, NumbersChooseCalls) {
    EXPECT_EQ("..x.......", Pattern("write:3=fail"));
    EXPECT_EQ(".xxx......", Pattern("write:2-4=fail"));
    EXPECT_EQ(".......xxx", Pattern("write:8+=fail"));
    EXPECT_EQ("xxxxxxxxxx", Pattern("write:*=fail"));
    EXPECT_EQ("x..x......", Pattern("write:1=fail,write:4=short:1"));
    EXPECT_EQ("..........", Pattern("read:*=fail"));
    EXPECT_EQ("..........", Pattern("write@p:*=fail"));
}

TEST(SpyFaults, CallsOfAPortAreCountedApart) {
    FaultPlan plan(ReadFaults("write@p:2=fail"));
    const KnownPort p{"p", 0};
    const KnownPort q{"q", 1};
    EXPECT_TRUE(plan.Next(OSADAPT_SPY_WRITE, &p).IsPassedOn());
    EXPECT_TRUE(plan.Next(OSADAPT_SPY_WRITE, &q).IsPassedOn());
    EXPECT_FALSE(plan.Next(OSADAPT_SPY_WRITE, &p).IsPassedOn());
}

TEST(SpyFaults, MistakesAreToldWithTheirPlace) {
    EXPECT_EQ("character 1, 'frite:3=fail': one of register, unregister, open, close, write, read "
              "and enumerate is expected",
              Mistake("frite:3=fail"));
    EXPECT_EQ("character 9, 'flail': one of fail, fail-with-handle, delay:TIME, short:N and "
              "result:N is expected",
              Mistake("write:3=flail"));
    EXPECT_EQ("character 6, '=fail': ':' and the numbers of calls, as write:3=fail, is expected "
              "here",
              Mistake("write=fail"));
    EXPECT_EQ("character 14, 'read:1=fail': ',' and a further fault, or the end, is expected here",
              Mistake("write:3=fail read:1=fail"));
}

TEST(SpyFaults, EveryMistakeIsFound) {
    for (const char* const plan : {",",
                                   "write",
                                   "write:",
                                   "write:3",
                                   "write:3=",
                                   "write:=fail",
                                   "write:x=fail",
                                   "write:0=fail",
                                   "write:4-2=fail",
                                   "write:1-=fail",
                                   "write:-1=fail",
                                   "write:1=fail,",
                                   "write:1=fail,,read:1=fail",
                                   "write:1=failure",
                                   "write:1=delay",
                                   "write:1=delay:",
                                   "write:1=delay:20",
                                   "write:1=delay:20h",
                                   "write:1=delay:61s",
                                   "write:1=delay:-1s",
                                   "write:1=delay:1.s",
                                   "write:1=short",
                                   "write:1=short:0",
                                   "write:1=short:x",
                                   "write:1=result",
                                   "write:1=result:99999999999",
                                   "write:1=fail-with-handle",
                                   "open:1=short:1",
                                   "register@p:1=fail",
                                   "unregister@p:1=fail",
                                   "enumerate@p:1=fail",
                                   "write@:1=fail",
                                   "write@\"p:1=fail",
                                   "write@\"\":1=fail",
                                   "notice:1=fail",
                                   "Write:1=fail",
                                   "write:1=FAIL",
                                   "write:9999999999999999999=fail"}) {
        EXPECT_NE("", Mistake(plan)) << plan;
    }
}

TEST(SpyFaults, AMistakesTextIsShownSafely) {
    EXPECT_NE(std::string::npos, Mistake("write\x1b[31m\n").find("'?[31m?'"))
        << Mistake("write\x1b");
    EXPECT_NE(std::string::npos, Mistake(std::string(5000, 'x')).find("...'"));
}
