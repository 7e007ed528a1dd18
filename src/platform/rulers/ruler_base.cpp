#include "platform/rulers/ruler_base.hpp"

#include "platform/draw/penrig.hpp"
#include "platform/skins/skins.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <stdexcept>

namespace qorui {

namespace {
constexpr double kPixelLimit = 1.0e9; // keeps infinities and huge values inside int
constexpr double kMinMinorSpacing = 4.0;
} // namespace

void RulerBase::SetPixelRange(int pixel1, int pixel2) {
    pixel1_ = pixel1;
    pixel2_ = pixel2;
}

void RulerBase::CheckValueRange(double value1, double value2) const {
    if (!std::isfinite(value1) || !std::isfinite(value2))
        throw std::invalid_argument("RulerBase::SetValueRange: the values must be finite");
}

void RulerBase::SetValueRange(double value1, double value2) {
    CheckValueRange(value1, value2);
    value1_ = value1;
    value2_ = value2;
}

double RulerBase::GetPixelFromValueF(double value) const {
    const double a1 = ToAxis(value1_);
    const double a2 = ToAxis(value2_);
    if (a1 == a2 || std::isnan(value))
        return pixel1_;
    const double p = pixel1_ + (ToAxis(value) - a1) / (a2 - a1) * double(pixel2_ - pixel1_);
    return std::clamp(p, -kPixelLimit, kPixelLimit);
}

int RulerBase::GetPixelFromValue(double value) const {
    return static_cast<int>(std::lround(GetPixelFromValueF(value)));
}

double RulerBase::GetValueFromPixelF(double pixel) const {
    if (pixel1_ == pixel2_)
        return value1_;
    const double a1 = ToAxis(value1_);
    const double a2 = ToAxis(value2_);
    return FromAxis(a1 + (pixel - pixel1_) / double(pixel2_ - pixel1_) * (a2 - a1));
}

double RulerBase::PixelDistance(double a, double b) const {
    return std::abs(GetPixelFromValueF(a) - GetPixelFromValueF(b));
}

double RulerBase::GetLowValue() const {
    return std::min(value1_, value2_);
}

double RulerBase::GetHighValue() const {
    return std::max(value1_, value2_);
}

void RulerBase::SetStepFactor(double factor) {
    if (!(factor > 0.0) || !std::isfinite(factor))
        throw std::invalid_argument(
            "RulerBase::SetStepFactor: the factor must be a positive number");
    stepFactor_ = factor;
}

void RulerBase::SetFontSize(float size) {
    if (!(size > 0.0f) || !std::isfinite(size))
        throw std::invalid_argument("RulerBase::SetFontSize: the size must be a positive number");
    fontSize_ = size;
}

double RulerBase::MinMajorSpacing() const {
    // Room for a number: its height on a vertical ruler; on a horizontal one the width of the
    // longer of the two end labels (an average digit is about 0.62 of the font size) and a gap.
    // The step factor asks for at least that many pixels between labelled ticks; labels never
    // come closer than they need.
    double room = fontSize_ * 2.4;
    if (!vertical_) {
        const std::size_t chars = std::max<std::size_t>(
            3, std::max(FormatValue(value1_).size(), FormatValue(value2_).size()));
        room = fontSize_ * 0.62 * double(chars) + 12.0;
    }
    return std::max(room, stepFactor_);
}

void RulerBase::Ticks(std::vector<double>& majors, std::vector<double>& minors) const {
    majors.clear();
    minors.clear();
    if (pixel1_ == pixel2_ || value1_ == value2_)
        return;
    ComputeTicks(MinMajorSpacing(), majors, minors);
    std::sort(majors.begin(), majors.end());
    std::sort(minors.begin(), minors.end());
}

std::vector<double> RulerBase::GetMajorValues() const {
    std::vector<double> majors, minors;
    Ticks(majors, minors);
    return majors;
}

std::vector<double> RulerBase::GetMinorValues() const {
    std::vector<double> majors, minors;
    Ticks(majors, minors);
    return minors;
}

std::vector<int> RulerBase::GetMajorPixels() const {
    std::vector<int> pixels;
    for (double v : GetMajorValues())
        pixels.push_back(GetPixelFromValue(v));
    return pixels;
}

std::vector<int> RulerBase::GetMinorPixels() const {
    std::vector<int> pixels;
    for (double v : GetMinorValues())
        pixels.push_back(GetPixelFromValue(v));
    return pixels;
}

void RulerBase::ComputeLinearTicks(double minMajorSpacing, const std::vector<double>& steps,
                                   std::vector<double>& majors, std::vector<double>& minors) const {
    const double low = GetLowValue();
    const double high = GetHighValue();
    const double pixelSpan = std::abs(double(pixel2_ - pixel1_));
    const double minStep = (high - low) * minMajorSpacing / pixelSpan;
    double step = 0.0;
    double decade = std::pow(10.0, std::floor(std::log10(minStep)));
    for (int tries = 0; tries < 3 && step == 0.0; ++tries, decade *= 10.0)
        for (double s : steps)
            if (s * decade >= minStep * (1.0 - 1e-9)) {
                step = s * decade;
                break;
            }
    if (!(step > 0.0) || !std::isfinite(step))
        return;
    const double eps = step * 1e-9;
    const double first = std::ceil((low - eps) / step) * step;
    for (double v = first; v <= high + eps && majors.size() < 10000; v += step)
        majors.push_back(std::abs(v) < eps ? 0.0 : v);
    // Minor ticks split a major step into a count that keeps the numbers round.
    const double mantissa = step / std::pow(10.0, std::floor(std::log10(step) + 1e-9));
    const int rounded = int(std::lround(mantissa * 10));
    int parts = rounded == 20 || rounded == 40 ? 4 : rounded == 30 || rounded == 60 ? 3 : 5;
    const double stepPixels = step * pixelSpan / (high - low);
    while (parts > 1 && stepPixels / parts < kMinMinorSpacing)
        parts = parts % 2 == 0 ? parts / 2 : 1;
    if (parts <= 1)
        return;
    const double minorStep = step / parts;
    const double firstMinor = std::ceil((low - eps) / minorStep) * minorStep;
    for (double v = firstMinor; v <= high + eps && minors.size() < 50000; v += minorStep) {
        const double k = v / step;
        if (std::abs(k - std::round(k)) > 1e-6)
            minors.push_back(v);
    }
}

std::string RulerBase::FormatNumber(double value, bool abbreviate) {
    const char* suffix = "";
    if (abbreviate && std::abs(value) >= 1.0e6) {
        value /= 1.0e6;
        suffix = "M";
    } else if (abbreviate && std::abs(value) >= 1000.0) {
        value /= 1000.0;
        suffix = "k";
    }
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.3f", value);
    std::string text(buffer);
    text.erase(text.find_last_not_of('0') + 1);
    if (!text.empty() && text.back() == '.')
        text.pop_back();
    if (text == "-0")
        text = "0";
    return text + suffix;
}

std::string RulerBase::FormatValue(double value) const {
    return FormatNumber(value, abbreviate_);
}

qorcore::ColorRGBA RulerBase::GetDrawColor() const {
    const qorcore::ColorRGBA base = color_ ? *color_ : skins::GetPalette().rulerText;
    return colorEnabled_ ? base : base.WithAlpha(base.alpha * 0.45f);
}

void RulerBase::Draw(Penrig* penrig, const qorcore::RectT<int>& rect) const {
    if (!penrig || rect.IsEmpty())
        return;
    Penrig& p = *penrig;
    Penrig::StateSaver saver(p);
    const qorcore::RectT<float> area(rect);
    p.ClipToRect(area);
    const qorcore::ColorRGBA color = GetDrawColor();
    std::vector<double> majors, minors;
    Ticks(majors, minors);

    // Ticks: one-pixel lines centred on the half pixel so they are crisp at every scale.
    p.SetPen(1.0f, color);
    auto tick = [&](double value, Extent extent) {
        const float at = float(GetPixelFromValue(value)) + 0.5f;
        if (vertical_)
            p.DrawLine(area.x + extent.start, at, area.x + extent.end, at);
        else
            p.DrawLine(at, area.y + extent.start, at, area.y + extent.end);
    };
    p.SetAlpha(0.7f);
    for (double v : minors)
        tick(v, minor_);
    p.SetAlpha(1.0f);
    for (double v : majors)
        tick(v, major_);

    p.SetFont(penrig::Font(fontSize_));
    p.SetColor(color);
    const float textHeight = std::ceil(fontSize_ * 1.3f);
    const float gap = 2.0f;
    const float across = float(std::max(major_.start, major_.end)) + gap;

    // The labels first: numbers must not run into them.
    std::vector<qorcore::RectT<float>> taken;
    auto place = [&](const std::string& text, double center, bool fromStart,
                     bool atEnd) -> std::optional<qorcore::RectT<float>> {
        const float width = std::ceil(p.MeasureStringWidth(text));
        qorcore::RectT<float> r;
        if (vertical_) {
            r = {area.x + across, float(center) - textHeight / 2, area.width - across, textHeight};
            if (atEnd)
                r.y = fromStart ? float(center) : float(center) - textHeight;
        } else {
            float x = textNearTickStart_ ? float(center) + gap : float(center) - width / 2;
            if (atEnd)
                x = fromStart ? float(center) : float(center) - width;
            r = {x, area.y + across, width, textHeight};
        }
        const bool inside = vertical_ ? r.y >= area.y && r.Bottom() <= area.Bottom()
                                      : r.x >= area.x && r.Right() <= area.Right();
        if (!inside) {
            if (hideTruncated_)
                return std::nullopt;
            if (vertical_)
                r.y = std::clamp(r.y, area.y, area.Bottom() - textHeight);
            else
                r.x = std::clamp(r.x, area.x, area.Right() - width);
        }
        for (const auto& t : taken)
            if (t.Inset(-2, -1).Intersects(r))
                return std::nullopt;
        return r;
    };
    auto drawAt = [&](const std::string& text, const qorcore::RectT<float>& r) {
        taken.push_back(r);
        p.DrawText(text, r, penrig::HorizontalAlignment::kLeft, penrig::VerticalAlignment::kCenter,
                   false);
    };
    const bool ascending1 = pixel1_ <= pixel2_;
    if (!label1_.empty())
        if (auto r = place(label1_, pixel1_, ascending1, true))
            drawAt(label1_, *r);
    if (!label2_.empty())
        if (auto r = place(label2_, pixel2_, !ascending1, true))
            drawAt(label2_, *r);
    if (hideNumbers_)
        return;
    for (double v : majors) {
        const std::string text = FormatValue(v);
        if (auto r = place(text, GetPixelFromValue(v) + 0.5, false, false))
            drawAt(text, *r);
    }
}

} // namespace qorui
