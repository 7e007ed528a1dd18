#pragma once

#include "platform/core/color_rgba.hpp"
#include "platform/core/point.hpp"
#include "platform/core/rect.hpp"
#include "platform/draw/font.hpp"

#include <string>
#include <string_view>
#include <vector>

typedef struct _cairo cairo_t;
typedef struct _PangoContext PangoContext;
typedef struct _PangoLayout PangoLayout;

namespace qorui::penrig {

class Image;

using qorcore::ColorRGBA;
using qorcore::PointT;
using qorcore::RectT;

enum class HorizontalAlignment { kLeft, kCenter, kRight };
enum class VerticalAlignment { kTop, kCenter, kBottom };
enum class LineCap { kButt, kRound, kSquare };
enum class LineJoin { kMiter, kRound, kBevel };

struct TextMetrics {
    float width = 0.0f;
    float height = 0.0f;
    float baseline = 0.0f; ///< from the top of the text box
};

/// Everything widget code draws with: one Cairo context, with pens, paths, clips, transforms,
/// images and text through Pango. Coordinates are logical pixels; the penrig applies the scale
/// factor, so a one-pixel line on a half pixel is crisp at 1x and at 2x.
///
/// State (pen, alpha, font, antialiasing, clip and transform) is saved and restored together,
/// with `Save`/`Restore`, `PushClip`/`PopClip` or a `StateSaver`.
class Penrig {
public:
    /// Draws through `context`, which it references but does not own. The context's current
    /// transform is taken as device space and the scale factor is applied on top.
    Penrig(cairo_t* context, float scaleFactor);
    ~Penrig();
    Penrig(const Penrig&) = delete;
    Penrig& operator=(const Penrig&) = delete;

    float GetScaleFactor() const { return scale_; }

    // State
    void Save();
    /// Throws std::logic_error when nothing is saved.
    void Restore();
    int GetSaveDepth() const { return static_cast<int>(saved_.size()); }

    class StateSaver {
    public:
        explicit StateSaver(Penrig& penrig) : penrig_(penrig) { penrig_.Save(); }
        ~StateSaver() { penrig_.Restore(); }
        StateSaver(const StateSaver&) = delete;
        StateSaver& operator=(const StateSaver&) = delete;

    private:
        Penrig& penrig_;
    };

    // Pen
    void SetPen(float width, const ColorRGBA& color);
    void SetPenWidth(float width);
    float GetPenWidth() const { return state_.penWidth; }
    void SetColor(const ColorRGBA& color) { state_.color = color.Clamped(); }
    const ColorRGBA& GetColor() const { return state_.color; }
    /// A factor on the alpha of everything drawn after, images included.
    void SetAlpha(float alpha);
    float GetAlpha() const { return state_.alpha; }
    void SetLineCap(LineCap cap);
    void SetLineJoin(LineJoin join);
    /// Dash lengths in logical pixels; an empty list draws solid lines.
    void SetDash(const std::vector<float>& dashes, float offset = 0.0f);
    void SetAntialias(bool on);
    bool GetAntialias() const { return state_.antialias; }

    // Paths
    void NewPath();
    void MoveTo(float x, float y);
    void LineTo(float x, float y);
    void CurveTo(float x1, float y1, float x2, float y2, float x3, float y3);
    void Arc(float cx, float cy, float radius, float angle1, float angle2);
    void ClosePath();
    void FormRect(const RectT<float>& rect);
    void FormRoundedRect(const RectT<float>& rect, float radius);
    void FormEllipse(const RectT<float>& rect);

    /// Strokes or fills the current path with the pen, then clears the path unless `preserve`.
    void Stroke(bool preserve = false);
    void Fill(bool preserve = false);

    // Shorthands
    void FillRect(const RectT<float>& rect, const ColorRGBA& color);
    /// A frame of `width` pixels just inside `rect`, its lines centred on half pixels.
    void FrameRect(const RectT<float>& rect, const ColorRGBA& color, float width = 1.0f);
    void DrawLine(float x1, float y1, float x2, float y2);
    /// Fills the whole clip with a colour, replacing what is there (alpha included).
    void Clear(const ColorRGBA& color);

    // Clips and transforms
    void PushClip(const RectT<float>& rect);
    void PopClip() { Restore(); }
    /// Narrows the clip without saving; the enclosing `Restore` widens it again.
    void ClipToRect(const RectT<float>& rect);
    /// The clip's bounds in current coordinates.
    RectT<float> GetClipBounds() const;
    bool IsClipEmpty() const { return GetClipBounds().IsEmpty(); }
    void Translate(float dx, float dy);
    void Scale(float sx, float sy);
    /// From current coordinates to device pixels.
    PointT<float> UserToDevice(const PointT<float>& p) const;

    // Images
    void DrawImage(const Image& image, const RectT<float>& destination, float alpha = 1.0f);
    void DrawImage(const Image& image, const PointT<float>& at, float alpha = 1.0f);

    // Text
    void SetFont(const Font& font) { state_.font = font; }
    const Font& GetFont() const { return state_.font; }
    TextMetrics MeasureText(std::string_view text) const;
    float MeasureStringWidth(std::string_view text) const { return MeasureText(text).width; }
    /// The text cut at a character boundary and ended with "…" so that it fits `maxWidth`; the
    /// text itself if it fits, and "" if not even the ellipsis does.
    std::string TruncateString(std::string_view text, float maxWidth) const;
    /// One line of text in the rectangle with the alignments, in the pen colour. With
    /// `truncate` a text too wide is shortened with "…"; the text is clipped to the rectangle.
    void DrawText(std::string_view text, const RectT<float>& rect,
                  HorizontalAlignment horizontal = HorizontalAlignment::kLeft,
                  VerticalAlignment vertical = VerticalAlignment::kCenter, bool truncate = true);
    /// One line of text with its baseline starting at `origin`.
    void DrawTextAtBaseline(std::string_view text, const PointT<float>& origin);

    /// For backends only: widget code must not draw on the context behind the penrig's back.
    cairo_t* GetNativeContext() const { return context_; }

private:
    struct State {
        float penWidth = 1.0f;
        ColorRGBA color{0, 0, 0, 1};
        float alpha = 1.0f;
        bool antialias = true;
        Font font;
    };

    void ApplySource() const;
    PangoLayout* CreateLayout(std::string_view text) const;

    cairo_t* context_;
    float scale_;
    State state_;
    std::vector<State> saved_;
    mutable PangoContext* pangoContext_ = nullptr;
};

} // namespace qorui::penrig
