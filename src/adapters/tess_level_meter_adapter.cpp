#include "adapters/tess_level_meter_adapter.hpp"

#include "adapters/adapter_arguments.hpp"
#include "layout/extents.hpp"
#include "platform/rulers/linear_ruler.hpp"
#include "platform/tess/assemblage.hpp"

#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>

namespace qoraudiofiltersui {

using namespace adapter_arguments;
using qorui::LevelMeterKind;
using qorui::LevelMeterOrientation;
using vorlen::any_regular_t;
using vorlen::array_t;
using vorlen::dictionary_t;
using vorlen::name_t;
using vorlen::operator""_name;

namespace {

// A meter the script gives no size: thin across its axis, long along it.
constexpr float kDefaultThickness = 24.0f;
constexpr float kDefaultLength = 120.0f;
// Too many ticks for any meter to draw: a script asking for more has a wrong increment.
constexpr double kMaxRulerValues = 1000.0;

LevelMeterKind KindOf(name_t type) {
    constexpr const char* kinds[] = {"input", "output", "master", "gain_reduction", "loudness"};
    for (int i = 0; i != 5; ++i)
        if (type == name_t(kinds[i]))
            return LevelMeterKind(i);
    throw std::invalid_argument(std::string("qor_level_meter: type '") + type.c_str() +
                                "' is none of 'input' 'output' 'master' 'gain_reduction' "
                                "'loudness'");
}

int ChannelCount(const dictionary_t& arguments) {
    const auto found = arguments.find("num_channels"_name);
    if (found == arguments.end())
        return 1;
    // A list of channels (their names) counts them.
    if (found->second.is<array_t>())
        return int(found->second.cast<array_t>().size());
    return int(found->second.cast<double>());
}

/// A flag of the sheet: true, or a number other than 0.
bool IsOn(const any_regular_t& value) {
    if (value.is<double>())
        return value.cast<double>() != 0.0;
    if (value.is<vorlen::empty_t>())
        return false;
    return value.cast<bool>();
}

} // namespace

TessLevelMeterAdapter::TessLevelMeterAdapter(const dictionary_t& arguments, qorui::UI_Node* parent,
                                             const qormarltess::FactoryToken& token)
    : UI_QORClientWidgetTessAdapter(parent, token), afterRound_(token) {
    name_t orientationName;
    Read(arguments, "orientation"_name, orientationName);
    const LevelMeterOrientation orientation = orientationName == name_t("horizontal"_name)
                                                  ? LevelMeterOrientation::kHorizontal
                                                  : LevelMeterOrientation::kVertical;
    name_t type("input"_name);
    Read(arguments, "type"_name, type);
    const LevelMeterKind kind = KindOf(type);
    const int channels = ChannelCount(arguments);
    const bool vertical = orientation == LevelMeterOrientation::kVertical;
    float width = vertical ? kDefaultThickness : kDefaultLength;
    float height = vertical ? kDefaultLength : kDefaultThickness;
    Read(arguments, "width"_name, width);
    Read(arguments, "height"_name, height);
    meter_ = qorcore::MakeIntrusive<qorui::UI_LevelMeterView>(channels, orientation, kind, width,
                                                              height);
    SetNode(meter_);
    std::string text;
    if (vorlen::get_value(arguments, "identifier"_name, text))
        UI_SetNodeID(text);

    qorui::LevelMeterSettings settings = meter_->GetSettings();
    Read(arguments, "min_dB"_name, settings.minDB);
    Read(arguments, "max_dB"_name, settings.maxDB);
    Read(arguments, "show_LED"_name, settings.showLED);
    Read(arguments, "show_gradient"_name, settings.showGradient);
    Read(arguments, "show_valley"_name, settings.showValley);
    Read(arguments, "use_spectrum_colors"_name, settings.useSpectrumColors);
    Read(arguments, "caution_level"_name, settings.cautionLevel);
    Read(arguments, "warning_level"_name, settings.warningLevel);
    Read(arguments, "zero_ref_Value"_name, settings.zeroRefValue);
    Read(arguments, "clipped_ref_level"_name, settings.clippedRefLevel);
    meter_->SetSettings(settings);

    bool flag = false;
    if (Read(arguments, "show_ruler"_name, flag))
        meter_->SetShowRuler(flag);
    if (Read(arguments, "show_peaks"_name, flag))
        meter_->SetShowPeaks(flag);
    if (Read(arguments, "show_clip"_name, flag))
        meter_->SetShowClipIndicators(flag);
    if (Read(arguments, "show_frames"_name, flag))
        meter_->SetShowFrames(flag);

    // A scale of the script's own values: a linear ruler marks exactly those.
    std::vector<double> marks;
    array_t values;
    double increment = 0.0;
    if (Read(arguments, "ruler_values"_name, values)) {
        for (const any_regular_t& value : values)
            marks.push_back(value.cast<double>());
    } else if (Read(arguments, "ruler_increment"_name, increment)) {
        if (!(increment > 0.0) || (settings.maxDB - settings.minDB) / increment > kMaxRulerValues)
            throw std::invalid_argument("qor_level_meter: ruler_increment " +
                                        std::to_string(increment) +
                                        " does not step through min_dB to max_dB");
        // Counted in steps, so that rounding does not lose the last value.
        const auto steps = long(std::floor((settings.maxDB - settings.minDB) / increment + 1e-9));
        for (long i = 0; i <= steps; ++i)
            marks.push_back(settings.minDB + double(i) * increment);
    }
    if (!marks.empty()) {
        auto ruler = qorcore::MakeIntrusive<qorui::LinearRuler>();
        ruler->SetCustomValues(marks);
        meter_->SetRuler(ruler);
    }
    double step = 0.0;
    if (Read(arguments, "ruler_step"_name, step))
        meter_->GetRuler()->SetStepFactor(step);

    double value = 0.0;
    if (Read(arguments, "value"_name, value))
        meter_->SetLevel(float(value), true);
    if (ReadText(arguments, "ruler_label1"_name, text))
        meter_->SetRulerLabel1(text);
    if (ReadText(arguments, "ruler_label2"_name, text))
        meter_->SetRulerLabel2(text);
    float gap = 0.0f;
    if (Read(arguments, "meter_gap"_name, gap))
        meter_->SetMeterGap(gap);
    int baseline = 0;
    if (Read(arguments, "baseline"_name, baseline))
        baseline_ = baseline;
    meter_->ArrangeMeters();
    AddToParent();

    qormarltess::Assemblage& assemblage = token.GetAssemblage();
    // A cell to follow, or a plain boolean that sets the state once.
    if (const auto found = arguments.find("loudness_valid"_name);
        found != arguments.end() && found->second.is<bool>()) {
        meter_->SetLoudnessValid(found->second.cast<bool>());
    } else if (const name_t cell = Cell(arguments, "loudness_valid"_name)) {
        qorui::UI_LevelMeterView* meter = meter_.get();
        assemblage.BindView(cell,
                            [meter](const any_regular_t& v) { meter->SetLoudnessValid(IsOn(v)); });
    }
    if (const name_t cell = Cell(arguments, "freeze"_name))
        assemblage.BindView(cell, [this](const any_regular_t& v) { ApplyFreeze(v); });
    if (const name_t cell = Cell(arguments, "reset"_name))
        assemblage.BindView(cell, [this](const any_regular_t& v) { ApplyReset(v); });
    clipCell_ = Cell(arguments, "clip_indicator"_name);
    if (clipCell_) {
        assemblage.BindView(clipCell_, [this](const any_regular_t& v) { ApplyClipIndicator(v); });
        // Held by the assemblage: the meter may outlive this adapter in its tree.
        assemblage.Hold(meter_->GetClipStateChangedSignal().Connect(
            [this](bool anyClipped) { OnClipStateChanged(anyClipped); }));
    }
    if (const name_t cell = Cell(arguments, "bind"_name))
        assemblage.BindView(cell, [this](const any_regular_t& v) { ApplyLevel(v); });
}

TessLevelMeterAdapter::~TessLevelMeterAdapter() = default;

std::pair<int, int> TessLevelMeterAdapter::GetNaturalSize() const {
    const auto& frame = meter_->GetFrame();
    return {int(std::ceil(frame.width)), int(std::ceil(frame.height))};
}

void TessLevelMeterAdapter::measure(vorlen::extents_t& result) {
    UI_QORClientWidgetTessAdapter::measure(result);
    if (baseline_)
        result.vertical().guide_set = {*baseline_};
}

void TessLevelMeterAdapter::ApplyLevel(const any_regular_t& value) {
    float level = std::numeric_limits<float>::quiet_NaN(); // no level: the bar empties
    if (value.is<double>())
        level = float(value.cast<double>());
    else if (!value.is<vorlen::empty_t>())
        throw std::logic_error("value must be bound to either a number or an empty_t");
    if (frozen_) {
        waiting_ = level;
        return;
    }
    applying_ = true;
    meter_->SetLevel(level, true);
    applying_ = false;
}

void TessLevelMeterAdapter::ApplyFreeze(const any_regular_t& value) {
    frozen_ = IsOn(value);
    if (frozen_ || !waiting_)
        return;
    const float level = *waiting_;
    waiting_.reset();
    applying_ = true;
    meter_->SetLevel(level, true);
    applying_ = false;
}

void TessLevelMeterAdapter::ApplyReset(const any_regular_t& value) {
    const bool on = IsOn(value);
    const bool rising = on && !resetOn_;
    resetOn_ = on;
    if (!rising)
        return;
    applying_ = true;
    meter_->ResetPeaksAndValleys();
    meter_->ResetClippedStates();
    applying_ = false;
}

void TessLevelMeterAdapter::ApplyClipIndicator(const any_regular_t& value) {
    // The meter lights its indicators itself; the sheet can only put them out.
    if (IsOn(value) || !meter_->IsAnyClipped())
        return;
    applying_ = true;
    meter_->ResetClippedStates();
    applying_ = false;
}

void TessLevelMeterAdapter::OnClipStateChanged(bool anyClipped) {
    if (!applying_) {
        GetToken().GetAssemblage().SetCell(clipCell_, any_regular_t(anyClipped));
        return;
    }
    // Lit or put out by a value of the sheet: the cell hears of it once the round is over.
    afterRound_.Post([this, anyClipped] {
        GetToken().GetAssemblage().SetCell(clipCell_, any_regular_t(anyClipped));
    });
}

} // namespace qoraudiofiltersui
