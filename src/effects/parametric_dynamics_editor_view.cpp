#include "effects/parametric_dynamics_editor_view.hpp"

#include "audio/dsp/parametric_dynamics_meter_message.hpp"
#include "framework/effect_catalogue.hpp"
#include "framework/library.hpp"
#include "platform/core/localizer.hpp"
#include "platform/core/null_pointer_exception.hpp"
#include "platform/draw/penrig.hpp"
#include "platform/rulers/ui_level_meter_view.hpp"
#include "platform/skins/skins.hpp"
#include "platform/tess/ui_qor_tess_root.hpp"
#include "sheet/sheet.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>

namespace qoraudiofiltersui {

namespace {

using qoraudiofilters::ParametricDynamics;
using qoraudiofilters::parametricdynamics::AutoGateState;
using qoraudiofilters::parametricdynamics::MeterData;
using qorcore::ColorRGBA;
using qorcore::RectT;
using qorui::penrig::Penrig;
namespace skins = qorui::skins;
using vorlen::operator""_name;

const EditorClassRegistration
    registration("ParametricDynamics", [](std::shared_ptr<AudioFilter> filter) {
        return IntrusivePtr<AudioFilterEditorViewBase>(
            ParametricDynamicsEditorView::Create(std::move(filter)));
    });

// The fill under the dynamics curves of the library, and its line a shade lighter.
const ColorRGBA kCurveColor{0.262745f, 0.588235f, 0.850980f, 1.0f};
const ColorRGBA kCurveLineColor{0.45f, 0.72f, 0.95f, 1.0f};
const ColorRGBA kPlotColor{0.0f, 0.0f, 0.0f, 1.0f};
const ColorRGBA kGridColor{0.25f, 0.25f, 0.25f, 1.0f};
const ColorRGBA kUnityColor{0.45f, 0.45f, 0.45f, 1.0f};
const ColorRGBA kCeilingColor{0.901961f, 0.525490f, 0.098039f, 1.0f};
const ColorRGBA kGateLampColor{0.960784f, 0.819608f, 0.274510f, 1.0f};
const ColorRGBA kLimiterLampColor{0.929412f, 0.321569f, 0.243137f, 1.0f};

// The graph's scale when the sheet gives none.
constexpr double kDefaultMinimum = -72.0;
constexpr double kDefaultMaximum = 12.0;
constexpr double kDefaultStep = 12.0;
// Room for the labels: left of and under the plot.
constexpr float kLeftMargin = 26.0f;
constexpr float kBottomMargin = 16.0f;
constexpr float kEdgeMargin = 6.0f;

ColorRGBA Mix(const ColorRGBA& a, const ColorRGBA& b, float share) {
    return {a.red + (b.red - a.red) * share, a.green + (b.green - a.green) * share,
            a.blue + (b.blue - a.blue) * share, 1.0f};
}

float Linear(float decibels) {
    return float(std::pow(10.0, double(decibels) / 20.0));
}

std::string Label(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", value);
    return text;
}

} // namespace

/// The band's static gain: output level over input level, both on the sheet's scale, with the
/// unity line, the limiter's ceiling and a dot where the band's level is now.
class ParametricDynamicsEditorView::Graph : public qorui::UI_Node {
public:
    void SetScale(double minimum, double maximum, double step) {
        if (!(maximum > minimum) || !(step > 0.0) || !std::isfinite(maximum - minimum))
            return;
        minimum_ = minimum;
        maximum_ = maximum;
        step_ = std::max(step, (maximum - minimum) / 64.0);
    }
    double GetMinimum() const { return minimum_; }
    double GetMaximum() const { return maximum_; }

    void SetCurve(std::vector<std::array<double, 2>> curve, double ceiling) {
        curve_ = std::move(curve);
        ceiling_ = ceiling;
        EmitInvalidate();
    }
    const std::vector<std::array<double, 2>>& GetCurve() const { return curve_; }

    /// The live dot moves only by half pixels: tiny level changes cost no repaint.
    void SetLive(double input, double output) {
        float x = -1.0f, y = -1.0f;
        if (input > minimum_ && std::isfinite(output)) {
            x = std::round(2.0f * X(input)) * 0.5f;
            y = std::round(2.0f * Y(std::clamp(output, minimum_, maximum_))) * 0.5f;
        }
        if (x == dotX_ && y == dotY_)
            return;
        dotX_ = x;
        dotY_ = y;
        EmitInvalidate();
    }

    /// The labels' colour, the look's; the plot is dark in every look.
    void SetTextColor(const ColorRGBA& color) {
        textColor_ = color;
        EmitInvalidate();
    }

    RectT<float> GetPlotRect() const {
        const RectT<float> b = GetBounds();
        return {kLeftMargin, kEdgeMargin, std::max(0.0f, b.width - kLeftMargin - kEdgeMargin),
                std::max(0.0f, b.height - kEdgeMargin - kBottomMargin)};
    }

    void UI_Draw(Penrig* penrig) override {
        Penrig& p = *penrig;
        const RectT<float> plot = GetPlotRect();
        if (plot.width <= 0.0f || plot.height <= 0.0f)
            return;
        p.FillRect(plot, kPlotColor);
        DrawGrid(p, plot);
        p.PushClip(plot);
        DrawCurve(p, plot);
        p.PopClip();
        p.FrameRect(plot, kGridColor);
        UI_Node::UI_Draw(penrig);
    }

private:
    float X(double decibels) const {
        const RectT<float> plot = GetPlotRect();
        return plot.x + float((decibels - minimum_) / (maximum_ - minimum_)) * plot.width;
    }
    float Y(double decibels) const {
        const RectT<float> plot = GetPlotRect();
        return plot.y + float((maximum_ - decibels) / (maximum_ - minimum_)) * plot.height;
    }

    void DrawGrid(Penrig& p, const RectT<float>& plot) const {
        p.SetFont(qorui::penrig::Font(skins::GetPalette().smallFontSize));
        const float textHeight = std::ceil(skins::GetPalette().smallFontSize * 1.3f);
        for (double v = minimum_; v <= maximum_ + step_ * 1e-6; v += step_) {
            // On half pixels, so a line is one device pixel wide at 1x and two at 2x.
            const float x = std::floor(X(v)) + 0.5f;
            const float y = std::floor(Y(v)) + 0.5f;
            p.SetPen(1.0f, std::abs(v) < step_ * 1e-6 ? kUnityColor : kGridColor);
            p.DrawLine(x, plot.y, x, plot.Bottom());
            p.DrawLine(plot.x, y, plot.Right(), y);
            const std::string text = Label(std::round(v * 100.0) / 100.0);
            p.SetColor(textColor_);
            p.DrawText(text, {0.0f, y - textHeight / 2, plot.x - 4.0f, textHeight},
                       qorui::penrig::HorizontalAlignment::kRight);
            p.DrawText(text, {x - 20.0f, plot.Bottom() + 2.0f, 40.0f, textHeight},
                       qorui::penrig::HorizontalAlignment::kCenter);
        }
        p.SetColor(Mix(kUnityColor, ColorRGBA{1, 1, 1, 1}, 0.2f));
        p.DrawText(outputCaption_, {plot.x + 4.0f, plot.y + 2.0f, plot.width / 2, textHeight});
        p.DrawText(inputCaption_,
                   {plot.x + plot.width / 2, plot.Bottom() - textHeight - 2.0f,
                    plot.width / 2 - 4.0f, textHeight},
                   qorui::penrig::HorizontalAlignment::kRight);
    }

    void DrawCurve(Penrig& p, const RectT<float>& plot) const {
        p.SetAntialias(true);
        p.SetPen(1.0f, kUnityColor);
        p.SetDash({3.0f, 3.0f});
        p.DrawLine(X(minimum_), Y(minimum_), X(maximum_), Y(maximum_));
        if (std::isfinite(ceiling_) && ceiling_ >= minimum_ && ceiling_ <= maximum_) {
            const float y = std::floor(Y(ceiling_)) + 0.5f;
            p.SetPen(1.0f, kCeilingColor);
            p.DrawLine(plot.x, y, plot.Right(), y);
        }
        p.SetDash({});
        if (curve_.size() < 2)
            return;
        // Outputs far under the plot are drawn at its floor, so the path stays finite.
        const auto y = [&](double decibels) {
            return Y(std::clamp(decibels, minimum_ - 1.0, maximum_ + 1.0));
        };
        p.NewPath();
        p.MoveTo(X(curve_.front()[0]), plot.Bottom());
        for (const auto& point : curve_)
            p.LineTo(X(point[0]), y(point[1]));
        p.LineTo(X(curve_.back()[0]), plot.Bottom());
        p.ClosePath();
        p.SetColor({kCurveColor.red, kCurveColor.green, kCurveColor.blue, 0.25f});
        p.Fill();
        p.NewPath();
        p.MoveTo(X(curve_.front()[0]), y(curve_.front()[1]));
        for (const auto& point : curve_)
            p.LineTo(X(point[0]), y(point[1]));
        p.SetPen(1.5f, kCurveLineColor);
        p.Stroke();
        if (dotX_ >= 0.0f) {
            p.NewPath();
            p.FormEllipse({dotX_ - 3.5f, dotY_ - 3.5f, 7.0f, 7.0f});
            p.SetColor(ColorRGBA{1.0f, 1.0f, 1.0f, 1.0f});
            p.Fill(true);
            p.SetPen(1.5f, kCurveColor);
            p.Stroke();
        }
    }

    double minimum_ = kDefaultMinimum;
    double maximum_ = kDefaultMaximum;
    double step_ = kDefaultStep;
    std::vector<std::array<double, 2>> curve_;
    double ceiling_ = NAN;
    float dotX_ = -1.0f;
    float dotY_ = -1.0f;
    ColorRGBA textColor_;
    std::string outputCaption_ =
        qorcore::Localize("$$$/qoraudiofiltersui/ParametricDynamics/OutputAxis=Out dB");
    std::string inputCaption_ =
        qorcore::Localize("$$$/qoraudiofiltersui/ParametricDynamics/InputAxis=In dB");
};

/// A round lamp: its colour while lit, a dim shade of it otherwise.
class ParametricDynamicsEditorView::Lamp : public qorui::UI_Node {
public:
    explicit Lamp(const ColorRGBA& color) : color_(color) {}

    void SetLit(bool lit) {
        if (lit == lit_)
            return;
        lit_ = lit;
        EmitInvalidate();
    }
    bool IsLit() const { return lit_; }
    void SetPanelColor(const ColorRGBA& panel) {
        panel_ = panel;
        EmitInvalidate();
    }

    void UI_Draw(Penrig* penrig) override {
        Penrig& p = *penrig;
        const RectT<float> b = GetBounds();
        p.SetAntialias(true);
        p.NewPath();
        p.FormEllipse({b.x + 1.0f, b.y + 1.0f, b.width - 2.0f, b.height - 2.0f});
        p.SetColor(lit_ ? color_ : Mix(panel_, color_, 0.22f));
        p.Fill(true);
        p.SetPen(1.0f, lit_ ? Mix(color_, ColorRGBA{0, 0, 0, 1}, 0.35f)
                            : Mix(panel_, ColorRGBA{0.5f, 0.5f, 0.5f, 1.0f}, 0.6f));
        p.Stroke();
        UI_Node::UI_Draw(penrig);
    }

private:
    ColorRGBA color_;
    ColorRGBA panel_;
    bool lit_ = false;
};

IntrusivePtr<ParametricDynamicsEditorView>
ParametricDynamicsEditorView::Create(std::shared_ptr<AudioFilter> filter) {
    return IntrusivePtr<ParametricDynamicsEditorView>(
        new ParametricDynamicsEditorView(std::move(filter)));
}

template <class T>
IntrusivePtr<T> ParametricDynamicsEditorView::Control(const char* identifier) const {
    const IntrusivePtr<qormarltess::UI_QORTessRoot> root = GetTessRoot();
    IntrusivePtr<T> control =
        root ? qorcore::DynamicPointerCast<T>(root->GetTessViewHolder().GetControl(identifier))
             : nullptr;
    if (!control)
        qorcore::config::DoThrowNullPtrException(identifier);
    return control;
}

ParametricDynamicsEditorView::ParametricDynamicsEditorView(std::shared_ptr<AudioFilter> filter)
    : MarlTessAudioFilterEditorView(filter, GetLibraryDrawSupplier(), "ParametricDynamics",
                                    GetLibraryResourceManager(), true) {
    dynamics_ = dynamic_cast<ParametricDynamics*>(filter.get());
    if (!dynamics_)
        qorcore::config::DoThrowNullPtrException("ParametricDynamics");
    message_ = std::make_shared<qoraudiofilters::parametricdynamics::MeterMessage>(dynamics_);

    CreateLayout();
    bandMeter_ = Control<qorui::UI_LevelMeterView>("BandLevelMeter");
    reductionMeter_ = Control<qorui::UI_LevelMeterView>("GainReductionMeter");
    reductionMeter_->MakeGainReductionMeter();
    bandMeter_->SetShowPeaks(true);

    // The graph and the lamps fill the places the layout keeps for them.
    const auto place = [this](const char* identifier, IntrusivePtr<qorui::UI_Node> node) {
        const IntrusivePtr<qorui::UI_Node> holder = Control<qorui::UI_Node>(identifier);
        node->SetID(std::string(identifier) + "Drawing");
        node->SetFrame(holder->GetBounds());
        holder->ChildPushBack(std::move(node));
    };
    graph_ = qorcore::MakeIntrusive<Graph>();
    gateLamp_ = qorcore::MakeIntrusive<Lamp>(kGateLampColor);
    limiterLamp_ = qorcore::MakeIntrusive<Lamp>(kLimiterLampColor);
    place("GainCurve", graph_);
    place("GateIndicator", gateLamp_);
    place("LimiterIndicator", limiterLamp_);
    gateLamp_->UI_SetToolTip(qorcore::Localize(
        "$$$/qoraudiofiltersui/ParametricDynamics/GateLamp=The auto gate holds the signal down"));
    limiterLamp_->UI_SetToolTip(qorcore::Localize(
        "$$$/qoraudiofiltersui/ParametricDynamics/LimiterLamp=The limiter holds the output at "
        "its ceiling"));

    // The scale comes from the sheet; without one the graph keeps its own.
    try {
        const auto scale = GetSheet()->get("curve_scale"_name).cast<vorlen::dictionary_t>();
        graph_->SetScale(vorlen::get_value(scale, "min_dB"_name).cast<double>(),
                         vorlen::get_value(scale, "max_dB"_name).cast<double>(),
                         vorlen::get_value(scale, "step_dB"_name).cast<double>());
    } catch (const std::exception&) {
    }

    ApplyTheme();
    UpdateCurve();
    for (int index : {ParametricDynamics::kThreshold, ParametricDynamics::kRatio,
                      ParametricDynamics::kKnee, ParametricDynamics::kExpanderThreshold,
                      ParametricDynamics::kExpanderRatio, ParametricDynamics::kCeiling,
                      ParametricDynamics::kOutputGain, ParametricDynamics::kLimiterEnable})
        AddParameterObserver(index, [this] { UpdateCurve(); });
    EnableMeter();
}

ParametricDynamicsEditorView::~ParametricDynamicsEditorView() {
    DisableMeter();
}

const std::vector<std::array<double, 2>>& ParametricDynamicsEditorView::GetDrawnCurve() const {
    return graph_->GetCurve();
}

bool ParametricDynamicsEditorView::IsGateIndicatorLit() const {
    return gateLamp_->IsLit();
}

bool ParametricDynamicsEditorView::IsLimiterIndicatorLit() const {
    return limiterLamp_->IsLit();
}

void ParametricDynamicsEditorView::UpdateCurve() {
    // Two points a pixel across the plot, from the effect's own static gain.
    const std::size_t count = 2 * std::size_t(std::max(1.0f, graph_->GetPlotRect().width)) + 1;
    const double minimum = graph_->GetMinimum();
    const double span = graph_->GetMaximum() - minimum;
    std::vector<std::array<double, 2>> curve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double input = minimum + span * double(i) / double(count - 1);
        curve[i] = {input, dynamics_->GetStaticOutputDecibels(input)};
    }
    const bool limiter = dynamics_->GetPlainSetting(ParametricDynamics::kLimiterEnable) > 0.5;
    graph_->SetCurve(std::move(curve),
                     limiter ? dynamics_->GetPlainSetting(ParametricDynamics::kCeiling) : NAN);
}

void ParametricDynamicsEditorView::ApplyTheme() {
    const ColorRGBA panel = skins::GetContentBackgroundColor();
    graph_->SetTextColor(skins::GetPalette().rulerText);
    gateLamp_->SetPanelColor(panel);
    limiterLamp_->SetPanelColor(panel);
}

void ParametricDynamicsEditorView::OnThemeChanged() {
    MarlTessAudioFilterEditorView::OnThemeChanged();
    ApplyTheme();
}

void ParametricDynamicsEditorView::EnableMeter() {
    connection_ =
        message_->ConnectMeterDataChanged([this](const MeterData& data) { OnMeterData(data); });
    dynamics_->SetMeterActive(true);
    dynamics_->Post(message_);
}

void ParametricDynamicsEditorView::DisableMeter() {
    if (dynamics_)
        dynamics_->SetMeterActive(false);
    connection_.Disconnect();
}

void ParametricDynamicsEditorView::OnMeterData(const MeterData& data) {
    // While the filter is suspended the last picture stays.
    if (GetFilter()->IsSuspended())
        return;
    bandMeter_->SetLevel(Linear(data.bandLevel));
    reductionMeter_->SetLevel(std::vector<float>{Linear(data.gainChange)}, 1, false);
    graph_->SetLive(data.bandLevel, dynamics_->GetStaticOutputDecibels(data.bandLevel));
    gateLamp_->SetLit(data.gate == AutoGateState::kClosed);
    limiterLamp_->SetLit(data.limiting);
}

} // namespace qoraudiofiltersui
