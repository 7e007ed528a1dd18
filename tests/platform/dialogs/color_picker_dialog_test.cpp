// The colour picker through the headless window: the fields follow the colour both ways, the
// changed function runs on each change, OK keeps the colour and a cancel puts it back.
#include "golden_image.hpp"
#include "platform/dialogs/color_picker_dialog.hpp"
#include "platform/skins/skins.hpp"
#include "platform/ui/headless_window.hpp"
#include "platform/ui/modal_testing.hpp"
#include "platform/widgets/ui_text_field.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

using namespace qorui;
using qorcore::ColorRGBA;
using sharedui::ColorPickerDialog;

namespace {

struct PickerScene {
    explicit PickerScene(float scale = 1.0f) : window(480, 300, scale) {
        parent = qorcore::MakeIntrusive<UI_Node>();
        parent->SetFrame(window.GetBounds());
        window.AddNode(parent);
        picker = IntrusivePtr<ColorPickerDialog>(new ColorPickerDialog(parent.get()));
        picker->InstallColorChangedFunction([this] { ++changes; });
    }
    int Run(std::function<void(ColorPickerDialog&)> answer) {
        qorui::testing::ScopedModalResponder responder([&](UI_ModalOverlay& overlay) {
            EXPECT_EQ(overlay.GetModalKind(), "color picker");
            answer(dynamic_cast<ColorPickerDialog&>(overlay));
        });
        return picker->RunModal();
    }
    double Field(ColorPickerDialog::Field f) const { return picker->GetField(f)->GetValue(); }
    void Type(ColorPickerDialog::Field f, const std::string& text) {
        const auto c = picker->GetFieldRect(f).Center();
        window.AdvanceTime(1); // no double click with the last one
        window.Click(c.x, c.y);
        ASSERT_NE(picker->GetField(f)->GetTextField(), nullptr);
        window.TypeText(text);
        window.PressKey(KeyboardCode::kReturn);
        window.AdvanceTime(0.01);
    }
    HeadlessWindow window;
    IntrusivePtr<UI_Node> parent;
    IntrusivePtr<ColorPickerDialog> picker;
    int changes = 0;
};

TEST(ColorPickerDialogTest, FieldsShowTheColourInBothModels) {
    PickerScene scene;
    scene.picker->SetColor({1.0f, 0.5f, 0.0f, 0.25f});
    EXPECT_EQ(scene.Field(ColorPickerDialog::kRed), 255);
    EXPECT_EQ(scene.Field(ColorPickerDialog::kGreen), 128);
    EXPECT_EQ(scene.Field(ColorPickerDialog::kBlue), 0);
    EXPECT_EQ(scene.Field(ColorPickerDialog::kHue), 30);
    EXPECT_EQ(scene.Field(ColorPickerDialog::kSaturation), 100);
    EXPECT_EQ(scene.Field(ColorPickerDialog::kValue), 100);
    EXPECT_EQ(scene.changes, 0); // set from code
    // Out of range and not-a-number components are limited.
    scene.picker->SetColor({2.0f, -1.0f, std::nanf(""), 1.0f});
    EXPECT_EQ(scene.picker->GetColor(), ColorRGBA(1, 0, 0, 1));
    EXPECT_THROW(scene.picker->GetField(ColorPickerDialog::kFieldCount), std::out_of_range);
    EXPECT_TRUE(scene.picker->GetFieldRect(-1).IsEmpty());
    ColorPickerDialog loose(nullptr);
    EXPECT_THROW(loose.RunModal(), std::invalid_argument);
}

TEST(ColorPickerDialogTest, TypedValuesChangeTheColourAndOkKeepsIt) {
    PickerScene scene;
    scene.picker->SetColor({1.0f, 0.0f, 0.0f, 0.5f});
    EXPECT_EQ(scene.Run([&](ColorPickerDialog& d) {
        scene.Type(ColorPickerDialog::kHue, "120"); // pure green
        EXPECT_EQ(d.GetColor(), ColorRGBA(0, 1, 0, 0.5f));
        EXPECT_EQ(scene.Field(ColorPickerDialog::kGreen), 255);
        EXPECT_EQ(scene.Field(ColorPickerDialog::kRed), 0);
        scene.Type(ColorPickerDialog::kBlue, "300"); // limited to 255
        EXPECT_EQ(d.GetColor(), ColorRGBA(0, 1, 1, 0.5f));
        EXPECT_EQ(scene.Field(ColorPickerDialog::kHue), 180);
        // Value 0 is black; the hue and saturation the user set survive it.
        scene.Type(ColorPickerDialog::kValue, "0");
        EXPECT_EQ(d.GetColor(), ColorRGBA(0, 0, 0, 0.5f));
        EXPECT_EQ(scene.Field(ColorPickerDialog::kHue), 180);
        EXPECT_EQ(scene.Field(ColorPickerDialog::kSaturation), 100);
        scene.Type(ColorPickerDialog::kValue, "100");
        EXPECT_EQ(d.GetColor(), ColorRGBA(0, 1, 1, 0.5f));
        scene.window.PressKey(KeyboardCode::kReturn); // accepts
    }),
              ColorPickerDialog::kResponseAccept);
    EXPECT_EQ(scene.picker->GetColor(), ColorRGBA(0, 1, 1, 0.5f));
    EXPECT_EQ(scene.changes, 4);
}

TEST(ColorPickerDialogTest, CancelPutsTheOriginalBack) {
    PickerScene scene;
    scene.picker->SetColor({0.2f, 0.4f, 0.6f});
    const ColorRGBA original = scene.picker->GetColor();
    EXPECT_EQ(scene.Run([&](ColorPickerDialog& d) {
        scene.Type(ColorPickerDialog::kRed, "255");
        EXPECT_NE(d.GetColor(), original);
        scene.window.PressKey(KeyboardCode::kEscape);
    }),
              ColorPickerDialog::kResponseCancelled);
    EXPECT_EQ(scene.picker->GetColor(), original);
    EXPECT_EQ(scene.changes, 2); // the change and its undoing
    // A cancel without a change calls nothing.
    EXPECT_EQ(scene.Run([&](ColorPickerDialog& d) { d.PressButton(2); }),
              ColorPickerDialog::kResponseCancelButton);
    EXPECT_EQ(scene.changes, 2);
}

TEST(ColorPickerDialogGoldenTest, PickerLooksRightAt1xAnd2x) {
    for (const float scale : {1.0f, 2.0f}) {
        skins::ScopedSkin skin(skins::Skin::kClassic);
        PickerScene scene(scale);
        scene.picker->SetColor({0.85f, 0.45f, 0.1f});
        scene.Run([&](ColorPickerDialog& d) {
            d.ChangeColor({0.2f, 0.5f, 0.8f});
            scene.window.RenderAll();
            EXPECT_TRUE(qafui_testing::MatchesGolden(scene.window.GetImage(),
                                                     "color_picker_dialog_" +
                                                         std::to_string(int(scale)) + "x"));
        });
    }
}

} // namespace
