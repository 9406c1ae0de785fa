// The base of tests over the scripted platform.
#pragma once

#include <gtest/gtest.h>

#include "tests/support/scripted_platform.h"

namespace scripted {

// Starts with a fresh platform, and at the end finds no misused handle and nothing left open but
// what the test expects.
class ScriptedTest : public ::testing::Test {
 protected:
    ScriptedTest() { resetPlatform(); }

    void TearDown() override { startCase(); }

    // Between the cases of a test: ends one as a test ends, and starts the next afresh.
    void startCase() {
        EXPECT_EQ(platform().faults, Lines{});
        EXPECT_EQ(platform().live(), leftOpen);
        resetPlatform();
        leftOpen.clear();
    }

    Lines leftOpen;
};

}  // namespace scripted
