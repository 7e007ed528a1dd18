// The curve point edit dialog through the headless window: answered by the responder, typed
// into with Return and Escape, with limits, malformed input, a disabled field and its look.
#include "golden_image.hpp"
#include "platform/dialogs/curve_point_edit_dialog.hpp"
#include "platform/skins/skins.hpp"
#include "platform/ui/headless_window.hpp"
#include "platform/ui/modal_testing.hpp"
#include "platform/widgets/ui_text_field.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

using namespace qorui;
using qormediaui::CurvePointEditDialog;

namespace {

struct EditScene {
    explicit EditScene(float scale = 1.0f) : window(400, 260, scale) {
        parent = qorcore::MakeIntrusive<UI_Node>();
        parent->SetFrame(window.GetBounds());
        window.AddNode(parent);
        dialog = IntrusivePtr<CurvePointEditDialog>(
            new CurvePointEditDialog("Edit Point", "Input:", "Output:", parent.get()));
        for (UI_HotTextNumber* n : {dialog->GetHotTextNumber1(), dialog->GetHotTextNumber2()}) {
            n->SetMinValue(-100);
            n->SetMaxValue(0);
            n->SetTextLabel("dB");
        }
        dialog->GetHotTextNumber1()->SetValue(-20);
        dialog->GetHotTextNumber2()->SetValue(-10);
    }
    int Run(std::function<void(CurvePointEditDialog&)> answer) {
        qorui::testing::ScopedModalResponder responder([&](UI_ModalOverlay& overlay) {
            EXPECT_EQ(overlay.GetModalKind(), "curve point edit");
            answer(dynamic_cast<CurvePointEditDialog&>(overlay));
        });
        return dialog->RunModal();
    }
    double Value1() const { return dialog->GetHotTextNumber1()->GetValue(); }
    double Value2() const { return dialog->GetHotTextNumber2()->GetValue(); }
    HeadlessWindow window;
    IntrusivePtr<UI_Node> parent;
    IntrusivePtr<CurvePointEditDialog> dialog;
};

TEST(CurvePointEditDialogTest, ResponderAnswersAndButtons) {
    EditScene scene;
    EXPECT_EQ(scene.Run([](CurvePointEditDialog& d) {
        EXPECT_EQ(d.GetTitle(), "Edit Point");
        EXPECT_EQ(d.GetLabel1(), "Input:");
        d.GetHotTextNumber2()->SetValue(-3);
        d.PressButton(CurvePointEditDialog::kResponseAccept);
    }),
              CurvePointEditDialog::kResponseAccept);
    EXPECT_TRUE(scene.dialog->IsAccepted());
    EXPECT_EQ(scene.Value2(), -3);
    // The Cancel button, clicked.
    EXPECT_EQ(scene.Run([&](CurvePointEditDialog& d) {
        const auto r = d.GetButtonRect(1);
        scene.window.Click(r.Center().x, r.Center().y);
    }),
              CurvePointEditDialog::kResponseCancelButton);
    EXPECT_FALSE(scene.dialog->IsAccepted());
    // Nothing answering ends cancelled, and the dialog leaves the window.
    EXPECT_EQ(scene.dialog->RunModal(), CurvePointEditDialog::kResponseCancelled);
    EXPECT_EQ(scene.window.GetRoot()->GetChildCount(), 1u);
    // No window to run in.
    CurvePointEditDialog loose("Edit Point", "A", "B", nullptr);
    EXPECT_THROW(loose.RunModal(), std::invalid_argument);
    EXPECT_TRUE(loose.GetFieldRect(3).IsEmpty());
}

TEST(CurvePointEditDialogTest, TypingThenReturnAcceptsAndEscapeCancels) {
    EditScene scene;
    int finishes = 0;
    scene.dialog->GetHotTextNumber1()->NotifyWhenChangedInteractively(
        [&](const UI_InteractiveControlChangedMessage& m) {
            finishes += m.GetChangeMessage() == 2;
        });
    EXPECT_EQ(scene.Run([&](CurvePointEditDialog& d) {
        // The first number is open for typing at once.
        ASSERT_NE(d.GetHotTextNumber1()->GetTextField(), nullptr);
        scene.window.TypeText("-12.5");
        scene.window.PressKey(KeyboardCode::kReturn); // takes the text
        EXPECT_EQ(d.GetHotTextNumber1()->GetTextField(), nullptr);
        EXPECT_TRUE(d.IsRunning());
        scene.window.AdvanceTime(0.01);
        scene.window.PressKey(KeyboardCode::kReturn); // accepts the dialog
    }),
              CurvePointEditDialog::kResponseAccept);
    EXPECT_EQ(scene.Value1(), -12.5);
    EXPECT_EQ(finishes, 1);
    // Out of range is limited; a malformed text keeps the field open and marked, Escape drops
    // it, and a second Escape cancels the dialog.
    EXPECT_EQ(scene.Run([&](CurvePointEditDialog& d) {
        scene.window.TypeText("500");
        scene.window.PressKey(KeyboardCode::kReturn);
        EXPECT_EQ(scene.Value1(), 0);
        scene.window.AdvanceTime(0.01);
        const auto field = d.GetFieldRect(2).Center();
        scene.window.Click(field.x, field.y);
        UI_TextField* typing = d.GetHotTextNumber2()->GetTextField();
        ASSERT_NE(typing, nullptr);
        scene.window.TypeText("1e");
        scene.window.PressKey(KeyboardCode::kReturn);
        EXPECT_TRUE(typing->IsOpen());
        EXPECT_TRUE(typing->IsInvalid());
        scene.window.PressKey(KeyboardCode::kEscape);
        EXPECT_FALSE(typing->IsOpen());
        EXPECT_TRUE(d.IsRunning());
        EXPECT_EQ(scene.window.GetFocusNode(), &d);
        scene.window.PressKey(KeyboardCode::kEscape);
        EXPECT_FALSE(d.IsRunning());
    }),
              CurvePointEditDialog::kResponseCancelled);
    EXPECT_EQ(scene.Value2(), -10);
}

TEST(CurvePointEditDialogTest, DisabledNumberIsSkippedAndClicksMoveTyping) {
    EditScene scene;
    scene.dialog->GetHotTextNumber1()->UI_SetEnabled(false);
    EXPECT_EQ(scene.Run([&](CurvePointEditDialog& d) {
        EXPECT_EQ(d.GetHotTextNumber1()->GetTextField(), nullptr);
        ASSERT_NE(d.GetHotTextNumber2()->GetTextField(), nullptr);
        scene.window.TypeText("-40");
        // A click on the disabled number takes what was typed but opens nothing there.
        const auto first = d.GetFieldRect(1).Center();
        scene.window.Click(first.x, first.y);
        EXPECT_EQ(d.GetHotTextNumber1()->GetTextField(), nullptr);
        EXPECT_EQ(d.GetHotTextNumber2()->GetTextField(), nullptr);
        const auto ok = d.GetButtonRect(0).Center();
        scene.window.Click(ok.x, ok.y);
    }),
              CurvePointEditDialog::kResponseAccept);
    EXPECT_EQ(scene.Value1(), -20);
    EXPECT_EQ(scene.Value2(), -40);
}

TEST(CurvePointEditDialogGoldenTest, DialogLooksRightAt1xAnd2x) {
    for (const float scale : {1.0f, 2.0f}) {
        skins::ScopedSkin skin(skins::Skin::kClassic);
        EditScene scene(scale);
        scene.Run([&](CurvePointEditDialog&) {
            scene.window.RenderAll();
            EXPECT_TRUE(qafui_testing::MatchesGolden(scene.window.GetImage(),
                                                     "curve_point_edit_dialog_" +
                                                         std::to_string(int(scale)) + "x"));
        });
    }
}

} // namespace
