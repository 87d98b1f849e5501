#pragma once

#include "render/offscreen_context.h"
#include "render/render_exception.h"

#include <gtest/gtest.h>

#include <optional>

namespace support
{
/// Tests that draw: skipped, with the reason, on a machine that has no driver.
class WithDriver : public testing::Test
{
protected:
    void SetUp() override
    {
        try
        {
            m_driver.emplace();
        }
        catch (const TW2::render::RenderException& exception)
        {
            GTEST_SKIP() << exception.getErrorMessage();
        }
    }

private:
    std::optional<TW2::render::OffscreenContext> m_driver;
};
}  // namespace support
