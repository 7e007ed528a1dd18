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
    : verticalRuler_(std::move(vertical)), horizontalRuler_(std::move(horizontal)),
      verticalHandler_(qorcore::MakeIntrusive<RulerHandler>()),
      horizontalHandler_(qorcore::MakeIntrusive<RulerHandler>()),
      backgroundColor_(qorcore::ColorRGBAFixed::Black),
      rulerBackgroundColor_(qorui::skins::GetContentBackgroundColor()),
      gridColor_(0.0f, 0.208f, 0.0f, 1.0f) {
    SetWantsKeyboardFocus(true);
    SetRulersSupportZooming(false);
    horizontalHandler_->SetRulerCanZoomInFxn(
        std::make_shared<std::function<bool()>>([this] { return CanZoomInHorizontal(); }));
    horizontalHandler_->SetRulerCanZoomOutFxn(
        std::make_shared<std::function<bool()>>([this] { return CanZoomOutHorizontal(); }));
    verticalHandler_->SetRulerCanZoomInFxn(
        std::make_shared<std::function<bool()>>([this] { return CanZoomInVertical(); }));
    verticalHandler_->SetRulerCanZoomOutFxn(
        std::make_shared<std::function<bool()>>([this] { return CanZoomOutVertical(); }));
    ConnectHandlers();
    horizontalHandler_->SetHandlesMouseWheelEvents(true);
    verticalHandler_->SetHandlesMouseWheelEvents(true);
    ApplyRulerSettings();
    themeChanged_ = qorui::skins::ConnectThemeChanged([this] { ThemeChanged(); });
}

RulerGridBase::~RulerGridBase() = default;

void RulerGridBase::ConnectHandlers() {
    RulerHandler& h = *horizontalHandler_;
    RulerHandler& v = *verticalHandler_;
    horizontalScrolled_ =
        h.ConnectRulerScrolled([this](const PointT<int>& current, const PointT<int>& last) {
            OnHorizontalRulerScrolled(current, last);
        });
    horizontalZoomRegionChanged_ =
        h.ConnectRulerZoomRegionChanged([this] { OnHorizontalRulerZoomRegionChanged(); });
    horizontalZoomCaptureEnded_ =
        h.ConnectRulerZoomCaptureEnded([this](bool zoomed, int first, int second, bool cancel) {
            OnHorizontalRulerZoomCaptureEnded(zoomed, first, second, cancel);
        });
    horizontalMouseWheelChanged_ = h.ConnectMouseWheelChanged(
        [this](const qorui::MouseEvent& event) { OnHorizontalRulerMouseWheelChanged(event); });
    verticalScrolled_ =
        v.ConnectRulerScrolled([this](const PointT<int>& current, const PointT<int>& last) {
            OnVerticalRulerScrolled(current, last);
        });
    verticalZoomRegionChanged_ =
        v.ConnectRulerZoomRegionChanged([this] { OnVerticalRulerZoomRegionChanged(); });
    verticalZoomCaptureEnded_ =
        v.ConnectRulerZoomCaptureEnded([this](bool zoomed, int first, int second, bool cancel) {
            OnVerticalRulerZoomCaptureEnded(zoomed, first, second, cancel);
        });
    verticalMouseWheelChanged_ = v.ConnectMouseWheelChanged(
        [this](const qorui::MouseEvent& event) { OnVerticalRulerMouseWheelChanged(event); });
}

void RulerGridBase::ApplyRulerSettings() {
    // The grid decides which way each ruler runs: the one beside the content is vertical.
    if (horizontalRuler_) {
        horizontalRuler_->SetVertical(false);
        horizontalRuler_->SetAbbreviateNumbers(true);
    }
    if (verticalRuler_) {
        verticalRuler_->SetVertical(true);
        verticalRuler_->SetAbbreviateNumbers(true);
    }
    horizontalHandler_->SetRuler(horizontalRuler_);
    verticalHandler_->SetRuler(verticalRuler_);
}

void RulerGridBase::SetRulers(IntrusivePtr<RulerBase> horizontal,
                              IntrusivePtr<RulerBase> vertical) {
    horizontalRuler_ = std::move(horizontal);
    verticalRuler_ = std::move(vertical);
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
        SetCurrentRange(horizontalStart_, horizontalEnd_, verticalStart_, verticalEnd_);
    });
}

void RulerGridBase::ApplyBounds(double hs, double he, double vs, double ve,
                                const std::function<void()>& apply_range) {
    CheckBounds(hs, he, vs, ve);
    const double old[4] = {horizontalStartBound_, horizontalEndBound_, verticalStartBound_,
                           verticalEndBound_};
    horizontalStartBound_ = hs;
    horizontalEndBound_ = he;
    verticalStartBound_ = vs;
    verticalEndBound_ = ve;
    try {
        apply_range();
    } catch (...) {
        // A ruler refused the range: the bounds stay as they were too.
        horizontalStartBound_ = old[0];
        horizontalEndBound_ = old[1];
        verticalStartBound_ = old[2];
        verticalEndBound_ = old[3];
        throw;
    }
}

void RulerGridBase::SetCurrentRange(double hs, double he, double vs, double ve) {
    NormalizeRange(hs, he, horizontalStartBound_, horizontalEndBound_, horizontalMinimumSpan_);
    NormalizeRange(vs, ve, verticalStartBound_, verticalEndBound_, verticalMinimumSpan_);

    const bool same = hs == horizontalStart_ && he == horizontalEnd_ && vs == verticalStart_ &&
                      ve == verticalEnd_;
    if (same) {
        if (!horizontalRuler_ || !verticalRuler_)
            return;
        if (horizontalRuler_->GetValue1() == hs && horizontalRuler_->GetValue2() == he &&
            verticalRuler_->GetValue1() == vs && verticalRuler_->GetValue2() == ve)
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
    if (horizontalRuler_) {
        const double old1 = horizontalRuler_->GetValue1();
        const double old2 = horizontalRuler_->GetValue2();
        horizontalRuler_->SetValueRange(hs, he);
        if (verticalRuler_) {
            try {
                verticalRuler_->SetValueRange(vs, ve);
            } catch (...) {
                horizontalRuler_->SetValueRange(old1, old2);
                throw;
            }
        }
    } else if (verticalRuler_) {
        verticalRuler_->SetValueRange(vs, ve);
    }

    horizontalStart_ = hs;
    horizontalEnd_ = he;
    verticalStart_ = vs;
    verticalEnd_ = ve;
    if (!horizontalRuler_ && !verticalRuler_) {
        currentRangeChanged_();
        return;
    }
    EmitInvalidate();
    currentRangeChanged_();
}

bool RulerGridBase::CanZoomInHorizontal() const {
    return std::abs(horizontalEnd_ - horizontalStart_) > horizontalMinimumSpan_;
}

bool RulerGridBase::CanZoomOutHorizontal() const {
    return horizontalStart_ != horizontalStartBound_ || horizontalEnd_ != horizontalEndBound_;
}

bool RulerGridBase::CanZoomInVertical() const {
    return std::abs(verticalEnd_ - verticalStart_) > verticalMinimumSpan_;
}

bool RulerGridBase::CanZoomOutVertical() const {
    return verticalStart_ != verticalStartBound_ || verticalEnd_ != verticalEndBound_;
}

// ---------------------------------------------------------------------------------------------
// Zooming and scrolling

void RulerGridBase::DoZoomAroundValue(bool vertical, double value, int steps) {
    const RulerBase& ruler = CheckRuler(vertical ? verticalRuler_ : horizontalRuler_);
    const double start = vertical ? verticalStart_ : horizontalStart_;
    const double end = vertical ? verticalEnd_ : horizontalEnd_;
    const double bound_start = vertical ? verticalStartBound_ : horizontalStartBound_;
    const double bound_end = vertical ? verticalEndBound_ : horizontalEndBound_;
    const double minimum_span = vertical ? verticalMinimumSpan_ : horizontalMinimumSpan_;

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
        SetCurrentRange(horizontalStart_, horizontalEnd_, new_start, new_end);
    else
        SetCurrentRange(new_start, new_end, verticalStart_, verticalEnd_);
}

void RulerGridBase::DoHorizontalZoomAroundValue(double value, int steps) {
    DoZoomAroundValue(false, value, steps);
}

void RulerGridBase::DoVerticalZoomAroundValue(double value, int steps) {
    DoZoomAroundValue(true, value, steps);
}

void RulerGridBase::DoSimpleHorizontalZoomIn() {
    DoHorizontalZoomAroundValue((horizontalStart_ + horizontalEnd_) * 0.5, 3);
}

void RulerGridBase::DoSimpleHorizontalZoomOut() {
    DoHorizontalZoomAroundValue((horizontalStart_ + horizontalEnd_) * 0.5, -3);
}

void RulerGridBase::DoSimpleVerticalZoomIn() {
    DoVerticalZoomAroundValue((verticalStart_ + verticalEnd_) * 0.5, 3);
}

void RulerGridBase::DoSimpleVerticalZoomOut() {
    DoVerticalZoomAroundValue((verticalStart_ + verticalEnd_) * 0.5, -3);
}

void RulerGridBase::OnRulerScrolled(bool vertical, int current, int last) {
    const RulerBase& ruler = CheckRuler(vertical ? verticalRuler_ : horizontalRuler_);
    const int pixels = ruler.GetPixel2() - ruler.GetPixel1();
    if (pixels == 0)
        return;
    const double value_per_pixel = (ruler.GetValue2() - ruler.GetValue1()) / pixels;
    // Dragging right (or down) moves the view towards the values at pixel 1.
    const double shift = (last - current) * value_per_pixel;
    double start = (vertical ? verticalStart_ : horizontalStart_) + shift;
    double end = (vertical ? verticalEnd_ : horizontalEnd_) + shift;
    if (vertical) {
        ShiftRangeInside(start, end, verticalStartBound_, verticalEndBound_);
        SetCurrentRange(horizontalStart_, horizontalEnd_, start, end);
    } else {
        ShiftRangeInside(start, end, horizontalStartBound_, horizontalEndBound_);
        SetCurrentRange(start, end, verticalStart_, verticalEnd_);
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
    const RulerBase& ruler = CheckRuler(vertical ? verticalRuler_ : horizontalRuler_);
    if (zoomed) {
        const double a = ruler.GetValueFromPixel(std::min(first, second));
        const double b = ruler.GetValueFromPixel(std::max(first, second));
        if (vertical)
            SetCurrentRange(horizontalStart_, horizontalEnd_, a, b);
        else
            SetCurrentRange(a, b, verticalStart_, verticalEnd_);
        return;
    }
    if (cancelled)
        return;
    // A plain right click: the menu of that axis, acting around the value under the click.
    const RulerHandler& handler = vertical ? *verticalHandler_ : *horizontalHandler_;
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
            SetCurrentRange(horizontalStart_, horizontalEnd_, verticalStartBound_,
                            verticalEndBound_);
        else
            SetCurrentRange(horizontalStartBound_, horizontalEndBound_, verticalStart_,
                            verticalEnd_);
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
        CheckRuler(horizontalRuler_).GetValueFromPixel(TruncatePixels(event.GetPosition().x));
    DoHorizontalZoomAroundValue(value, GetLegacyMouseWheelDeltaInt(event));
}

void RulerGridBase::OnVerticalRulerMouseWheelChanged(const qorui::MouseEvent& event) {
    if (!event.IsAction(qorui::PointerAction::kWheel))
        return;
    const double value =
        CheckRuler(verticalRuler_).GetValueFromPixel(TruncatePixels(event.GetPosition().y));
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
    return drawBorder_ ? kOuterFrame : 0.0f;
}
float RulerGridBase::GetLeftContentBorder() const {
    return drawBorder_ ? kLeftTopContentBorder : 0.0f;
}
float RulerGridBase::GetTopContentBorder() const {
    return drawBorder_ ? kLeftTopContentBorder : 0.0f;
}
float RulerGridBase::GetRightContentBorder() const {
    return drawBorder_ ? kRightBottomContentBorder : 0.0f;
}
float RulerGridBase::GetBottomContentBorder() const {
    return drawBorder_ ? kRightBottomContentBorder : 0.0f;
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
    if (verticalRuler_)
        r.width -= kVerticalRulerWidth - f;
    if (horizontalRuler_)
        r.height -= kHorizontalRulerHeight - f;
    return r;
}

RectT<float> RulerGridBase::GetContentRect() const {
    RectT<float> r = GetContentRectWithBorders();
    if (r.width > 0.0f && r.height > 0.0f && drawBorder_) {
        r.x += kLeftTopContentBorder;
        r.y += kLeftTopContentBorder;
        r.width -= kLeftTopContentBorder + kRightBottomContentBorder;
        r.height -= kLeftTopContentBorder + kRightBottomContentBorder;
    }
    return r;
}

PointT<float> RulerGridBase::GetSizeForContentSize(PointT<float> size) const {
    const float borders =
        drawBorder_ ? kLeftTopContentBorder + kRightBottomContentBorder + kOuterFrame : 0.0f;
    PointT<float> result(size.x + borders, size.y + borders);
    if (horizontalRuler_)
        result.y += kHorizontalRulerHeight;
    if (verticalRuler_)
        result.x += kVerticalRulerWidth;
    return result;
}

PointT<float> RulerGridBase::GetBestSize() const {
    return GetSizeForContentSize({kBestContentWidth, kBestContentHeight});
}

void RulerGridBase::UpdateRulerLayout() {
    const RectT<float> bounds = GetBounds();
    if (bounds.width > 0.0f && bounds.height > 0.0f && (horizontalRuler_ || verticalRuler_)) {
        const RectT<int> content(GetContentRect());
        const RectT<float> bordered = GetContentRectWithBorders();
        const qorcore::ScaleMatrixT<float> matrix = UI_GetSelfToSpecificParentMatrix(nullptr);
        if (content.width > 0 && content.height > 0) {
            if (horizontalRuler_) {
                horizontalRuler_->SetPixelRange(content.x, content.x + content.width);
                horizontalHandler_->SetRulerRect(
                    {0, int(std::trunc(float(content.y) + bordered.height)),
                     content.x + content.width + int(kRulerOverhang), int(kHorizontalRulerHeight)},
                    matrix);
            }
            if (verticalRuler_) {
                verticalRuler_->SetPixelRange(content.y, content.y + content.height);
                verticalHandler_->SetRulerRect({int(std::trunc(float(content.x) + bordered.width)),
                                                0, int(kVerticalRulerWidth),
                                                content.y + content.height + int(kRulerOverhang)},
                                               matrix);
            }
        } else {
            // No room for content: no gesture may start in a stale area.
            horizontalHandler_->SetRulerRect({}, matrix);
            verticalHandler_->SetRulerRect({}, matrix);
        }
    }
    EmitInvalidate();
}

float RulerGridBase::GetPixelForHorizontalValue(double value) const {
    if (horizontalRuler_)
        return float(horizontalRuler_->GetPixelFromValue(value));
    if (horizontalEnd_ == horizontalStart_)
        return 0.0f;
    const RectT<float> content = GetContentRect();
    return float((value - horizontalStart_) / (horizontalEnd_ - horizontalStart_) *
                     double(content.width) +
                 double(content.x));
}

float RulerGridBase::GetPixelForVerticalValue(double value) const {
    if (verticalRuler_)
        return float(verticalRuler_->GetPixelFromValue(value));
    if (verticalEnd_ == verticalStart_)
        return 0.0f;
    const RectT<float> content = GetContentRect();
    return float((value - verticalStart_) / (verticalEnd_ - verticalStart_) *
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
        axis(horizontalRuler_, pixel.x, content.x, content.width, horizontalStart_, horizontalEnd_),
        axis(verticalRuler_, pixel.y, content.y, content.height, verticalStart_, verticalEnd_)};
}

std::vector<float> RulerGridBase::GetMajorTicks(bool horizontal) const {
    const IntrusivePtr<RulerBase>& ruler = horizontal ? horizontalRuler_ : verticalRuler_;
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
    return qorcore::MakeIntrusive<OpaqueViewState>(horizontalStart_, horizontalEnd_, verticalStart_,
                                                   verticalEnd_);
}

void RulerGridBase::SetOpaqueViewState(IntrusivePtr<qorcore::RefCountedObject> state) {
    if (auto* s = dynamic_cast<const OpaqueViewState*>(state.get()))
        SetCurrentRange(s->horizontal_start, s->horizontal_end, s->vertical_start, s->vertical_end);
}

// ---------------------------------------------------------------------------------------------
// Appearance

void RulerGridBase::SetBackgroundColor(const qorcore::ColorRGBA& color) {
    backgroundColor_ = color;
    EmitInvalidate();
}

void RulerGridBase::SetRulerBackgroundColor(const qorcore::ColorRGBA& color) {
    rulerBackgroundColor_ = color;
    EmitInvalidate();
}

void RulerGridBase::SetGridColor(const qorcore::ColorRGBA& color) {
    gridColor_ = color;
    EmitInvalidate();
}

void RulerGridBase::ShowGrid(bool show) {
    showGrid_ = show;
    EmitInvalidate();
}

void RulerGridBase::SetDrawBorder(bool draw) {
    drawBorder_ = draw;
    UpdateRulerLayout();
}

void RulerGridBase::SetDrawContentBorders(bool draw) {
    drawContentBorders_ = draw;
    EmitInvalidate();
}

void RulerGridBase::SetIndicateFocus(bool indicate) {
    indicateFocus_ = indicate;
    EmitInvalidate();
}

void RulerGridBase::SetDrawHorizontalMinorTicks(bool draw) {
    drawHorizontalMinorTicks_ = draw;
    EmitInvalidate();
}

void RulerGridBase::SetDrawVerticalMinorTicks(bool draw) {
    drawVerticalMinorTicks_ = draw;
    EmitInvalidate();
}

void RulerGridBase::SetHorizontalRulerFontSize(float size) {
    if (horizontalRuler_)
        horizontalRuler_->SetFontSize(size);
    EmitInvalidate();
}

void RulerGridBase::SetVerticalRulerFontSize(float size) {
    if (verticalRuler_)
        verticalRuler_->SetFontSize(size);
    EmitInvalidate();
}

void RulerGridBase::SetHorizontalStepFactor(double factor) {
    if (horizontalRuler_)
        horizontalRuler_->SetStepFactor(factor);
    EmitInvalidate();
}

void RulerGridBase::SetVerticalStepFactor(double factor) {
    if (verticalRuler_)
        verticalRuler_->SetStepFactor(factor);
    EmitInvalidate();
}

void RulerGridBase::SetHorizontalLabel1(std::string label) {
    if (horizontalRuler_)
        horizontalRuler_->SetLabel1(std::move(label));
    EmitInvalidate();
}

void RulerGridBase::SetHorizontalLabel2(std::string label) {
    if (horizontalRuler_)
        horizontalRuler_->SetLabel2(std::move(label));
    EmitInvalidate();
}

void RulerGridBase::SetVerticalLabel1(std::string label) {
    if (verticalRuler_)
        verticalRuler_->SetLabel1(std::move(label));
    EmitInvalidate();
}

void RulerGridBase::SetVerticalLabel2(std::string label) {
    if (verticalRuler_)
        verticalRuler_->SetLabel2(std::move(label));
    EmitInvalidate();
}

void RulerGridBase::SetRulersSupportZooming(bool supports) {
    rulersSupportZooming_ = supports;
    horizontalHandler_->SetSupportsScrolling(supports);
    horizontalHandler_->SetSupportsZooming(supports);
    verticalHandler_->SetSupportsScrolling(supports);
    verticalHandler_->SetSupportsZooming(supports);
}

qorcore::Connection RulerGridBase::ConnectCurrentRangeChanged(std::function<void()> slot) {
    return currentRangeChanged_.Connect(std::move(slot));
}

void RulerGridBase::ThemeChanged() {
    rulerBackgroundColor_ = qorui::skins::GetContentBackgroundColor();
    EmitInvalidate();
}

// ---------------------------------------------------------------------------------------------
// Toolkit

bool RulerGridBase::UI_DoMouseEvent(const qorui::MouseEvent& event) {
    if (!rulersSupportZooming_)
        return false;
    if (verticalHandler_->DoMouseEvent(this, event))
        return true;
    return horizontalHandler_->DoMouseEvent(this, event);
}

bool RulerGridBase::UI_DoCursor(const PointT<float>& local, qorui::ModifierFlags modifiers) {
    if (!rulersSupportZooming_)
        return false;
    if (verticalHandler_->DoCursor(this, local, modifiers))
        return true;
    return horizontalHandler_->DoCursor(this, local, modifiers);
}

const qorui::penrig::SupplierInterface* RulerGridBase::UI_GetDrawSupplier() const {
    return drawSupplier_ ? drawSupplier_ : UI_InteractiveControlView::UI_GetDrawSupplier();
}

void RulerGridBase::UI_NodeChanged(NodeChange change) {
    UI_InteractiveControlView::UI_NodeChanged(change);
    qorui::UI_Window* window = GetWindow();
    drawSupplier_ = window ? &window->GetDrawSupplier() : nullptr;
    if (window && window->GetScaleFactor() != windowScale_) {
        windowScale_ = window->GetScaleFactor();
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
    if (drawBorder_) {
        const RectT<float> bounds = GetBounds();
        const qorcore::ColorRGBA color = indicateFocus_ && HasFocus()
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
    if (drawContentBorders_)
        p.FillRect(bounds, rulerBackgroundColor_);
    p.FillRect(bordered, backgroundColor_);

    // A repaint of the content alone (a dragged point) leaves the rulers' text alone.
    const RectT<float> clip = p.GetClipBounds();
    if (horizontalRuler_) {
        const RectT<int> area{0, int(bordered.Bottom()), int(content.Right()) + int(kRulerOverhang),
                              int(kHorizontalRulerHeight)};
        if (clip.Intersects(RectT<float>(area)))
            horizontalRuler_->Draw(penrig, area);
        horizontalHandler_->Draw(penrig);
        if (showGrid_) {
            if (drawHorizontalMinorTicks_)
                DrawGridPath(penrig, horizontalRuler_->GetMinorPixels(), true, false);
            DrawGridPath(penrig, horizontalRuler_->GetMajorPixels(), true, true);
        }
    }
    if (verticalRuler_) {
        const RectT<int> area{int(bordered.Right()), 0, int(kVerticalRulerWidth),
                              int(content.Bottom()) + int(kRulerOverhang)};
        if (clip.Intersects(RectT<float>(area)))
            verticalRuler_->Draw(penrig, area);
        verticalHandler_->Draw(penrig);
        if (showGrid_) {
            if (drawVerticalMinorTicks_)
                DrawGridPath(penrig, verticalRuler_->GetMinorPixels(), false, false);
            DrawGridPath(penrig, verticalRuler_->GetMajorPixels(), false, true);
        }
    }

    if (drawContentBorders_) {
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
    qorcore::ColorRGBA color = gridColor_;
    if (!major)
        color.alpha *= 0.5f;
    p.SetPen(1.0f, color);
    p.Stroke();
}

} // namespace qoraudiofiltersui
