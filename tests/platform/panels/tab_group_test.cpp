// Tab groups through the headless window: clicks and keys select a tab and show only its panel.
#include "golden_image.hpp"
#include "platform/panels/ui_tab_group.hpp"
#include "platform/skins/skins.hpp"
#include "platform/ui/headless_window.hpp"

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

using namespace qorui;

namespace {

struct TabScene {
    explicit TabScene(float scale = 1.0f) : window(300, 160, scale) {
        group = qorcore::MakeIntrusive<UI_TabGroup>();
        group->SetFrame({10, 10, 280, 140});
        for (const char* title : {"Compressor", "Gate", "Sidechain"}) {
            auto panel = qorcore::MakeIntrusive<UI_SubView>();
            panel->SetBackgroundColor(qorcore::ColorRGBA(0.9f, 0.9f, 0.9f));
            group->AddTab(title, panel);
        }
        group->SetTabChangedCallback([this](std::size_t tab) { changes.push_back(tab); });
        window.AddNode(group);
    }
    void ClickTab(std::size_t tab) {
        const auto c = group->UI_LocalToGlobalF(group->GetTabRect(tab)).Center();
        window.AdvanceTime(1);
        window.Click(c.x, c.y);
    }
    HeadlessWindow window;
    IntrusivePtr<UI_TabGroup> group;
    std::vector<std::size_t> changes;
};

TEST(TabGroupTest, ClicksAndKeysShowOnePanel) {
    TabScene scene;
    auto& group = *scene.group;
    ASSERT_EQ(group.CountTabs(), 3u);
    EXPECT_EQ(group.GetSelectedTab(), 0);
    EXPECT_TRUE(group.GetPanelAt(0)->IsVisible());
    EXPECT_FALSE(group.GetPanelAt(1)->IsVisible());
    EXPECT_EQ(group.GetPanelAt(2)->GetFrame(), group.GetPanelArea());
    scene.ClickTab(2);
    EXPECT_EQ(group.GetSelectedTab(), 2);
    EXPECT_TRUE(group.GetPanelAt(2)->IsVisible());
    EXPECT_FALSE(group.GetPanelAt(0)->IsVisible());
    EXPECT_TRUE(group.HasFocus());
    scene.ClickTab(2); // already selected: no callback
    scene.window.PressKey(KeyboardCode::kLeft);
    scene.window.PressKey(KeyboardCode::kLeft);
    scene.window.PressKey(KeyboardCode::kLeft); // stays on the first
    EXPECT_EQ(group.GetSelectedTab(), 0);
    EXPECT_EQ(scene.changes, (std::vector<std::size_t>{2, 1, 0}));
    // From code: no callback; panels follow a new size.
    group.SelectTab(1);
    EXPECT_EQ(scene.changes.size(), 3u);
    group.SetSize(200, 100);
    EXPECT_EQ(group.GetPanelAt(1)->GetFrame(), group.GetPanelArea());
    EXPECT_EQ(group.GetPanelArea().width, 198);
    EXPECT_THROW(group.SelectTab(3), std::out_of_range);
    EXPECT_THROW(group.GetTabTitle(3), std::out_of_range);
    EXPECT_THROW(group.AddTab("Empty", nullptr), std::invalid_argument);
    EXPECT_EQ(UI_TabGroup().GetSelectedTab(), -1);
}

TEST(TabGroupGoldenTest, TabsLookRightAt1xAnd2x) {
    for (const float scale : {1.0f, 2.0f}) {
        skins::ScopedSkin skin(skins::Skin::kClassic);
        TabScene scene(scale);
        scene.group->SelectTab(1);
        scene.window.RenderAll();
        EXPECT_TRUE(qafui_testing::MatchesGolden(scene.window.GetImage(),
                                                 "tab_group_" + std::to_string(int(scale)) + "x"));
    }
}

} // namespace
