#pragma once

#include "platform/widgets/ui_hot_text.hpp"
#include "platform/widgets/ui_text_field.hpp"

#include <functional>
#include <limits>
#include <optional>
#include <string>

namespace qorui {

/// A number shown as hot text. Dragging up or right raises it by one increment every two
/// pixels (Shift: the shift increment, Control: the command increment), as one interactive
/// change. A click without a drag opens a text field over it for typing a number: Return takes
/// it (limited to the range) as one interactive change, Escape leaves the value alone, and a
/// text that is not a number keeps the field open and marked. Up and Down step a focused
/// number; Return opens the field.
class UI_HotTextNumber : public UI_HotText {
public:
    /// How the number is written; the flags combine.
    enum FormatFlags : unsigned {
        kFormatNormal = 0,
        kFormatAlwaysSign = 1,      ///< "+" before positive numbers
        kFormatPadSign = 2,         ///< a space before non-negative numbers, to line up with "-"
        kFormatNoTrailingZeros = 4, ///< "2" not "2.00", "2.5" not "2.50"
        kFormatUseSeparator = 8,    ///< "12,345.6"
        kFormatLeadingSpaces = 16,  ///< padded on the left to the digits count
        kFormatNoLocalization = 32, ///< always "." as decimal point (the only form here)
    };
    /// From a raw increment to the amount the value moves; set by controls with their own scale.
    using TranslateIncrementAmountFunction = std::function<double(double amount)>;

    UI_HotTextNumber();

    // Value and limits
    using UI_HotText::SetValue;
    /// Limited to the range; not finite is ignored.
    void SetValue(double value) override;
    void SetMinValue(double min);
    void SetMaxValue(double max);
    double GetMinValue() const { return min_; }
    double GetMaxValue() const { return max_; }

    // Steps
    void SetIncrement(double increment);
    double GetIncrement() const { return increment_; }
    /// Zero (the default) means ten increments.
    void SetShiftIncrement(double increment);
    double GetShiftIncrement() const;
    /// Zero (the default) means a hundred increments.
    void SetCmdIncrement(double increment);
    double GetCmdIncrement() const;
    /// With it, a step first drops the digits below the step: 1.234 up by 1 gives 2, not 2.234.
    void SetIsDropPrecisionOnIncrement(bool drop) { dropPrecision_ = drop; }
    bool GetIsDropPrecisionOnIncrement() const { return dropPrecision_; }
    void SetTranslateIncrementAmountFunction(TranslateIncrementAmountFunction translate);
    void ClearTranslateIncrementAmountFunction() { translate_ = nullptr; }
    /// Moves the value by `amount` (through the translate function), limited to the range.
    /// Sends nothing: callers wrap it in the change they make. True if the value moved.
    bool IncrementValue(double amount, ModifierFlags modifiers = {});
    /// The increment for a step with these modifiers.
    double GetIncrementFor(ModifierFlags modifiers) const;

    // Format
    void SetDecimalPlaces(int places);
    int GetDecimalPlaces() const { return decimalPlaces_; }
    void SetDigits(int digits);
    int GetDigits() const { return digits_; }
    void SetFormatFlags(unsigned flags);
    unsigned GetFormatFlags() const { return formatFlags_; }
    /// What an unknown value shows; "--" by default.
    void SetUnknownValuePlaceholder(std::string placeholder);
    /// The number written with the format.
    std::string FormatValue(double value) const;
    std::string GetDisplayString() const override;

    // Typing
    /// Only digits, signs, points and exponents may be typed (off by default).
    void SetNumericInput(bool numeric) { numericInput_ = numeric; }
    void SetTypingEnabled(bool enabled) { typingEnabled_ = enabled; }
    /// Opens the text field; false when the control is in no window or typing is off.
    bool BeginTyping();
    /// The field while typing, null otherwise.
    UI_TextField* GetTextField() const;
    /// Reads a typed number: surrounding spaces, a leading "+" and the text label after the
    /// number are allowed. Empty with a message in `error` when it isn't a finite number.
    std::optional<double> ParseNumber(std::string_view text, std::string* error = nullptr) const;
    /// Why the last typed text was refused; empty after a good one.
    const std::string& GetLastInputError() const { return inputError_; }

    bool UI_DoMouseEvent(const MouseEvent& event) override;
    bool UI_DoKeyboardEvent(const KeyboardEvent& event) override;
    void UI_NodeChanged(NodeChange change) override;

protected:
    void UI_DoDragEvent(const MouseEvent& event) override;
    void UI_DoDragEnd(bool cancelled) override;
    /// Takes a typed text as the new value in one whole interactive change; false (the error
    /// kept for `GetLastInputError`) when it is no number.
    bool CommitTyped(const std::string& text);

private:
    void StepOnce(bool up, ModifierFlags modifiers);

    double min_ = std::numeric_limits<double>::lowest();
    double max_ = std::numeric_limits<double>::max();
    double increment_ = 1.0;
    double shiftIncrement_ = 0.0;
    double cmdIncrement_ = 0.0;
    bool dropPrecision_ = false;
    TranslateIncrementAmountFunction translate_;
    int decimalPlaces_ = 2;
    int digits_ = 0;
    unsigned formatFlags_ = kFormatNormal;
    std::string placeholder_ = "--";
    bool numericInput_ = false;
    bool typingEnabled_ = true;
    std::string inputError_;
    IntrusivePtr<UI_TextField> field_;
    // The drag: where it started and how many steps it has made.
    PointT<float> dragStart_;
    long dragSteps_ = 0;
    bool dragMoved_ = false;
};

namespace ui {
using ::qorui::UI_HotTextNumber;
}

} // namespace qorui
