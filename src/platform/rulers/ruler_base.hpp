#pragma once

#include "platform/core/color_rgba.hpp"
#include "platform/core/rect.hpp"
#include "platform/core/ref_counted_object.hpp"

#include <optional>
#include <string>
#include <vector>

namespace qorui {

namespace penrig {
class Penrig;
}
using penrig::Penrig;

/// A value axis laid over a span of pixels: value 1 sits at pixel 1 and value 2 at pixel 2, in
/// either order, with the curve between them chosen by the subclass (linear, logarithmic,
/// decibel). It knows where its ticks go and draws them with their numbers.
///
/// Tick spacing is "nice" (steps of 1, 2, 2.5 or 5 times a power of ten, or the subclass's own
/// series) and never closer than the numbers need, times the step factor. Pixels are integers in
/// the coordinates the caller draws in.
class RulerBase : public qorcore::RefCountedObject {
public:
    struct Extent {
        int start = 0; ///< distance from the ruler's inner edge (the one next to the content)
        int end = 0;
    };

    // Mapping. A value range the subclass can't show (not finite, or not above zero on a log
    // ruler) throws std::invalid_argument and changes nothing.
    void SetPixelRange(int pixel1, int pixel2);
    int GetPixel1() const { return pixel1_; }
    int GetPixel2() const { return pixel2_; }
    void SetValueRange(double value1, double value2);
    double GetValue1() const { return value1_; }
    double GetValue2() const { return value2_; }
    /// The nearest pixel; values past the ends map past the pixel ends. An empty value range
    /// maps everything to pixel 1.
    int GetPixelFromValue(double value) const;
    /// The exact position before rounding, for drawing between pixels.
    double GetPixelFromValueF(double value) const;
    double GetValueFromPixel(int pixel) const { return GetValueFromPixelF(double(pixel)); }
    double GetValueFromPixelF(double pixel) const;

    // Ticks
    std::vector<int> GetMajorPixels() const;
    std::vector<int> GetMinorPixels() const;
    std::vector<double> GetMajorValues() const;
    std::vector<double> GetMinorValues() const;
    /// The least distance in pixels between labelled ticks; below what a label needs it changes
    /// nothing. Not a positive finite number throws std::invalid_argument.
    void SetStepFactor(double factor);
    double GetStepFactor() const { return stepFactor_; }

    // Look
    void SetVertical(bool vertical) { vertical_ = vertical; }
    bool IsVertical() const { return vertical_; }
    /// Texts at the pixel-1 and pixel-2 ends (units, or the end values); they win over numbers
    /// they would overlap.
    void SetLabel1(std::string label) { label1_ = std::move(label); }
    void SetLabel2(std::string label) { label2_ = std::move(label); }
    const std::string& GetLabel1() const { return label1_; }
    const std::string& GetLabel2() const { return label2_; }
    /// 20000 as "20k", 1500 as "1.5k".
    void SetAbbreviateNumbers(bool on) { abbreviate_ = on; }
    bool GetAbbreviateNumbers() const { return abbreviate_; }
    void HideAllNumbers(bool hide) { hideNumbers_ = hide; }
    bool AreNumbersHidden() const { return hideNumbers_; }
    /// Numbers that don't fit whole into the rectangle are left out instead of being shifted in.
    void HideTruncatedStrings(bool hide) { hideTruncated_ = hide; }
    /// Numbers start at their tick instead of being centred on it (horizontal rulers).
    void SetTextNearTickStart(bool on) { textNearTickStart_ = on; }
    void SetMajorTickExtent(int start, int end) { major_ = {start, end}; }
    void SetMinorTickExtent(int start, int end) { minor_ = {start, end}; }
    Extent GetMajorTickExtent() const { return major_; }
    Extent GetMinorTickExtent() const { return minor_; }
    /// Not a positive finite size throws std::invalid_argument.
    void SetFontSize(float size);
    float GetFontSize() const { return fontSize_; }
    /// A fixed colour; without one the ruler takes the current look's.
    void SetColor(std::optional<qorcore::ColorRGBA> color) { color_ = color; }
    /// Drawn in the enabled colour (true, the default) or dimmed.
    void SetColorEnabled(bool enabled) { colorEnabled_ = enabled; }
    bool IsColorEnabled() const { return colorEnabled_; }
    qorcore::ColorRGBA GetDrawColor() const;

    /// The text of a number as the ruler shows it.
    virtual std::string FormatValue(double value) const;

    /// Draws ticks and numbers into `rect`: a horizontal ruler along its top edge, a vertical one
    /// along its left edge, with ticks at the ruler's pixels.
    void Draw(Penrig* penrig, const qorcore::RectT<int>& rect) const;

protected:
    RulerBase() = default;

    /// The axis in which the mapping is linear.
    virtual double ToAxis(double value) const = 0;
    virtual double FromAxis(double axis) const = 0;
    virtual void CheckValueRange(double value1, double value2) const;
    /// Major and minor tick values inside [low, high], given the smallest distance in pixels
    /// that two major ticks may have.
    virtual void ComputeTicks(double minMajorSpacing, std::vector<double>& majors,
                              std::vector<double>& minors) const = 0;

    /// The distance in pixels between two values.
    double PixelDistance(double a, double b) const;
    double GetLowValue() const;
    double GetHighValue() const;
    /// Ticks of a linear series: nice steps from `steps` (ascending, in one decade) times powers
    /// of ten.
    void ComputeLinearTicks(double minMajorSpacing, const std::vector<double>& steps,
                            std::vector<double>& majors, std::vector<double>& minors) const;

    static std::string FormatNumber(double value, bool abbreviate);

private:
    double MinMajorSpacing() const;
    void Ticks(std::vector<double>& majors, std::vector<double>& minors) const;

    int pixel1_ = 0;
    int pixel2_ = 100;
    double value1_ = 0.0;
    double value2_ = 1.0;
    double stepFactor_ = 1.0;
    bool vertical_ = false;
    std::string label1_;
    std::string label2_;
    bool abbreviate_ = false;
    bool hideNumbers_ = false;
    bool hideTruncated_ = false;
    bool textNearTickStart_ = false;
    Extent major_{0, 5};
    Extent minor_{0, 3};
    float fontSize_ = 9.0f;
    std::optional<qorcore::ColorRGBA> color_;
    bool colorEnabled_ = true;
};

} // namespace qorui
