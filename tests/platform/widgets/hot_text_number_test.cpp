// UI_HotTextNumber: dragging by increments, the number format, and typing into its field.
#include "control_recorder.hpp"
#include "platform/ui/headless_window.hpp"
#include "platform/widgets/ui_hot_text_number.hpp"
#include "platform/widgets/ui_text_button.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace qorui;
using qafui_testing::ControlRecorder;

namespace {

class HotText : public ::testing::Test {
protected:
    void SetUp() override {
        number = qorcore::MakeIntrusive<UI_HotTextNumber>();
        number->SetFrame({20, 20, 80, 18});
        number->SetMinValue(-100);
        number->SetMaxValue(100);
        window.AddNode(number);
    }

    void Type(const std::string& text) {
        for (char c : text)
            window.TypeText(std::string(1, c));
    }

    HeadlessWindow window{300, 200};
    qorcore::IntrusivePtr<UI_HotTextNumber> number;
};

} // namespace

TEST_F(HotText, DraggingUpOrRightStepsByTheIncrement) {
    ControlRecorder recorder(*number);
    number->SetValue(10);
    window.MouseDown(50, 30);
    window.MouseMove(50, 20); // ten pixels up: five steps
    EXPECT_EQ(number->GetValue(), 15.0);
    window.MouseMove(54, 20); // and four right: two more
    EXPECT_EQ(number->GetValue(), 17.0);
    window.MouseMove(54, 40, ModifierKey::kShift); // twenty down: ten steps back, by ten
    EXPECT_EQ(number->GetValue(), 17.0 - 100.0);
    window.MouseUp(54, 40);
    EXPECT_EQ(recorder.messages, (std::vector<int>{0, 1, 1, 1, 2}));
    EXPECT_EQ(recorder.changed, 1);
    EXPECT_EQ(number->GetTextField(), nullptr) << "a drag is no click";

    recorder.Clear();
    window.AdvanceTime(1);
    window.MouseDown(50, 30);
    window.MouseMove(50, -400); // far beyond the maximum
    EXPECT_EQ(number->GetValue(), 100.0);
    window.PressKey(KeyboardCode::kEscape);
    EXPECT_EQ(number->GetValue(), -83.0);
    window.MouseUp(50, -400);
    EXPECT_EQ(recorder.Folded(), (std::vector<int>{0, 1, 3}));
}

TEST_F(HotText, IncrementsTranslateFunctionAndDroppedPrecision) {
    number->SetIncrement(0.5);
    EXPECT_EQ(number->GetShiftIncrement(), 5.0);
    EXPECT_EQ(number->GetCmdIncrement(), 50.0);
    number->SetCmdIncrement(0.1);
    EXPECT_EQ(number->GetIncrementFor(ModifierKey::kCommand), 0.1);
    number->SetIncrement(-2);
    EXPECT_EQ(number->GetIncrement(), 0.5) << "a step must be positive";

    number->SetValue(1.3);
    EXPECT_TRUE(number->IncrementValue(1));
    EXPECT_DOUBLE_EQ(number->GetValue(), 2.3);
    number->SetIsDropPrecisionOnIncrement(true);
    EXPECT_TRUE(number->IncrementValue(1));
    EXPECT_DOUBLE_EQ(number->GetValue(), 3.0) << "2.3 up by 1 drops the .3";
    number->SetValue(3.7);
    EXPECT_TRUE(number->IncrementValue(-1));
    EXPECT_DOUBLE_EQ(number->GetValue(), 3.0);
    EXPECT_TRUE(number->IncrementValue(-1));
    EXPECT_DOUBLE_EQ(number->GetValue(), 2.0) << "on the grid it is a plain step";

    number->SetIsDropPrecisionOnIncrement(false);
    number->SetTranslateIncrementAmountFunction([](double amount) { return amount * 3; });
    number->SetValue(0);
    number->IncrementValue(2);
    EXPECT_EQ(number->GetValue(), 6.0);
    number->ClearTranslateIncrementAmountFunction();
    number->IncrementValue(2);
    EXPECT_EQ(number->GetValue(), 8.0);
    number->SetValue(100);
    EXPECT_FALSE(number->IncrementValue(1)) << "at the limit nothing moves";
}

TEST_F(HotText, LimitsHoldTheValue) {
    number->SetValue(250);
    EXPECT_EQ(number->GetValue(), 100.0);
    number->SetMaxValue(50);
    EXPECT_EQ(number->GetValue(), 50.0);
    number->SetMinValue(80);
    EXPECT_EQ(number->GetMaxValue(), 80.0) << "a minimum above the maximum moves it";
    EXPECT_EQ(number->GetValue(), 80.0);
}

TEST_F(HotText, FormatFlagsDecimalPlacesAndPlaceholder) {
    number->SetMinValue(-1e9);
    number->SetMaxValue(1e9);
    EXPECT_EQ(number->FormatValue(3.14159), "3.14");
    number->SetDecimalPlaces(0);
    EXPECT_EQ(number->FormatValue(2.5001), "3");
    number->SetDecimalPlaces(3);
    EXPECT_EQ(number->FormatValue(-0.0001), "0.000") << "no negative zero";
    number->SetFormatFlags(UI_HotTextNumber::kFormatNoTrailingZeros);
    EXPECT_EQ(number->FormatValue(2.5), "2.5");
    EXPECT_EQ(number->FormatValue(35), "35");
    number->SetFormatFlags(UI_HotTextNumber::kFormatAlwaysSign);
    EXPECT_EQ(number->FormatValue(1.5), "+1.500");
    EXPECT_EQ(number->FormatValue(-1.5), "-1.500");
    EXPECT_EQ(number->FormatValue(0), " 0.000");
    number->SetFormatFlags(UI_HotTextNumber::kFormatPadSign |
                           UI_HotTextNumber::kFormatUseSeparator);
    EXPECT_EQ(number->FormatValue(1234567.25), " 1,234,567.250");
    EXPECT_EQ(number->FormatValue(-999), "-999.000");
    number->SetFormatFlags(UI_HotTextNumber::kFormatLeadingSpaces);
    number->SetDigits(8);
    number->SetDecimalPlaces(1);
    EXPECT_EQ(number->FormatValue(4), "     4.0");

    number->SetValue(12);
    EXPECT_EQ(number->GetDisplayString(), "    12.0");
    number->SetValueUnknown();
    EXPECT_EQ(number->GetDisplayString(), "--");
    number->SetUnknownValuePlaceholder("-inf");
    EXPECT_EQ(number->GetDisplayString(), "-inf");
}

TEST_F(HotText, AClickOpensAFieldAndATypedNumberIsOneChange) {
    ControlRecorder recorder(*number);
    number->SetValue(5);
    window.Click(50, 30);
    UI_TextField* field = number->GetTextField();
    ASSERT_NE(field, nullptr);
    EXPECT_EQ(field->GetText(), "5.00");
    EXPECT_TRUE(field->IsAllSelected());
    EXPECT_TRUE(field->HasFocus());
    EXPECT_TRUE(recorder.messages.empty()) << "opening the field changes nothing";
    Type("42.5");
    EXPECT_EQ(field->GetText(), "42.5") << "typing replaced the selection";
    window.PressKey(KeyboardCode::kReturn);
    EXPECT_EQ(number->GetTextField(), nullptr);
    EXPECT_EQ(number->GetValue(), 42.5);
    EXPECT_EQ(recorder.messages, (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(recorder.changed, 1);
    EXPECT_TRUE(number->GetLastInputError().empty());
}

TEST_F(HotText, TypedNumbersOutOfRangeAreLimited) {
    number->SetTextLabel("Hz");
    ASSERT_TRUE(number->BeginTyping());
    Type(" 1e3 Hz ");
    window.PressKey(KeyboardCode::kReturn);
    EXPECT_EQ(number->GetValue(), 100.0);
    ASSERT_TRUE(number->BeginTyping());
    Type("-250");
    window.PressKey(KeyboardCode::kKeypadEnter);
    EXPECT_EQ(number->GetValue(), -100.0);
    ASSERT_TRUE(number->BeginTyping());
    Type("+7");
    window.PressKey(KeyboardCode::kReturn);
    EXPECT_EQ(number->GetValue(), 7.0);
}

TEST_F(HotText, MalformedInputKeepsTheFieldOpenWithAReason) {
    ControlRecorder recorder(*number);
    number->SetValue(3);
    for (const char* bad : {"abc", "12abc", "1.2.3", "", "nan", "inf", "1e999", "--4"}) {
        SCOPED_TRACE(bad);
        ASSERT_TRUE(number->BeginTyping());
        UI_TextField* field = number->GetTextField();
        ASSERT_NE(field, nullptr);
        window.PressKey(KeyboardCode::kBackspace);
        Type(bad);
        window.PressKey(KeyboardCode::kReturn);
        EXPECT_EQ(number->GetTextField(), field) << "still open to be corrected";
        EXPECT_TRUE(field->IsInvalid());
        EXPECT_FALSE(number->GetLastInputError().empty());
        EXPECT_EQ(number->GetValue(), 3.0);
        window.PressKey(KeyboardCode::kEscape);
        EXPECT_EQ(number->GetTextField(), nullptr);
    }
    EXPECT_TRUE(recorder.messages.empty());

    // Correcting the text in the open field is then accepted.
    ASSERT_TRUE(number->BeginTyping());
    Type("x");
    window.PressKey(KeyboardCode::kReturn);
    window.PressKey(KeyboardCode::kBackspace);
    Type("9");
    window.PressKey(KeyboardCode::kReturn);
    EXPECT_EQ(number->GetValue(), 9.0);
    EXPECT_EQ(recorder.messages, (std::vector<int>{0, 1, 2}));
}

TEST_F(HotText, FieldEditingKeysEscapeAndFocusLoss) {
    number->SetValue(12.5);
    ASSERT_TRUE(number->BeginTyping());
    UI_TextField* field = number->GetTextField();
    window.PressKey(KeyboardCode::kEnd);
    window.PressKey(KeyboardCode::kBackspace);
    window.PressKey(KeyboardCode::kHome);
    window.PressKey(KeyboardCode::kDelete);
    Type("3");
    EXPECT_EQ(field->GetText(), "32.5");
    window.PressKey(KeyboardCode::kEscape);
    EXPECT_EQ(number->GetValue(), 12.5) << "Escape takes nothing";

    // Moving the focus elsewhere takes what was typed.
    auto other = qorcore::MakeIntrusive<UI_TextButton>("Other");
    other->SetFrame({150, 20, 60, 22});
    window.AddNode(other);
    ASSERT_TRUE(number->BeginTyping());
    Type("64");
    window.MouseDown(160, 30);
    window.MouseUp(160, 30);
    EXPECT_EQ(number->GetTextField(), nullptr);
    EXPECT_EQ(number->GetValue(), 64.0);

    // Numeric input lets no letters in.
    number->SetNumericInput(true);
    ASSERT_TRUE(number->BeginTyping());
    Type("1a2");
    EXPECT_EQ(number->GetTextField()->GetText(), "12");
    window.PressKey(KeyboardCode::kEscape);

    number->SetDisabled(true);
    EXPECT_FALSE(number->BeginTyping());
}

TEST_F(HotText, KeysStepAFocusedNumber) {
    ControlRecorder recorder(*number);
    number->SetValue(0);
    ASSERT_TRUE(number->UI_RequestFocus());
    window.PressKey(KeyboardCode::kUp);
    window.PressKey(KeyboardCode::kUp, ModifierKey::kShift);
    window.PressKey(KeyboardCode::kDown);
    EXPECT_EQ(number->GetValue(), 10.0);
    EXPECT_EQ(recorder.messages, (std::vector<int>{0, 1, 2, 0, 1, 2, 0, 1, 2}));
    window.PressKey(KeyboardCode::kReturn);
    EXPECT_NE(number->GetTextField(), nullptr);
    window.PressKey(KeyboardCode::kEscape);
}

TEST_F(HotText, AFieldClosesWhenItsControlLeavesTheWindow) {
    ASSERT_TRUE(number->BeginTyping());
    qorcore::IntrusivePtr<UI_TextField> field(number->GetTextField());
    number->RemoveFromParent();
    EXPECT_FALSE(field->IsOpen());
    EXPECT_EQ(number->GetTextField(), nullptr);
}

TEST(HotTextField, ClosingTheWindowWhileTypingTakesNothing) {
    auto number = qorcore::MakeIntrusive<UI_HotTextNumber>();
    ControlRecorder recorder(*number);
    {
        HeadlessWindow window(200, 100);
        number->SetFrame({10, 10, 60, 18});
        number->SetValue(4);
        window.AddNode(number);
        ASSERT_TRUE(number->BeginTyping());
        window.TypeText("50");
    }
    EXPECT_EQ(number->GetValue(), 4.0);
    EXPECT_TRUE(recorder.messages.empty());
    EXPECT_EQ(number->GetTextField(), nullptr);
}

TEST_F(HotText, HidingTheFieldCancelsIt) {
    ASSERT_TRUE(number->BeginTyping());
    window.TypeText("7");
    number->GetTextField()->UI_SetVisible(false);
    EXPECT_EQ(number->GetTextField(), nullptr);
    EXPECT_EQ(number->GetValue(), 0.0);
    ASSERT_TRUE(number->BeginTyping()) << "and it opens again afterwards";
    EXPECT_TRUE(number->GetTextField()->IsVisible());
    window.PressKey(KeyboardCode::kEscape);
}

TEST(HotTextField, BadValuesFromCodeAreIgnored) {
    auto number = qorcore::MakeIntrusive<UI_HotTextNumber>();
    number->SetValue(2);
    number->SetValue(std::nan(""));
    number->SetMinValue(std::nan(""));
    number->SetMaxValue(std::nan(""));
    number->SetIncrement(std::numeric_limits<double>::infinity());
    number->SetDecimalPlaces(-4);
    EXPECT_EQ(number->GetValue(), 2.0);
    EXPECT_EQ(number->GetIncrement(), 1.0);
    EXPECT_EQ(number->FormatValue(2.4), "2");
    number->SetDecimalPlaces(99);
    EXPECT_EQ(number->GetDecimalPlaces(), 15);
    EXPECT_FALSE(number->BeginTyping()) << "outside a window there is nowhere to type";
    number->SetTranslateIncrementAmountFunction([](double) { return std::nan(""); });
    EXPECT_FALSE(number->IncrementValue(1));
    EXPECT_EQ(number->GetValue(), 2.0);
}
