// The two looks: choosing one, the theme-changed signal, the colour tables and the button face.
#include "platform/draw/cairo_supplier.hpp"
#include "platform/draw/image.hpp"
#include "platform/draw/penrig.hpp"
#include "platform/skins/skins.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <stdexcept>

using namespace qorui;
using qorcore::ColorRGBA;

namespace {

float Lightness(const ColorRGBA& c) {
    return (c.red + c.green + c.blue) / 3.0f;
}

TEST(SkinsTest, SetSkinSwitchesTheLookAndNotifiesOnlyOnChange) {
    skins::ScopedSkin scope(skins::Skin::kClassic);
    int calls = 0;
    qorcore::ScopedConnection connection = skins::ConnectThemeChanged([&] { ++calls; });
    EXPECT_FALSE(skins::IsRunningV7OrBeyond());
    skins::SetSkin(skins::Skin::kClassic);
    EXPECT_EQ(calls, 0);
    skins::SetSkin(skins::Skin::kV7);
    EXPECT_TRUE(skins::IsRunningV7OrBeyond());
    EXPECT_EQ(calls, 1);
    // A listener sees the new colours already.
    ColorRGBA seen;
    qorcore::ScopedConnection second =
        skins::InstallThemeChangedFunction([&] { seen = skins::GetContentBackgroundColor(); });
    skins::SetSkin(skins::Skin::kClassic);
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(seen, skins::GetPalette(skins::Skin::kClassic).contentBackground);
    connection.Disconnect();
    skins::SetSkin(skins::Skin::kV7);
    EXPECT_EQ(calls, 2);
}

TEST(SkinsTest, ScopedSkinRestoresThePreviousLook) {
    skins::ScopedSkin outer(skins::Skin::kClassic);
    {
        skins::ScopedSkin inner(skins::Skin::kV7);
        EXPECT_TRUE(skins::IsRunningV7OrBeyond());
    }
    EXPECT_FALSE(skins::IsRunningV7OrBeyond());
}

TEST(SkinsTest, NamesParseInAnyCaseAndUnknownNamesAreRejected) {
    EXPECT_EQ(skins::ParseSkinName("classic"), skins::Skin::kClassic);
    EXPECT_EQ(skins::ParseSkinName("V7"), skins::Skin::kV7);
    EXPECT_EQ(skins::ParseSkinName("v8"), std::nullopt);
    EXPECT_EQ(skins::ParseSkinName(""), std::nullopt);
    EXPECT_EQ(skins::GetSkinName(skins::Skin::kV7), "v7");
    EXPECT_EQ(skins::GetSkinName(skins::Skin::kClassic), "classic");
    EXPECT_THROW(skins::SetSkin(static_cast<skins::Skin>(5)), std::invalid_argument);
}

TEST(SkinsTest, EnvironmentChoosesTheStartingLook) {
    ::setenv("QAFUI_SKIN", "v7", 1);
    EXPECT_EQ(skins::GetSkinFromEnvironment(), skins::Skin::kV7);
    ::setenv("QAFUI_SKIN", "Classic", 1);
    EXPECT_EQ(skins::GetSkinFromEnvironment(), skins::Skin::kClassic);
    ::setenv("QAFUI_SKIN", "purple", 1);
    EXPECT_EQ(skins::GetSkinFromEnvironment(), skins::Skin::kClassic);
    ::unsetenv("QAFUI_SKIN");
    EXPECT_EQ(skins::GetSkinFromEnvironment(), skins::Skin::kClassic);
}

TEST(SkinsTest, ThemeColoursFollowTheLookAndStayLegible) {
    for (skins::Skin skin : {skins::Skin::kClassic, skins::Skin::kV7}) {
        skins::ScopedSkin scope(skin);
        const skins::Palette& p = skins::GetPalette();
        EXPECT_EQ(skins::GetContentBackgroundColor(), p.contentBackground);
        EXPECT_EQ(skins::GetFocusColor(), p.focus);
        EXPECT_EQ(skins::GetDividerColor(), p.divider);
        EXPECT_EQ(skins::GetListBoxBorderColor(), p.listBoxBorder);
        EXPECT_EQ(skins::GetDefaultTextColor(), p.defaultText);
        EXPECT_EQ(skins::design::GetButtonColor(), p.button);
        // Text stands out from what it is drawn on.
        EXPECT_GT(std::abs(Lightness(p.defaultText) - Lightness(p.contentBackground)), 0.5f);
        EXPECT_GT(std::abs(Lightness(p.menuText) - Lightness(p.menuBackground)), 0.5f);
        EXPECT_GT(std::abs(Lightness(p.toolTipText) - Lightness(p.toolTipBackground)), 0.5f);
        EXPECT_GT(std::abs(Lightness(p.menuHighlightText) - Lightness(p.menuHighlight)), 0.3f);
    }
    EXPECT_NE(skins::GetPalette(skins::Skin::kClassic).contentBackground,
              skins::GetPalette(skins::Skin::kV7).contentBackground);
}

TEST(SkinsTest, SpectrumGreysRunFromDarkToLightAndRejectBadIndices) {
    for (skins::Skin skin : {skins::Skin::kClassic, skins::Skin::kV7}) {
        skins::ScopedSkin scope(skin);
        for (int i = 1; i < skins::design::kSpectrumGrayCount; ++i)
            EXPECT_GT(Lightness(skins::GetSpectrumGrayColor(i)),
                      Lightness(skins::GetSpectrumGrayColor(i - 1)));
        EXPECT_THROW(skins::GetSpectrumGrayColor(-1), std::out_of_range);
        EXPECT_THROW(skins::GetSpectrumGrayColor(11), std::out_of_range);
    }
}

TEST(SkinsTest, ButtonFaceIsCrispAndShowsThePressedState) {
    for (float scale : {1.0f, 2.0f}) {
        skins::ScopedSkin scope(skins::Skin::kClassic);
        auto image = penrig::Image::Create(60, 30, scale);
        penrig::CairoSupplier supplier(scale);
        auto draw = [&](const skins::FaceState& state) {
            auto p = supplier.CreatePenrig(*image);
            p->Clear(ColorRGBA(1, 1, 1));
            skins::DrawButtonFace(*p, {10, 5, 40, 20}, state);
        };
        draw({});
        const skins::Palette& pal = skins::GetPalette();
        const int s = int(scale);
        // The left border is a full device pixel of border colour at x = 10, nothing outside.
        const ColorRGBA border = image->GetPixel(10 * s, 15 * s);
        EXPECT_NEAR(border.red, pal.buttonBorder.red, 0.02f);
        EXPECT_EQ(image->GetPixel(10 * s - 1, 15 * s), ColorRGBA(1, 1, 1));
        const ColorRGBA upFace = image->GetPixel(30 * s, 15 * s);
        draw({.pressed = true});
        const ColorRGBA downFace = image->GetPixel(30 * s, 15 * s);
        EXPECT_LT(Lightness(downFace), Lightness(upFace) - 0.05f);
    }
}

} // namespace
