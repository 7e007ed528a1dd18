#include "effects/fft_filter_graph.hpp"

#include "audio/dsp/enable_spectrum_meter_message.hpp"
#include "audio/dsp/fft_filter.hpp"
#include "audio/dsp/spectrum_meter_message.hpp"
#include "graphs/spectrum_content_layer.hpp"
#include "platform/core/localizer.hpp"
#include "platform/core/null_pointer_exception.hpp"
#include "platform/rulers/decibel_ruler.hpp"
#include "platform/rulers/linear_ruler.hpp"
#include "platform/rulers/log_ruler.hpp"
#include "platform/skins/skins.hpp"

#include <algorithm>
#include <cmath>

namespace qoraudiofiltersui {

using qorcore::IntrusivePtr;

namespace {

constexpr const char* kFrequencyLabel = "$$$/qoraudiofiltersui/FFTFilterUI/Frequency=Frequency:";
constexpr const char* kLevelLabel = "$$$/qoraudiofiltersui/FFTFilterUI/Level=Level:";
constexpr double kPointCountScale = 0.0078125; // 1 / 128
constexpr qorcore::ColorRGBA kGridColor{0.25f, 0.25f, 0.25f, 1.0f};
constexpr float kLowestDecibels = -300.0f;
constexpr float kHighestDecibels = 15.0f;

/// The fader law of the curve's levels: 0 dB at three quarters of the height, +15 dB at the top.
qorcore::FaderTranslator<double> MakeFaderTranslator() {
    return qorcore::FaderTranslator<double>(0.75, 15.0, 15.0);
}

/// The level axis of the curve. Its values are fader positions from 0 (bottom) to 1 (top), as
/// the points store them, and it reads them out in decibels through the curve's fader law; its
/// ticks sit on round levels, the most telling first, wherever they leave room.
class FaderPositionRuler : public qorui::DecibelRuler {
public:
    FaderPositionRuler() : qorui::DecibelRuler(kStyleFader), fader_(MakeFaderTranslator()) {
        SetValueRange(0.0, 1.0);
    }

    std::string FormatValue(double value) const override {
        return qorui::DecibelRuler::FormatValue(fader_.GetDecibelValue(value));
    }

protected:
    double ToAxis(double value) const override { return value; }
    double FromAxis(double axis) const override { return axis; }
    void CheckValueRange(double, double) const override {}

    void ComputeTicks(double minMajorSpacing, std::vector<double>& majors,
                      std::vector<double>& minors) const override {
        static const double kLevels[] = {0,   -6,  -12, -20, -30, -40, -60, 6,  12, -3, -10,
                                         -15, -24, -50, -80, 3,   -1,  -2,  -4, -5, -8, -18,
                                         -36, -48, -70, -90, 1,   2,   4,   5,  8,  9,  10};
        const double low = GetLowValue();
        const double high = GetHighValue();
        auto crowded = [&](const std::vector<double>& ticks, double position, double room) {
            return std::any_of(ticks.begin(), ticks.end(),
                               [&](double tick) { return PixelDistance(tick, position) < room; });
        };
        for (const double level : kLevels) {
            const double position = fader_.GetNormalizedValue(level);
            if (position < low - 1e-9 || position > high + 1e-9)
                continue;
            if (!crowded(majors, position, minMajorSpacing))
                majors.push_back(position);
        }
        const double lowest = std::max(fader_.GetDecibelValue(low), -96.0);
        for (double level = std::ceil(lowest); level <= fader_.GetDecibelValue(high); ++level) {
            const double position = fader_.GetNormalizedValue(level);
            if (!crowded(majors, position, 4.0) && !crowded(minors, position, 4.0))
                minors.push_back(position);
        }
    }

private:
    qorcore::FaderTranslator<double> fader_;
};

IntrusivePtr<qorui::RulerBase> MakeVerticalRuler() {
    auto ruler = qorcore::MakeIntrusive<FaderPositionRuler>();
    ruler->SetStepFactor(1.0);
    ruler->SetFontSize(qorui::skins::GetPalette().smallFontSize);
    ruler->HideTruncatedStrings(true);
    ruler->SetTextNearTickStart(true);
    return ruler;
}

// The frequency axes ask for labels at least 20 pixels apart; the ruler keeps them as far apart
// as their numbers need.
IntrusivePtr<qorui::RulerBase> MakeHorizontalRuler(bool logarithmic, double nyquist) {
    const double high = nyquist > FFTFilterGraph::kLowestFrequency
                            ? nyquist
                            : FFTFilterGraph::kLowestFrequency * 2.0;
    IntrusivePtr<qorui::RulerBase> ruler;
    if (logarithmic) {
        auto log = qorcore::MakeIntrusive<qorui::LogRuler>();
        log->SetLogStep(10.0);
        ruler = log;
    } else {
        ruler = qorcore::MakeIntrusive<qorui::LinearRuler>();
    }
    ruler->SetValueRange(FFTFilterGraph::kLowestFrequency, high);
    ruler->SetStepFactor(20.0);
    ruler->SetTextNearTickStart(true);
    ruler->HideTruncatedStrings(true);
    return ruler;
}

bool IsLogarithmicScale(float scaleParameter) {
    return scaleParameter < 0.5f;
}

/// The frequency axis the graph starts with; a null filter throws before anything is made.
IntrusivePtr<qorui::RulerBase>
MakeFirstHorizontalRuler(const std::shared_ptr<qoraudiofilterhost::AudioFilter>& filter) {
    qorcore::config::ThrowIfNull(filter.get(), "AudioFilter");
    return MakeHorizontalRuler(
        IsLogarithmicScale(filter->GetParameterValue(FFTFilterGraph::kScaleParameter)),
        double(filter->GetSampleRate()) * 0.5);
}

/// How many points the count parameter holds, limited to what the filter's parameters can carry.
std::size_t PointCount(const qoraudiofilterhost::AudioFilter& filter) {
    const double value = double(filter.GetParameterValue(FFTFilterGraph::kPointCountParameter)) *
                         double(FFTFilterGraph::kMaxPoints);
    if (!(value >= 1.0))
        return 0;
    const std::size_t parameters = filter.GetParameterCount();
    const std::size_t room = parameters > std::size_t(FFTFilterGraph::kFirstPointParameter)
                                 ? (parameters - FFTFilterGraph::kFirstPointParameter) / 2
                                 : 0;
    return std::min({std::size_t(std::min(value, double(FFTFilterGraph::kMaxPoints))),
                     FFTFilterGraph::kMaxPoints, room});
}

double FiniteOr(double value, double fallback) {
    return std::isfinite(value) ? value : fallback;
}

} // namespace

FFTFilterGraph::FFTFilterGraph(std::shared_ptr<qoraudiofilterhost::AudioFilter> filter)
    : CurveEditor(MakeFirstHorizontalRuler(filter), MakeVerticalRuler()),
      filter_(std::move(filter)), faderTranslator_(MakeFaderTranslator()),
      logarithmic_(IsLogarithmicScale(filter_->GetParameterValue(kScaleParameter))) {
    SetWantsKeyboardFocus(true);
    SetBackgroundColor(qorcore::ColorRGBAFixed::Black);
    SetRulerBackgroundColor(qorui::skins::GetContentBackgroundColor());
    SetRulersSupportZooming(false);
    SetMaxPointCount(kMaxPoints);
    SetUniqueHorizontalPositions(true);
    SetDrawLinearReference(false);
    SetGridColor(kGridColor);

    UpdateRulers();

    SetHorizontalEditDialogLabel(qorcore::Localize(kFrequencyLabel));
    SetVerticalEditDialogLabel(qorcore::Localize(kLevelLabel));
    SetHorizontalEditDialogUnit("Hz");
    SetVerticalEditDialogUnit("dB");
    // The dialog shows decibels while the points keep fader positions.
    SetVerticalEditDialogTranslators(
        [this](double decibels) { return faderTranslator_.GetNormalizedValue(decibels); },
        [this](double position) { return faderTranslator_.GetDecibelValue(position); });

    SetDrawHorizontalMinorTicks(true);
    SetDrawVerticalMinorTicks(true);
    UpdateCurvePointsFromComponent();
    NotifyWhenChangedInteractively(
        [this](const qorui::UI_InteractiveControlChangedMessage& message) {
            OnInteractiveChange(message);
        });

    CreateSpectrum();
    EnableMeter(true);
}

/// The live meter: the message that carries its spectra, and the graph's connection to it.
struct FFTFilterGraph::Meter {
    std::shared_ptr<qoraudiotoolkit::SpectrumMeterMessage> message;
    qorcore::ScopedConnection connection;
};

FFTFilterGraph::~FFTFilterGraph() {
    // The process thread must stop feeding the meter before this receiver goes.
    EnableMeter(false);
}

double FFTFilterGraph::GetNyquist() const {
    return double(filter_->GetSampleRate()) * 0.5;
}

bool FFTFilterGraph::IsMeterEnabled() const {
    return meter_ && meter_->message;
}

void FFTFilterGraph::EnableMeter(bool enable) {
    using EnableMessage = qoraudiotoolkit::EnableSpectrumMeterMessage<qoraudiofilters::FFTFilter>;
    const auto filter = std::dynamic_pointer_cast<qoraudiofilters::FFTFilter>(filter_);
    if (!filter)
        return;
    if (enable && !spectrumDraw_)
        CreateSpectrum();
    const IntrusivePtr<qoraudiotoolkit::SpectrumMeterDSP> meter =
        EnableMessage::Post(filter, enable);
    if (meter) {
        auto message = std::make_shared<qoraudiotoolkit::SpectrumMeterMessage>(meter);
        auto next = std::make_unique<Meter>();
        next->message = message;
        next->connection = message->ConnectMeterDataChanged(
            [this](unsigned int fftSize, const std::vector<float>& data, unsigned int count,
                   qoraudiotoolkit::SpectrumType type, bool updateLines) {
                OnMeterDataChanged(fftSize, data, count, type, updateLines);
            });
        meter_ = std::move(next);
        filter_->Post(message);
        return;
    }
    if (!meter_)
        return;
    // The message goes first, then the painter, and the connection last.
    meter_->message.reset();
    spectrumDraw_.reset();
    meter_->connection.Disconnect();
    meter_.reset();
}

void FFTFilterGraph::OnMeterDataChanged(unsigned int fftSize, const std::vector<float>& data,
                                        unsigned int count, unsigned int spectrumType,
                                        bool updateLines) {
    // While the filter is suspended the last picture stays.
    if (filter_->IsSuspended() || !spectrumDraw_)
        return;
    spectrumDraw_->SetSpectrumData(fftSize, data, count, spectrumType, updateLines);
    InvalidateContentRect();
}

void FFTFilterGraph::CreateSpectrum() {
    spectrumDraw_ = qorcore::MakeIntrusive<SpectrumDraw>(filter_->GetSampleRate());
    spectrumDraw_->GetFreqScale()->SetNumChannels(1);
    spectrumDraw_->SetShowPeakHold(false);
    spectrumDraw_->SetFill(true);
    UpdateSpectrumScales();
    if (spectrumLayer_)
        RemoveContentLayer(spectrumLayer_);
    spectrumLayer_ = qorcore::MakeIntrusive<SpectrumContentLayer>(spectrumDraw_);
    AddContentLayer(spectrumLayer_);
}

void FFTFilterGraph::UpdateRulers() {
    const double nyquist = GetNyquist();
    SetRulers(MakeHorizontalRuler(logarithmic_, nyquist), MakeVerticalRuler());
    const double high = nyquist > kLowestFrequency ? nyquist : kLowestFrequency * 2.0;
    SetRanges(kLowestFrequency, high, 1.0, 0.0);
    SetHorizontalLabel1("Hz");
    SetVerticalLabel1("dB");
    UpdateSpectrumScales();
}

void FFTFilterGraph::UpdateSpectrumScales() {
    if (!spectrumDraw_)
        return;
    const double nyquist = GetNyquist();
    const double high = nyquist > kLowestFrequency ? nyquist : kLowestFrequency * 2.0;
    spectrumDraw_->GetFreqScale()->SetScaleType(logarithmic_ ? kLogScale : kLinearScale);
    spectrumDraw_->GetMagScale()->SetScaleType(kFaderMagScale);
    const qorcore::value_range<float> frequencies{float(kLowestFrequency), float(high)};
    spectrumDraw_->GetFreqScale()->SetTotalFreqRange(frequencies);
    spectrumDraw_->SetFreqRange(frequencies);
    const qorcore::value_range<float> levels{kLowestDecibels, kHighestDecibels};
    spectrumDraw_->SetDBRange(levels);
    spectrumDraw_->GetMagScale()->SetVisibleRange(levels, true);
    spectrumDraw_->SetMinDecibelsDisplayed(kLowestDecibels);
}

void FFTFilterGraph::CurvePointsToComponent(const CurvePoints& points) {
    const std::size_t room =
        filter_->GetParameterCount() > std::size_t(kFirstPointParameter)
            ? (filter_->GetParameterCount() - std::size_t(kFirstPointParameter)) / 2
            : 0;
    const std::size_t count = std::min({points.size(), kMaxPoints, room});
    const double nyquist = GetNyquist();
    filter_->SetParameterQuietly(kCurveWriteParameter, 1.0f);
    filter_->SetParameterQuietly(kPointCountParameter, float(double(count) * kPointCountScale));
    for (std::size_t i = 0; i < count; ++i) {
        const int index = kFirstPointParameter + 2 * int(i);
        const double x = nyquist > 0.0 ? points[i].position.first / nyquist : 0.0;
        filter_->SetParameterValue(index, float(x));
        filter_->SetParameterValue(index + 1, float(points[i].position.second));
    }
    filter_->SetParameterQuietly(kCurveWriteParameter, 0.0f);
    UpdateResponseData();
}

void FFTFilterGraph::UpdateCurvePointsFromComponent() {
    const std::size_t count = PointCount(*filter_);
    const double nyquist = GetNyquist();
    CurvePoints points;
    points.reserve(count);
    xCache_.resize(count);
    yCache_.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
        const int index = kFirstPointParameter + 2 * int(i);
        const float x = filter_->GetParameterValue(index);
        const float y = filter_->GetParameterValue(index + 1);
        xCache_[i] = x;
        yCache_[i] = y;
        // A value that is no number stays in the cache, so that it is read again, but the
        // curve can only hold finite points.
        points.emplace_back(std::uint32_t(i), FiniteOr(double(x) * nyquist, 0.0),
                            FiniteOr(double(y), 0.0));
    }
    SetCurvePoints(points);
    if (count >= 2) {
        std::vector<char> flags(count, 1);
        SetVisiblePoints(flags);
        SetMoveablePoints(flags, false);
        flags.front() = 0;
        flags.back() = 0;
        SetDeletablePoints(flags);
        SetMoveablePoints(flags, true);
    }
    UpdateResponseData();
}

void FFTFilterGraph::UpdateResponseData() {
    std::vector<float> response;
    if (!filter_->GetResponseCurve(0, kResponsePointCount, response))
        return;
    SetResponseData(std::vector<double>(response.begin(), response.end()), 0);
}

void FFTFilterGraph::ResetPoints() {
    const double level = faderTranslator_.GetNormalizedValue(0.0);
    CurvePointsToComponent(
        {CurvePoint(0, kLowestFrequency, level), CurvePoint(1, GetNyquist(), level)});
}

void FFTFilterGraph::SetCurrentRange(double horizontal_start, double horizontal_end,
                                     double vertical_start, double vertical_end) {
    CurveEditor::SetCurrentRange(horizontal_start, horizontal_end, vertical_start, vertical_end);
    const double nyquist = GetNyquist();
    if (nyquist > 0.0) {
        filter_->SetParameterQuietly(kRangeLowParameter, float(horizontal_start / nyquist));
        filter_->SetParameterQuietly(kRangeHighParameter, float(horizontal_end / nyquist));
    }
    UpdateResponseData();
}

void FFTFilterGraph::UI_SizeChanged() {
    CurveEditor::UI_SizeChanged();
    UpdateCurvePointsFromComponent();
}

void FFTFilterGraph::OnInteractiveChange(
    const qorui::UI_InteractiveControlChangedMessage& message) {
    const int change = message.GetChangeMessage();
    if (change == qorui::kInteractiveChangeBegin)
        interacting_ = true;
    else if (change == qorui::kInteractiveChangeFinish || change == qorui::kInteractiveChangeCancel)
        interacting_ = false;
    if (change == qorui::kInteractiveChangeContinue || change == qorui::kInteractiveChangeFinish)
        CurvePointsToComponent(GetCurvePoints());
}

void FFTFilterGraph::SyncParameters() {
    // The user's drag has the last word until it ends.
    if (interacting_)
        return;
    const bool logarithmic = IsLogarithmicScale(filter_->GetParameterValue(kScaleParameter));
    if (logarithmic != logarithmic_) {
        logarithmic_ = logarithmic;
        UpdateRulers();
    }
    const std::size_t count = PointCount(*filter_);
    if (count != xCache_.size()) {
        UpdateCurvePointsFromComponent();
        return;
    }
    for (std::size_t i = 0; i < count; ++i) {
        const int index = kFirstPointParameter + 2 * int(i);
        // Exact comparison: a NaN never matches, so it is read again.
        if (!(filter_->GetParameterValue(index) == xCache_[i]) ||
            !(filter_->GetParameterValue(index + 1) == yCache_[i])) {
            UpdateCurvePointsFromComponent();
            return;
        }
    }
}

} // namespace qoraudiofiltersui
