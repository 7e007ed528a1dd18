// Modal dialogs through the headless window: answered by the responder, clicked, typed into,
// confirmed with Return, cancelled with Escape, modal towards the views below, and their looks.
#include "golden_image.hpp"
#include "platform/dialogs/color_picker_dialog.hpp"
#include "platform/dialogs/curve_point_edit_dialog.hpp"
#include "platform/dialogs/ui_modal_dialog.hpp"
#include "platform/skins/skins.hpp"
#include "platform/ui/headless_window.hpp"
#include "platform/ui/modal_testing.hpp"
#include "platform/widgets/ui_text_field.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

using namespace qorui;
using qorcore::ColorRGBA;
using qormediaui::CurvePointEditDialog;
using sharedui::ColorPickerDialog;

namespace {

class CountingNode : public UI_Node {
public:
    bool UI_DoMouseEvent(const MouseEvent& event) override {
        presses += event.IsAction(PointerAction::kPress);
        return true;
    }
    int presses = 0;
};

// A window filled by the view a dialog is opened over.
struct DialogWindow {
    DialogWindow(float width, float height, float scale = 1.0f) : window(width, height, scale) {
        below->SetFrame(window.GetBounds());
        window.AddNode(below);
    }
    void ClickCentre(const RectT<float>& r) { window.Click(r.Center().x, r.Center().y); }
    HeadlessWindow window;
    IntrusivePtr<CountingNode> below = qorcore::MakeIntrusive<CountingNode>();
};

struct DialogScene : DialogWindow {
    DialogScene() : DialogWindow(400, 300) {}
    int Run(std::function<void(UI_ModalDialog&)> answer) {
        IntrusivePtr<UI_ModalDialog> dialog(new UI_ModalDialog("Edit Point", 200, 60));
        dialog->AddButton(1, "OK");
        dialog->AddButton(2, "Cancel");
        qorui::testing::ScopedModalResponder responder(
            [&](UI_ModalOverlay& overlay) { answer(dynamic_cast<UI_ModalDialog&>(overlay)); });
        return dialog->RunModal(window);
    }
};

TEST(ModalDialogTest, ButtonsKeysAndCancelGiveTheirResponses) {
    DialogScene scene;
    EXPECT_EQ(scene.Run([](UI_ModalDialog& d) { EXPECT_TRUE(d.PressButton(2)); }), 2);
    EXPECT_EQ(scene.Run([&](UI_ModalDialog& d) { scene.ClickCentre(d.GetButtonRect(1)); }), 2);
    EXPECT_EQ(scene.Run([&](UI_ModalDialog&) { scene.window.PressKey(KeyboardCode::kReturn); }), 1);
    EXPECT_EQ(scene.Run([&](UI_ModalDialog&) { scene.window.PressKey(KeyboardCode::kEscape); }), 0);
    // A press that leaves the button before the release presses nothing; a press outside the
    // panel neither closes the dialog nor reaches the view below.
    EXPECT_EQ(scene.Run([&](UI_ModalDialog& d) {
        const auto r = d.GetButtonRect(0);
        scene.window.MouseDown(r.Center().x, r.Center().y);
        scene.window.MouseUp(r.Center().x, r.Bottom() + 30);
        scene.window.Click(5, 5);
        EXPECT_TRUE(d.IsRunning());
        EXPECT_FALSE(d.PressButton(9));
    }),
              0);
    EXPECT_EQ(scene.below->presses, 0);
    EXPECT_EQ(scene.window.GetRoot()->GetChildCount(), 1u);
    EXPECT_THROW(UI_ModalDialog("Bad", 0, 10), std::invalid_argument);
    UI_ModalDialog dialog("Buttons", 10, 10);
    EXPECT_THROW(dialog.AddButton(0, "Zero"), std::invalid_argument);
}

TEST(ShowNoteTest, NoteShowsItsTextAndIsDismissed) {
    DialogScene scene;
    std::string seenKind, seenText;
    int result = -1;
    {
        qorui::testing::ScopedModalResponder responder([&](UI_ModalOverlay& overlay) {
            seenKind = overlay.GetModalKind();
            auto& note = dynamic_cast<messagebox::UI_NoteDialog&>(overlay);
            seenText = note.GetText();
            EXPECT_EQ(note.GetTitle(), "Curve Editor");
            scene.window.RenderAll();
            scene.ClickCentre(note.GetButtonRect(0));
            result = note.GetResponse();
        });
        messagebox::ShowNote(scene.below.get(), "Curve Editor", "Current graph is not invertable");
    }
    EXPECT_EQ(seenKind, "note");
    EXPECT_EQ(seenText, "Current graph is not invertable");
    EXPECT_EQ(result, 1);
    auto loose = qorcore::MakeIntrusive<UI_Node>();
    EXPECT_THROW(messagebox::ShowNote(loose.get(), "T", "X"), std::invalid_argument);
    // Given the window directly, and with no responder: it ends cancelled instead of hanging.
    messagebox::ShowNote(nullptr, "T", "X", &scene.window);
    EXPECT_EQ(scene.window.GetRoot()->GetChildCount(), 1u);
}

struct EditScene : DialogWindow {
    explicit EditScene(float scale = 1.0f) : DialogWindow(400, 260, scale) {
        dialog = IntrusivePtr<CurvePointEditDialog>(
            new CurvePointEditDialog("Edit Point", "Input:", "Output:", below.get()));
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
    IntrusivePtr<CurvePointEditDialog> dialog;
};

TEST(CurvePointEditDialogTest, ResponderAnswersAndButtons) {
    EditScene scene;
    EXPECT_EQ(scene.Run([](CurvePointEditDialog& d) {
        d.GetHotTextNumber2()->SetValue(-3);
        d.PressButton(CurvePointEditDialog::kResponseAccept);
    }),
              CurvePointEditDialog::kResponseAccept);
    EXPECT_TRUE(scene.dialog->IsAccepted());
    EXPECT_EQ(scene.Value2(), -3);
    // The Cancel button, clicked.
    EXPECT_EQ(scene.Run([&](CurvePointEditDialog& d) { scene.ClickCentre(d.GetButtonRect(1)); }),
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
        scene.ClickCentre(d.GetFieldRect(2));
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
        scene.ClickCentre(d.GetFieldRect(1));
        EXPECT_EQ(d.GetHotTextNumber1()->GetTextField(), nullptr);
        EXPECT_EQ(d.GetHotTextNumber2()->GetTextField(), nullptr);
        scene.ClickCentre(d.GetButtonRect(0));
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

struct PickerScene : DialogWindow {
    explicit PickerScene(float scale = 1.0f) : DialogWindow(480, 300, scale) {
        picker = IntrusivePtr<ColorPickerDialog>(new ColorPickerDialog(below.get()));
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
    // Hue, saturation, value, red, green, blue as the fields show them.
    std::vector<double> Fields() const {
        std::vector<double> values;
        for (int f = 0; f < ColorPickerDialog::kFieldCount; ++f)
            values.push_back(Field(ColorPickerDialog::Field(f)));
        return values;
    }
    void Type(ColorPickerDialog::Field f, const std::string& text) {
        window.AdvanceTime(1); // no double click with the last one
        ClickCentre(picker->GetFieldRect(f));
        ASSERT_NE(picker->GetField(f)->GetTextField(), nullptr);
        window.TypeText(text);
        window.PressKey(KeyboardCode::kReturn);
        window.AdvanceTime(0.01);
    }
    IntrusivePtr<ColorPickerDialog> picker;
    int changes = 0;
};

TEST(ColorPickerDialogTest, FieldsShowTheColourInBothModels) {
    PickerScene scene;
    scene.picker->SetColor({1.0f, 0.5f, 0.0f, 0.25f});
    EXPECT_EQ(scene.Fields(), (std::vector<double>{30, 100, 100, 255, 128, 0}));
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
        EXPECT_EQ(scene.Fields(), (std::vector<double>{120, 100, 100, 0, 255, 0}));
        scene.Type(ColorPickerDialog::kBlue, "300"); // limited to 255
        EXPECT_EQ(d.GetColor(), ColorRGBA(0, 1, 1, 0.5f));
        EXPECT_EQ(scene.Field(ColorPickerDialog::kHue), 180);
        // Value 0 is black; the hue and saturation the user set survive it.
        scene.Type(ColorPickerDialog::kValue, "0");
        EXPECT_EQ(d.GetColor(), ColorRGBA(0, 0, 0, 0.5f));
        EXPECT_EQ(scene.Fields(), (std::vector<double>{180, 100, 0, 0, 0, 0}));
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
