#include "platform/widgets/ui_hot_text_number.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace qorui {

namespace {

constexpr float kPixelsPerStep = 2.0f;
constexpr float kDragThreshold = 3.0f;
constexpr int kMaxDecimalPlaces = 15;

std::string_view Trim(std::string_view s) {
    while (!s.empty() && (s.front() == ' ' || s.front() == '\t'))
        s.remove_prefix(1);
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t'))
        s.remove_suffix(1);
    return s;
}

bool IsNumberCharacter(char c) {
    return (c >= '0' && c <= '9') || c == '.' || c == '-' || c == '+' || c == 'e' || c == 'E' ||
           c == ' ';
}

} // namespace

UI_HotTextNumber::UI_HotTextNumber() = default;

void UI_HotTextNumber::SetValue(double value) {
    if (!std::isfinite(value))
        return;
    UI_HotText::SetValue(std::clamp(value, min_, max_));
}

void UI_HotTextNumber::SetMinValue(double min) {
    if (std::isnan(min))
        return;
    min_ = min;
    if (max_ < min_)
        max_ = min_;
    if (!IsValueUnknown() && GetValue() < min_)
        UI_HotText::SetValue(min_);
    EmitInvalidate();
}

void UI_HotTextNumber::SetMaxValue(double max) {
    if (std::isnan(max))
        return;
    max_ = max;
    if (min_ > max_)
        min_ = max_;
    if (!IsValueUnknown() && GetValue() > max_)
        UI_HotText::SetValue(max_);
    EmitInvalidate();
}

void UI_HotTextNumber::SetIncrement(double increment) {
    if (std::isfinite(increment) && increment > 0)
        increment_ = increment;
}

void UI_HotTextNumber::SetShiftIncrement(double increment) {
    if (std::isfinite(increment) && increment >= 0)
        shiftIncrement_ = increment;
}

void UI_HotTextNumber::SetCmdIncrement(double increment) {
    if (std::isfinite(increment) && increment >= 0)
        cmdIncrement_ = increment;
}

double UI_HotTextNumber::GetShiftIncrement() const {
    return shiftIncrement_ > 0 ? shiftIncrement_ : increment_ * 10;
}

double UI_HotTextNumber::GetCmdIncrement() const {
    return cmdIncrement_ > 0 ? cmdIncrement_ : increment_ * 100;
}

double UI_HotTextNumber::GetIncrementFor(ModifierFlags modifiers) const {
    if (modifiers.IsSet(ModifierKey::kCommand))
        return GetCmdIncrement();
    if (modifiers.IsSet(ModifierKey::kShift))
        return GetShiftIncrement();
    return increment_;
}

void UI_HotTextNumber::SetTranslateIncrementAmountFunction(
    TranslateIncrementAmountFunction translate) {
    translate_ = std::move(translate);
}

bool UI_HotTextNumber::IncrementValue(double amount, ModifierFlags) {
    double step = translate_ ? translate_(amount) : amount;
    if (!std::isfinite(step) || step == 0)
        return false;
    double value = IsValueUnknown() ? std::clamp(0.0, min_, max_) : GetValue();
    if (dropPrecision_) {
        // Land on the step's grid: first the grid point behind the value, then the step.
        const double grid = std::abs(step);
        const double cells = value / grid;
        const double snapped =
            (step > 0 ? std::floor(cells + 1e-9) : std::ceil(cells - 1e-9)) * grid;
        value = snapped;
    }
    const double before = GetValue();
    const bool wasUnknown = IsValueUnknown();
    SetValue(value + step);
    return GetValue() != before || wasUnknown != IsValueUnknown();
}

void UI_HotTextNumber::SetDecimalPlaces(int places) {
    decimalPlaces_ = std::clamp(places, 0, kMaxDecimalPlaces);
    EmitInvalidate();
}

void UI_HotTextNumber::SetDigits(int digits) {
    digits_ = std::clamp(digits, 0, 32);
    EmitInvalidate();
}

void UI_HotTextNumber::SetFormatFlags(unsigned flags) {
    formatFlags_ = flags;
    EmitInvalidate();
}

void UI_HotTextNumber::SetUnknownValuePlaceholder(std::string placeholder) {
    placeholder_ = std::move(placeholder);
    EmitInvalidate();
}

std::string UI_HotTextNumber::FormatValue(double value) const {
    if (std::isnan(value))
        return placeholder_;
    if (std::isinf(value))
        return value > 0 ? "inf" : "-inf";
    // A digits count caps the digits shown: the places after the point give way as the whole
    // part grows (200.00, 1000.0, 10000), so that the number keeps the width it was given.
    int places = decimalPlaces_;
    if (digits_ > 0 && places > 0) {
        char whole[400];
        const int wholeDigits = std::snprintf(whole, sizeof whole, "%.0f", std::abs(value));
        places = std::clamp(digits_ - wholeDigits, 0, places);
    }
    char buffer[400];
    std::snprintf(buffer, sizeof buffer, "%.*f", places, value);
    std::string text = buffer;
    bool negative = !text.empty() && text.front() == '-';
    if (negative) {
        text.erase(0, 1);
        // Rounded to zero, a negative number is just zero.
        if (text.find_first_not_of("0.") == std::string::npos)
            negative = false;
    }
    if ((formatFlags_ & kFormatNoTrailingZeros) && text.find('.') != std::string::npos) {
        text.erase(text.find_last_not_of('0') + 1);
        if (text.back() == '.')
            text.pop_back();
    }
    if (formatFlags_ & kFormatUseSeparator) {
        const std::size_t point = std::min(text.find('.'), text.size());
        for (std::size_t i = point; i > 3; i -= 3)
            text.insert(i - 3, ",");
    }
    const bool isZero = text.find_first_not_of("0.,") == std::string::npos;
    if (negative)
        text.insert(0, "-");
    else if ((formatFlags_ & kFormatAlwaysSign) && !isZero)
        text.insert(0, "+");
    else if (formatFlags_ & (kFormatPadSign | kFormatAlwaysSign))
        text.insert(0, " ");
    if ((formatFlags_ & kFormatLeadingSpaces) && int(text.size()) < digits_)
        text.insert(0, std::size_t(digits_) - text.size(), ' ');
    return text;
}

std::string UI_HotTextNumber::GetDisplayString() const {
    return IsValueUnknown() ? placeholder_ : FormatValue(GetValue());
}

std::optional<double> UI_HotTextNumber::ParseNumber(std::string_view text,
                                                    std::string* error) const {
    const auto fail = [error](const char* why) -> std::optional<double> {
        if (error)
            *error = why;
        return std::nullopt;
    };
    std::string_view s = Trim(text);
    const std::string& label = GetTextLabel();
    if (!label.empty() && s.size() > label.size() && s.ends_with(label))
        s = Trim(s.substr(0, s.size() - label.size()));
    if (s.empty())
        return fail("Enter a number.");
    if (s.front() == '+')
        s.remove_prefix(1);
    std::string cleaned;
    for (char c : s)
        if (c != ',' || !(formatFlags_ & kFormatUseSeparator))
            cleaned += c;
    double value = 0;
    const char* begin = cleaned.data();
    const char* end = begin + cleaned.size();
    const auto [ptr, ec] = std::from_chars(begin, end, value);
    if (ec == std::errc::result_out_of_range)
        return fail("The number is too large.");
    if (ec != std::errc() || ptr != end)
        return fail("Not a number.");
    if (!std::isfinite(value))
        return fail("Not a finite number.");
    if (error)
        error->clear();
    return value;
}

bool UI_HotTextNumber::BeginTyping() {
    if (!typingEnabled_ || IsDisabled() || !GetWindow())
        return false;
    if (!field_)
        field_ = qorcore::MakeIntrusive<UI_TextField>();
    field_->SetFont(GetFont());
    field_->SetCommitFunction([this](const std::string& text) { return CommitTyped(text); });
    field_->SetFilterFunction([this](std::string_view typed) {
        return !numericInput_ || std::all_of(typed.begin(), typed.end(), IsNumberCharacter);
    });
    std::string current = IsValueUnknown() ? std::string() : FormatValue(GetValue());
    return field_->OpenOver(*this, Trim(current));
}

UI_TextField* UI_HotTextNumber::GetTextField() const {
    return field_ && field_->IsOpen() ? field_.get() : nullptr;
}

bool UI_HotTextNumber::CommitTyped(const std::string& text) {
    const std::optional<double> value = ParseNumber(text, &inputError_);
    if (!value)
        return false;
    IntrusivePtr<UI_Node> keep(this);
    BeginInteractiveChange();
    SetValue(*value);
    ContinueInteractiveChange();
    FinishInteractiveChange();
    return true;
}

void UI_HotTextNumber::StepOnce(bool up, ModifierFlags modifiers) {
    const double increment = GetIncrementFor(modifiers);
    BeginInteractiveChange(modifiers);
    if (IncrementValue(up ? increment : -increment, modifiers))
        ContinueInteractiveChange(modifiers);
    FinishInteractiveChange(modifiers);
}

bool UI_HotTextNumber::UI_DoMouseEvent(const MouseEvent& event) {
    UI_HotText::UI_DoMouseEvent(event);
    if (event.IsAction(PointerAction::kWheel)) {
        const float dy = event.GetWheelDelta().y;
        if (dy == 0)
            return false;
        StepOnce(dy > 0, event.GetModKey());
        return true;
    }
    if (!event.IsAction(PointerAction::kPress) || !event.IsButton(MouseButton::kLeft))
        return false;
    if (GetTextField())
        return true;
    dragStart_ = event.GetPosition();
    dragSteps_ = 0;
    dragMoved_ = false;
    SetDownState(true);
    if (!BeginDrag(event))
        SetDownState(false);
    return true;
}

void UI_HotTextNumber::UI_DoDragEvent(const MouseEvent& event) {
    if (!event.IsAction(PointerAction::kMove))
        return;
    const PointT<float> d = event.GetPosition() - dragStart_;
    if (std::abs(d.x) + std::abs(d.y) >= kDragThreshold)
        dragMoved_ = true;
    // Up and right both raise the number.
    const long steps = long((d.x - d.y) / kPixelsPerStep);
    if (steps == dragSteps_)
        return;
    const ModifierFlags modifiers = event.GetModKey();
    if (!IsInteractiveChangeInProgress())
        BeginInteractiveChange(modifiers);
    const double increment = GetIncrementFor(modifiers);
    bool changed = false;
    for (long n = dragSteps_; n != steps; n += steps > dragSteps_ ? 1 : -1)
        changed = IncrementValue(steps > dragSteps_ ? increment : -increment, modifiers) || changed;
    dragSteps_ = steps;
    if (changed)
        ContinueInteractiveChange(modifiers);
}

void UI_HotTextNumber::UI_DoDragEnd(bool cancelled) {
    SetDownState(false);
    if (cancelled) {
        CancelInteractiveChange();
        return;
    }
    if (dragMoved_) {
        FinishInteractiveChange();
        return;
    }
    BeginTyping();
}

bool UI_HotTextNumber::UI_DoKeyboardEvent(const KeyboardEvent& event) {
    if (!event.IsActionKeyDown() || !HasFocus())
        return false;
    const ModifierFlags modifiers = event.GetModKey();
    switch (event.GetCode()) {
    case KeyboardCode::kUp: StepOnce(true, modifiers); return true;
    case KeyboardCode::kDown: StepOnce(false, modifiers); return true;
    case KeyboardCode::kReturn:
    case KeyboardCode::kKeypadEnter: return BeginTyping();
    default: return false;
    }
}

void UI_HotTextNumber::UI_NodeChanged(NodeChange change) {
    // A field left open over a control that goes away would type into nothing.
    if (change == kNodeChangeWindowChanged && !GetWindow() && GetTextField())
        field_->Cancel();
    UI_HotText::UI_NodeChanged(change);
}

} // namespace qorui
