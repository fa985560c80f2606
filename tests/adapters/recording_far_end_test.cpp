// SPDX-License-Identifier: MIT
//
// A far end that says what it said in a recording.
#include <chrono>
#include <string>

#include "adapters/virtual/simulation/recorded_talk.h"
#include "tests/adapters/simulated_host.h"

using std::chrono::milliseconds;

namespace {

const std::vector<RecordedOpening> kTwoOpenings = {{"AT\rATI\r",
                                                    {{"hello", 0, milliseconds(5)},
                                                     {"OK", 3, milliseconds(10)},
                                                     {"Modem", 7, milliseconds(20)},
                                                     {"OK", 7, milliseconds(1)}}},
                                                   {"", {{"again", 0, milliseconds(0)}}}};

// "bytes@milliseconds " for each piece.
std::string Text(const std::vector<RecordedTalk::Piece>& pieces) {
    std::string text;
    for (const RecordedTalk::Piece& piece : pieces) {
        text += *piece.bytes + "@" + std::to_string(piece.due.count() / 1000) + " ";
    }
    return text;
}

// The far end's answers, and "!n" where the host differs for the first time.
std::string Send(RecordedTalk& talk, const std::string& bytes, milliseconds now) {
    std::string text;
    for (const char byte : bytes) {
        const RecordedTalk::Answer answer = talk.Take(byte, now);
        text += answer.differs ? "!" + std::to_string(talk.Taken()) + " " : "";
        text += Text(answer.pieces);
    }
    return text;
}

class PlayedRecording : public SimulatedHost {
  protected:
    PlayedRecording() {
        UseScenario(
            "{\"kovasmgr_recording\":1}\n"
            R"({"n":1,"t_us":0,"thread":1,"call":"enumerate","which":4,"devices":[{"name":"d","text":"","ports":[{"name":"p1","id":0}]}],"result":30000,"took_us":1})"
            "\n"
            R"({"n":2,"t_us":1000,"thread":1,"call":"open","port":"p1","handle":1,"result":30000,"took_us":1})"
            "\n"
            R"({"n":3,"t_us":2000,"thread":1,"call":"write","handle":1,"port":"p1","length":4,"data":"QVRJDQ==","result":30000,"count":4,"took_us":1})"
            "\n"
            R"({"n":4,"t_us":12000,"thread":1,"call":"read","handle":1,"port":"p1","data":"TW9kZW0NCg==","result":30000,"count":7,"took_us":1})"
            "\n"
            R"({"n":5,"t_us":13000,"thread":1,"call":"read","handle":1,"port":"p1","data":"T0sNCg==","result":30000,"count":4,"took_us":1})"
            "\n");
        EXPECT_EQ("d(p1)", m_Adapter.DevicesText());
    }
};

} // namespace

TEST_F(PlayedRecording, TheHostReadsWhatWasRead) {
    const int handle = Open("p1");
    EXPECT_EQ(2, m_Adapter.WriteText(handle, "AT"));
    EXPECT_EQ(2, m_Adapter.WriteText(handle, "I\r"));
    EXPECT_EQ("Modem\r\nOK\r\n", m_Adapter.ReadUntil(handle, "OK\r\n"));
    EXPECT_EQ("open\nsent \"Modem\\r\\n\"\nsent \"OK\\r\\n\"\n", Track("p1"));
}

TEST_F(PlayedRecording, WhatTheHostDoesDifferentlyIsNoted) {
    const int handle = Open("p1");
    EXPECT_EQ(4, m_Adapter.WriteText(handle, "ATX\r"));
    EXPECT_EQ("Modem\r\nOK\r\n", m_Adapter.ReadUntil(handle, "OK\r\n"));
    EXPECT_EQ(0U, Track("p1").find("open\ndiffers at byte 3\n")) << Track("p1");
}

TEST_F(PlayedRecording, AfterTheLastRecordedOpeningThePortIsSilent) {
    Open("p1");
    const int handle = Open("p1");
    EXPECT_EQ(1, m_Adapter.WriteText(handle, "A"));
    EXPECT_EQ("open\nopen\ndiffers at byte 1\n", Track("p1"));
}

TEST(RecordedTalk, APieceComesWhenTheHostHasSentEnoughAndNotSoonerAfterItsCause) {
    RecordedTalk talk(kTwoOpenings);
    EXPECT_EQ("hello@105 ", Text(talk.Open(milliseconds(100))));
    EXPECT_EQ("", Send(talk, "AT", milliseconds(200)));
    EXPECT_EQ("OK@220 ", Send(talk, "\r", milliseconds(210)));
    EXPECT_EQ("Modem@320 OK@321 ", Send(talk, "ATI\r", milliseconds(300)));
}

TEST(RecordedTalk, APieceWaitsForTheOneBefore) {
    RecordedTalk talk(kTwoOpenings);
    talk.Open(milliseconds(0));
    EXPECT_EQ("OK@15 Modem@35 OK@36 ", Send(talk, "AT\rATI\r", milliseconds(0)));
}

TEST(RecordedTalk, TheFirstByteThatDiffersIsToldOnceInEachOpening) {
    RecordedTalk talk(kTwoOpenings);
    talk.Open(milliseconds(0));
    EXPECT_EQ("!2 OK@15 ", Send(talk, "AX\rXX", milliseconds(0)));
    EXPECT_EQ("again@0 ", Text(talk.Open(milliseconds(0))));
    EXPECT_EQ("!1 ", Send(talk, "AT", milliseconds(0)));
    EXPECT_EQ("", Text(talk.Open(milliseconds(0))));
    EXPECT_EQ("!1 ", Send(talk, "AT", milliseconds(0)));
}

TEST(RecordedTalk, MoreThanWasRecordedDiffers) {
    RecordedTalk talk(kTwoOpenings);
    talk.Open(milliseconds(0));
    EXPECT_EQ("OK@15 Modem@35 OK@36 !8 ", Send(talk, "AT\rATI\rx", milliseconds(0)));
}
