#include "effects/loudness_meter_editor_view.hpp"

#include "audio/dsp/loudness_meter_message.hpp"
#include "framework/effect_catalogue.hpp"
#include "framework/library.hpp"
#include "platform/core/localizer.hpp"
#include "platform/core/null_pointer_exception.hpp"
#include "platform/host/audio_filter_parameter_info.hpp"
#include "platform/panels/ui_static_text.hpp"
#include "platform/rulers/linear_ruler.hpp"
#include "platform/rulers/ui_level_meter_view.hpp"
#include "platform/skins/skins.hpp"
#include "platform/tess/ui_qor_tess_root.hpp"
#include "platform/widgets/ui_button.hpp"

#include <cmath>
#include <cstdio>

namespace qoraudiofiltersui {

namespace {

using qoraudiofilters::LoudnessMeter;
using qoraudiofilters::LoudnessMeterValues;

#ifndef QAFUI_LOUDNESS_METER_PROXY
const EditorClassRegistration
    registration("LoudnessMeter", [](std::shared_ptr<AudioFilter> filter) {
        return IntrusivePtr<AudioFilterEditorViewBase>(
            LoudnessMeterEditorView::Create(std::move(filter)));
    });
#endif

const qorcore::ColorRGBA kOverColor{0.901961f, 0.525490f, 0.098039f, 1.0f};
const qorcore::ColorRGBA kWarningColor{0.929412f, 0.321569f, 0.243137f, 1.0f};
const qorcore::ColorRGBA kCautionColor{0.960784f, 0.819608f, 0.274510f, 1.0f};
const qorcore::ColorRGBA kNormalColor{0.266667f, 0.709804f, 0.337255f, 1.0f};

std::string OneDecimal(float value) {
    char text[64];
    std::snprintf(text, sizeof text, "%.1f", double(value));
    return text;
}

/// The greys of the newer look are made for its dark panels; on the light panels of the classic
/// look the texts take the look's own text colour, or they could not be read.
qorcore::ColorRGBA TextGray(int index) {
    return qorui::skins::IsRunningV7OrBeyond() ? qorui::skins::GetSpectrumGrayColor(index)
                                               : qorui::skins::GetDefaultTextColor();
}

float ToLinear(float decibels) {
    return float(std::pow(10.0, double(decibels) / 20.0));
}

} // namespace

IntrusivePtr<LoudnessMeterEditorView>
LoudnessMeterEditorView::Create(std::shared_ptr<AudioFilter> filter) {
    return IntrusivePtr<LoudnessMeterEditorView>(new LoudnessMeterEditorView(std::move(filter)));
}

float LoudnessMeterEditorView::RoundForDisplay(float value) {
    const double scale = value > -100.0f ? 10.0 : 1.0;
    return float(std::round(double(value) * scale) / scale);
}

std::vector<double> LoudnessMeterEditorView::RulerValues(float min, float max, float step,
                                                         float target) {
    std::vector<double> values;
    if (!(step > 0.0f))
        return values;
    bool passed = false;
    for (float v = min; v <= max + step * 1e-3f; v += step) {
        if (target - v >= step / 2 || passed) {
            values.push_back(std::round(double(v)));
        } else if (target <= max) {
            values.push_back(std::round(double(target)));
            passed = true;
        }
    }
    return values;
}

template <class T>
T& LoudnessMeterEditorView::Control(const char* identifier) const {
    const IntrusivePtr<qormarltess::UI_QORTessRoot> root = GetTessRoot();
    T* control =
        root ? dynamic_cast<T*>(root->GetTessViewHolder().GetControl(identifier).get()) : nullptr;
    if (!control)
        qorcore::config::DoThrowNullPtrException(identifier);
    return *control;
}

LoudnessMeterEditorView::LoudnessMeterEditorView(std::shared_ptr<AudioFilter> filter)
    : MarlTessAudioFilterEditorView(filter, GetLibraryDrawSupplier(), "LoudnessMeter",
                                    GetLibraryResourceManager(), true) {
    meterShared_ = std::dynamic_pointer_cast<LoudnessMeter>(filter);
    meter_ = meterShared_.get();
    if (!meter_)
        qorcore::config::DoThrowNullPtrException("LoudnessMeter");
    message_ = std::make_shared<qoraudiofilters::LoudnessMeterMessage>(meter_);
    infinityText_ = qorcore::Localize("$$$/qoraudiofiltersui/LoudnessMeter/Infinity=-#{U+221E}");

    CreateLayout();
    levelMeter_ = &Control<qorui::UI_LevelMeterView>("LevelMeter");
    shortTermMeter_ = &Control<qorui::UI_LevelMeterView>("ShortTermMeter");
    integratedMeter_ = &Control<qorui::UI_LevelMeterView>("IntegratedMeter");
    momentaryMeter_ = &Control<qorui::UI_LevelMeterView>("MomentaryMeter");
    for (const char* id : {"ShortTermLabel", "MaxShortTermLabel", "IntegratedLabel",
                           "LoudnessRangeLabel", "TruePeakLabel"})
        captions_.push_back(&Control<qorui::UI_StaticText>(id));
    shortTerm_ = &Control<qorui::UI_StaticText>("ShortTerm");
    maxShortTerm_ = &Control<qorui::UI_StaticText>("MaxShortTerm");
    integrated_ = &Control<qorui::UI_StaticText>("Integrated");
    loudnessRange_ = &Control<qorui::UI_StaticText>("LoudnessRange");
    truePeak_ = &Control<qorui::UI_StaticText>("TruePeak");
    resetButton_ = &Control<qorui::UI_Button>("ResetMeters");
    for (const char* id : {"ShortTermUnit", "MaxShortTermUnit", "IntegratedUnit",
                           "ShortTermMeterUnit", "IntegratedMeterUnit", "MomentaryMeterUnit"})
        unitTexts_.push_back(&Control<qorui::UI_StaticText>(id));
    Control<qorui::UI_StaticText>("TruePeakUnit").SetText("dBTP");

    levelMeter_->SetLoudnessValid(true);
    levelMeter_->SetShowPeaks(true);
    levelMeter_->SetClippedRefLevel(1.0f);
    resetButton_->NotifyWhenChanged([this](const qorui::UI_ControlChangedMessage&) { Reset(); });

    // The observers, each run once at open in the same order.
    const std::function<void()> observers[] = {
        [this] {
            const float target = RealValue(LoudnessMeter::kTargetLevel);
            if (target != target_) {
                target_ = target;
                UpdateScale();
                // Relative texts are measured from the target.
                UpdateFromValues(meter_->GetLoudnessMeterValues(), true);
            }
        },
        [this] {
            maxTruePeak_ = RealValue(LoudnessMeter::kMaxTruePeak);
            UpdateFromValues(shown_, true);
            levelMeter_->SetWarningLevel(maxTruePeak_ - levelMeter_->GetMaxDBValue());
        },
        [this] {
            const int scale = int(RealValue(LoudnessMeter::kScale) + 0.5f);
            if (scale != scale_) {
                scale_ = scale;
                UpdateScale();
                UpdateFromValues(meter_->GetLoudnessMeterValues(), true);
            }
        },
        [this] {
            const int unit = int(RealValue(LoudnessMeter::kUnit) + 0.5f);
            if (unit != unit_) {
                unit_ = unit;
                relativeUnits_ = unit_ == 2 || unit_ == 3;
                UpdateUnitTexts();
                UpdateScale();
                UpdateFromValues(meter_->GetLoudnessMeterValues(), true);
            }
        },
        [this] {
            const float low = RealValue(LoudnessMeter::kLowLevelBelow);
            if (low != lowLevel_) {
                lowLevel_ = low;
                UpdateScale();
            }
        },
    };
    for (int index = 0; index < int(std::size(observers)); ++index)
        AddParameterObserver(index, observers[index]);
    UpdateUnitTexts();
    UpdateScale();
    for (const auto& observer : observers)
        observer();
    UpdateFromValues(meter_->GetLoudnessMeterValues(), true);
    UpdateCaptionColors();
    levelMeter_->SetCustomColors(kWarningColor, kCautionColor, kNormalColor);
    for (qorui::UI_LevelMeterView* meter :
         {levelMeter_, shortTermMeter_, integratedMeter_, momentaryMeter_})
        if (meter->GetRuler())
            meter->GetRuler()->SetColorEnabled(true);
    EnableMeter();
    MarlTessAudioFilterEditorView::SyncParameters();
}

LoudnessMeterEditorView::~LoudnessMeterEditorView() {
    DisableMeter();
}

float LoudnessMeterEditorView::RealValue(int index) const {
    const auto info = GetFilter()->GetParameterInfo(index);
    const float normalised = GetFilter()->GetParameterValue(index);
    return info ? info->PlainFromNormalised(normalised) : normalised;
}

void LoudnessMeterEditorView::EnableMeter() {
    messageConnection_ = message_->ConnectMeterDataChanged(
        [this] { UpdateFromValues(message_->GetLoudnessMeterValues(), false); });
    meter_->Post(message_);
}

void LoudnessMeterEditorView::DisableMeter() {
    messageConnection_.Disconnect();
    resetConnection_.Disconnect();
}

void LoudnessMeterEditorView::Reset() {
    auto reset = std::make_shared<qoraudiofilters::LoudnessMeterResetMessage>(meter_);
    resetConnection_ = reset->ConnectResetCompleted([this] { OnResetCompleted(); });
    meter_->Post(reset);
}

void LoudnessMeterEditorView::OnResetCompleted() {
    for (qorui::UI_LevelMeterView* meter :
         {levelMeter_, shortTermMeter_, integratedMeter_, momentaryMeter_})
        meter->ResetClippedStates();
    heldTruePeak_ = kNoValue;
    UpdateFromValues(meter_->GetLoudnessMeterValues(), true);
}

void LoudnessMeterEditorView::SetNumberText(qorui::UI_StaticText& control, float value, bool valid,
                                            bool over) {
    if (!valid) {
        control.SetText("--");
    } else {
        const float shown = relativeUnits_ ? value - target_ : value;
        control.SetText(value > kNoValue ? OneDecimal(shown) : infinityText_);
    }
    control.SetTextColor(over ? kOverColor : TextGray(7));
}

void LoudnessMeterEditorView::UpdateFromValues(const LoudnessMeterValues& raw, bool force) {
    LoudnessMeterValues values = raw;
    for (float* v : {&values.momentary, &values.shortTerm, &values.maxShortTerm, &values.integrated,
                     &values.loudnessRange, &values.truePeak})
        *v = RoundForDisplay(*v);

    const bool shortTermChanged =
        values.shortTerm != shown_.shortTerm || values.shortTermValid != shown_.shortTermValid;
    const bool maxShortTermChanged = values.maxShortTerm != shown_.maxShortTerm ||
                                     values.shortTermValid != shown_.shortTermValid;
    const bool integratedChanged =
        values.integrated != shown_.integrated || values.integratedValid != shown_.integratedValid;
    const bool rangeChanged =
        values.loudnessRange != shown_.loudnessRange || values.rangeValid != shown_.rangeValid;
    const bool truePeakChanged = values.truePeak != shown_.truePeak;

    if (shortTermChanged || force)
        SetNumberText(*shortTerm_, values.shortTerm, values.shortTermValid,
                      target_ < values.shortTerm);
    if (maxShortTermChanged || force)
        SetNumberText(*maxShortTerm_, values.maxShortTerm, values.shortTermValid,
                      target_ < values.maxShortTerm);
    if (integratedChanged || force)
        SetNumberText(*integrated_, values.integrated, values.integratedValid,
                      target_ < values.integrated);

    const float offset = relativeUnits_ ? target_ : 0.0f;
    shortTermMeter_->SetLevel(ToLinear(values.shortTerm - offset), true);
    integratedMeter_->SetLevel(ToLinear(values.integrated - offset), true);
    momentaryMeter_->SetLevel(ToLinear(values.momentary - offset), true);
    if (shortTermChanged || force)
        shortTermMeter_->SetLoudnessValid(values.shortTermValid);
    if (integratedChanged || force)
        integratedMeter_->SetLoudnessValid(values.integratedValid);

    if (rangeChanged || force) {
        loudnessRange_->SetText(values.rangeValid ? OneDecimal(values.loudnessRange) : "--");
        loudnessRange_->SetTextColor(TextGray(7));
    }

    if (GetFilter()->IsSuspended())
        levelMeter_->ResetPeaksAndValleys();
    levelMeter_->SetLevel(std::vector<float>{ToLinear(values.truePeak)});

    if (truePeakChanged || force) {
        heldTruePeak_ = std::max(heldTruePeak_, values.truePeak);
        truePeak_->SetText(heldTruePeak_ > kNoValue ? OneDecimal(heldTruePeak_) : infinityText_);
        truePeak_->SetTextColor(heldTruePeak_ > maxTruePeak_ ? kOverColor : TextGray(7));
    }
    shown_ = values;
}

void LoudnessMeterEditorView::UpdateScale() {
    const float offset = relativeUnits_ ? 0.0f : target_;
    const bool wide = scale_ == 1;
    const float step = wide ? 6.0f : 3.0f;
    const float min = (wide ? -36.0f : -18.0f) + offset;
    const float max = (wide ? 18.0f : 9.0f) + offset;
    const float target = relativeUnits_ ? 0.0f : target_;
    const std::vector<double> values = RulerValues(min, max, step, target);
    const float caution = offset + lowLevel_ - max;
    const float warning = offset - max;
    for (qorui::UI_LevelMeterView* meter : {shortTermMeter_, integratedMeter_, momentaryMeter_}) {
        meter->SetCautionAndWarningLevels(caution, warning);
        meter->SetMinMaxDBValues(min, max);
        if (auto* ruler = dynamic_cast<qorui::LinearRuler*>(meter->GetRuler())) {
            ruler->SetCustomValues(values, 1.0);
            ruler->SetLabel1(OneDecimal(min));
        }
    }
}

void LoudnessMeterEditorView::UpdateUnitTexts() {
    const char* text = unit_ == 2 || unit_ == 3 ? "LU" : unit_ == 1 ? "LKFS" : "LUFS";
    for (qorui::UI_StaticText* unit : unitTexts_)
        unit->SetText(text);
}

void LoudnessMeterEditorView::UpdateCaptionColors() {
    for (qorui::UI_StaticText* caption : captions_)
        caption->SetTextColor(TextGray(9));
}

void LoudnessMeterEditorView::OnThemeChanged() {
    MarlTessAudioFilterEditorView::OnThemeChanged();
    UpdateCaptionColors();
    UpdateFromValues(shown_, true);
}

} // namespace qoraudiofiltersui
