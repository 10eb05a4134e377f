#pragma once

#include "platform/standin/TestHooks.h"
#include "platform/Window.h"

#include <gtest/gtest.h>

#include <cstdint>

// A test of what runs on the stand-in, which it finds and leaves reset.
class StandInTest : public ::testing::Test {
protected:
    void SetUp() override { platform::testing::ResetStandIn(); }
    void TearDown() override { platform::testing::ResetStandIn(); }
};

// The procedure of a dialog window that handles nothing itself.
inline bool NeverHandles(platform::WindowHandle, std::uint32_t, std::uintptr_t, std::intptr_t, std::intptr_t&)
{
    return false;
}
