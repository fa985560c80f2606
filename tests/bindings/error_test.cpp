// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <KOVASMgr.hpp>
#include <set>
#include <string>

using kovasmgr::Errc;

namespace {

const Errc kAll[] = {Errc::BadArgument,  Errc::AdapterFailed,  Errc::NotInitialised,
                     Errc::NotOpen,      Errc::NoThread,       Errc::AlreadyInitialised,
                     Errc::TooManyPorts, Errc::NotFromReceiver};

} // namespace

TEST(ErrorCode, KeepsTheLibrarysNumber) {
    EXPECT_EQ(KOVAMGR_ERR_PARAM, std::error_code(Errc::BadArgument).value());
    EXPECT_EQ(KOVAMGR_ERR_OSADAPT, std::error_code(Errc::AdapterFailed).value());
    EXPECT_EQ(KOVAMGR_ERR_NOT_INIT, std::error_code(Errc::NotInitialised).value());
    EXPECT_EQ(KOVAMGR_ERR_NO_HANDLE, std::error_code(Errc::NotOpen).value());
    EXPECT_EQ(KOVAMGR_ERR_THREAD, std::error_code(Errc::NoThread).value());
}

TEST(ErrorCode, OfSuccessIsNoError) {
    EXPECT_FALSE(kovasmgr::detail::ErrorOf(KOVAMGR_OK));
    EXPECT_EQ(Errc::AdapterFailed, kovasmgr::detail::ErrorOf(KOVAMGR_ERR_OSADAPT));
}

TEST(ErrorCode, HasATextOfItsOwn) {
    std::set<std::string> texts;
    for (const Errc code : kAll) {
        const std::string text = std::error_code(code).message();
        EXPECT_EQ(std::string::npos, text.find("code ")) << text;
        EXPECT_TRUE(texts.insert(text).second) << text;
    }
}

TEST(ErrorCode, WithoutAMeaningShowsItsNumber) {
    EXPECT_EQ("code 4", std::error_code(4, kovasmgr::ErrorCategory()).message());
}

TEST(ErrorCode, BelongsToTheBindingsCategory) {
    EXPECT_STREQ("kovasmgr", std::error_code(Errc::NotOpen).category().name());
    EXPECT_NE(std::error_code(Errc::TooManyPorts), std::error_code(2, std::generic_category()));
}
