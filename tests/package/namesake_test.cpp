// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "tests/package/namesakes.h"

TEST(Namesakes, AHostWithFunctionsOfTheSameNamesNeitherCapturesNorIsCaptured) {
    CheckThatNamesakesStayApart();
}
