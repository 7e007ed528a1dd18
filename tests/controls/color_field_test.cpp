// The colour field through the headless window: selecting by pointer and keyboard, the picker
// opened by a press and answered with OK or a cancel, the signals, and the grey of a disabled
// or unknown field.
#include "controls/color_field.hpp"
#include "platform/dialogs/color_picker_dialog.hpp"
#include "platform/skins/skins.hpp"
#include "platform/ui/headless_window.hpp"
#include "platform/ui/modal_testing.hpp"
#include "platform/widgets/control_recorder.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

using namespace qoraudiofiltersui;
using qafui_testing::ControlRecorder;
using qorcore::ColorRGBA;
using qorcore::IntrusivePtr;
using qorui::HeadlessWindow;
using qorui::KeyboardCode;
using sharedui::ColorPickerDialog;

namespace {

/// Counts a field's four signals, and which field each came from.
struct SignalCounter {
    explicit SignalCounter(ColorField& field) {
        auto count = [this](int& n) {
            return [this, &n](IntrusivePtr<ColorField> sender) {
                ++n;
                last = sender.get();
            };
        };
        connections.emplace_back(field.GetSelectionChangedSignal().Connect(count(selection)));
        connections.emplace_back(field.GetSingleClickSignal().Connect(count(single)));
        connections.emplace_back(field.GetDoubleClickSignal().Connect(count(twice)));
        connections.emplace_back(field.GetReturnKeyPressedSignal().Connect(count(returns)));
    }
    int selection = 0;
    int single = 0;
    int twice = 0;
    int returns = 0;
    ColorField* last = nullptr;
    std::vector<qorcore::ScopedConnection> connections;
};

class ColorFieldTest : public ::testing::Test {
protected:
    ColorFieldTest() {
        field->SetFrame({20, 20, 40, 24});
        field->SetValue({0.8f, 0.2f, 0.1f});
        window.AddNode(field);
    }
    /// Clicks the field with the picker answered by `answer`; returns how often it opened.
    int ClickWithPicker(std::function<void(ColorPickerDialog&)> answer) {
        int opened = 0;
        qorui::testing::ScopedModalResponder responder([&](qorui::UI_ModalOverlay& overlay) {
            ++opened;
            ASSERT_EQ(overlay.GetModalKind(), "color picker");
            auto& picker = dynamic_cast<ColorPickerDialog&>(overlay);
            EXPECT_EQ(field->GetColorPicker(), &picker);
            answer(picker);
        });
        window.AdvanceTime(1.0); // no double click with an earlier press
        window.Click(30, 30);
        return opened;
    }
    ColorRGBA PixelAt(float x, float y) {
        window.Render();
        return window.GetPixel(int(x), int(y));
    }

    HeadlessWindow window{200, 120};
    IntrusivePtr<ColorField> field = qorcore::MakeIntrusive<ColorField>();
};

bool Near(const ColorRGBA& a, const ColorRGBA& b, float tolerance = 1.0f / 255) {
    return std::abs(a.red - b.red) <= tolerance && std::abs(a.green - b.green) <= tolerance &&
           std::abs(a.blue - b.blue) <= tolerance && std::abs(a.alpha - b.alpha) <= tolerance;
}

TEST_F(ColorFieldTest, ValuesAreLimitedBelowOnlyAndMakeTheValueKnown) {
    auto fresh = qorcore::MakeIntrusive<ColorField>();
    EXPECT_EQ(fresh->GetValue(), ColorRGBA(0, 0, 0, 1));
    EXPECT_TRUE(fresh->GetAllowUserColorChange());
    EXPECT_FALSE(fresh->IsUserSelectable());
    EXPECT_FALSE(fresh->IsSelected());
    EXPECT_FALSE(fresh->IsSlashed());
    EXPECT_EQ(fresh->GetID(), 0u);

    field->SetValue({-0.5f, 1.5f, std::nanf(""), -1.0f});
    EXPECT_EQ(field->GetValue(), ColorRGBA(0, 1.5f, 0, 0));
    field->SetValueUnknown();
    ASSERT_TRUE(field->IsValueUnknown());
    window.Render();
    field->SetValue({0.1f, 0.2f, 0.3f});
    EXPECT_FALSE(field->IsValueUnknown());
    EXPECT_FALSE(window.GetDirtyRegion().IsEmpty()) << "a new value repaints";

    // The look's settings repaint too; the id is the caller's alone.
    for (const auto& change : std::vector<std::function<void()>>{
             [&] { field->SetSelected(true); }, [&] { field->SetSlashed(true); },
             [&] {
                 field->SetDrawSelectionState(false);
             }}) {
        window.Render();
        change();
        EXPECT_FALSE(window.GetDirtyRegion().IsEmpty());
    }
    field->SetID(7);
    EXPECT_EQ(field->GetID(), 7u);
}

TEST_F(ColorFieldTest, APressSelectsFirstThenOpensThePickerAndOkKeepsThePick) {
    SignalCounter signals(*field);
    ControlRecorder recorder(*field);
    const ColorRGBA start = field->GetValue();
    EXPECT_EQ(ClickWithPicker([&](ColorPickerDialog& picker) {
                  EXPECT_TRUE(field->IsSelected()) << "selected before the picker opens";
                  EXPECT_EQ(signals.selection, 1);
                  EXPECT_EQ(picker.GetOriginalColor(), start);
                  picker.ChangeColor({0.1f, 0.3f, 0.9f});
                  EXPECT_EQ(field->GetValue(), ColorRGBA(0.1f, 0.3f, 0.9f)) << "the swatch follows";
                  EXPECT_EQ(recorder.changed, 0) << "nobody hears before the picker closes";
                  picker.ChangeColor({0.2f, 0.6f, 0.4f});
                  EXPECT_TRUE(picker.PressButton(ColorPickerDialog::kResponseAccept));
              }),
              1);
    EXPECT_EQ(field->GetValue(), ColorRGBA(0.2f, 0.6f, 0.4f));
    EXPECT_EQ(recorder.changed, 1);
    EXPECT_EQ(field->GetColorPicker(), nullptr);
    EXPECT_TRUE(field->HasFocus());
    EXPECT_EQ(signals.single, 1) << "the release after the picker is a click";
    EXPECT_EQ(signals.last, field.get());
    EXPECT_TRUE(Near(PixelAt(40, 32), ColorRGBA(0.2f, 0.6f, 0.4f)));

    // Selected already: a press opens the picker without selecting again; OK without a change
    // tells nobody.
    EXPECT_EQ(ClickWithPicker([](ColorPickerDialog& picker) {
                  picker.PressButton(ColorPickerDialog::kResponseAccept);
              }),
              1);
    EXPECT_EQ(signals.selection, 1);
    EXPECT_EQ(recorder.changed, 1);
}

TEST_F(ColorFieldTest, ACancelledPickerPutsTheColourBackAndSaysSo) {
    ControlRecorder recorder(*field);
    const ColorRGBA start = field->GetValue();
    ClickWithPicker([&](ColorPickerDialog& picker) {
        picker.ChangeColor({0.0f, 1.0f, 0.0f});
        EXPECT_EQ(field->GetValue(), ColorRGBA(0, 1, 0));
        window.PressKey(KeyboardCode::kEscape);
    });
    EXPECT_EQ(field->GetValue(), start);
    EXPECT_EQ(recorder.changed, 1) << "the undone change is news to the listeners";
    EXPECT_TRUE(Near(PixelAt(40, 32), start));

    // The Cancel button after no change: nothing to tell.
    recorder.Clear();
    ClickWithPicker([](ColorPickerDialog& picker) {
        picker.PressButton(ColorPickerDialog::kResponseCancelButton);
    });
    EXPECT_EQ(field->GetValue(), start);
    EXPECT_EQ(recorder.changed, 0);
}

TEST_F(ColorFieldTest, WithoutUserColourChangeAPressOnlySelects) {
    field->SetAllowUserColorChange(false);
    SignalCounter signals(*field);
    EXPECT_EQ(ClickWithPicker([](ColorPickerDialog&) {}), 0);
    EXPECT_TRUE(field->IsSelected());
    EXPECT_EQ(signals.selection, 1);
    EXPECT_EQ(signals.single, 1);
    EXPECT_EQ(signals.twice, 0);
    // A second click at once is a double click: its press fires the double click signal.
    window.Click(30, 30);
    EXPECT_EQ(signals.twice, 1);
    EXPECT_EQ(signals.single, 2);
    EXPECT_EQ(signals.selection, 1);
    // Other buttons do nothing.
    window.AdvanceTime(1.0);
    window.Click(30, 30, qorui::MouseButton::kRight);
    EXPECT_EQ(signals.single, 2);
}

TEST_F(ColorFieldTest, ThePickerOpensOverTheWindowOfTheGivenParent) {
    HeadlessWindow other(480, 300);
    auto parent = qorcore::MakeIntrusive<qorui::UI_Node>();
    parent->SetFrame(other.GetBounds());
    other.AddNode(parent);
    field->SetParentWindowForDialog(parent.get());
    EXPECT_EQ(field->GetParentWindowForDialog(), parent.get());
    ClickWithPicker([&](ColorPickerDialog& picker) {
        EXPECT_EQ(picker.GetWindow(), &other);
        picker.PressButton(ColorPickerDialog::kResponseAccept);
    });
    // A parent outside any window falls back on the field's own.
    parent->RemoveFromParent();
    ClickWithPicker([&](ColorPickerDialog& picker) {
        EXPECT_EQ(picker.GetWindow(), &window);
        picker.Cancel();
    });
}

TEST_F(ColorFieldTest, TheKeyboardSelectsOnlyASelectableField) {
    field->SetAllowUserColorChange(false);
    SignalCounter signals(*field);
    ASSERT_TRUE(field->UI_RequestFocus());
    window.PressKey(KeyboardCode::kSpace);
    window.PressKey(KeyboardCode::kReturn);
    EXPECT_FALSE(field->IsSelected());
    EXPECT_EQ(signals.selection + signals.returns, 0);

    field->SetUserSelectable(true);
    EXPECT_FALSE(window.KeyDown(KeyboardCode::kSpace)) << "keys are never consumed";
    EXPECT_TRUE(field->IsSelected());
    EXPECT_EQ(signals.selection, 1);
    window.KeyUp(KeyboardCode::kSpace);
    window.PressKey(KeyboardCode::kSpace); // selected already
    EXPECT_EQ(signals.selection, 1);
    window.KeyDown(KeyboardCode::kReturn);
    EXPECT_EQ(signals.returns, 0) << "Return counts on its way up";
    window.KeyUp(KeyboardCode::kReturn);
    EXPECT_EQ(signals.returns, 1);

    // The platform's key codes: 32 for Space, 13 and -13 for Return.
    using qorui::KeyAction;
    field->SetSelected(false);
    window.DispatchKeyboardEvent({KeyAction::kKeyDown, KeyboardCode::kUnknown, {}, 32});
    EXPECT_TRUE(field->IsSelected());
    EXPECT_EQ(signals.selection, 2);
    window.DispatchKeyboardEvent({KeyAction::kKeyUp, KeyboardCode::kUnknown, {}, 13});
    window.DispatchKeyboardEvent({KeyAction::kKeyUp, KeyboardCode::kUnknown, {}, -13});
    EXPECT_EQ(signals.returns, 3);
    window.DispatchKeyboardEvent({KeyAction::kKeyUp, KeyboardCode::kUnknown, {}, 65});
    EXPECT_EQ(signals.returns, 3);

    // Without the focus the keys belong to someone else.
    field->SetSelected(false);
    window.SetFocusNode(nullptr);
    window.PressKey(KeyboardCode::kSpace);
    EXPECT_FALSE(field->IsSelected());
}

TEST_F(ColorFieldTest, DisabledOrUnknownShowsGreyAndADisabledFieldIgnoresPresses) {
    const ColorRGBA grey(0.4f, 0.4f, 0.4f);
    EXPECT_TRUE(Near(PixelAt(40, 32), field->GetValue()));
    field->SetDisabled(true);
    EXPECT_TRUE(Near(PixelAt(40, 32), grey));
    SignalCounter signals(*field);
    EXPECT_EQ(ClickWithPicker([](ColorPickerDialog&) {}), 0);
    EXPECT_FALSE(field->IsSelected());
    EXPECT_EQ(signals.selection + signals.single, 0);
    field->SetValue({0.0f, 0.0f, 1.0f});
    EXPECT_TRUE(Near(PixelAt(40, 32), grey)) << "whatever the value";

    field->SetDisabled(false);
    field->SetValueUnknown();
    EXPECT_TRUE(Near(PixelAt(24, 24), grey));
    // The question mark: dark pixels in the middle of the swatch.
    int dark = 0;
    window.Render();
    for (int y = 22; y < 42; ++y)
        for (int x = 30; x < 50; ++x)
            dark += window.GetPixel(x, y).red < 0.2f;
    EXPECT_GT(dark, 5);
}

TEST_F(ColorFieldTest, SelectionAndSlashChangeTheFrameAndTheSwatch) {
    field->SetValue({1.0f, 1.0f, 1.0f});
    EXPECT_TRUE(Near(PixelAt(20, 20), ColorRGBA(0, 0, 0))) << "a black frame";
    EXPECT_TRUE(Near(PixelAt(21, 21), ColorRGBA(1, 1, 1)));
    field->SetUserSelectable(true);
    EXPECT_TRUE(Near(PixelAt(21, 21), ColorRGBA(0, 0, 0))) << "inset by a pixel";
    EXPECT_TRUE(Near(PixelAt(20, 20), window.GetBackgroundColor()));
    field->SetSelected(true);
    const ColorRGBA button = qorui::skins::GetButtonColor();
    EXPECT_TRUE(Near(PixelAt(20, 20), button));
    EXPECT_TRUE(Near(PixelAt(21, 21), button));
    field->SetDrawSelectionState(false);
    EXPECT_TRUE(Near(PixelAt(21, 21), ColorRGBA(0, 0, 0)));

    // The slash runs from the bottom left to the top right, four pixels from the corners.
    field->SetSlashed(true);
    window.Render();
    auto reddish = [&](int x, int y) {
        const ColorRGBA c = window.GetPixel(x, y);
        return c.red > 0.9f && c.green < 0.6f;
    };
    const int middleX = 40;
    const int middleY = 32;
    bool crossesMiddle = false;
    for (int dy = -1; dy <= 1; ++dy)
        crossesMiddle = crossesMiddle || reddish(middleX, middleY + dy);
    EXPECT_TRUE(crossesMiddle);
    EXPECT_FALSE(reddish(23, 23)) << "top left stays clear";
    EXPECT_FALSE(reddish(56, 40)) << "bottom right stays clear";
}

} // namespace
