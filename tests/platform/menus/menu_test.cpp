// Pop-up menus through the headless window: answered by the responder, driven by real pointer
// and key events, cancelled every way, and their golden images in both looks.
#include "golden_image.hpp"
#include "platform/menus/ui_menu_overlay.hpp"
#include "platform/skins/skins.hpp"
#include "platform/ui/headless_window.hpp"
#include "platform/ui/modal_testing.hpp"
#include "platform/ui/ui_node_manager.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <vector>

using namespace qorui;
using qorcore::ColorRGBA;

namespace {

std::unique_ptr<OS_Menu> MakeMenu() {
    auto menu = CreateOSMenu();
    menu->AppendItem(10, "Zoom In");
    menu->AppendItem(11, "Zoom Out");
    menu->AppendSeparator();
    menu->AppendItem(12, "Linear Scale", true, true);
    menu->AppendItem(13, "Logarithmic Scale", false);
    menu->AppendItem(14, "Reset View");
    return menu;
}

// A node that opens the menu on a context click and remembers the answer.
class MenuHost : public UI_Node {
public:
    explicit MenuHost(const OS_Menu& menu) : menu_(menu) { SetWantsKeyboardFocus(true); }
    bool UI_DoMouseEvent(const MouseEvent& event) override {
        if (!event.IsContextMenuClick())
            return false;
        ++opened;
        answer = UI_DoContextMenu(menu_, *this, event.GetPosition());
        return true;
    }
    int opened = 0;
    int answer = -1;

private:
    const OS_Menu& menu_;
};

struct MenuScene {
    MenuScene() : window(300, 220), menu(MakeMenu()) {
        host = qorcore::MakeIntrusive<MenuHost>(*menu);
        host->SetFrame({20, 20, 200, 150});
        window.AddNode(host);
    }
    HeadlessWindow window;
    std::unique_ptr<OS_Menu> menu;
    IntrusivePtr<MenuHost> host;
};

TEST(OSMenuTest, ItemsKeepTheirStateAndBadIdentifiersAreRefused) {
    auto menu = MakeMenu();
    EXPECT_TRUE(menu->GetItem(2).IsSeparator());
    EXPECT_EQ(menu->FindItem(13), 4);
    EXPECT_EQ(menu->FindItem(99), -1);
    EXPECT_TRUE(menu->GetItem(3).checked);
    EXPECT_TRUE(menu->SetItemChecked(12, false));
    EXPECT_FALSE(menu->GetItem(3).checked);
    EXPECT_TRUE(menu->SetItemEnabled(13, true));
    EXPECT_TRUE(menu->GetItem(4).enabled);
    EXPECT_FALSE(menu->SetItemEnabled(99, true));
    for (int id : {0, -3, 10}) // 10 is taken
        EXPECT_THROW(menu->AppendItem(id, "Refused"), std::invalid_argument) << id;
    EXPECT_EQ(menu->GetItemCount(), 6u);
}

TEST(ContextMenuTest, ResponderAnswersAndCancels) {
    MenuScene scene;
    int shown = 0;
    {
        qorui::testing::ScopedModalResponder responder([&](UI_ModalOverlay& overlay) {
            ++shown;
            ASSERT_EQ(overlay.GetModalKind(), "menu");
            auto& menu = dynamic_cast<UI_MenuOverlay&>(overlay);
            // The menu opens where it was asked, in window coordinates.
            EXPECT_EQ(menu.GetPanelRect().Origin(), PointT<float>(70, 60));
            EXPECT_FALSE(menu.ChooseItem(13)); // disabled
            EXPECT_FALSE(menu.ChooseItem(77)); // unknown
            EXPECT_TRUE(menu.IsRunning());
            EXPECT_TRUE(menu.ChooseItem(14));
        });
        scene.window.Click(70, 60, MouseButton::kRight);
    }
    EXPECT_EQ(shown, 1);
    EXPECT_EQ(scene.host->answer, 14);
    // The overlay is gone and the focus came back.
    EXPECT_EQ(scene.window.GetRoot()->GetChildCount(), 1u);
    {
        qorui::testing::ScopedModalResponder responder(
            [&](UI_ModalOverlay& overlay) { overlay.Cancel(); });
        scene.window.Click(70, 60, MouseButton::kRight);
    }
    EXPECT_EQ(scene.host->answer, 0);
    // With no responder and no event source of its own, the headless menu ends cancelled.
    scene.host->answer = -1;
    scene.window.Click(70, 60, MouseButton::kRight);
    EXPECT_EQ(scene.host->answer, 0);
    EXPECT_EQ(scene.host->opened, 3);
}

TEST(ContextMenuTest, ClickingAnItemChoosesItAndDisabledItemsAndSeparatorsDoNot) {
    MenuScene scene;
    std::vector<int> answers;
    auto clickItem = [&](std::size_t index, bool thenEscape) {
        qorui::testing::ScopedModalResponder responder([&](UI_ModalOverlay& overlay) {
            auto& menu = dynamic_cast<UI_MenuOverlay&>(overlay);
            const RectT<float> r = menu.GetItemRect(index);
            scene.window.Click(r.Center().x, r.Center().y);
            if (thenEscape)
                scene.window.PressKey(KeyboardCode::kEscape);
        });
        scene.window.Click(40, 40, MouseButton::kRight);
        answers.push_back(scene.host->answer);
    };
    clickItem(1, false); // "Zoom Out"
    clickItem(2, true);  // the separator: nothing, the menu stays until Escape
    clickItem(4, true);  // disabled
    clickItem(3, false);
    EXPECT_EQ(answers, (std::vector<int>{11, 0, 0, 12}));
}

TEST(ContextMenuTest, ReleaseOfTheOpeningPressChoosesOnlyAfterMovingOntoAnItem) {
    MenuScene scene;
    qorui::testing::ScopedModalResponder responder([&](UI_ModalOverlay& overlay) {
        auto& menu = dynamic_cast<UI_MenuOverlay&>(overlay);
        // Still on the opening point: the release does nothing.
        scene.window.MouseUp(40, 40, MouseButton::kRight);
        EXPECT_TRUE(menu.IsRunning());
        const RectT<float> r = menu.GetItemRect(0);
        scene.window.MouseMove(r.Center().x, r.Center().y);
        EXPECT_EQ(menu.GetHighlightedIndex(), 0);
        scene.window.MouseDown(r.Center().x, r.Center().y, MouseButton::kRight);
        scene.window.MouseUp(r.Center().x, r.Center().y, MouseButton::kRight);
    });
    scene.window.MouseDown(40, 40, MouseButton::kRight);
    EXPECT_EQ(scene.host->answer, 10);
}

TEST(ContextMenuTest, ArrowsSkipSeparatorsAndDisabledItemsAndWrap) {
    MenuScene scene;
    std::vector<int> highlights;
    qorui::testing::ScopedModalResponder responder([&](UI_ModalOverlay& overlay) {
        auto& menu = dynamic_cast<UI_MenuOverlay&>(overlay);
        for (int i = 0; i < 5; ++i) {
            scene.window.PressKey(KeyboardCode::kDown);
            highlights.push_back(menu.GetHighlightedIndex());
        }
        scene.window.PressKey(KeyboardCode::kUp);
        highlights.push_back(menu.GetHighlightedIndex());
        scene.window.PressKey(KeyboardCode::kUp);
        highlights.push_back(menu.GetHighlightedIndex());
        scene.window.PressKey(KeyboardCode::kReturn);
    });
    scene.window.Click(40, 40, MouseButton::kRight);
    EXPECT_EQ(highlights, (std::vector<int>{0, 1, 3, 5, 0, 5, 3}));
    EXPECT_EQ(scene.host->answer, 12);
}

TEST(ContextMenuTest, EscapeAndAPressOutsideCancelAndReachNothingBelow) {
    MenuScene scene;
    qorui::testing::ScopedModalResponder escape([&](UI_ModalOverlay&) {
        scene.window.PressKey(KeyboardCode::kDown);
        scene.window.PressKey(KeyboardCode::kEscape);
    });
    scene.window.Click(40, 40, MouseButton::kRight);
    EXPECT_EQ(scene.host->answer, 0);
    qorui::testing::ScopedModalResponder outside([&](UI_ModalOverlay& overlay) {
        // A context click elsewhere while the menu is open does not open a second one.
        scene.window.Click(290, 5, MouseButton::kRight);
        EXPECT_FALSE(overlay.IsRunning());
    });
    scene.window.Click(40, 40, MouseButton::kRight);
    EXPECT_EQ(scene.host->answer, 0);
    EXPECT_EQ(scene.host->opened, 2);
}

TEST(ContextMenuTest, MenuStaysInsideTheWindowAndEmptyMenusDoNotOpen) {
    MenuScene scene;
    RectT<float> panel;
    qorui::testing::ScopedModalResponder responder([&](UI_ModalOverlay& overlay) {
        panel = dynamic_cast<UI_MenuOverlay&>(overlay).GetPanelRect();
    });
    scene.window.Click(215, 165, MouseButton::kRight);
    EXPECT_LE(panel.Right(), 300.0f);
    EXPECT_LE(panel.Bottom(), 220.0f);
    EXPECT_GE(panel.x, 0.0f);
    EXPECT_GE(panel.y, 0.0f);
    EXPECT_GT(panel.width, 0.0f);

    OS_Menu empty;
    empty.AppendItem(1, "Off", false);
    EXPECT_EQ(UI_DoContextMenu(empty, *scene.host, {5, 5}), 0);
    auto loose = qorcore::MakeIntrusive<UI_Node>();
    EXPECT_THROW(UI_DoContextMenu(*scene.menu, *loose, {0, 0}), std::invalid_argument);
}

TEST(ContextMenuTest, TheStyleMeasuresRowsAndTheIconColumnAndBadSizesTakeTheLook) {
    MenuScene scene;
    EXPECT_TRUE(scene.menu->SetItemIcon(10, penrig::Image::Create(24, 30)));
    EXPECT_FALSE(scene.menu->SetItemIcon(99, penrig::Image::Create(24, 30)));
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    struct Case {
        OS_Menu::Style style;
        float rowHeight, iconColumn;
    };
    const std::vector<Case> cases = {
        {{}, 34, 28}, // as tall as the tallest picture and 4; as wide as the widest and 4
        {{.itemHeight = 18.4f, .iconColumnWidth = 40}, 18, 40},
        {{.itemHeight = nan, .fontSize = -3, .checkColumnWidth = inf, .iconColumnWidth = -1},
         34,
         28},
        {{.itemHeight = 1e9f}, 1000, 28},
    };
    for (const Case& c : cases) {
        scene.menu->SetStyle(c.style);
        RectT<float> row;
        qorui::testing::ScopedModalResponder responder([&](UI_ModalOverlay& overlay) {
            auto& menu = dynamic_cast<UI_MenuOverlay&>(overlay);
            row = menu.GetItemRect(0);
            EXPECT_LE(menu.GetPanelRect().width, 300.0f) << "no column wider than the window";
        });
        scene.window.Click(40, 40, MouseButton::kRight);
        EXPECT_EQ(row.height, c.rowHeight) << c.style.itemHeight;
        EXPECT_EQ(scene.menu->GetIconColumnWidth(), c.iconColumn) << c.style.iconColumnWidth;
    }
}

void CheckMenuGolden(skins::Skin skin, float scale) {
    skins::ScopedSkin look(skin);
    HeadlessWindow window(220, 170, scale);
    window.SetBackgroundColor(skins::GetContentBackgroundColor());
    auto menu = MakeMenu();
    IntrusivePtr<MenuHost> host = qorcore::MakeIntrusive<MenuHost>(*menu);
    host->SetFrame(window.GetBounds());
    window.AddNode(host);
    bool matched = false;
    qorui::testing::ScopedModalResponder responder([&](UI_ModalOverlay& overlay) {
        auto& m = dynamic_cast<UI_MenuOverlay&>(overlay);
        const RectT<float> r = m.GetItemRect(1);
        window.MouseMove(r.Center().x, r.Center().y);
        window.RenderAll();
        const std::string name = std::string("menu_") + std::string(skins::GetSkinName(skin)) +
                                 (scale > 1 ? "_2x" : "_1x");
        EXPECT_TRUE(qafui_testing::MatchesGolden(window.GetImage(), name));
        matched = true;
    });
    window.Click(20, 16, MouseButton::kRight);
    EXPECT_TRUE(matched);
}

TEST(ContextMenuGoldenTest, ClassicAndV7At1xAnd2x) {
    for (skins::Skin skin : {skins::Skin::kClassic, skins::Skin::kV7})
        for (float scale : {1.0f, 2.0f})
            CheckMenuGolden(skin, scale);
}

} // namespace
