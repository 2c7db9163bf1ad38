// SPDX-License-Identifier: MIT
//
// Tests of windows on the screen that the environment names.
#include "framework/gui/Application.h"

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    const framework::Application application(argc, argv);
    return RUN_ALL_TESTS();
}
