// Colour fields, colour views and picture toggles through the headless window: selecting by
// pointer and keyboard, the picker answered with OK or a cancel, the signals, repainting, and
// how every state looks against the goldens in both looks at 1x and 2x.
#include "controls/color_field.hpp"
#include "controls/color_view.hpp"
#include "controls/picture_toggle_button.hpp"
#include "golden_image.hpp"
#include "platform/dialogs/color_picker_dialog.hpp"
#include "platform/draw/image.hpp"
#include "platform/draw/penrig.hpp"
#include "platform/skins/skins.hpp"
#include "platform/ui/headless_window.hpp"
#include "platform/ui/modal_testing.hpp"
#include "platform/widgets/control_recorder.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <tuple>

using namespace qoraudiofiltersui;
using qafui_testing::ControlRecorder;
using qorcore::ColorRGBA;
using qorcore::IntrusivePtr;
using qorui::HeadlessWindow;
using qorui::KeyboardCode;
using sharedui::ColorPickerDialog;

namespace {

bool Near(const ColorRGBA& a, const ColorRGBA& b) {
    const float t = 1.0f / 255;
    return std::abs(a.red - b.red) <= t && std::abs(a.green - b.green) <= t &&
           std::abs(a.blue - b.blue) <= t && std::abs(a.alpha - b.alpha) <= t;
}

template <class T>
IntrusivePtr<T> Place(qorui::UI_Node& parent, const qorcore::RectT<float>& frame) {
    auto node = qorcore::MakeIntrusive<T>();
    node->SetFrame(frame);
    parent.ChildPushBack(node);
    return node;
}

/// A picture toggle's face: a ring, filled when on, or (`solid`) a square of one colour.
IntrusivePtr<qorui::penrig::Image> Face(const HeadlessWindow& window, const ColorRGBA& ink,
                                        bool filled, bool solid = false) {
    const int size = solid ? 16 : 18;
    auto image = window.GetDrawSupplier().CreateImage(size, size);
    auto penrig = window.GetDrawSupplier().CreatePenrig(*image);
    if (solid) {
        penrig->FillRect({0, 0, 16, 16}, ink);
        return image;
    }
    penrig->NewPath();
    penrig->FormEllipse({2, 2, 14, 14});
    if (filled) {
        penrig->SetColor(ink);
        penrig->Fill(true);
    }
    penrig->SetPen(1.5f, ink);
    penrig->Stroke();
    return image;
}

class ColorControlsGolden : public ::testing::TestWithParam<std::tuple<qorui::skins::Skin, float>> {
};

TEST_P(ColorControlsGolden, LooksLikeItsGolden) {
    const auto [skin, scale] = GetParam();
    qorui::skins::ScopedSkin look(skin);
    HeadlessWindow window(300, 84, scale);
    window.SetBackgroundColor(qorui::skins::GetContentBackgroundColor());
    qorui::UI_Node& root = *window.GetRoot();
    auto field = [&](float x, const ColorRGBA& color, bool selectable = false) {
        auto made = Place<ColorField>(root, {x, 10, 36, 22});
        made->SetUserSelectable(selectable);
        made->SetValue(color);
        return made;
    };
    // Plain; selectable, unselected and selected; slashed; unknown; disabled.
    field(10, {0.85f, 0.2f, 0.15f});
    field(54, {0.2f, 0.4f, 0.9f}, true);
    field(98, {0.3f, 0.75f, 0.35f}, true)->SetSelected(true);
    field(142, {0.95f, 0.85f, 0.3f}, true)->SetSlashed(true);
    field(186, {0, 0, 0})->SetValueUnknown();
    field(230, {0.6f, 0.2f, 0.7f})->SetDisabled(true);

    // A tinted panel holding a field and the two toggle states.
    auto panel = Place<ColorView>(root, {10, 42, 160, 34});
    panel->SetValue({0.82f, 0.88f, 0.95f});
    Place<ColorField>(*panel, {6, 6, 30, 22})->SetValue({0.1f, 0.1f, 0.1f});
    const ColorRGBA ink(0.15f, 0.45f, 0.75f);
    for (int i = 0; i < 2; ++i) {
        auto toggle = Place<PictureToggleButton>(*panel, {50.0f + 26 * i, 6, 22, 22});
        toggle->SetImages(Face(window, ink, false), Face(window, ink, true));
        toggle->SetState(i == 1);
    }

    window.RenderAll();
    const std::string name = std::string("color_controls_") +
                             (skin == qorui::skins::Skin::kClassic ? "classic" : "v7") + "_" +
                             std::to_string(int(scale)) + "x";
    EXPECT_TRUE(qafui_testing::MatchesGolden(window.GetImage(), name));
}

INSTANTIATE_TEST_SUITE_P(LooksAndScales, ColorControlsGolden,
                         ::testing::Combine(::testing::Values(qorui::skins::Skin::kClassic,
                                                              qorui::skins::Skin::kV7),
                                            ::testing::Values(1.0f, 2.0f)));

/// Counts a field's four signals {selection, single click, double click, Return}.
struct SignalCounter {
    explicit SignalCounter(ColorField& field) {
        std::size_t i = 0;
        for (ColorField::FieldSignal* signal :
             {&field.GetSelectionChangedSignal(), &field.GetSingleClickSignal(),
              &field.GetDoubleClickSignal(), &field.GetReturnKeyPressedSignal()})
            connections.emplace_back(signal->Connect([this, n = i++](IntrusivePtr<ColorField> f) {
                ++counts[n];
                last = f.get();
            }));
    }
    std::vector<int> counts = std::vector<int>(4);
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
    using Counts = std::vector<int>;

    HeadlessWindow window{200, 120};
    IntrusivePtr<ColorField> field = qorcore::MakeIntrusive<ColorField>();
    SignalCounter signals{*field};
    ControlRecorder recorder{*field};
};

TEST_F(ColorFieldTest, ValuesAreLimitedBelowOnlyAndChangesRepaint) {
    field->SetValue({-0.5f, 1.5f, std::nanf(""), -1.0f});
    EXPECT_EQ(field->GetValue(), ColorRGBA(0, 1.5f, 0, 0));
    field->SetValueUnknown();
    ASSERT_TRUE(field->IsValueUnknown());
    // A new value makes the value known; it and the look's settings repaint.
    for (const auto& change : std::vector<std::function<void()>>{
             [&] {
                 field->SetValue({0.1f, 0.2f, 0.3f});
             },
             [&] { field->SetSelected(true); }, [&] { field->SetSlashed(true); },
             [&] {
                 field->SetDrawSelectionState(false);
             }}) {
        window.Render();
        change();
        EXPECT_FALSE(window.GetDirtyRegion().IsEmpty());
    }
    EXPECT_FALSE(field->IsValueUnknown());
}

TEST_F(ColorFieldTest, APressSelectsFirstThenOpensThePickerAndOkKeepsThePick) {
    const ColorRGBA start = field->GetValue();
    EXPECT_EQ(ClickWithPicker([&](ColorPickerDialog& picker) {
                  EXPECT_TRUE(field->IsSelected()) << "selected before the picker opens";
                  EXPECT_EQ(signals.counts, (Counts{1, 0, 0, 0}));
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
    EXPECT_EQ(signals.counts, (Counts{1, 1, 0, 0})) << "the release after the picker is a click";
    EXPECT_EQ(signals.last, field.get());
    EXPECT_TRUE(Near(PixelAt(40, 32), ColorRGBA(0.2f, 0.6f, 0.4f)));

    // Selected already: a press opens the picker without selecting again; OK without a change
    // tells nobody.
    EXPECT_EQ(ClickWithPicker([](ColorPickerDialog& picker) {
                  picker.PressButton(ColorPickerDialog::kResponseAccept);
              }),
              1);
    EXPECT_EQ(signals.counts[0], 1);
    EXPECT_EQ(recorder.changed, 1);
}

TEST_F(ColorFieldTest, ACancelledPickerPutsTheColourBackAndSaysSo) {
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
    ClickWithPicker([](ColorPickerDialog& picker) {
        picker.PressButton(ColorPickerDialog::kResponseCancelButton);
    });
    EXPECT_EQ(field->GetValue(), start);
    EXPECT_EQ(recorder.changed, 1);
}

TEST_F(ColorFieldTest, WithoutUserColourChangeAPressOnlySelects) {
    field->SetAllowUserColorChange(false);
    EXPECT_EQ(ClickWithPicker([](ColorPickerDialog&) {}), 0);
    EXPECT_TRUE(field->IsSelected());
    EXPECT_EQ(signals.counts, (Counts{1, 1, 0, 0}));
    // A second click at once is a double click: its press fires the double click signal.
    window.Click(30, 30);
    EXPECT_EQ(signals.counts, (Counts{1, 2, 1, 0}));
    // Other buttons do nothing.
    window.AdvanceTime(1.0);
    window.Click(30, 30, qorui::MouseButton::kRight);
    EXPECT_EQ(signals.counts, (Counts{1, 2, 1, 0}));
}

TEST_F(ColorFieldTest, ThePickerOpensOverTheWindowOfTheGivenParent) {
    HeadlessWindow other(480, 300);
    auto parent = qorcore::MakeIntrusive<qorui::UI_Node>();
    parent->SetFrame(other.GetBounds());
    other.AddNode(parent);
    field->SetParentWindowForDialog(parent.get());
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
    ASSERT_TRUE(field->UI_RequestFocus());
    window.PressKey(KeyboardCode::kSpace);
    window.PressKey(KeyboardCode::kReturn);
    EXPECT_FALSE(field->IsSelected());
    EXPECT_EQ(signals.counts, (Counts{0, 0, 0, 0}));

    field->SetUserSelectable(true);
    EXPECT_FALSE(window.KeyDown(KeyboardCode::kSpace)) << "keys are never consumed";
    EXPECT_TRUE(field->IsSelected());
    window.KeyUp(KeyboardCode::kSpace);
    window.PressKey(KeyboardCode::kSpace); // selected already
    window.KeyDown(KeyboardCode::kReturn);
    EXPECT_EQ(signals.counts, (Counts{1, 0, 0, 0})) << "Return counts on its way up";
    window.KeyUp(KeyboardCode::kReturn);
    EXPECT_EQ(signals.counts[3], 1);

    // The platform's key codes: 32 for Space, 13 and -13 for Return, 65 for neither.
    using qorui::KeyAction;
    field->SetSelected(false);
    window.DispatchKeyboardEvent({KeyAction::kKeyDown, KeyboardCode::kUnknown, {}, 32});
    EXPECT_TRUE(field->IsSelected());
    for (int code : {13, -13, 65})
        window.DispatchKeyboardEvent({KeyAction::kKeyUp, KeyboardCode::kUnknown, {}, code});
    EXPECT_EQ(signals.counts, (Counts{2, 0, 0, 3}));

    // Without the focus the keys belong to someone else.
    field->SetSelected(false);
    window.SetFocusNode(nullptr);
    window.PressKey(KeyboardCode::kSpace);
    EXPECT_FALSE(field->IsSelected());
}

// How the states look (frames, selection, slash, grey when disabled or unknown) is compared
// pixel for pixel with the goldens above; what they don't show is checked here.
TEST_F(ColorFieldTest, ADisabledFieldIgnoresPressesAndAHiddenSelectionKeepsThePlainFrame) {
    field->SetDisabled(true);
    EXPECT_EQ(ClickWithPicker([](ColorPickerDialog&) {}), 0);
    EXPECT_FALSE(field->IsSelected());
    EXPECT_EQ(signals.counts, (Counts{0, 0, 0, 0}));

    field->SetDisabled(false);
    field->SetUserSelectable(true);
    field->SetSelected(true);
    field->SetDrawSelectionState(false);
    EXPECT_TRUE(Near(PixelAt(21, 21), ColorRGBA(0, 0, 0))) << "not the selection's colour";
}

TEST(ColorViewTest, DrawsUnderItsChildrenWithAColourLimitedToOne) {
    HeadlessWindow window(100, 60);
    auto view = Place<ColorView>(*window.GetRoot(), {10, 10, 60, 40});
    Place<ColorView>(*view, {10, 10, 20, 20})->SetValue({1, 1, 1});
    view->SetValue({0.9f, 0.5f, 0.1f});
    window.Render();
    EXPECT_TRUE(Near(window.GetPixel(25, 25), ColorRGBA(1, 1, 1))) << "the child on top";
    // Limited to 0..1; the same colour again repaints nothing.
    view->SetValue({2.0f, -1.0f, std::nanf(""), 0.5f});
    EXPECT_EQ(view->GetValue(), ColorRGBA(1, 0, 0, 0.5f));
    window.Render();
    view->SetValue({1.0f, 0.0f, 0.0f, 0.5f});
    EXPECT_TRUE(window.GetDirtyRegion().IsEmpty());
}

const ColorRGBA kOffColor(0.2f, 0.2f, 0.8f);
const ColorRGBA kOnColor(0.1f, 0.8f, 0.2f);

class PictureToggleButtonTest : public ::testing::Test {
protected:
    PictureToggleButtonTest() {
        button->SetFrame({10, 10, 24, 24});
        button->SetImages(Face(window, kOffColor, false, true),
                          Face(window, kOnColor, false, true));
        window.AddNode(button);
        button->NotifyWhenChanged(
            [&](const qorui::UI_ControlChangedMessage&) { heard.push_back(button->GetState()); });
    }
    ColorRGBA Shown() {
        window.Render();
        return window.GetPixel(22, 22);
    }

    HeadlessWindow window{100, 60};
    IntrusivePtr<PictureToggleButton> button = qorcore::MakeIntrusive<PictureToggleButton>();
    std::vector<bool> heard; ///< the state at each changed message
};

TEST_F(PictureToggleButtonTest, APressTogglesOnceAtThePressAndTheImageFollows) {
    ControlRecorder recorder(*button);
    EXPECT_TRUE(Near(Shown(), kOffColor));
    window.MouseDown(20, 20);
    EXPECT_TRUE(button->GetState()) << "the flip comes on the press";
    EXPECT_EQ(heard, std::vector<bool>{true}) << "and the listeners hear it with the new state";
    EXPECT_TRUE(Near(Shown(), kOnColor));
    window.MouseUp(20, 20);
    EXPECT_TRUE(button->GetState()) << "the release doesn't toggle back";
    EXPECT_EQ(recorder.Folded(), (std::vector<int>{0, 1, 2}));
    EXPECT_TRUE(Near(Shown(), kOnColor));

    // Dragged off and back on while held: still one toggle for the press.
    window.AdvanceTime(1.0);
    window.MouseDown(20, 20);
    window.MouseMove(90, 50);
    window.MouseMove(20, 20);
    window.MouseUp(20, 20);
    EXPECT_FALSE(button->GetState());
    EXPECT_EQ(heard, (std::vector<bool>{true, false}));
    EXPECT_TRUE(Near(Shown(), kOffColor));
}

TEST_F(PictureToggleButtonTest, TheKeyboardTogglesAndADisabledButtonDoesNot) {
    ASSERT_TRUE(button->UI_RequestFocus());
    window.PressKey(KeyboardCode::kSpace);
    EXPECT_TRUE(button->GetState());
    window.KeyDown(KeyboardCode::kReturn, {}, true); // a repeat is no new press
    EXPECT_TRUE(button->GetState());
    window.PressKey(KeyboardCode::kReturn);
    EXPECT_FALSE(button->GetState());
    EXPECT_EQ(heard.size(), 2u);

    button->SetDisabled(true);
    window.AdvanceTime(1.0);
    window.Click(20, 20);
    window.PressKey(KeyboardCode::kSpace);
    EXPECT_FALSE(button->GetState());
    EXPECT_EQ(heard.size(), 2u);
}

TEST_F(PictureToggleButtonTest, SetStateRepaintsEveryTimeAndTellsNobody) {
    for (int i = 0; i < 2; ++i) {
        window.Render();
        ASSERT_TRUE(window.GetDirtyRegion().IsEmpty());
        button->SetState(true);
        EXPECT_FALSE(window.GetDirtyRegion().IsEmpty()) << "set " << i + 1;
        EXPECT_TRUE(button->GetState());
    }
    EXPECT_TRUE(heard.empty());
    EXPECT_TRUE(Near(Shown(), kOnColor));

    // The down state itself: going down flips, coming up doesn't.
    button->SetDownState(true);
    EXPECT_FALSE(button->GetState());
    EXPECT_TRUE(button->GetDownState());
    button->SetDownState(false);
    EXPECT_FALSE(button->GetState());
    EXPECT_TRUE(Near(Shown(), kOffColor));
}

} // namespace
