#include "graphs/ruler_grid_base.hpp"

#include "platform/core/localizer.hpp"
#include "platform/core/null_pointer_exception.hpp"
#include "platform/core/trace.hpp"
#include "platform/draw/penrig.hpp"
#include "platform/menus/ui_menu_overlay.hpp"
#include "platform/skins/skins.hpp"
#include "platform/ui/ui_window.hpp"

#include <algorithm>
#include <cmath>
#include <sstream>
#include <stdexcept>

namespace qoraudiofiltersui {

using qorcore::IntrusivePtr;
using qorcore::PointT;
using qorcore::RectT;
using qorui::RulerBase;

namespace {

constexpr const char* kZoomInText = "$$$/qoraudiofiltersui/RulerGridBase/ZoomIn=Zoom In";
constexpr const char* kZoomOutText = "$$$/qoraudiofiltersui/RulerGridBase/ZoomOut=Zoom Out";
constexpr const char* kZoomOutFullText =
    "$$$/qoraudiofiltersui/RulerGridBase/ZoomOutFull=Zoom Out Full";

/// The four ends of the current range, kept across rebuilds of an editor.
class OpaqueViewState : public qorcore::RefCountedObject {
public:
    OpaqueViewState(double hs, double he, double vs, double ve)
        : horizontal_start(hs), horizontal_end(he), vertical_start(vs), vertical_end(ve) {}

    double horizontal_start;
    double horizontal_end;
    double vertical_start;
    double vertical_end;
};

/// Mends a range against its bounds: ordered like the bounds, limited to them, widened
/// symmetrically to the minimum span and pushed back inside. Works for ascending and
/// descending bounds alike.
void NormalizeRange(double& start, double& end, double bound_start, double bound_end,
                    double minimum_span) {
    if (bound_end > bound_start) {
        if (start > end)
            std::swap(start, end);
        // std::max and std::min with the bound first also turn a NaN end into the bound.
        start = std::max(bound_start, start);
        end = std::min(bound_end, end);
        if (!(end - start < minimum_span))
            return;
        const double pad = (minimum_span - (end - start)) * 0.5;
        start -= pad;
        end += pad;
        if (start > end)
            std::swap(start, end);
        if (bound_start > start) {
            end = std::min(bound_end, bound_start - start + end);
            start = bound_start;
        }
        if (end > bound_end) {
            start = std::max(bound_start, start - (end - bound_end));
            end = bound_end;
        }
    } else if (bound_start > bound_end) {
        if (start < end)
            std::swap(start, end);
        start = std::min(bound_start, start);
        end = std::max(bound_end, end);
        if (!(start - end < minimum_span))
            return;
        const double pad = (minimum_span - (start - end)) * 0.5;
        start += pad;
        end -= pad;
        if (start < end)
            std::swap(start, end);
        if (start > bound_start) {
            end = std::max(bound_end, end - (start - bound_start));
            start = bound_start;
        }
        if (bound_end > end) {
            start = std::min(bound_start, start + (bound_end - end));
            end = bound_end;
        }
    } else {
        start = bound_start;
        end = bound_start;
    }
}

/// Keeps a scrolled range inside its bounds by shifting it, keeping its width where it fits.
void ShiftRangeInside(double& start, double& end, double bound_start, double bound_end) {
    if (bound_end > bound_start) {
        if (start > end)
            std::swap(start, end);
        if (bound_start > start) {
            end = std::min(bound_end, end + (bound_start - start));
            start = bound_start;
        }
        if (end > bound_end) {
            start = std::max(bound_start, start - (end - bound_end));
            end = bound_end;
        }
    } else if (bound_start > bound_end) {
        if (start < end)
            std::swap(start, end);
        if (start > bound_start) {
            end = std::max(bound_end, end - (start - bound_start));
            start = bound_start;
        }
        if (bound_end > end) {
            start = std::min(bound_start, start + (bound_end - end));
            end = bound_end;
        }
    } else {
        start = bound_start;
        end = bound_start;
    }
}

/// A pixel offset truncated toward zero, kept inside what an int holds for absurd wheel deltas.
int TruncatePixels(double pixels) {
    return int(std::trunc(std::clamp(pixels, -1.0e8, 1.0e8)));
}

/// The whole notches of a wheel event, positive away from the user.
int GetLegacyMouseWheelDeltaInt(const qorui::MouseEvent& event) {
    return TruncatePixels(event.GetWheelDelta().y);
}

void CheckBounds(double a, double b, double c, double d) {
    if (!std::isfinite(a) || !std::isfinite(b) || !std::isfinite(c) || !std::isfinite(d))
        throw std::invalid_argument("RulerGridBase: range bounds must be finite numbers");
}

const RulerBase& CheckRuler(const IntrusivePtr<RulerBase>& ruler) {
    return *qorcore::config::ThrowIfNull(ruler, "RulerBase");
}

} // namespace

RulerGridBase::RulerGridBase(IntrusivePtr<RulerBase> horizontal, IntrusivePtr<RulerBase> vertical)
    : vertical_ruler_(std::move(vertical)), horizontal_ruler_(std::move(horizontal)),
      vertical_handler_(qorcore::MakeIntrusive<RulerHandler>()),
      horizontal_handler_(qorcore::MakeIntrusive<RulerHandler>()),
      background_color_(qorcore::ColorRGBAFixed::Black),
      ruler_background_color_(qorui::skins::GetContentBackgroundColor()),
      grid_color_(0.0f, 0.208f, 0.0f, 1.0f) {
    SetWantsKeyboardFocus(true);
    SetRulersSupportZooming(false);
    horizontal_handler_->SetRulerCanZoomInFxn(
        std::make_shared<std::function<bool()>>([this] { return CanZoomInHorizontal(); }));
    horizontal_handler_->SetRulerCanZoomOutFxn(
        std::make_shared<std::function<bool()>>([this] { return CanZoomOutHorizontal(); }));
    vertical_handler_->SetRulerCanZoomInFxn(
        std::make_shared<std::function<bool()>>([this] { return CanZoomInVertical(); }));
    vertical_handler_->SetRulerCanZoomOutFxn(
        std::make_shared<std::function<bool()>>([this] { return CanZoomOutVertical(); }));
    ConnectHandlers();
    horizontal_handler_->SetHandlesMouseWheelEvents(true);
    vertical_handler_->SetHandlesMouseWheelEvents(true);
    ApplyRulerSettings();
    theme_changed_ = qorui::skins::ConnectThemeChanged([this] { ThemeChanged(); });
}

RulerGridBase::~RulerGridBase() = default;

void RulerGridBase::ConnectHandlers() {
    RulerHandler& h = *horizontal_handler_;
    RulerHandler& v = *vertical_handler_;
    horizontal_scrolled_ =
        h.ConnectRulerScrolled([this](const PointT<int>& current, const PointT<int>& last) {
            OnHorizontalRulerScrolled(current, last);
        });
    horizontal_zoom_region_changed_ =
        h.ConnectRulerZoomRegionChanged([this] { OnHorizontalRulerZoomRegionChanged(); });
    horizontal_zoom_capture_ended_ =
        h.ConnectRulerZoomCaptureEnded([this](bool zoomed, int first, int second, bool cancel) {
            OnHorizontalRulerZoomCaptureEnded(zoomed, first, second, cancel);
        });
    horizontal_mouse_wheel_changed_ = h.ConnectMouseWheelChanged(
        [this](const qorui::MouseEvent& event) { OnHorizontalRulerMouseWheelChanged(event); });
    vertical_scrolled_ =
        v.ConnectRulerScrolled([this](const PointT<int>& current, const PointT<int>& last) {
            OnVerticalRulerScrolled(current, last);
        });
    vertical_zoom_region_changed_ =
        v.ConnectRulerZoomRegionChanged([this] { OnVerticalRulerZoomRegionChanged(); });
    vertical_zoom_capture_ended_ =
        v.ConnectRulerZoomCaptureEnded([this](bool zoomed, int first, int second, bool cancel) {
            OnVerticalRulerZoomCaptureEnded(zoomed, first, second, cancel);
        });
    vertical_mouse_wheel_changed_ = v.ConnectMouseWheelChanged(
        [this](const qorui::MouseEvent& event) { OnVerticalRulerMouseWheelChanged(event); });
}

void RulerGridBase::ApplyRulerSettings() {
    // The grid decides which way each ruler runs: the one beside the content is vertical.
    if (horizontal_ruler_) {
        horizontal_ruler_->SetVertical(false);
        horizontal_ruler_->SetAbbreviateNumbers(true);
    }
    if (vertical_ruler_) {
        vertical_ruler_->SetVertical(true);
        vertical_ruler_->SetAbbreviateNumbers(true);
    }
    horizontal_handler_->SetRuler(horizontal_ruler_);
    vertical_handler_->SetRuler(vertical_ruler_);
}

void RulerGridBase::SetRulers(IntrusivePtr<RulerBase> horizontal,
                              IntrusivePtr<RulerBase> vertical) {
    horizontal_ruler_ = std::move(horizontal);
    vertical_ruler_ = std::move(vertical);
    ApplyRulerSettings();
    UpdateRulerLayout();
}

// ---------------------------------------------------------------------------------------------
// Ranges

void RulerGridBase::SetRanges(double hs, double he, double vs, double ve) {
    ApplyBounds(hs, he, vs, ve, [&] { SetCurrentRange(hs, he, vs, ve); });
}

void RulerGridBase::SetRangeBounds(double hs, double he, double vs, double ve) {
    ApplyBounds(hs, he, vs, ve, [this] {
        SetCurrentRange(horizontal_start_, horizontal_end_, vertical_start_, vertical_end_);
    });
}

void RulerGridBase::ApplyBounds(double hs, double he, double vs, double ve,
                                const std::function<void()>& apply_range) {
    CheckBounds(hs, he, vs, ve);
    const double old[4] = {horizontal_start_bound_, horizontal_end_bound_, vertical_start_bound_,
                           vertical_end_bound_};
    horizontal_start_bound_ = hs;
    horizontal_end_bound_ = he;
    vertical_start_bound_ = vs;
    vertical_end_bound_ = ve;
    try {
        apply_range();
    } catch (...) {
        // A ruler refused the range: the bounds stay as they were too.
        horizontal_start_bound_ = old[0];
        horizontal_end_bound_ = old[1];
        vertical_start_bound_ = old[2];
        vertical_end_bound_ = old[3];
        throw;
    }
}

void RulerGridBase::SetCurrentRange(double hs, double he, double vs, double ve) {
    NormalizeRange(hs, he, horizontal_start_bound_, horizontal_end_bound_,
                   horizontal_minimum_span_);
    NormalizeRange(vs, ve, vertical_start_bound_, vertical_end_bound_, vertical_minimum_span_);

    const bool same = hs == horizontal_start_ && he == horizontal_end_ && vs == vertical_start_ &&
                      ve == vertical_end_;
    if (same) {
        if (!horizontal_ruler_ || !vertical_ruler_)
            return;
        if (horizontal_ruler_->GetValue1() == hs && horizontal_ruler_->GetValue2() == he &&
            vertical_ruler_->GetValue1() == vs && vertical_ruler_->GetValue2() == ve)
            return;
    }

    static qorcore::debug::TraceSite trace_site;
    constexpr const char* category = "RulerGridBase::SetCurrentRange";
    if (trace_site.IsEnabled(category, 5)) {
        std::ostringstream text;
        text << "horizontal " << hs << " to " << he << ", vertical " << vs << " to " << ve;
        qorcore::debug::Trace(5, category, text.str());
    }

    // The rulers refuse ranges they can't show (a log ruler below zero): ask both before
    // anything is stored, so that a refusal changes nothing.
    if (horizontal_ruler_) {
        const double old1 = horizontal_ruler_->GetValue1();
        const double old2 = horizontal_ruler_->GetValue2();
        horizontal_ruler_->SetValueRange(hs, he);
        if (vertical_ruler_) {
            try {
                vertical_ruler_->SetValueRange(vs, ve);
            } catch (...) {
                horizontal_ruler_->SetValueRange(old1, old2);
                throw;
            }
        }
    } else if (vertical_ruler_) {
        vertical_ruler_->SetValueRange(vs, ve);
    }

    horizontal_start_ = hs;
    horizontal_end_ = he;
    vertical_start_ = vs;
    vertical_end_ = ve;
    if (!horizontal_ruler_ && !vertical_ruler_) {
        current_range_changed_();
        return;
    }
    EmitInvalidate();
    current_range_changed_();
}

bool RulerGridBase::CanZoomInHorizontal() const {
    return std::abs(horizontal_end_ - horizontal_start_) > horizontal_minimum_span_;
}

bool RulerGridBase::CanZoomOutHorizontal() const {
    return horizontal_start_ != horizontal_start_bound_ || horizontal_end_ != horizontal_end_bound_;
}

bool RulerGridBase::CanZoomInVertical() const {
    return std::abs(vertical_end_ - vertical_start_) > vertical_minimum_span_;
}

bool RulerGridBase::CanZoomOutVertical() const {
    return vertical_start_ != vertical_start_bound_ || vertical_end_ != vertical_end_bound_;
}

// ---------------------------------------------------------------------------------------------
// Zooming and scrolling

void RulerGridBase::DoZoomAroundValue(bool vertical, double value, int steps) {
    const RulerBase& ruler = CheckRuler(vertical ? vertical_ruler_ : horizontal_ruler_);
    const double start = vertical ? vertical_start_ : horizontal_start_;
    const double end = vertical ? vertical_end_ : horizontal_end_;
    const double bound_start = vertical ? vertical_start_bound_ : horizontal_start_bound_;
    const double bound_end = vertical ? vertical_end_bound_ : horizontal_end_bound_;
    const double minimum_span = vertical ? vertical_minimum_span_ : horizontal_minimum_span_;

    if (steps > 0 && !(std::abs(end - start) > minimum_span))
        return;
    if (steps < 0 && start == bound_start && end == bound_end)
        return;
    const int pv = ruler.GetPixelFromValue(value);
    const int p1 = ruler.GetPixel1();
    const int p2 = ruler.GetPixel2();
    if (pv < p1 || pv > p2)
        return;
    // Each step moves both ends a tenth of their pixel distance towards the anchor, in the
    // ruler's own scale, so log rulers zoom correctly without log arithmetic here.
    const double f = steps * 0.1;
    double new_start = ruler.GetValueFromPixel(p1 + TruncatePixels((pv - p1) * f));
    double new_end = ruler.GetValueFromPixel(p2 - TruncatePixels((p2 - pv) * f));
    NormalizeRange(new_start, new_end, bound_start, bound_end, minimum_span);
    if (vertical)
        SetCurrentRange(horizontal_start_, horizontal_end_, new_start, new_end);
    else
        SetCurrentRange(new_start, new_end, vertical_start_, vertical_end_);
}

void RulerGridBase::DoHorizontalZoomAroundValue(double value, int steps) {
    DoZoomAroundValue(false, value, steps);
}

void RulerGridBase::DoVerticalZoomAroundValue(double value, int steps) {
    DoZoomAroundValue(true, value, steps);
}

void RulerGridBase::DoSimpleHorizontalZoomIn() {
    DoHorizontalZoomAroundValue((horizontal_start_ + horizontal_end_) * 0.5, 3);
}

void RulerGridBase::DoSimpleHorizontalZoomOut() {
    DoHorizontalZoomAroundValue((horizontal_start_ + horizontal_end_) * 0.5, -3);
}

void RulerGridBase::DoSimpleVerticalZoomIn() {
    DoVerticalZoomAroundValue((vertical_start_ + vertical_end_) * 0.5, 3);
}

void RulerGridBase::DoSimpleVerticalZoomOut() {
    DoVerticalZoomAroundValue((vertical_start_ + vertical_end_) * 0.5, -3);
}

void RulerGridBase::OnRulerScrolled(bool vertical, int current, int last) {
    const RulerBase& ruler = CheckRuler(vertical ? vertical_ruler_ : horizontal_ruler_);
    const int pixels = ruler.GetPixel2() - ruler.GetPixel1();
    if (pixels == 0)
        return;
    const double value_per_pixel = (ruler.GetValue2() - ruler.GetValue1()) / pixels;
    // Dragging right (or down) moves the view towards the values at pixel 1.
    const double shift = (last - current) * value_per_pixel;
    double start = (vertical ? vertical_start_ : horizontal_start_) + shift;
    double end = (vertical ? vertical_end_ : horizontal_end_) + shift;
    if (vertical) {
        ShiftRangeInside(start, end, vertical_start_bound_, vertical_end_bound_);
        SetCurrentRange(horizontal_start_, horizontal_end_, start, end);
    } else {
        ShiftRangeInside(start, end, horizontal_start_bound_, horizontal_end_bound_);
        SetCurrentRange(start, end, vertical_start_, vertical_end_);
    }
}

void RulerGridBase::OnHorizontalRulerScrolled(const PointT<int>& current, const PointT<int>& last) {
    OnRulerScrolled(false, current.x, last.x);
}

void RulerGridBase::OnVerticalRulerScrolled(const PointT<int>& current, const PointT<int>& last) {
    OnRulerScrolled(true, current.y, last.y);
}

void RulerGridBase::OnHorizontalRulerZoomRegionChanged() {
    EmitInvalidate(); // the rubber band moved
}

void RulerGridBase::OnVerticalRulerZoomRegionChanged() {
    EmitInvalidate();
}

void RulerGridBase::OnRulerZoomCaptureEnded(bool vertical, bool zoomed, int first, int second,
                                            bool cancelled) {
    const RulerBase& ruler = CheckRuler(vertical ? vertical_ruler_ : horizontal_ruler_);
    if (zoomed) {
        const double a = ruler.GetValueFromPixel(std::min(first, second));
        const double b = ruler.GetValueFromPixel(std::max(first, second));
        if (vertical)
            SetCurrentRange(horizontal_start_, horizontal_end_, a, b);
        else
            SetCurrentRange(a, b, vertical_start_, vertical_end_);
        return;
    }
    if (cancelled)
        return;
    // A plain right click: the menu of that axis, acting around the value under the click.
    const RulerHandler& handler = vertical ? *vertical_handler_ : *horizontal_handler_;
    const PointT<int> click = handler.GetLastMousePosition();
    const double value = ruler.GetValueFromPixel(vertical ? click.y : click.x);
    // Keep the control alive through the nested loop of the menu.
    IntrusivePtr<RulerGridBase> self(this);
    std::unique_ptr<qorui::OS_Menu> menu = BuildRulerContextMenu(vertical);
    if (!menu)
        return;
    const int chosen = qorui::UI_DoContextMenu(*menu, *this, PointT<float>(click));
    switch (chosen) {
    case kMenuZoomIn: DoZoomAroundValue(vertical, value, 3); break;
    case kMenuZoomOut: DoZoomAroundValue(vertical, value, -3); break;
    case kMenuZoomOutFull:
        if (vertical)
            SetCurrentRange(horizontal_start_, horizontal_end_, vertical_start_bound_,
                            vertical_end_bound_);
        else
            SetCurrentRange(horizontal_start_bound_, horizontal_end_bound_, vertical_start_,
                            vertical_end_);
        break;
    default: break;
    }
}

void RulerGridBase::OnHorizontalRulerZoomCaptureEnded(bool zoomed, int first, int second,
                                                      bool cancelled) {
    OnRulerZoomCaptureEnded(false, zoomed, first, second, cancelled);
}

void RulerGridBase::OnVerticalRulerZoomCaptureEnded(bool zoomed, int first, int second,
                                                    bool cancelled) {
    OnRulerZoomCaptureEnded(true, zoomed, first, second, cancelled);
}

void RulerGridBase::OnHorizontalRulerMouseWheelChanged(const qorui::MouseEvent& event) {
    if (!event.IsAction(qorui::PointerAction::kWheel))
        return;
    const double value =
        CheckRuler(horizontal_ruler_).GetValueFromPixel(TruncatePixels(event.GetPosition().x));
    DoHorizontalZoomAroundValue(value, GetLegacyMouseWheelDeltaInt(event));
}

void RulerGridBase::OnVerticalRulerMouseWheelChanged(const qorui::MouseEvent& event) {
    if (!event.IsAction(qorui::PointerAction::kWheel))
        return;
    const double value =
        CheckRuler(vertical_ruler_).GetValueFromPixel(TruncatePixels(event.GetPosition().y));
    DoVerticalZoomAroundValue(value, GetLegacyMouseWheelDeltaInt(event));
}

std::unique_ptr<qorui::OS_Menu> RulerGridBase::BuildRulerContextMenu(bool vertical) {
    auto menu = qorui::CreateOSMenu();
    const bool can_zoom_in = vertical ? CanZoomInVertical() : CanZoomInHorizontal();
    const bool can_zoom_out = vertical ? CanZoomOutVertical() : CanZoomOutHorizontal();
    menu->AppendItem(kMenuZoomIn, qorcore::Localize(kZoomInText), can_zoom_in);
    menu->AppendItem(kMenuZoomOut, qorcore::Localize(kZoomOutText), can_zoom_out);
    menu->AppendItem(kMenuZoomOutFull, qorcore::Localize(kZoomOutFullText), can_zoom_out);
    return menu;
}

// ---------------------------------------------------------------------------------------------
// Geometry and mapping

float RulerGridBase::GetOuterFrame() const {
    return draw_border_ ? kOuterFrame : 0.0f;
}
float RulerGridBase::GetLeftContentBorder() const {
    return draw_border_ ? kLeftTopContentBorder : 0.0f;
}
float RulerGridBase::GetTopContentBorder() const {
    return draw_border_ ? kLeftTopContentBorder : 0.0f;
}
float RulerGridBase::GetRightContentBorder() const {
    return draw_border_ ? kRightBottomContentBorder : 0.0f;
}
float RulerGridBase::GetBottomContentBorder() const {
    return draw_border_ ? kRightBottomContentBorder : 0.0f;
}

RectT<float> RulerGridBase::GetContentRectWithBorders() const {
    RectT<float> r = GetBounds();
    if (!(r.width > 0.0f) || !(r.height > 0.0f))
        return r;
    const float f = GetOuterFrame();
    r.x += f;
    r.y += f;
    r.width -= 2.0f * f;
    r.height -= 2.0f * f;
    // A ruler takes the place of the right or bottom frame.
    if (vertical_ruler_)
        r.width -= kVerticalRulerWidth - f;
    if (horizontal_ruler_)
        r.height -= kHorizontalRulerHeight - f;
    return r;
}

RectT<float> RulerGridBase::GetContentRect() const {
    RectT<float> r = GetContentRectWithBorders();
    if (r.width > 0.0f && r.height > 0.0f && draw_border_) {
        r.x += kLeftTopContentBorder;
        r.y += kLeftTopContentBorder;
        r.width -= kLeftTopContentBorder + kRightBottomContentBorder;
        r.height -= kLeftTopContentBorder + kRightBottomContentBorder;
    }
    return r;
}

PointT<float> RulerGridBase::GetSizeForContentSize(PointT<float> size) const {
    const float borders =
        draw_border_ ? kLeftTopContentBorder + kRightBottomContentBorder + kOuterFrame : 0.0f;
    PointT<float> result(size.x + borders, size.y + borders);
    if (horizontal_ruler_)
        result.y += kHorizontalRulerHeight;
    if (vertical_ruler_)
        result.x += kVerticalRulerWidth;
    return result;
}

PointT<float> RulerGridBase::GetBestSize() const {
    return GetSizeForContentSize({kBestContentWidth, kBestContentHeight});
}

void RulerGridBase::UpdateRulerLayout() {
    const RectT<float> bounds = GetBounds();
    if (bounds.width > 0.0f && bounds.height > 0.0f && (horizontal_ruler_ || vertical_ruler_)) {
        const RectT<int> content(GetContentRect());
        const RectT<float> bordered = GetContentRectWithBorders();
        const qorcore::ScaleMatrixT<float> matrix = UI_GetSelfToSpecificParentMatrix(nullptr);
        if (content.width > 0 && content.height > 0) {
            if (horizontal_ruler_) {
                horizontal_ruler_->SetPixelRange(content.x, content.x + content.width);
                horizontal_handler_->SetRulerRect(
                    {0, int(std::trunc(float(content.y) + bordered.height)),
                     content.x + content.width + int(kRulerOverhang), int(kHorizontalRulerHeight)},
                    matrix);
            }
            if (vertical_ruler_) {
                vertical_ruler_->SetPixelRange(content.y, content.y + content.height);
                vertical_handler_->SetRulerRect({int(std::trunc(float(content.x) + bordered.width)),
                                                 0, int(kVerticalRulerWidth),
                                                 content.y + content.height + int(kRulerOverhang)},
                                                matrix);
            }
        } else {
            // No room for content: no gesture may start in a stale area.
            horizontal_handler_->SetRulerRect({}, matrix);
            vertical_handler_->SetRulerRect({}, matrix);
        }
    }
    EmitInvalidate();
}

float RulerGridBase::GetPixelForHorizontalValue(double value) const {
    if (horizontal_ruler_)
        return float(horizontal_ruler_->GetPixelFromValue(value));
    if (horizontal_end_ == horizontal_start_)
        return 0.0f;
    const RectT<float> content = GetContentRect();
    return float((value - horizontal_start_) / (horizontal_end_ - horizontal_start_) *
                     double(content.width) +
                 double(content.x));
}

float RulerGridBase::GetPixelForVerticalValue(double value) const {
    if (vertical_ruler_)
        return float(vertical_ruler_->GetPixelFromValue(value));
    if (vertical_end_ == vertical_start_)
        return 0.0f;
    const RectT<float> content = GetContentRect();
    return float((value - vertical_start_) / (vertical_end_ - vertical_start_) *
                     double(content.height) +
                 double(content.y));
}

PointT<float> RulerGridBase::GetPixelForCoordinatePair(std::pair<double, double> values) const {
    return {GetPixelForHorizontalValue(values.first), GetPixelForVerticalValue(values.second)};
}

std::pair<double, double> RulerGridBase::GetCoordinatePairForPixel(PointT<float> pixel) const {
    const RectT<float> content = GetContentRect();
    auto axis = [](const IntrusivePtr<RulerBase>& ruler, float p, float origin, float size,
                   double start, double end) {
        double value = 0.0;
        if (ruler)
            value = ruler->GetValueFromPixel(TruncatePixels(p));
        else if (size != 0.0f)
            value = (double(p) - origin) / size * (end - start) + start;
        return std::clamp(value, std::min(start, end), std::max(start, end));
    };
    return {
        axis(horizontal_ruler_, pixel.x, content.x, content.width, horizontal_start_,
             horizontal_end_),
        axis(vertical_ruler_, pixel.y, content.y, content.height, vertical_start_, vertical_end_)};
}

std::vector<float> RulerGridBase::GetMajorTicks(bool horizontal) const {
    const IntrusivePtr<RulerBase>& ruler = horizontal ? horizontal_ruler_ : vertical_ruler_;
    std::vector<float> ticks;
    if (!ruler)
        return ticks;
    const RectT<float> bordered = GetContentRectWithBorders();
    const RectT<float> content = GetContentRect();
    const float start = horizontal ? bordered.x : bordered.y;
    const float end = horizontal ? bordered.Right() : bordered.Bottom();
    const float origin = horizontal ? content.x : content.y;
    for (int pixel : ruler->GetMajorPixels())
        if (float(pixel) >= start && float(pixel) < end)
            ticks.push_back(float(pixel) - origin);
    return ticks;
}

// ---------------------------------------------------------------------------------------------
// View state

IntrusivePtr<qorcore::RefCountedObject> RulerGridBase::GetOpaqueViewState() const {
    return qorcore::MakeIntrusive<OpaqueViewState>(horizontal_start_, horizontal_end_,
                                                   vertical_start_, vertical_end_);
}

void RulerGridBase::SetOpaqueViewState(IntrusivePtr<qorcore::RefCountedObject> state) {
    if (auto* s = dynamic_cast<const OpaqueViewState*>(state.get()))
        SetCurrentRange(s->horizontal_start, s->horizontal_end, s->vertical_start, s->vertical_end);
}

// ---------------------------------------------------------------------------------------------
// Appearance

void RulerGridBase::SetBackgroundColor(const qorcore::ColorRGBA& color) {
    background_color_ = color;
    EmitInvalidate();
}

void RulerGridBase::SetRulerBackgroundColor(const qorcore::ColorRGBA& color) {
    ruler_background_color_ = color;
    EmitInvalidate();
}

void RulerGridBase::SetGridColor(const qorcore::ColorRGBA& color) {
    grid_color_ = color;
    EmitInvalidate();
}

void RulerGridBase::ShowGrid(bool show) {
    show_grid_ = show;
    EmitInvalidate();
}

void RulerGridBase::SetDrawBorder(bool draw) {
    draw_border_ = draw;
    UpdateRulerLayout();
}

void RulerGridBase::SetDrawContentBorders(bool draw) {
    draw_content_borders_ = draw;
    EmitInvalidate();
}

void RulerGridBase::SetIndicateFocus(bool indicate) {
    indicate_focus_ = indicate;
    EmitInvalidate();
}

void RulerGridBase::SetDrawHorizontalMinorTicks(bool draw) {
    draw_horizontal_minor_ticks_ = draw;
    EmitInvalidate();
}

void RulerGridBase::SetDrawVerticalMinorTicks(bool draw) {
    draw_vertical_minor_ticks_ = draw;
    EmitInvalidate();
}

void RulerGridBase::SetHorizontalRulerFontSize(float size) {
    if (horizontal_ruler_)
        horizontal_ruler_->SetFontSize(size);
    EmitInvalidate();
}

void RulerGridBase::SetVerticalRulerFontSize(float size) {
    if (vertical_ruler_)
        vertical_ruler_->SetFontSize(size);
    EmitInvalidate();
}

void RulerGridBase::SetHorizontalStepFactor(double factor) {
    if (horizontal_ruler_)
        horizontal_ruler_->SetStepFactor(factor);
    EmitInvalidate();
}

void RulerGridBase::SetVerticalStepFactor(double factor) {
    if (vertical_ruler_)
        vertical_ruler_->SetStepFactor(factor);
    EmitInvalidate();
}

void RulerGridBase::SetHorizontalLabel1(std::string label) {
    if (horizontal_ruler_)
        horizontal_ruler_->SetLabel1(std::move(label));
    EmitInvalidate();
}

void RulerGridBase::SetHorizontalLabel2(std::string label) {
    if (horizontal_ruler_)
        horizontal_ruler_->SetLabel2(std::move(label));
    EmitInvalidate();
}

void RulerGridBase::SetVerticalLabel1(std::string label) {
    if (vertical_ruler_)
        vertical_ruler_->SetLabel1(std::move(label));
    EmitInvalidate();
}

void RulerGridBase::SetVerticalLabel2(std::string label) {
    if (vertical_ruler_)
        vertical_ruler_->SetLabel2(std::move(label));
    EmitInvalidate();
}

void RulerGridBase::SetRulersSupportZooming(bool supports) {
    rulers_support_zooming_ = supports;
    horizontal_handler_->SetSupportsScrolling(supports);
    horizontal_handler_->SetSupportsZooming(supports);
    vertical_handler_->SetSupportsScrolling(supports);
    vertical_handler_->SetSupportsZooming(supports);
}

qorcore::Connection RulerGridBase::ConnectCurrentRangeChanged(std::function<void()> slot) {
    return current_range_changed_.Connect(std::move(slot));
}

void RulerGridBase::ThemeChanged() {
    ruler_background_color_ = qorui::skins::GetContentBackgroundColor();
    EmitInvalidate();
}

// ---------------------------------------------------------------------------------------------
// Toolkit

bool RulerGridBase::UI_DoMouseEvent(const qorui::MouseEvent& event) {
    if (!rulers_support_zooming_)
        return false;
    if (vertical_handler_->DoMouseEvent(this, event))
        return true;
    return horizontal_handler_->DoMouseEvent(this, event);
}

bool RulerGridBase::UI_DoCursor(const PointT<float>& local, qorui::ModifierFlags modifiers) {
    if (!rulers_support_zooming_)
        return false;
    if (vertical_handler_->DoCursor(this, local, modifiers))
        return true;
    return horizontal_handler_->DoCursor(this, local, modifiers);
}

const qorui::penrig::SupplierInterface* RulerGridBase::UI_GetDrawSupplier() const {
    return draw_supplier_ ? draw_supplier_ : UI_InteractiveControlView::UI_GetDrawSupplier();
}

void RulerGridBase::UI_NodeChanged(NodeChange change) {
    UI_InteractiveControlView::UI_NodeChanged(change);
    qorui::UI_Window* window = GetWindow();
    draw_supplier_ = window ? &window->GetDrawSupplier() : nullptr;
    if (window && window->GetScaleFactor() != window_scale_) {
        window_scale_ = window->GetScaleFactor();
        UpdateRulerLayout();
    }
}

void RulerGridBase::UI_SizeChanged() {
    UI_InteractiveControlView::UI_SizeChanged();
    UpdateRulerLayout();
}

void RulerGridBase::UI_Draw(qorui::penrig::Penrig* penrig) {
    if (!penrig)
        return;
    UI_ClipToSelf(penrig);
    DrawBackground(penrig);
    DrawContent(penrig, GetContentRect());
    if (draw_border_) {
        const RectT<float> bounds = GetBounds();
        const qorcore::ColorRGBA color = indicate_focus_ && HasFocus()
                                             ? qorui::skins::GetFocusColor()
                                             : qorui::skins::GetDividerColor();
        penrig->SetPen(1.0f, color);
        penrig->NewPath();
        penrig->FormRect({0.5f, 0.5f, bounds.width - 1.0f, bounds.height - 1.0f});
        penrig->Stroke();
    }
    UI_InteractiveControlView::UI_Draw(penrig);
}

void RulerGridBase::DrawBackground(qorui::penrig::Penrig* penrig) const {
    qorui::penrig::Penrig& p = *penrig;
    qorui::penrig::Penrig::StateSaver saver(p);
    const RectT<float> bounds = GetBounds();
    const RectT<float> bordered = GetContentRectWithBorders();
    const RectT<float> content = GetContentRect();
    if (draw_content_borders_)
        p.FillRect(bounds, ruler_background_color_);
    p.FillRect(bordered, background_color_);

    // A repaint of the content alone (a dragged point) leaves the rulers' text alone.
    const RectT<float> clip = p.GetClipBounds();
    if (horizontal_ruler_) {
        const RectT<int> area{0, int(bordered.Bottom()), int(content.Right()) + int(kRulerOverhang),
                              int(kHorizontalRulerHeight)};
        if (clip.Intersects(RectT<float>(area)))
            horizontal_ruler_->Draw(penrig, area);
        horizontal_handler_->Draw(penrig);
        if (show_grid_) {
            if (draw_horizontal_minor_ticks_)
                DrawGridPath(penrig, horizontal_ruler_->GetMinorPixels(), true, false);
            DrawGridPath(penrig, horizontal_ruler_->GetMajorPixels(), true, true);
        }
    }
    if (vertical_ruler_) {
        const RectT<int> area{int(bordered.Right()), 0, int(kVerticalRulerWidth),
                              int(content.Bottom()) + int(kRulerOverhang)};
        if (clip.Intersects(RectT<float>(area)))
            vertical_ruler_->Draw(penrig, area);
        vertical_handler_->Draw(penrig);
        if (show_grid_) {
            if (draw_vertical_minor_ticks_)
                DrawGridPath(penrig, vertical_ruler_->GetMinorPixels(), false, false);
            DrawGridPath(penrig, vertical_ruler_->GetMajorPixels(), false, true);
        }
    }

    if (draw_content_borders_) {
        // A sunken frame: darker along the top and left, lighter along the bottom and right,
        // on half pixels so that the lines are crisp.
        const RectT<float> r(bordered.x + 0.5f, bordered.y + 0.5f, bordered.width - 1.0f,
                             bordered.height - 1.0f);
        p.SetPen(1.0f, qorui::skins::GetListBoxBorderColor().WithAlpha(0.65f));
        p.NewPath();
        p.MoveTo(r.x, r.Bottom());
        p.LineTo(r.x, r.y);
        p.LineTo(r.Right(), r.y);
        p.Stroke();
        p.SetPen(1.0f, qorui::skins::GetDefaultTextColor().WithAlpha(0.65f));
        p.NewPath();
        p.MoveTo(r.Right(), r.y);
        p.LineTo(r.Right(), r.Bottom());
        p.LineTo(r.x, r.Bottom());
        p.Stroke();
    }
}

void RulerGridBase::DrawGridPath(qorui::penrig::Penrig* penrig, const std::vector<int>& pixels,
                                 bool horizontal, bool major) const {
    qorui::penrig::Penrig& p = *penrig;
    const RectT<float> b = GetContentRectWithBorders();
    p.NewPath();
    for (int pixel : pixels) {
        const float at = float(pixel) + 0.5f;
        if (horizontal) {
            if (!(at > b.x && at < b.Right()))
                continue;
            p.MoveTo(at, b.y + 1.0f);
            p.LineTo(at, b.Bottom() - 1.0f);
        } else {
            if (!(at > b.y && at < b.Bottom()))
                continue;
            p.MoveTo(b.x + 1.0f, at);
            p.LineTo(b.Right() - 1.0f, at);
        }
    }
    qorcore::ColorRGBA color = grid_color_;
    if (!major)
        color.alpha *= 0.5f;
    p.SetPen(1.0f, color);
    p.Stroke();
}

} // namespace qoraudiofiltersui
