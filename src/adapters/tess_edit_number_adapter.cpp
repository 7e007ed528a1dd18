#include "adapters/tess_edit_number_adapter.hpp"

#include "adapters/adapter_arguments.hpp"
#include "platform/rulers/decibel_ruler.hpp"
#include "platform/rulers/linear_ruler.hpp"
#include "platform/rulers/log_ruler.hpp"
#include "platform/tess/assemblage.hpp"

#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>

namespace qoraudiofiltersui {

using namespace adapter_arguments;
using qorcore::IntrusivePtr;
using vorlen::any_regular_t;
using vorlen::dictionary_t;
using vorlen::name_t;
using vorlen::operator""_name;

namespace {

/// One name of a fixed list: its index, or an error that names the argument and the choices.
template <std::size_t N>
int Choose(name_t value, const char* argument, const char* const (&choices)[N]) {
    for (std::size_t i = 0; i != N; ++i)
        if (value == name_t(choices[i]))
            return int(i);
    std::string message =
        std::string("wex_edit_number: ") + argument + " '" + value.c_str() + "' is none of";
    for (const char* choice : choices)
        message += std::string(" '") + choice + "'";
    throw std::invalid_argument(message);
}

constexpr const char* kKnobs[] = {"arrow_up_left", "arrow_down_right", "arrow_bidirectional",
                                  "sandwich", "fader"};
// The scale names carry three letters t, as the scripts spell them.
constexpr const char* kHotTextScales[] = {"hotttext_scale_linear", "hotttext_scale_db",
                                          "hotttext_scale_fader", "hotttext_scale_log"};
constexpr const char* kAlignments[] = {"bottom_right", "center"};
constexpr const char* kRulerPlacements[] = {"left_top", "right_bottom", "both"};
constexpr const char* kTextPlacements[] = {"none", "left_top", "right_bottom"};

/// A placement given as its number or its name.
template <std::size_t N>
int ReadPlacement(const dictionary_t& settings, name_t key, int fallback,
                  const char* const (&names)[N]) {
    const auto found = settings.find(key);
    if (found == settings.end())
        return fallback;
    if (found->second.is<name_t>())
        return Choose(found->second.cast<name_t>(), key.c_str(), names);
    const int number = int(found->second.cast<double>());
    if (number < 0 || number >= int(N))
        throw std::invalid_argument(std::string("wex_edit_number: ") + key.c_str() + " " +
                                    std::to_string(number) + " is out of range");
    return number;
}

} // namespace

TessEditNumberAdapter::TessEditNumberAdapter(const dictionary_t& arguments, qorui::UI_Node* parent,
                                             const qormarltess::FactoryToken& token)
    : UI_QORClientWidgetTessAdapter(parent, token) {
    bool usesSlider = false;
    bool usesInline = false;
    bool horizontal = true;
    name_t knob("arrow_up_left"_name);
    Read(arguments, "use_slider"_name, usesSlider);
    Read(arguments, "use_inline"_name, usesInline);
    Read(arguments, "horizontal_direction"_name, horizontal);
    Read(arguments, "slider_knob"_name, knob);
    control_ = qorcore::MakeIntrusive<EditNumber>(horizontal, true, usesSlider, usesInline,
                                                  SliderKnob(Choose(knob, "slider_knob", kKnobs)));
    SetNode(control_);

    bool flag = false;
    double number = 0.0;
    name_t choice;
    std::string text;
    if (Read(arguments, "invert_slider"_name, flag))
        control_->SetInvertSlider(flag);
    if (Read(arguments, "min_slider_width"_name, number))
        control_->SetSliderLength(std::uint32_t(std::max(0.0, number)));
    if (Read(arguments, "hottext_alignment"_name, choice))
        control_->SetHotTextNumberAlignment(Choose(choice, "hottext_alignment", kAlignments) == 0
                                                ? qorui::penrig::HorizontalAlignment::kRight
                                                : qorui::penrig::HorizontalAlignment::kCenter);
    if (Read(arguments, "hottext_scale"_name, choice))
        control_->SetHotTextScale(HotTextScale(Choose(choice, "hottext_scale", kHotTextScales)));
    if (Read(arguments, "hottext_log_base"_name, number))
        control_->SetHotTextLogBase(number);
    if (Read(arguments, "hottext_scale_range"_name, number))
        control_->SetHotTextScaleRange(number);
    if (ReadText(arguments, "alt_disabled"_name, text))
        control_->SetDisabledTooltip(text);
    if (ReadText(arguments, "unit_label"_name, text))
        control_->SetUnitLabel(text);
    if (Read(arguments, "min_value"_name, number))
        control_->SetMinValue(number);
    if (Read(arguments, "max_value"_name, number))
        control_->SetMaxValue(number);
    WithDictionary(arguments, "min_max_filter"_name, token,
                   [this](const dictionary_t& range) { ApplyRange(range); });
    WithDictionary(arguments, "ruler_settings"_name, token,
                   [this](const dictionary_t& settings) { ApplyRulerSettings(settings); });
    if (Read(arguments, "trailing_zeroes"_name, flag)) {
        const unsigned others =
            control_->GetFormatFlags() & ~unsigned(qorui::UI_HotTextNumber::kFormatNoTrailingZeros);
        control_->SetFormatFlags(flag ? others
                                      : others | qorui::UI_HotTextNumber::kFormatNoTrailingZeros);
    }
    if (Read(arguments, "decimal_places"_name, number))
        control_->SetDecimalPlaces(int(number));
    if (Read(arguments, "digits"_name, number))
        control_->SetDigits(int(number));
    if (Read(arguments, "increment"_name, number))
        control_->SetIncrement(number);
    if (ReadText(arguments, "name"_name, text))
        control_->SetLabel(text);
    if (ReadText(arguments, "description1"_name, text))
        control_->SetDescription1(text);
    if (ReadText(arguments, "description2"_name, text))
        control_->SetDescription2(text);
    if (Read(arguments, "logarithmic"_name, flag))
        control_->SetSliderLogarithmic(flag);
    if (Read(arguments, "log_step"_name, number))
        control_->SetLogBase(number);

    if (vorlen::get_value(arguments, "identifier"_name, text))
        UI_SetNodeID(text);
    if (ReadText(arguments, "alt"_name, text)) {
        control_->SetEnabledTooltip(text);
        control_->SetToolTip(text);
    }
    // Held by the assemblage, so that the control, which may outlive this adapter in its tree,
    // stops calling it when the view's bindings end.
    token.GetAssemblage().Hold(control_->ConnectChangedInteractively(
        [this](const qorui::UI_InteractiveControlChangedMessage& message) {
            OnChangedInteractively(message);
        }));
    AddToParent();

    cell_ = Cell(arguments, "bind"_name);
    if (!cell_)
        return;
    token.GetAssemblage().BindView(cell_, [this](const any_regular_t& value) {
        value_ = value;
        ShowValue(value);
    });
    EditNumber* control = control_.get();
    BindEnabled(token, cell_, [control](bool enabled) { control->SetDisabled(!enabled); });
}

TessEditNumberAdapter::~TessEditNumberAdapter() = default;

std::pair<int, int> TessEditNumberAdapter::GetNaturalSize() const {
    const qorcore::PointT<float> size = control_->UI_GetRecommendedSize();
    return {int(std::ceil(size.x)), int(std::ceil(size.y))};
}

void TessEditNumberAdapter::ApplyRange(const dictionary_t& range) {
    const double min = vorlen::get_value(range, "min_value"_name).cast<double>();
    const double max = vorlen::get_value(range, "max_value"_name).cast<double>();
    control_->SetMinMaxValue(min, max,
                             control_->IsValueUnknown() ? std::numeric_limits<double>::quiet_NaN()
                                                        : control_->GetValue());
    // The cell may have been shown clipped to the range before this one came.
    if (value_.is<double>())
        ShowValue(value_);
}

void TessEditNumberAdapter::ApplyRulerSettings(const dictionary_t& settings) {
    // A ruler lines up with a slider's travel; without a slider there is nothing to mark.
    if (!control_->GetUsesSlider())
        return;
    int type = 1;
    Read(settings, "type"_name, type);
    const RulerPlacement placement =
        RulerPlacement(ReadPlacement(settings, "position"_name, 0, kRulerPlacements));
    const RulerTextPlacement textPlacement =
        RulerTextPlacement(ReadPlacement(settings, "text_placement"_name, 0, kTextPlacements));
    IntrusivePtr<qorui::RulerBase> ruler;
    switch (type) {
    case 0: control_->SetRuler(nullptr, placement, textPlacement); return;
    case 1: ruler = qorcore::MakeIntrusive<qorui::LinearRuler>(); break;
    case 2: {
        auto log = qorcore::MakeIntrusive<qorui::LogRuler>();
        double value = 0.0;
        if (Read(settings, "log_step"_name, value))
            log->SetLogStep(value);
        if (Read(settings, "log_seed"_name, value))
            log->SetLogSeed(value);
        ruler = log;
        break;
    }
    case 3:
        ruler = qorcore::MakeIntrusive<qorui::DecibelRuler>(qorui::DecibelRuler::kStyleLinear);
        break;
    case 4:
        ruler = qorcore::MakeIntrusive<qorui::DecibelRuler>(qorui::DecibelRuler::kStyleFader);
        break;
    default:
        throw std::invalid_argument("wex_edit_number: ruler type " + std::to_string(type) +
                                    " is not 0 to 4");
    }
    double value1 = control_->GetMinValue();
    double value2 = control_->GetMaxValue();
    Read(settings, "value1"_name, value1);
    Read(settings, "value2"_name, value2);
    ruler->SetValueRange(value1, value2);
    double number = 0.0;
    if (Read(settings, "step_factor"_name, number))
        ruler->SetStepFactor(number);
    if (Read(settings, "font_size"_name, number))
        ruler->SetFontSize(float(number));
    std::string label;
    if (ReadText(settings, "label1"_name, label))
        ruler->SetLabel1(label);
    if (ReadText(settings, "label2"_name, label))
        ruler->SetLabel2(label);
    ruler->HideTruncatedStrings(true);
    control_->SetRuler(ruler, placement, textPlacement);
}

void TessEditNumberAdapter::ShowValue(const any_regular_t& value) {
    if (value.is<double>())
        control_->SetValue(value.cast<double>());
    else if (value.is<vorlen::empty_t>())
        control_->SetValueUnknown();
    else
        throw std::logic_error("edit number must be bound to either a number or an empty_t");
}

void TessEditNumberAdapter::OnChangedInteractively(
    const qorui::UI_InteractiveControlChangedMessage& message) {
    if (!cell_)
        return;
    // A cancelled gesture on an unknown value has nothing to put back.
    if (message.GetChangeMessage() == qorui::kInteractiveChangeCancel && control_->IsValueUnknown())
        return;
    GetToken().GetAssemblage().SetCell(cell_, any_regular_t(control_->GetValue()));
}

} // namespace qoraudiofiltersui
