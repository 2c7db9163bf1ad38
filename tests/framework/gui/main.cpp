// SPDX-License-Identifier: MIT
//
// Window tests run in memory: one connection without a screen for the whole program.
#include "framework/gui/Application.h"

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    const framework::Application application(argc, argv, framework::Display::Memory);
    return RUN_ALL_TESTS();
}
