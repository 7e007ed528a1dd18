// UI_Popup (items, value by index and by text, the menu, keys), UI_Knob (drag, keys, wheel,
// double click), and the passive pieces: outline boxes, dividers and image views.
#include "control_recorder.hpp"
#include "platform/draw/image.hpp"
#include "platform/menus/ui_menu_overlay.hpp"
#include "platform/panels/ui_divider.hpp"
#include "platform/panels/ui_image_view.hpp"
#include "platform/panels/ui_outline_box_with_label.hpp"
#include "platform/ui/headless_window.hpp"
#include "platform/ui/modal_testing.hpp"
#include "platform/widgets/ui_knob.hpp"
#include "platform/widgets/ui_popup.hpp"

#include <gtest/gtest.h>

#include <cmath>

using namespace qorui;
using qafui_testing::ControlRecorder;

namespace {

class Popups : public ::testing::Test {
protected:
    void SetUp() override {
        popup = qorcore::MakeIntrusive<UI_Popup>();
        popup->SetFrame({10, 10, 120, 22});
        popup->SetItems({"Linear", "Logarithmic", "-", "Fader"});
        window.AddNode(popup);
    }

    HeadlessWindow window{300, 200};
    qorcore::IntrusivePtr<UI_Popup> popup;
};

} // namespace

TEST_F(Popups, ValueByIndexAndByText) {
    EXPECT_EQ(popup->GetValue(), -1.0) << "nothing chosen at first";
    EXPECT_EQ(popup->GetValueString(), "");
    popup->SetValue(1);
    EXPECT_EQ(popup->GetValueString(), "Logarithmic");
    popup->SetValue(2);
    EXPECT_EQ(popup->GetValue(), -1.0) << "a separator can't be chosen";
    popup->SetValue(9);
    EXPECT_EQ(popup->GetValue(), -1.0);
    popup->SetValue(0.5);
    EXPECT_EQ(popup->GetValue(), -1.0) << "between two rows is no row";

    EXPECT_TRUE(popup->SetValueString("Fader"));
    EXPECT_EQ(popup->GetValue(), 3.0);
    EXPECT_FALSE(popup->SetValueString("fader")) << "the text must match exactly";
    EXPECT_EQ(popup->GetValue(), -1.0);
    EXPECT_FALSE(popup->SetValueString("-"));

    popup->DeleteAllItems();
    EXPECT_EQ(popup->GetItemCount(), 0u);
    EXPECT_EQ(popup->GetValue(), -1.0);
    for (int size = 32; size <= 32768; size *= 2)
        popup->AddItem(std::to_string(size));
    EXPECT_EQ(popup->GetItemCount(), 11u);
    EXPECT_TRUE(popup->SetValueString("4096"));
    EXPECT_EQ(popup->GetValue(), 7.0);
    EXPECT_EQ(popup->GetItemText(10), "32768");
    EXPECT_EQ(popup->GetItemText(11), "");
}

TEST_F(Popups, UpAndDownChooseTheNeighbourSkippingSeparators) {
    ControlRecorder recorder(*popup);
    ASSERT_TRUE(popup->UI_RequestFocus());
    window.PressKey(KeyboardCode::kDown);
    EXPECT_EQ(popup->GetValue(), 0.0);
    window.PressKey(KeyboardCode::kDown);
    window.PressKey(KeyboardCode::kDown);
    EXPECT_EQ(popup->GetValue(), 3.0) << "over the separator";
    window.PressKey(KeyboardCode::kDown);
    EXPECT_EQ(popup->GetValue(), 3.0) << "no wrap at the end";
    window.PressKey(KeyboardCode::kUp);
    EXPECT_EQ(popup->GetValue(), 1.0);
    EXPECT_EQ(recorder.changedValues, (std::vector<double>{0, 1, 3, 1}));
    EXPECT_EQ(recorder.Folded(), (std::vector<int>{0, 1, 2, 0, 1, 2, 0, 1, 2, 0, 1, 2}));
}

TEST_F(Popups, APressOpensTheMenuAndTheChoiceIsTheValue) {
    ControlRecorder recorder(*popup);
    popup->SetValue(0);
    std::vector<OS_Menu::Item> shown;
    {
        qorui::testing::ScopedModalResponder responder([&](UI_ModalOverlay& overlay) {
            auto* menu = dynamic_cast<UI_MenuOverlay*>(&overlay);
            ASSERT_NE(menu, nullptr);
            shown = menu->GetMenu().GetItems();
            EXPECT_TRUE(menu->ChooseItem(4)); // "Fader", the fourth row
        });
        window.Click(50, 20);
    }
    ASSERT_EQ(shown.size(), 4u);
    EXPECT_TRUE(shown[0].checked) << "the current choice carries the check";
    EXPECT_TRUE(shown[2].IsSeparator());
    EXPECT_EQ(shown[3].text, "Fader");
    EXPECT_EQ(popup->GetValue(), 3.0);
    EXPECT_EQ(recorder.changedValues, (std::vector<double>{3}));

    // A cancelled menu changes nothing; the same choice again is news only when asked.
    {
        qorui::testing::ScopedModalResponder responder([](UI_ModalOverlay&) {});
        window.AdvanceTime(1);
        window.Click(50, 20);
        EXPECT_EQ(popup->GetValue(), 3.0);
    }
    popup->ChooseItem(3);
    EXPECT_EQ(recorder.changed, 1);
    popup->SetAlwaysNotify(true);
    popup->ChooseItem(3);
    EXPECT_EQ(recorder.changed, 2);
}

TEST_F(Popups, CommandItemsAreNeverTheValueAndKeysPassOverThem) {
    ControlRecorder recorder(*popup);
    std::vector<int> commands;
    popup->SetCommandHandler([&](int index) { commands.push_back(index); });
    popup->SetValue(1);
    popup->SetItemCommand(1, true);
    EXPECT_EQ(popup->GetValue(), -1.0) << "the chosen item became a command";
    popup->SetValue(1);
    EXPECT_EQ(popup->GetValue(), -1.0);
    EXPECT_FALSE(popup->SetValueString("Logarithmic"));
    popup->ChooseItem(1);
    EXPECT_EQ(popup->GetValue(), -1.0);
    ASSERT_TRUE(popup->UI_RequestFocus());
    window.PressKey(KeyboardCode::kDown);
    window.PressKey(KeyboardCode::kDown);
    EXPECT_EQ(popup->GetValue(), 3.0) << "over the command and the separator";
    EXPECT_EQ(commands, (std::vector<int>{1}));
    EXPECT_EQ(recorder.changedValues, (std::vector<double>{0, 3}));
}

TEST(Knob, DragKeysWheelAndDoubleClick) {
    HeadlessWindow window(200, 200);
    auto knob = qorcore::MakeIntrusive<UI_Knob>();
    knob->SetFrame({50, 50, 40, 40});
    EXPECT_FALSE(knob->SetRange(1, 1));
    EXPECT_TRUE(knob->SetRange(-24, 24));
    knob->SetDefaultValue(0);
    knob->SetValue(0);
    window.AddNode(knob);
    ControlRecorder recorder(*knob);

    window.MouseDown(70, 70);
    window.MouseMove(70, 20); // 50 up: a quarter of the range
    EXPECT_DOUBLE_EQ(knob->GetValue(), 12.0);
    window.MouseMove(70, 0, ModifierKey::kShift); // 70 up, slowly
    EXPECT_NEAR(knob->GetValue(), 70.0 / 200 * 0.1 * 48, 1e-9);
    window.MouseUp(70, 0);
    EXPECT_EQ(recorder.messages, (std::vector<int>{0, 1, 1, 2}));
    EXPECT_FALSE(knob->GetDownState());

    recorder.Clear();
    window.AdvanceTime(1);
    window.MouseDown(70, 70);
    window.MouseMove(300, 70);
    EXPECT_EQ(knob->GetValue(), 24.0) << "limited to the range";
    window.PressKey(KeyboardCode::kEscape);
    EXPECT_NEAR(knob->GetValue(), 70.0 / 200 * 0.1 * 48, 1e-9);
    EXPECT_FALSE(knob->GetDownState());
    window.MouseUp(300, 70);
    EXPECT_EQ(recorder.Folded(), (std::vector<int>{0, 1, 3}));

    knob->SetValue(0);
    ASSERT_TRUE(knob->UI_RequestFocus());
    window.PressKey(KeyboardCode::kUp);
    EXPECT_NEAR(knob->GetValue(), 0.48, 1e-9);
    window.MouseWheel(70, 70, -1.0f);
    EXPECT_NEAR(knob->GetValue(), 0.0, 1e-9);

    knob->SetValue(10);
    window.AdvanceTime(1);
    window.Click(70, 70);
    window.Click(70, 70);
    EXPECT_EQ(knob->GetValue(), 0.0) << "a double click returns to the default";
    EXPECT_DOUBLE_EQ(knob->GetNormalizedValue(), 0.5);
}

TEST(PassiveControls, OutlineBoxesDividersAndImages) {
    HeadlessWindow window(200, 120);
    window.SetBackgroundColor(qorcore::ColorRGBA(1, 1, 1));
    auto box = qorcore::MakeIntrusive<UI_OutlineBoxWithLabel>("Precision");
    box->SetFrame({10, 10, 120, 60});
    EXPECT_GT(box->GetContentTop(), 10.0f);
    auto divider = qorcore::MakeIntrusive<UI_Divider>();
    divider->SetFrame({10, 80, 120, 9});
    EXPECT_TRUE(divider->IsHorizontal());
    auto image = penrig::Image::Create(6, 6);
    image->Fill(qorcore::ColorRGBA(0, 0.5f, 0));
    auto view = qorcore::MakeIntrusive<UI_ImageView>(image);
    view->SetFrame({150, 10, 20, 20});
    window.AddNode(box);
    window.AddNode(divider);
    window.AddNode(view);
    window.Render();
    const qorcore::ColorRGBA white(1, 1, 1);
    // The divider is one crisp pixel row at its middle.
    EXPECT_NE(window.GetPixel(60, 84), white);
    EXPECT_EQ(window.GetPixel(60, 83), white);
    EXPECT_EQ(window.GetPixel(60, 85), white);
    // The box's left edge is one pixel column, and the caption breaks its top edge.
    EXPECT_NE(window.GetPixel(10, 50), white);
    EXPECT_EQ(window.GetPixel(11, 50), white);
    int topEdge = -1;
    for (int y = 10; y < 30 && topEdge < 0; ++y)
        if (window.GetPixel(125, y) != white)
            topEdge = y;
    ASSERT_GT(topEdge, 10) << "the frame starts below the box's top, level with the caption";
    EXPECT_EQ(window.GetPixel(125, topEdge + 1), white);
    const int gapX = 10 + 10 + 2; // inside the caption's gap, left of its first letter
    EXPECT_EQ(window.GetPixel(gapX, topEdge), white);
    // The image sits centred at its own size.
    const auto isImage = [](const qorcore::ColorRGBA& c) {
        return c.red < 0.05f && std::abs(c.green - 0.5f) < 0.01f && c.blue < 0.05f;
    };
    EXPECT_TRUE(isImage(window.GetPixel(157, 17)));
    EXPECT_TRUE(isImage(window.GetPixel(162, 22)));
    EXPECT_EQ(window.GetPixel(156, 16), white);
    EXPECT_EQ(window.GetPixel(163, 23), white);
}
