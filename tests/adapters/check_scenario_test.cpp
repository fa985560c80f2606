// SPDX-License-Identifier: MIT
//
// The check of a scenario, by the function that a program finds in the adapter's file.
#include <dlfcn.h>

#include <filesystem>
#include <fstream>
#include <vector>

#include "OSAdapt.h"
#include "OSAdaptScenario.h"
#include "tests/adapters/adapter_under_test.h"
#include "tests/adapters/virtual_bench.h"

namespace {

class CheckScenario : public VirtualBench {
  protected:
    ~CheckScenario() override { dlclose(m_Library); }

    int Check(const char* file, char* reason, long size) const {
        const auto function =
            reinterpret_cast<OSADAPT_CHECK_SCENARIO>(dlsym(m_Library, OSADAPT_CHECK_SCENARIO_NAME));
        return function == nullptr ? 0 : function(file, reason, size);
    }

    // The reason, or "ok".
    std::string Check(const std::string& file) const {
        std::vector<char> reason(1000, 'x');
        const int result = Check(file.c_str(), reason.data(), static_cast<long>(reason.size()));
        if (result == OS_ADAPT_OK) {
            EXPECT_STREQ("", reason.data());
            return "ok";
        }
        EXPECT_EQ(OS_ADAPT_FAILED, result);
        return reason.data();
    }

    std::string File(const std::string& text) const {
        const std::string path = m_Scratch.Path() + "/checked.toml";
        std::ofstream(path) << text;
        return path;
    }

  private:
    void* m_Library = dlopen(KOVASMGR_VIRTUAL_ADAPTER, RTLD_NOW);
};

} // namespace

TEST_F(CheckScenario, WhatTheAdapterWouldUseIsGood) {
    EXPECT_EQ("ok", Check(KOVASMGR_SAMPLE_SCENARIO));
    EXPECT_EQ("ok", Check(File(kTwoDevices)));
    EXPECT_EQ("ok", Check(File("{\"kovasmgr_recording\":1}\n{\"call\":\"enumerate\",\"t_us\":1,"
                               "\"result\":30000,\"devices\":[{\"name\":\"d\",\"text\":\"\","
                               "\"ports\":[{\"name\":\"p\",\"id\":1}]}]}\n")));
}

TEST_F(CheckScenario, TheFirstMistakeHasFileLineAndReason) {
    std::string path = File("\n[[device]]\nname = \"d\"\nnmae = \"x\"\n[[device.port]]\n"
                            "name = \"p\"\nscript = ['at 1s pull x']\n");
    EXPECT_EQ(path + ":4: device has no key 'nmae'", Check(path));
    path = File(std::string(kTwoDevices) + "script = [\n'on \"x\" replay \"y\"']\n");
    EXPECT_EQ(0U, Check(path).find(path + ":16: 'replay' after 'x': expected plug, pull, "))
        << Check(path);
    EXPECT_EQ("/nowhere/x.toml:0: No such file or directory (errno 2)", Check("/nowhere/x.toml"));
    EXPECT_EQ("/nowhere?x:0: No such file or directory (errno 2)", Check("/nowhere\nx"));
}

TEST_F(CheckScenario, TheReasonIsCutToItsRoom) {
    const std::string path = File("x");
    char room[8] = "1234567";
    EXPECT_EQ(OS_ADAPT_FAILED, Check(path.c_str(), room, 4));
    EXPECT_EQ(path.substr(0, 3), room);
    EXPECT_EQ('5', room[4]);
    EXPECT_EQ(OS_ADAPT_FAILED, Check(path.c_str(), room, 1));
    EXPECT_STREQ("", room);
    room[0] = 'x';
    EXPECT_EQ(OS_ADAPT_FAILED, Check(path.c_str(), room, 0));
    EXPECT_EQ(OS_ADAPT_FAILED, Check(path.c_str(), room, -1));
    EXPECT_EQ('x', room[0]);
    EXPECT_EQ(OS_ADAPT_FAILED, Check(path.c_str(), nullptr, 100));
    EXPECT_EQ(OS_ADAPT_OK, Check(KOVASMGR_SAMPLE_SCENARIO, nullptr, 0));
}

TEST_F(CheckScenario, NoFileIsAFailure) {
    char reason[100] = "";
    EXPECT_EQ(OS_ADAPT_FAILED, Check(nullptr, reason, sizeof reason));
    EXPECT_STREQ("OSADAPT_CheckScenario:0: the file's name is null", reason);
}

TEST_F(CheckScenario, NeitherTheEnvironmentNorAHostAtWorkMatters) {
    UseScenario("nonsense");
    setenv("KOVASMGR_VIRTUAL_SEED", "nonsense", 1);
    EXPECT_EQ("ok", Check(File(kTwoDevices)));
    unsetenv("KOVASMGR_VIRTUAL_SEED");
    UseScenario(kTwoDevices);
    const AdapterUnderTest adapter;
    EXPECT_EQ("left(l0 l1) right(r0 r1)", adapter.DevicesText());
    EXPECT_NE("ok", Check(File("nonsense")));
    EXPECT_EQ("left(l0 l1) right(r0 r1)", adapter.DevicesText());
}

TEST_F(CheckScenario, EveryScenarioThatShipsIsGood) {
    const auto folder = std::filesystem::path(KOVASMGR_SAMPLE_SCENARIO).parent_path();
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        EXPECT_EQ("ok", Check(entry.path().string()));
        ++count;
    }
    EXPECT_GE(count, 2);
}
