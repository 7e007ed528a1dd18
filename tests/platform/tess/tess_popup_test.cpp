// The popup of layout scripts: how it measures itself, the custom row, typing in its menu,
// command items, and its golden images (pictures, the menu's rows and columns, cut text).
#include "golden_image.hpp"
#include "tess_scene.hpp"

#include "core/stream_error.hpp"
#include "platform/core/localizer.hpp"
#include "platform/menus/ui_menu_overlay.hpp"
#include "platform/skins/skins.hpp"
#include "platform/ui/modal_testing.hpp"
#include "platform/widgets/ui_popup.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

namespace {

using qafui_testing::TessScene;
using qorui::UI_MenuOverlay;
using vorlen::any_regular_t;
using vorlen::name_t;

const char* const kSheet = R"(sheet Popups {
interface:
    slope: 2;
    shape: 1;
    command: @idle;
    other: @idle;
})";

const char* const kLayout = R"(layout Popups {
view column(margin: 8, spacing: 4) {
    popup(identifier: 'Slope', bind: @slope, measureStrategy: 'maxItem', include_custom_item: true,
          popup_maximum_width_chars: 12, is_searchable: false, bind_output: @command,
          items: [{name: '6dB/Oct', value: 1, action: '', bind: '', bind_output: '', icon: ''},
                  {name: '12dB/Oct', value: 2}, {name: '18dB/Oct', value: 3},
                  {name: '48dB/Oct', value: 8}, {name: '-'},
                  {name: 'Reset', value: 9, action: @reset},
                  {name: 'Copy', action: 'copy', bind_output: @other}]);
    popup(identifier: 'Plain', bind: @slope,
          items: [{name: '6dB/Oct', value: 1}, {name: '12dB/Oct', value: 2},
                  {name: 'Orphan', action: @orphan}]);
    popup(identifier: 'Long', bind: @slope, popup_maximum_width_chars: 6,
          items: [{name: 'Twelve dB per octave', value: 2}]);
    popup(identifier: 'Shape', bind: @shape, is_searchable: true, iconpopup_font_size: 11,
          iconpopup_icon_column_width: 24, iconpopup_include_vertical_separator: true,
          iconpopup_item_height: 22, iconpopup_selection_column_width: 16,
          items: [{name: 'Low Shelf', value: 0, icon: 'LowShelf_FirstOrder_Sm'},
                  {name: 'High Shelf', value: 1, icon: 'HighShelf_FirstOrder_Sm'},
                  {name: 'Low Pass', value: 2, icon: 'Missing_Sm'},
                  {name: 'high pass', value: 3, icon: 'HighShelf_FirstOrder_Sm'}]);
}
})";

/// Two 16-pixel pictures drawn for the window's scale; every other name resolves to none.
qormarltess::ImageSupplyFunction Pictures(float scale) {
    return [scale](const std::string& name) -> qorcore::IntrusivePtr<qorui::penrig::Image> {
        const char* path = name == "LowShelf_FirstOrder_Sm"    ? "M4 9h5C16 9 16 23 23 23h5"
                           : name == "HighShelf_FirstOrder_Sm" ? "M4 23h5C16 23 16 9 23 9h5"
                                                               : nullptr;
        if (!path)
            return {};
        const std::string svg = std::string("<svg xmlns='http://www.w3.org/2000/svg' width='32' "
                                            "height='32'><path d='") +
                                path + "' fill='none' stroke='#3060c0' stroke-width='3'/></svg>";
        return qorui::penrig::Image::LoadSVG(
            {reinterpret_cast<const std::uint8_t*>(svg.data()), svg.size()}, scale, 2.0f);
    };
}

std::unique_ptr<TessScene> MakeScene(const std::string& layout, float scale = 1.0f) {
    qormarltess::UI_Tess engine(nullptr);
    engine.SetImageSupplyFunction(Pictures(scale));
    auto scene = std::make_unique<TessScene>(kSheet, layout, scale, &engine);
    // Room for the menus below the popups.
    const auto frame = scene->root->GetFrame();
    scene->window->SetSize(frame.width + 90, frame.height + 170);
    return scene;
}

qorui::UI_Popup& PopupOf(TessScene& scene, const char* identifier) {
    return dynamic_cast<qorui::UI_Popup&>(scene.Control(identifier));
}

/// Opens a popup's menu with a click and runs `inside` while it is open.
void WithMenu(TessScene& scene, const char* popup,
              const std::function<void(UI_MenuOverlay&)>& inside) {
    bool opened = false;
    qorui::testing::ScopedModalResponder responder([&](qorui::UI_ModalOverlay& overlay) {
        opened = true;
        inside(dynamic_cast<UI_MenuOverlay&>(overlay));
    });
    scene.window->AdvanceTime(1.0); // a click of its own, not the second of a double click
    scene.Click(popup);
    EXPECT_TRUE(opened) << popup;
}

void ClickRow(TessScene& scene, UI_MenuOverlay& menu, std::size_t row) {
    const auto centre = menu.GetItemRect(row).Center();
    scene.window->Click(centre.x, centre.y);
}

TEST(TessPopup, NaturalWidthFollowsTheStrategyTheCapAndTheIconColumn) {
    const std::string items = "items: [{name: 'Lo', value: 0}, {name: 'A much longer item'}]";
    const std::string pictures = "items: [{name: 'Lo', icon: 'LowShelf_FirstOrder_Sm'}, "
                                 "{name: 'A much longer item', icon: 'Missing_Sm'}]";
    const std::vector<std::pair<const char*, std::string>> popups = {
        {"Default", items},
        {"MaxItem", "measureStrategy: 'maxItem', " + items},
        {"First", "measureStrategy: @firstItem, " + items},
        {"OnlyFirst", "items: [{name: 'Lo'}]"},
        {"Capped", "popup_maximum_width_chars: 4, " + items},
        {"CappedLonger", "popup_maximum_width_chars: 4, items: [{name: 'An even longer item'}]"},
        {"NoCap", "popup_maximum_width_chars: -3, " + items},
        {"Column", "iconpopup_icon_column_width: 24, " + pictures},
        {"Picture", pictures},
    };
    std::string layout = "layout W { view column() {\n";
    for (const auto& [identifier, arguments] : popups)
        layout += std::string("popup(identifier: '") + identifier + "', " + arguments + ");\n";
    auto scene = MakeScene(layout + "} }");
    auto width = [&](const char* identifier) {
        return scene->Control(identifier).GetFrame().width;
    };
    const float widest = width("Default");
    EXPECT_EQ(width("MaxItem"), widest);
    EXPECT_EQ(width("NoCap"), widest) << "a count below one caps nothing";
    EXPECT_EQ(width("First"), width("OnlyFirst"));
    EXPECT_LT(width("First"), widest);
    EXPECT_EQ(width("Capped"), width("CappedLonger")) << "both cut at four characters";
    EXPECT_LT(width("Capped"), widest);
    EXPECT_GT(width("Capped"), width("OnlyFirst"));
    EXPECT_EQ(width("Column"), widest + 24) << "the column is there though its picture is not";
    EXPECT_EQ(width("Picture"), widest + 16 + 4) << "the picture's width and four";
}

TEST(TessPopup, AValueOfNoItemShowsTheCustomRowOrNothing) {
    qorcore::Localizer::Get().AddEntry("$$$/qoraudiofiltersui/Popup/Custom", "Eigene");
    auto scene = MakeScene(kLayout);
    qorui::UI_Popup& slope = PopupOf(*scene, "Slope");
    qorui::UI_Popup& plain = PopupOf(*scene, "Plain");
    scene->Set("slope", any_regular_t(7.0));
    EXPECT_EQ(slope.GetDisplayedText(), "Eigene");
    EXPECT_EQ(plain.GetDisplayedText(), "");
    EXPECT_EQ(plain.GetSelectedIndex(), -1);
    scene->Set("slope", any_regular_t(9.0));
    EXPECT_EQ(slope.GetDisplayedText(), "Eigene") << "a command's value is no choice";

    std::vector<qorui::OS_Menu::Item> rows;
    WithMenu(*scene, "Plain", [&](UI_MenuOverlay& menu) { rows = menu.GetMenu().GetItems(); });
    ASSERT_EQ(rows.size(), 3u);
    for (const auto& row : rows)
        EXPECT_FALSE(row.checked) << row.text;
    WithMenu(*scene, "Slope", [&](UI_MenuOverlay& menu) {
        rows = menu.GetMenu().GetItems();
        ClickRow(*scene, menu, rows.size() - 1); // the custom row can't be chosen
        EXPECT_TRUE(menu.IsRunning());
        ClickRow(*scene, menu, 1);
    });
    ASSERT_EQ(rows.size(), 9u);
    EXPECT_TRUE(rows[7].IsSeparator());
    EXPECT_EQ(rows[8].text, "Eigene");
    EXPECT_FALSE(rows[8].enabled);
    EXPECT_TRUE(rows[8].checked);
    EXPECT_EQ(scene->Get("slope"), any_regular_t(2.0));
    EXPECT_EQ(slope.GetDisplayedText(), "12dB/Oct");
    WithMenu(*scene, "Slope", [&](UI_MenuOverlay& menu) { rows = menu.GetMenu().GetItems(); });
    EXPECT_EQ(rows.size(), 7u) << "no custom row while an item is chosen";
    EXPECT_TRUE(rows[1].checked);
    qorcore::Localizer::Get().Clear();
}

TEST(TessPopup, CommandItemsWriteTheirActionAndKeepTheValue) {
    auto scene = MakeScene(kLayout);
    qorui::UI_Popup& slope = PopupOf(*scene, "Slope");
    struct Case {
        const char* popup;
        std::size_t row;
        any_regular_t slope, command, other;
    };
    const name_t idle("idle");
    const std::vector<Case> cases = {
        {"Slope", 5, any_regular_t(2.0), any_regular_t(name_t("reset")), any_regular_t(idle)},
        {"Slope", 6, any_regular_t(2.0), any_regular_t(name_t("reset")),
         any_regular_t(name_t("copy"))}, // the item's own output before the popup's
        {"Plain", 2, any_regular_t(2.0), any_regular_t(name_t("reset")),
         any_regular_t(name_t("copy"))}, // no output at all: nothing
        {"Slope", 0, any_regular_t(1.0), any_regular_t(name_t("reset")),
         any_regular_t(name_t("copy"))}, // empty action, bind and icon: an item as any
    };
    for (const Case& c : cases) {
        WithMenu(*scene, c.popup, [&](UI_MenuOverlay& menu) { ClickRow(*scene, menu, c.row); });
        EXPECT_EQ(scene->Get("slope"), c.slope) << c.popup << c.row;
        EXPECT_EQ(scene->Get("command"), c.command) << c.popup << c.row;
        EXPECT_EQ(scene->Get("other"), c.other) << c.popup << c.row;
    }
    EXPECT_EQ(slope.GetDisplayedText(), "6dB/Oct");
}

TEST(TessPopup, TypingInASearchableMenuMovesToTheItemThatStartsSo) {
    auto scene = MakeScene(kLayout);
    std::vector<int> highlights;
    WithMenu(*scene, "Shape", [&](UI_MenuOverlay& menu) {
        auto type = [&](const char* text, double pauseBefore) {
            scene->window->AdvanceTime(pauseBefore);
            scene->window->TypeText(text);
            highlights.push_back(menu.GetHighlightedIndex());
        };
        type("h", 0.0);
        type("I", 0.5);
        type("x", 0.5); // no item starts so: the highlight stays
        type("l", 1.5); // a new search after a pause
        type("ow", 0.2);
        scene->window->PressKey(qorui::KeyboardCode::kSpace); // inside a search: no choice
        EXPECT_TRUE(menu.IsRunning());
        type(" P", 0.2);
        scene->window->PressKey(qorui::KeyboardCode::kReturn);
    });
    EXPECT_EQ(highlights, (std::vector<int>{1, 1, 1, 0, 0, 2}));
    EXPECT_EQ(scene->Get("shape"), any_regular_t(2.0));

    // Without `is_searchable` typing moves nothing; arrows and Return still work.
    WithMenu(*scene, "Slope", [&](UI_MenuOverlay& menu) {
        scene->window->TypeText("1");
        EXPECT_EQ(menu.GetHighlightedIndex(), -1);
        for (int i = 0; i < 3; ++i)
            scene->window->PressKey(qorui::KeyboardCode::kDown);
        scene->window->PressKey(qorui::KeyboardCode::kReturn);
    });
    EXPECT_EQ(scene->Get("slope"), any_regular_t(3.0));
}

std::string FailureOf(const std::string& popup) {
    try {
        MakeScene("layout T {\nview column() {\n  " + popup + ";\n}\n}");
    } catch (const std::exception& error) {
        return vorlen::format_stream_error(error);
    }
    return "no failure";
}

TEST(TessPopup, ArgumentsOfTheWrongKindFailAtTheirPlaceAndBadSizesTakeTheDefaults) {
    for (const char* popup :
         {"popup(measureStrategy: 3, items: [])", "popup(items: [{name: 'a', action: 4}])",
          "popup(items: [{name: 'a', action: @go, bind_output: 'text'}])",
          "popup(items: [{name: 'a', icon: 7}])", "popup(include_custom_item: 'yes', items: [])",
          "popup(popup_maximum_width_chars: 'many', items: [])"})
        EXPECT_EQ(FailureOf(popup).rfind("test.tss:3:3: ", 0), 0u) << popup;
    EXPECT_EQ(FailureOf("popup(iconpopup_item_height: -4, iconpopup_font_size: 0, "
                        "iconpopup_icon_column_width: 1e300, popup_maximum_width_chars: 1e300, "
                        "items: [{name: 'a'}])"),
              "no failure");
}

class TessPopupGolden : public ::testing::TestWithParam<std::tuple<float, qorui::skins::Skin>> {};

TEST_P(TessPopupGolden, ClosedPopupsAndTheIconMenuDrawLikeTheirGolden) {
    const auto [scale, skin] = GetParam();
    qorui::skins::ScopedSkin look(skin);
    auto scene = MakeScene(kLayout, scale);
    scene->window->SetBackgroundColor(qorui::skins::GetContentBackgroundColor());
    const std::string name = std::string("tess_popups_") +
                             (skin == qorui::skins::Skin::kV7 ? "v7" : "classic") +
                             (scale == 2.0f ? "_2x" : "_1x");
    WithMenu(*scene, "Shape", [&](UI_MenuOverlay& menu) {
        const auto centre = menu.GetItemRect(2).Center();
        scene->window->MouseMove(centre.x, centre.y);
        scene->window->RenderAll();
        EXPECT_TRUE(qafui_testing::MatchesGolden(scene->window->GetImage(), name));
    });
}

INSTANTIATE_TEST_SUITE_P(LooksAndScales, TessPopupGolden,
                         ::testing::Combine(::testing::Values(1.0f, 2.0f),
                                            ::testing::Values(qorui::skins::Skin::kClassic,
                                                              qorui::skins::Skin::kV7)));

} // namespace
