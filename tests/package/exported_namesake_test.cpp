// SPDX-License-Identifier: MIT
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstring>

#include "tests/package/namesakes.h"

TEST(ExportedNamesakes, AHostThatExportsFunctionsOfTheSameNamesNeitherCapturesNorIsCaptured) {
    ASSERT_NE(nullptr, dlsym(RTLD_DEFAULT, "INFO_LOG"));
    Dl_info info{};
    ASSERT_NE(0, dladdr(dlsym(RTLD_DEFAULT, "INFO_LOG"), &info));
    ASSERT_EQ(nullptr, std::strstr(info.dli_fname, "libKOVASMgr")) << "not exported by the host";
    CheckThatNamesakesStayApart();
}
