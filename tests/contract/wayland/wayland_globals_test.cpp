// Binding what the compositor offers.

#include <memory>

#include <wayland-client.h>

#include "efl_on_tv.h"
#include "video_plane/weston.h"
#include "wayland/wayland_globals.h"

namespace platform {
namespace {

class WaylandGlobalsTest : public platform_test::WestonTest {
  protected:
    /** The version of the surfaces' factory when it is bound; 0 when it is not. */
    uint32_t version_of_compositor(uint32_t known) const
    {
        const std::unique_ptr<wl_compositor, decltype(&wl_compositor_destroy)> bound(
            static_cast<wl_compositor *>(
                bind_wayland_global(registry(), wl_compositor_interface, known)),
            &wl_compositor_destroy);
        // The compositor ends the connection when it is asked for more than it has.
        EXPECT_GE(wl_display_roundtrip(ecore_wl2_display_get(display())), 0);
        return bound ? wl_compositor_get_version(bound.get()) : 0;
    }

    static Ecore_Wl2_Display *display() { return ecore_wl2_connected_display_get(nullptr); }
    static wl_registry *registry() { return ecore_wl2_display_registry_get(display()); }
};

TEST_F(WaylandGlobalsTest, AreBoundAtTheNewestVersionThatBothSidesKnow)
{
    EXPECT_EQ(version_of_compositor(1), 1u);
    const uint32_t newest = version_of_compositor(1000);
    EXPECT_GT(newest, 1u);
    EXPECT_LT(newest, 1000u);
    EXPECT_EQ(version_of_compositor(newest), newest);
}

TEST_F(WaylandGlobalsTest, WhatTheCompositorDoesNotHaveIsNone)
{
    constexpr wl_interface UNKNOWN = {"wl_compositor_of_tomorrow", 1, 0, nullptr, 0, nullptr};
    EXPECT_EQ(bind_wayland_global(registry(), UNKNOWN, 1), nullptr);
    EXPECT_EQ(bind_wayland_global(nullptr, wl_compositor_interface, 1), nullptr);
}

TEST(WaylandGlobals, WithoutAConnectionThereAreNone)
{
    auto *registry = reinterpret_cast<wl_registry *>(1);
    EXPECT_EQ(bind_wayland_global(registry, wl_compositor_interface, 1), nullptr);
}

} // namespace
} // namespace platform
