#include "platform/draw/penrig.hpp"

#include "platform/draw/font_system.hpp"
#include "platform/draw/image.hpp"

#include <cairo.h>
#include <pango/pangocairo.h>

#include <cmath>
#include <stdexcept>

namespace qorui::penrig {

namespace {

constexpr std::string_view kEllipsis = "\xE2\x80\xA6";

bool Finite(float v) {
    return std::isfinite(v);
}

} // namespace

Penrig::Penrig(cairo_t* context, float scaleFactor)
    : context_(context), scale_(scaleFactor > 0.0f && Finite(scaleFactor) ? scaleFactor : 1.0f) {
    if (!context_)
        throw std::invalid_argument("Penrig: no Cairo context");
    cairo_reference(context_);
    cairo_save(context_);
    cairo_scale(context_, scale_, scale_);
    cairo_set_line_width(context_, state_.penWidth);
}

Penrig::~Penrig() {
    while (!saved_.empty())
        Restore();
    cairo_restore(context_);
    cairo_destroy(context_);
    if (pangoContext_)
        g_object_unref(pangoContext_);
}

void Penrig::Save() {
    saved_.push_back(state_);
    cairo_save(context_);
}

void Penrig::Restore() {
    if (saved_.empty())
        throw std::logic_error("Penrig::Restore without Save");
    state_ = std::move(saved_.back());
    saved_.pop_back();
    cairo_restore(context_);
}

void Penrig::SetPen(float width, const ColorRGBA& color) {
    SetPenWidth(width);
    SetColor(color);
}

void Penrig::SetPenWidth(float width) {
    state_.penWidth = Finite(width) && width >= 0.0f ? width : 1.0f;
    cairo_set_line_width(context_, state_.penWidth);
}

void Penrig::SetAlpha(float alpha) {
    state_.alpha = alpha >= 0.0f ? std::min(alpha, 1.0f) : 0.0f;
}

void Penrig::SetLineCap(LineCap cap) {
    cairo_set_line_cap(context_, cap == LineCap::kRound    ? CAIRO_LINE_CAP_ROUND
                                 : cap == LineCap::kSquare ? CAIRO_LINE_CAP_SQUARE
                                                           : CAIRO_LINE_CAP_BUTT);
}

void Penrig::SetLineJoin(LineJoin join) {
    cairo_set_line_join(context_, join == LineJoin::kRound   ? CAIRO_LINE_JOIN_ROUND
                                  : join == LineJoin::kBevel ? CAIRO_LINE_JOIN_BEVEL
                                                             : CAIRO_LINE_JOIN_MITER);
}

void Penrig::SetDash(const std::vector<float>& dashes, float offset) {
    std::vector<double> lengths;
    for (float d : dashes) {
        if (!Finite(d) || d < 0.0f)
            throw std::invalid_argument("Penrig::SetDash: negative or non-finite length");
        lengths.push_back(d);
    }
    double total = 0;
    for (double d : lengths)
        total += d;
    if (!lengths.empty() && total <= 0.0)
        throw std::invalid_argument("Penrig::SetDash: all lengths are zero");
    cairo_set_dash(context_, lengths.data(), static_cast<int>(lengths.size()), offset);
}

void Penrig::SetAntialias(bool on) {
    state_.antialias = on;
    cairo_set_antialias(context_, on ? CAIRO_ANTIALIAS_DEFAULT : CAIRO_ANTIALIAS_NONE);
}

void Penrig::NewPath() {
    cairo_new_path(context_);
}
void Penrig::MoveTo(float x, float y) {
    cairo_move_to(context_, x, y);
}
void Penrig::LineTo(float x, float y) {
    cairo_line_to(context_, x, y);
}
void Penrig::CurveTo(float x1, float y1, float x2, float y2, float x3, float y3) {
    cairo_curve_to(context_, x1, y1, x2, y2, x3, y3);
}
void Penrig::Arc(float cx, float cy, float radius, float angle1, float angle2) {
    cairo_arc(context_, cx, cy, std::max(radius, 0.0f), angle1, angle2);
}
void Penrig::ClosePath() {
    cairo_close_path(context_);
}

void Penrig::FormRect(const RectT<float>& rect) {
    cairo_rectangle(context_, rect.x, rect.y, rect.width, rect.height);
}

void Penrig::FormRoundedRect(const RectT<float>& rect, float radius) {
    const float r = std::max(0.0f, std::min({radius, rect.width / 2, rect.height / 2}));
    if (r <= 0.0f) {
        FormRect(rect);
        return;
    }
    constexpr double pi = 3.14159265358979323846;
    cairo_new_sub_path(context_);
    cairo_arc(context_, rect.Right() - r, rect.y + r, r, -pi / 2, 0);
    cairo_arc(context_, rect.Right() - r, rect.Bottom() - r, r, 0, pi / 2);
    cairo_arc(context_, rect.x + r, rect.Bottom() - r, r, pi / 2, pi);
    cairo_arc(context_, rect.x + r, rect.y + r, r, pi, 3 * pi / 2);
    cairo_close_path(context_);
}

void Penrig::FormEllipse(const RectT<float>& rect) {
    if (rect.IsEmpty())
        return;
    constexpr double pi = 3.14159265358979323846;
    cairo_save(context_);
    cairo_translate(context_, rect.x + rect.width / 2, rect.y + rect.height / 2);
    cairo_scale(context_, rect.width / 2, rect.height / 2);
    cairo_new_sub_path(context_);
    cairo_arc(context_, 0, 0, 1, 0, 2 * pi);
    cairo_restore(context_);
}

void Penrig::ApplySource() const {
    const ColorRGBA& c = state_.color;
    cairo_set_source_rgba(context_, c.red, c.green, c.blue, c.alpha * state_.alpha);
}

void Penrig::Stroke(bool preserve) {
    ApplySource();
    preserve ? cairo_stroke_preserve(context_) : cairo_stroke(context_);
}

void Penrig::Fill(bool preserve) {
    ApplySource();
    preserve ? cairo_fill_preserve(context_) : cairo_fill(context_);
}

void Penrig::FillRect(const RectT<float>& rect, const ColorRGBA& color) {
    if (rect.IsEmpty())
        return;
    StateSaver saver(*this);
    SetColor(color);
    NewPath();
    FormRect(rect);
    Fill();
}

void Penrig::FrameRect(const RectT<float>& rect, const ColorRGBA& color, float width) {
    if (rect.IsEmpty() || !(width > 0.0f))
        return;
    StateSaver saver(*this);
    SetPen(width, color);
    const float half = width / 2;
    NewPath();
    FormRect(rect.Inset(half, half));
    Stroke();
}

void Penrig::DrawLine(float x1, float y1, float x2, float y2) {
    NewPath();
    MoveTo(x1, y1);
    LineTo(x2, y2);
    Stroke();
}

void Penrig::Clear(const ColorRGBA& color) {
    cairo_save(context_);
    cairo_set_operator(context_, CAIRO_OPERATOR_SOURCE);
    const ColorRGBA c = color.Clamped();
    cairo_set_source_rgba(context_, c.red, c.green, c.blue, c.alpha * state_.alpha);
    cairo_paint(context_);
    cairo_restore(context_);
}

void Penrig::PushClip(const RectT<float>& rect) {
    Save();
    ClipToRect(rect);
}

void Penrig::ClipToRect(const RectT<float>& rect) {
    cairo_new_path(context_);
    if (rect.IsEmpty())
        cairo_rectangle(context_, 0, 0, 0, 0);
    else
        cairo_rectangle(context_, rect.x, rect.y, rect.width, rect.height);
    cairo_clip(context_);
}

RectT<float> Penrig::GetClipBounds() const {
    double x1, y1, x2, y2;
    cairo_clip_extents(context_, &x1, &y1, &x2, &y2);
    if (x2 <= x1 || y2 <= y1)
        return {};
    return RectT<float>::FromEdges(float(x1), float(y1), float(x2), float(y2));
}

void Penrig::Translate(float dx, float dy) {
    cairo_translate(context_, dx, dy);
}

void Penrig::Scale(float sx, float sy) {
    if (!(Finite(sx) && Finite(sy)) || sx == 0.0f || sy == 0.0f)
        throw std::invalid_argument("Penrig::Scale: factor must be finite and non-zero");
    cairo_scale(context_, sx, sy);
}

PointT<float> Penrig::UserToDevice(const PointT<float>& p) const {
    double x = p.x, y = p.y;
    cairo_user_to_device(context_, &x, &y);
    return {float(x), float(y)};
}

void Penrig::DrawImage(const Image& image, const RectT<float>& destination, float alpha) {
    if (destination.IsEmpty() || image.GetPixelWidth() == 0 || image.GetPixelHeight() == 0)
        return;
    cairo_save(context_);
    cairo_translate(context_, destination.x, destination.y);
    cairo_scale(context_, destination.width / image.GetPixelWidth(),
                destination.height / image.GetPixelHeight());
    cairo_set_source_surface(context_, image.GetNativeSurface(), 0, 0);
    cairo_pattern_set_filter(cairo_get_source(context_), CAIRO_FILTER_GOOD);
    const float a = (alpha >= 0.0f ? std::min(alpha, 1.0f) : 0.0f) * state_.alpha;
    cairo_paint_with_alpha(context_, a);
    cairo_restore(context_);
}

void Penrig::DrawImage(const Image& image, const PointT<float>& at, float alpha) {
    DrawImage(image, RectT<float>(at, image.GetWidth(), image.GetHeight()), alpha);
}

PangoLayout* Penrig::CreateLayout(std::string_view text) const {
    if (!pangoContext_)
        pangoContext_ = FontSystem::Get().CreateContext();
    pango_cairo_update_context(context_, pangoContext_);
    PangoLayout* layout = pango_layout_new(pangoContext_);
    PangoFontDescription* description = FontSystem::CreateDescription(state_.font);
    pango_layout_set_font_description(layout, description);
    pango_font_description_free(description);
    pango_layout_set_single_paragraph_mode(layout, TRUE);
    pango_layout_set_text(layout, text.data(), static_cast<int>(text.size()));
    return layout;
}

TextMetrics Penrig::MeasureText(std::string_view text) const {
    PangoLayout* layout = CreateLayout(text);
    PangoRectangle logical;
    pango_layout_get_extents(layout, nullptr, &logical);
    TextMetrics metrics;
    metrics.width = float(logical.width) / PANGO_SCALE;
    metrics.height = float(logical.height) / PANGO_SCALE;
    metrics.baseline = float(pango_layout_get_baseline(layout)) / PANGO_SCALE;
    g_object_unref(layout);
    return metrics;
}

std::string Penrig::TruncateString(std::string_view text, float maxWidth) const {
    if (MeasureStringWidth(text) <= maxWidth)
        return std::string(text);
    if (MeasureStringWidth(kEllipsis) > maxWidth)
        return {};
    // Character boundaries; keep the longest prefix that fits with the ellipsis.
    std::vector<std::size_t> boundaries;
    for (std::size_t i = 0; i < text.size(); ++i)
        if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80)
            boundaries.push_back(i);
    auto withEllipsis = [&](std::size_t characters) {
        std::string s(
            text.substr(0, characters < boundaries.size() ? boundaries[characters] : text.size()));
        s += kEllipsis;
        return s;
    };
    std::size_t lo = 0, hi = boundaries.size(); // lo always fits
    while (lo < hi) {
        const std::size_t mid = (lo + hi + 1) / 2;
        if (MeasureStringWidth(withEllipsis(mid)) <= maxWidth)
            lo = mid;
        else
            hi = mid - 1;
    }
    return withEllipsis(lo);
}

void Penrig::DrawText(std::string_view text, const RectT<float>& rect,
                      HorizontalAlignment horizontal, VerticalAlignment vertical, bool truncate) {
    if (text.empty() || rect.IsEmpty())
        return;
    std::string shortened;
    if (truncate) {
        shortened = TruncateString(text, rect.width);
        text = shortened;
        if (text.empty())
            return;
    }
    PangoLayout* layout = CreateLayout(text);
    PangoRectangle logical;
    pango_layout_get_extents(layout, nullptr, &logical);
    const float width = float(logical.width) / PANGO_SCALE;
    const float height = float(logical.height) / PANGO_SCALE;
    float x = rect.x;
    if (horizontal == HorizontalAlignment::kCenter)
        x += (rect.width - width) / 2;
    else if (horizontal == HorizontalAlignment::kRight)
        x += rect.width - width;
    float y = rect.y;
    if (vertical == VerticalAlignment::kCenter)
        y += (rect.height - height) / 2;
    else if (vertical == VerticalAlignment::kBottom)
        y += rect.height - height;
    // Whole device pixels vertically keep the baseline sharp at every scale.
    y = std::round(y * scale_) / scale_;
    cairo_save(context_);
    cairo_rectangle(context_, rect.x, rect.y, rect.width, rect.height);
    cairo_clip(context_);
    ApplySource();
    cairo_move_to(context_, x, y);
    pango_cairo_show_layout(context_, layout);
    cairo_restore(context_);
    g_object_unref(layout);
}

void Penrig::DrawTextAtBaseline(std::string_view text, const PointT<float>& origin) {
    if (text.empty())
        return;
    PangoLayout* layout = CreateLayout(text);
    const float baseline = float(pango_layout_get_baseline(layout)) / PANGO_SCALE;
    ApplySource();
    cairo_move_to(context_, origin.x, origin.y - baseline);
    pango_cairo_show_layout(context_, layout);
    cairo_new_path(context_);
    g_object_unref(layout);
}

} // namespace qorui::penrig
