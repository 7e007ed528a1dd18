#include "graphs/curve_editor.hpp"

#include "graphs/curve_point_move_capture.hpp"
#include "platform/core/localizer.hpp"
#include "platform/core/null_pointer_exception.hpp"
#include "platform/dialogs/curve_point_edit_dialog.hpp"
#include "platform/dialogs/ui_modal_dialog.hpp"
#include "platform/draw/penrig.hpp"
#include "platform/menus/os_menu.hpp"
#include "platform/menus/ui_menu_overlay.hpp"
#include "platform/ui/ui_tool_tip.hpp"
#include "platform/ui/ui_window.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <stdexcept>

namespace qoraudiofiltersui {

using qorcore::IntrusivePtr;
using qorcore::PointT;
using qorcore::RectT;
using qorui::KeyboardCode;
using qorui::MouseEvent;
using qorui::PointerAction;

namespace {

constexpr const char* kPointAlreadyExistsText =
    "$$$/qoraudiofiltersui/curveeditor/PointAlreadyExists=A point at the requested location "
    "already exists.";
constexpr const char* kCannotEditPointText =
    "$$$/qoraudiofiltersui/curveeditor/CannotEditPoint=Cannot Edit Point";
constexpr const char* kWrongStartEndPointsText =
    "$$$/qoraudiofiltersui/curveeditor/WrongStartEndPoints=Endpoints must be at -100,-100 and "
    "0,0";
constexpr const char* kCannotInvertText =
    "$$$/qoraudiofiltersui/curveeditor/CannotInvert=Cannot Invert";
constexpr const char* kNotInvertableText =
    "$$$/qoraudiofiltersui/curveeditor/NotInvertable=Current graph is not invertable";
constexpr const char* kEditPointDialogText =
    "$$$/qoraudiofiltersui/curveeditor/EditPointDialog=Edit Point";
constexpr const char* kEditPointMenuText =
    "$$$/qoraudiofiltersui/curveeditor/ContextMenu/EditPoint=Edit Point...";
constexpr const char* kDeletePointMenuText =
    "$$$/qoraudiofiltersui/curveeditor/ContextMenu/DeletePoint=Delete Point";

constexpr float kPointLabelFontSize = 16.0f;
constexpr float kSegmentNumberFontSize = 11.0f;
/// Room between a label's box and the dot under it.
constexpr float kPointLabelGap = 4.0f;

/// Whether `value` lies between the two ends of a range, whichever way it runs, ends included.
bool InRange(double value, double a, double b) {
    return value >= std::min(a, b) && value <= std::max(a, b);
}

/// A value's text with one decimal place, as the tool tip shows it.
std::string NumberToString(double value) {
    char text[64];
    std::snprintf(text, sizeof text, "%.1f", value);
    std::string result(text);
    // Values that round to zero from below read "0.0", not "-0.0".
    if (result == "-0.0")
        result = "0.0";
    return result;
}

/// Streams a polyline into the penrig's path and leaves out the points that lie within
/// `tolerance` of the line through the points kept, so that a curve of thousands of values over
/// a few hundred pixels is stroked with about as many segments as it has visible bends. The
/// directions that still pass within the tolerance of every point since the last kept one form a
/// cone from it; each point narrows the cone by the tangents to its tolerance circle, and a point
/// outside the cone starts a new segment. One square root a point, no angles.
class PathSimplifier {
public:
    PathSimplifier(qorui::penrig::Penrig& penrig, float tolerance)
        : penrig_(penrig), tolerance_(tolerance) {}

    void Add(const PointT<float>& point) {
        if (!open_) {
            penrig_.MoveTo(point.x, point.y);
            anchor_ = last_ = point;
            bounded_ = false;
            open_ = true;
            return;
        }
        if (!Fits(point)) {
            penrig_.LineTo(last_.x, last_.y);
            anchor_ = last_;
            bounded_ = false;
            Fits(point);
        }
        last_ = point;
    }

    /// Ends the polyline; the next point starts a new one.
    void Finish() {
        if (open_ && !(last_ == anchor_))
            penrig_.LineTo(last_.x, last_.y);
        open_ = false;
    }

private:
    static float Cross(const PointT<float>& a, const PointT<float>& b) {
        return a.x * b.y - a.y * b.x;
    }

    /// Whether the segment from the anchor towards `point` may still stand for every point
    /// since the anchor; narrows the cone when it may.
    bool Fits(const PointT<float>& point) {
        const PointT<float> d = point - anchor_;
        const float length2 = d.x * d.x + d.y * d.y;
        if (length2 <= tolerance_ * tolerance_)
            return true;
        if (bounded_ && (Cross(low_, d) < 0.0f || Cross(d, high_) < 0.0f))
            return false;
        // The tangents from the anchor to the circle of the tolerance around the point.
        const float s = tolerance_ / std::sqrt(length2);
        const float c = std::sqrt(1.0f - s * s);
        const PointT<float> low(d.x * c + d.y * s, d.y * c - d.x * s);
        const PointT<float> high(d.x * c - d.y * s, d.y * c + d.x * s);
        if (!bounded_ || Cross(low_, low) > 0.0f)
            low_ = low;
        if (!bounded_ || Cross(high, high_) > 0.0f)
            high_ = high;
        bounded_ = true;
        return true;
    }

    qorui::penrig::Penrig& penrig_;
    float tolerance_;
    PointT<float> anchor_;
    PointT<float> last_;
    PointT<float> low_;
    PointT<float> high_;
    bool bounded_ = false;
    bool open_ = false;
};

double Apply(const CurveEditor::Translator& translate, double value) {
    return translate ? translate(value) : value;
}

bool IsFinite(const std::pair<double, double>& position) {
    return std::isfinite(position.first) && std::isfinite(position.second);
}

} // namespace

CurveEditor::CurveEditor(IntrusivePtr<qorui::RulerBase> horizontal,
                         IntrusivePtr<qorui::RulerBase> vertical)
    : RulerGridBase(std::move(horizontal), std::move(vertical)) {
    // The base already wants the keyboard focus, paints a black background and takes the ruler
    // background from the theme.
}

CurveEditor::~CurveEditor() {
    CloseToolTip();
}

// ---------------------------------------------------------------------------------------------
// Points

void CurveEditor::SetCurvePoints(const CurvePoints& points) {
    for (const CurvePoint& point : points)
        if (!IsFinite(point.position))
            throw std::invalid_argument("CurveEditor::SetCurvePoints: point values must be finite");
    curvePoints_ = points;
    if (selectedIndex_ >= int(curvePoints_.size()))
        SetSelectedNode(-1);
    InvalidateContentRect();
}

bool CurveEditor::AddNewPoint() {
    double horizontal = 0.0;
    double vertical = 0.0;
    if (!RunEditDialog(horizontal, vertical, true))
        return false;
    for (const CurvePoint& point : curvePoints_)
        if (point.position.first == horizontal) {
            DisplayAlreadyExistsMessage();
            return false;
        }
    AddNewCurvePoint(CurvePoint(GetNewPointId(), horizontal, vertical));
    InvalidateContentRect();
    return true;
}

bool CurveEditor::DeleteSelectedPoints() {
    const int selected = GetSelectedNode();
    if (selected < 0 || !IsPointDeletable(selected))
        return false;
    BeginInteractiveChange();
    curvePoints_.erase(curvePoints_.begin() + selected);
    SetSelectedNode(-1);
    InvalidateContentRect();
    FinishInteractiveChange();
    return true;
}

bool CurveEditor::Invert() {
    if (curvePoints_.empty())
        return true;
    const CurvePoint& first = curvePoints_.front();
    const CurvePoint& last = curvePoints_.back();
    if (first.position != std::make_pair(GetHorizontalStart(), GetVerticalEnd()) ||
        last.position != std::make_pair(GetHorizontalEnd(), GetVerticalStart())) {
        qorui::messagebox::ShowNote(this, qorcore::Localize(kCannotInvertText),
                                    qorcore::Localize(kWrongStartEndPointsText));
        return false;
    }
    for (std::size_t i = 0; i + 1 < curvePoints_.size(); ++i)
        if (curvePoints_[i].position.second >= curvePoints_[i + 1].position.second) {
            qorui::messagebox::ShowNote(this, qorcore::Localize(kCannotInvertText),
                                        qorcore::Localize(kNotInvertableText));
            return false;
        }
    // A strictly rising curve stays sorted when mirrored: the swapped values rise as well.
    for (std::size_t i = 1; i + 1 < curvePoints_.size(); ++i)
        std::swap(curvePoints_[i].position.first, curvePoints_[i].position.second);
    InvalidateContentRect();
    return true;
}

void CurveEditor::NotifyChanged() {
    BeginInteractiveChange();
    FinishInteractiveChange();
}

CurveEditor::CurvePoints::iterator CurveEditor::AddNewCurvePoint(const CurvePoint& point) {
    const auto at = std::upper_bound(curvePoints_.begin(), curvePoints_.end(), point,
                                     [](const CurvePoint& a, const CurvePoint& b) {
                                         return a.position.first < b.position.first;
                                     });
    return curvePoints_.insert(at, point);
}

int CurveEditor::IndexOf(CurvePoints::const_iterator it) const {
    return it == curvePoints_.end() ? -1 : int(it - curvePoints_.begin());
}

// ---------------------------------------------------------------------------------------------
// Rules

void CurveEditor::SetDeletablePoints(const std::vector<char>& deletable) {
    deletablePoints_ = deletable;
}

void CurveEditor::SetMoveablePoints(const std::vector<char>& moveable, bool horizontal) {
    (horizontal ? horizontallyMoveablePoints_ : verticallyMoveablePoints_) = moveable;
}

void CurveEditor::SetVisiblePoints(const std::vector<char>& visible) {
    visiblePoints_ = visible;
    InvalidateContentRect();
}

bool CurveEditor::IsPointVisible(int index) const {
    if (index >= 0 && index < int(visiblePoints_.size()))
        return visiblePoints_[index] != 0;
    return true;
}

bool CurveEditor::IsPointDeletable(int index) const {
    if (deletablePoints_.empty()) {
        if (!enableDeletePoints_)
            return false;
        const int last = int(curvePoints_.size()) - 1;
        return selectedIndex_ != 0 && selectedIndex_ != last;
    }
    if (index >= 0 && index < int(deletablePoints_.size()))
        return deletablePoints_[index] != 0;
    return enableDeletePoints_;
}

bool CurveEditor::IsPointMoveable(int index, bool horizontal) const {
    const std::vector<char>& list =
        horizontal ? horizontallyMoveablePoints_ : verticallyMoveablePoints_;
    if (list.empty()) {
        if (!horizontal)
            return true;
        const int last = int(curvePoints_.size()) - 1;
        return selectedIndex_ != 0 && selectedIndex_ != last;
    }
    if (index >= 0 && index < int(list.size()))
        return list[index] != 0;
    return true;
}

// ---------------------------------------------------------------------------------------------
// Selection

int CurveEditor::GetSelectedNode() const {
    return selectedIndex_ >= 0 && selectedIndex_ < int(curvePoints_.size()) ? selectedIndex_ : -1;
}

void CurveEditor::SetSelectedNode(int index) {
    selectedIndex_ = index >= 0 && index < int(curvePoints_.size()) ? index : -1;
    InvalidateContentRect();
    selectionChanged_(selectedIndex_);
}

qorcore::Connection CurveEditor::ConnectSelectionChanged(std::function<void(int)> slot) {
    return selectionChanged_.Connect(std::move(slot));
}

void CurveEditor::SelectNextVisiblePoint(int direction) {
    const int count = int(curvePoints_.size());
    if (count == 0)
        return;
    int target = GetSelectedNode();
    // A hidden selection stays where it is: the keys walk the visible points only.
    if (target < 0 || IsPointVisible(target)) {
        const int start = target >= 0 ? target : (direction > 0 ? -1 : count);
        for (int step = 1; step <= count; ++step) {
            const int candidate = ((start + step * direction) % count + count) % count;
            if (IsPointVisible(candidate)) {
                target = candidate;
                break;
            }
        }
    }
    BeginInteractiveChange();
    SetSelectedNode(target);
    FinishInteractiveChange();
}

// ---------------------------------------------------------------------------------------------
// Labels, texts and data

void CurveEditor::SetPointLabels(const std::vector<std::string>& labels) {
    pointLabels_ = labels;
    InvalidateContentRect();
}

void CurveEditor::SetDrawPointLabelsAtBottom(bool at_bottom) {
    drawPointLabelsAtBottom_ = at_bottom;
    InvalidateContentRect();
}

void CurveEditor::SetDrawSegmentNumbers(bool draw) {
    drawSegmentNumbers_ = draw;
    InvalidateContentRect();
}

void CurveEditor::SetDrawLinearReference(bool draw) {
    drawLinearReference_ = draw;
    InvalidateContentRect();
}

void CurveEditor::SetHorizontalEditDialogTranslators(Translator display_to_value,
                                                     Translator value_to_display) {
    horizontalDisplayToValue_ = std::move(display_to_value);
    horizontalValueToDisplay_ = std::move(value_to_display);
}

void CurveEditor::SetVerticalEditDialogTranslators(Translator display_to_value,
                                                   Translator value_to_display) {
    verticalDisplayToValue_ = std::move(display_to_value);
    verticalValueToDisplay_ = std::move(value_to_display);
}

void CurveEditor::SetRequestDataFunction(std::shared_ptr<std::function<void(int)>> request) {
    requestData_ = std::move(request);
}

void CurveEditor::SetResponseData(const std::vector<double>& data, int index) {
    if (index == 0)
        responseData0_ = data;
    else if (index == 1)
        responseData1_ = data;
    InvalidateContentRect();
}

const std::vector<double>& CurveEditor::GetResponseData(int index) const {
    static const std::vector<double> none;
    return index == 0 ? responseData0_ : index == 1 ? responseData1_ : none;
}

void CurveEditor::SetCurveColor(const qorcore::ColorRGBA& color, int index) {
    if (index == 0)
        curveColor0_ = color;
    else if (index == 1)
        curveColor1_ = color;
    InvalidateContentRect();
}

qorcore::ColorRGBA CurveEditor::GetCurveColor(int index) const {
    return index == 0 ? curveColor0_ : index == 1 ? curveColor1_ : qorcore::ColorRGBAFixed::Black;
}

void CurveEditor::SetSelectedPointColor(const qorcore::ColorRGBA& color) {
    selectedPointColor_ = color;
    InvalidateContentRect();
}

void CurveEditor::SetContentLineThickness(float thickness) {
    contentLineThickness_ = thickness;
    InvalidateContentRect();
}

void CurveEditor::RequestData() {
    // A set pointer holding an empty function throws std::bad_function_call on purpose.
    if (requestData_)
        (*requestData_)(int(GetContentRect().width));
}

// ---------------------------------------------------------------------------------------------
// Content layers

void CurveEditor::AddContentLayer(IntrusivePtr<ContentLayer> layer) {
    qorcore::config::ThrowIfNull(layer, "ContentLayer");
    if (std::find(contentLayers_.begin(), contentLayers_.end(), layer) != contentLayers_.end())
        return;
    contentLayers_.push_back(layer);
    layer->SetBounds(GetContentRect(), GetScaleFactor());
    InvalidateContentRect();
}

void CurveEditor::RemoveContentLayer(const IntrusivePtr<ContentLayer>& layer) {
    const auto it = std::find(contentLayers_.begin(), contentLayers_.end(), layer);
    if (it == contentLayers_.end())
        return;
    contentLayers_.erase(it);
    InvalidateContentRect();
}

void CurveEditor::RefreshLayerBounds() {
    const RectT<float> content = GetContentRect();
    for (const IntrusivePtr<ContentLayer>& layer : contentLayers_)
        layer->SetBounds(content, GetScaleFactor());
}

void CurveEditor::InvalidateContentRect() {
    EmitInvalidate(RectT<float>(qorcore::OutsetToIntegers(GetContentRectWithBorders())));
}

// ---------------------------------------------------------------------------------------------
// Point arithmetic

bool CurveEditor::IsPointInCurrentRange(const CurvePoint& point) const {
    return InRange(point.position.first, GetHorizontalStart(), GetHorizontalEnd()) &&
           InRange(point.position.second, GetVerticalStart(), GetVerticalEnd());
}

CurveEditor::CurvePoints::const_iterator
CurveEditor::FindCurvePointForPixel(const PointT<float>& point, bool ignore_vertical,
                                    bool use_dot_size) const {
    const float start = use_dot_size ? -2.5f - 2.0f : 0.0f;
    const float size = use_dot_size ? 9.0f : 1.0f;
    for (auto it = curvePoints_.begin(); it != curvePoints_.end(); ++it) {
        if (!IsPointVisible(int(it - curvePoints_.begin())) || !IsPointInCurrentRange(*it))
            continue;
        const PointT<float> p = GetPixelForCoordinatePair(it->position);
        const bool in_column = point.x >= p.x + start && point.x <= p.x + start + size;
        const bool in_row = point.y >= p.y + start && point.y <= p.y + start + size;
        if (in_column && (ignore_vertical || in_row))
            return it;
    }
    return curvePoints_.end();
}

RectT<float> CurveEditor::GetDotRect(const PointT<float>& pixel) {
    return {pixel.x - 2.5f, pixel.y - 2.5f, 5.0f, 5.0f};
}

bool CurveEditor::HasHorizontalPoint(double value, double tolerance) const {
    return std::any_of(curvePoints_.begin(), curvePoints_.end(), [&](const CurvePoint& point) {
        return std::abs(point.position.first - value) < tolerance;
    });
}

int CurveEditor::MoveCurvePoint(int index, const PointT<float>& pixel,
                                qorui::ModifierFlags modifiers) {
    if (index < 0 || index >= int(curvePoints_.size()))
        return -1;
    const RectT<float> content = GetContentRect();
    // Without room for content there is no pixel to move to.
    if (!std::isfinite(pixel.x) || !std::isfinite(pixel.y) || content.IsEmpty())
        return index;

    // Pulled far above or below the content: the point dies. Sideways it merely stops.
    if (IsPointDeletable(index) &&
        (pixel.y < content.y - kPullOffDistance || pixel.y > content.Bottom() + kPullOffDistance)) {
        curvePoints_.erase(curvePoints_.begin() + index);
        SetSelectedNode(-1);
        InvalidateContentRect();
        return -1;
    }

    float px = std::floor(std::clamp(pixel.x, content.x, content.Right()) + 0.5f);
    const float py = std::floor(std::clamp(pixel.y, content.y, content.Bottom()) + 0.5f);
    // Plain variables, not a structured binding: the lambdas below capture them.
    const auto pair = GetCoordinatePairForPixel({px, py});
    double nh = pair.first;
    double nv = pair.second;
    const CurvePoint current_point = curvePoints_[index];
    const double current = current_point.position.first;
    if (!IsPointMoveable(index, false))
        nv = current_point.position.second;
    if (!IsPointMoveable(index, true))
        nh = current;

    // The vertical value follows at once, whatever happens to the horizontal one.
    curvePoints_[index].position.second = nv;

    if (!uniqueHorizontalPositions_) {
        // No reordering: with uniqueness off, points may cross and the order may break.
        curvePoints_[index].position.first = nh;
        InvalidateContentRect();
        return index;
    }

    const int last = int(curvePoints_.size()) - 1;
    const double one_pixel =
        std::abs(GetHorizontalEnd() - GetHorizontalStart()) / double(content.width);
    auto value_at = [&](float x) {
        return GetCoordinatePairForPixel({x, py}).first;
    };
    auto pixel_of = [&](int j) {
        return std::floor(GetPixelForHorizontalValue(curvePoints_[j].position.first) + 0.5f);
    };
    // The walks below step one pixel at a time; no walk may leave the content, so that an axis
    // running the other way can't keep one going.
    const int max_steps = int(std::max(0.0f, content.width)) + 2;
    // Walks towards the point's own place until a pixel whose value no point holds; true if it
    // found one (px and nh then name it).
    auto walk = [&](float step, auto&& still_short) {
        for (int steps = 0; still_short() && steps < max_steps; ++steps) {
            if (!HasHorizontalPoint(nh, one_pixel))
                return true;
            px += step;
            nh = value_at(px);
        }
        return false;
    };

    bool needs_reinsert = true;
    int collision = -1;
    for (int j = 0; j <= last; ++j) {
        if (j == index)
            continue;
        const float q = pixel_of(j);
        if (px == q) {
            collision = j;
            break;
        }
        if (index == 0 || index == last || modifiers.IsAnySet(kMoveFreelyModifier))
            continue;
        if (j == index - 1 && q > px) {
            // Dragged past the left neighbour: held just right of it until pulled far enough.
            float limit = float(kJumpDistance);
            if (index >= 2)
                limit = std::min(pixel_of(index - 1) - pixel_of(0) - 5.0f, limit);
            if (q - px >= limit)
                continue;
            px = q + 1.0f;
            needs_reinsert = false;
            nh = value_at(px);
            if (current > nh && walk(1.0f, [&] { return current > nh; }))
                needs_reinsert = true;
        } else if (j == index + 1 && px > q) {
            float limit = float(kJumpDistance);
            if (index <= last - 2)
                limit = std::min(pixel_of(last) - pixel_of(index + 1) - 5.0f, limit);
            if (px - q >= limit)
                continue;
            px = q - 1.0f;
            needs_reinsert = false;
            nh = value_at(px);
            if (nh > current && walk(-1.0f, [&] { return nh > current; }))
                needs_reinsert = true;
        }
    }

    if (collision >= 0) {
        // On another point's pixel: only a point pushed against an end may slide off it, to the
        // first pixel whose value no point holds.
        needs_reinsert = false;
        const float step = collision == 0 ? 1.0f : -1.0f;
        auto short_of_place = [&] {
            return collision == 0 ? current > nh : nh > current;
        };
        if ((collision == 0 || collision == last) && short_of_place()) {
            int steps = 0;
            do {
                px += step;
                nh = value_at(px);
                if (!HasHorizontalPoint(nh, one_pixel)) {
                    needs_reinsert = true;
                    break;
                }
            } while (short_of_place() && ++steps < max_steps);
        }
    }
    if (!needs_reinsert) {
        InvalidateContentRect();
        return index;
    }

    // A point that changes place horizontally is a new point: it gets a new id.
    curvePoints_.erase(curvePoints_.begin() + index);
    const int new_index = IndexOf(AddNewCurvePoint(CurvePoint(GetNewPointId(), nh, nv)));
    SetSelectedNode(new_index);
    InvalidateContentRect();
    return new_index;
}

void CurveEditor::MoveSelection(float dx, float dy) {
    const int selected = GetSelectedNode();
    if (selected < 0)
        return;
    BeginInteractiveChange();
    CloseToolTip();
    const PointT<float> p = GetPixelForCoordinatePair(curvePoints_[selected].position);
    MoveCurvePoint(selected, {p.x + dx, p.y + dy}, kMoveFreelyModifier);
    FinishInteractiveChange();
}

void CurveEditor::RestorePoint(int index, const CurvePoint& original) {
    if (index < 0 || index >= int(curvePoints_.size()))
        return;
    curvePoints_[index] = original;
    if (!uniqueHorizontalPositions_)
        return;
    // A drag that passed neighbours left the point elsewhere in the order: it goes back
    // between the neighbours it had, so a cancelled drag leaves the curve as it was.
    const auto before = [](const CurvePoint& a, const CurvePoint& b) {
        return a.position.first < b.position.first;
    };
    auto from = curvePoints_.begin() + index;
    auto to = std::upper_bound(curvePoints_.begin(), from, original, before);
    if (to != from) {
        std::rotate(to, from, from + 1);
    } else {
        to = std::lower_bound(from + 1, curvePoints_.end(), original, before);
        std::rotate(from, from + 1, to);
        --to;
    }
    const int restored = int(to - curvePoints_.begin());
    if (restored != index && selectedIndex_ == index)
        SetSelectedNode(restored);
}

// ---------------------------------------------------------------------------------------------
// Dialog, notes and tool tip

bool CurveEditor::RunEditDialog(double& horizontal, double& vertical, bool horizontal_enabled) {
    IntrusivePtr<CurveEditor> keep(this);
    auto dialog = qorcore::MakeIntrusive<qormediaui::CurvePointEditDialog>(
        qorcore::Localize(kEditPointDialogText), qorcore::Localize(horizontalLabel_),
        qorcore::Localize(verticalLabel_), this);
    auto set_up = [](qorui::UI_HotTextNumber& number, double value, double start, double end,
                     const Translator& to_display, bool enabled, const std::string& unit) {
        const double a = Apply(to_display, std::min(start, end));
        const double b = Apply(to_display, std::max(start, end));
        // A falling translator turns the range round; the field needs it in order.
        number.SetMinValue(std::min(a, b));
        number.SetMaxValue(std::max(a, b));
        number.SetValue(Apply(to_display, value));
        number.UI_SetEnabled(enabled);
        number.SetTextLabel(qorcore::Localize(unit));
        number.SetDecimalPlaces(1);
    };
    set_up(*dialog->GetHotTextNumber1(), horizontal, GetHorizontalStart(), GetHorizontalEnd(),
           horizontalValueToDisplay_, horizontal_enabled, horizontalUnit_);
    set_up(*dialog->GetHotTextNumber2(), vertical, GetVerticalStart(), GetVerticalEnd(),
           verticalValueToDisplay_, true, verticalUnit_);
    if (dialog->RunModal() != qormediaui::CurvePointEditDialog::kResponseAccept)
        return false;
    const double h = horizontal_enabled
                         ? Apply(horizontalDisplayToValue_, dialog->GetHotTextNumber1()->GetValue())
                         : horizontal;
    const double v = Apply(verticalDisplayToValue_, dialog->GetHotTextNumber2()->GetValue());
    // A translator that can't take a number back gives nothing to place.
    if (!std::isfinite(h) || !std::isfinite(v))
        return false;
    horizontal = h;
    vertical = v;
    return true;
}

void CurveEditor::DisplayAlreadyExistsMessage() {
    qorui::messagebox::ShowNote(this, qorcore::Localize(kCannotEditPointText),
                                qorcore::Localize(kPointAlreadyExistsText));
}

std::string CurveEditor::FormatToolTipValue(double value,
                                            const Translator& value_to_display) const {
    return NumberToString(Apply(value_to_display, value));
}

void CurveEditor::SetToolTip(const std::pair<double, double>& values) {
    if (horizontalUnit_.empty() || verticalUnit_.empty() || !GetWindow())
        return;
    std::string text = FormatToolTipValue(values.first, horizontalValueToDisplay_) + " " +
                       qorcore::Localize(horizontalUnit_) + " --> " +
                       FormatToolTipValue(values.second, verticalValueToDisplay_) + " " +
                       qorcore::Localize(verticalUnit_);
    const PointT<float> at = GetPixelForCoordinatePair(values);
    if (toolTip_ && toolTip_->GetWindow()) {
        toolTip_->SetText(std::move(text));
        toolTip_->SetAnchor(UI_LocalToGlobalF(at));
        return;
    }
    toolTip_ = qorui::CreateUI_ToolTip(this, std::move(text), at);
}

void CurveEditor::CloseToolTip() {
    if (!toolTip_)
        return;
    IntrusivePtr<qorui::UI_ToolTip> tip = std::move(toolTip_);
    toolTip_.reset();
    tip->Close();
}

// ---------------------------------------------------------------------------------------------
// Toolkit

void CurveEditor::SetCurrentRange(double hs, double he, double vs, double ve) {
    RulerGridBase::SetCurrentRange(hs, he, vs, ve);
    RequestData();
    EmitInvalidate();
}

void CurveEditor::UI_SizeChanged() {
    RulerGridBase::UI_SizeChanged();
    // The layers paint into the content, which moved with the size.
    RefreshLayerBounds();
    RequestData();
    EmitInvalidate();
}

void CurveEditor::UI_NodeChanged(NodeChange change) {
    if (change == kNodeChangeAddedToParent)
        RefreshLayerBounds();
    RulerGridBase::UI_NodeChanged(change);
}

RectT<float> CurveEditor::GetHitRect() const {
    const float frame = GetOuterFrame();
    return GetContentRect().Inset(-frame, -frame);
}

bool CurveEditor::IsEventFromChild() const {
    const qorui::UI_Window* window = GetWindow();
    const qorui::UI_Node* hover = window ? window->GetHoverNode() : nullptr;
    return hover && hover != this && IsAncestorOf(hover);
}

bool CurveEditor::UI_DoMouseEvent(const MouseEvent& event) {
    if (event.IsAction(PointerAction::kLeave)) {
        CloseToolTip();
        return RulerGridBase::UI_DoMouseEvent(event);
    }
    if (IsEventFromChild())
        return RulerGridBase::UI_DoMouseEvent(event);
    // Menus and dialogs run nested loops in which the owner may let go of the editor.
    IntrusivePtr<CurveEditor> keep(this);
    const PointT<float> p = event.GetPosition();
    const bool inside = GetHitRect().Contains(p);
    const bool move = event.IsAction(PointerAction::kMove);
    const int hit = IndexOf(FindCurvePointForPixel(p, false, true));

    bool tool_tip_consumed = false;
    if (inside && hit >= 0) {
        SetToolTip(curvePoints_[hit].position);
        tool_tip_consumed = move && toolTip_;
    } else if (inside && move && enableMousePositionToolTip_) {
        SetToolTip(GetCoordinatePairForPixel(p));
        tool_tip_consumed = bool(toolTip_);
    } else {
        CloseToolTip();
    }

    if (event.IsContextMenuClick()) {
        UI_RequestFocus();
        if (inside) {
            if (hit >= 0) {
                RunPointContextMenu(hit, p);
            } else {
                BeginInteractiveChange();
                FinishInteractiveChange();
            }
            return true;
        }
    } else if (event.IsAction(PointerAction::kPress) && event.IsButton(qorui::MouseButton::kLeft)) {
        UI_RequestFocus();
        if (inside) {
            int index = hit;
            // A point anywhere in this pixel's column blocks adding one.
            if (index < 0 && FindCurvePointForPixel(p, true, false) == curvePoints_.end() &&
                curvePoints_.size() < maxPointCount_ && GetContentRect().Contains(p)) {
                const auto [h, v] = GetCoordinatePairForPixel(p);
                index = IndexOf(AddNewCurvePoint(CurvePoint(GetNewPointId(), h, v)));
            }
            SetSelectedNode(index);
            InvalidateContentRect();
            if (index < 0) {
                BeginInteractiveChange();
                FinishInteractiveChange();
                return true;
            }
            CloseToolTip();
            qorcore::MakeIntrusive<CurvePointMoveCapture>(this, event, index, curvePoints_[index],
                                                          enableMousePositionToolTip_)
                ->Start();
            return true;
        }
    }
    if (tool_tip_consumed)
        return true;
    return RulerGridBase::UI_DoMouseEvent(event);
}

void CurveEditor::RunPointContextMenu(int index, const PointT<float>& position) {
    SetSelectedNode(index);
    const CurvePoint point = curvePoints_[index];
    auto menu = qorui::CreateOSMenu();
    menu->AppendItem(kMenuEditPoint, qorcore::Localize(kEditPointMenuText));
    if (IsPointDeletable(index))
        menu->AppendItem(kMenuDeletePoint, qorcore::Localize(kDeletePointMenuText));
    int chosen = 0;
    if (!horizontalLabel_.empty() && !verticalLabel_.empty())
        chosen = qorui::UI_DoContextMenu(*menu, *this, position);
    if (chosen == kMenuEditPoint) {
        const bool is_end = index == 0 || index == int(curvePoints_.size()) - 1;
        double h = point.position.first;
        double v = point.position.second;
        if (RunEditDialog(h, v, !is_end)) {
            // The nested loops may have changed the points; the edit applies to the same point.
            const auto it = std::find(curvePoints_.begin(), curvePoints_.end(), point);
            const bool taken =
                std::any_of(curvePoints_.begin(), curvePoints_.end(), [&](const CurvePoint& other) {
                    return !(other == point) && other.position.first == h;
                });
            if (taken) {
                DisplayAlreadyExistsMessage();
            } else if (it != curvePoints_.end()) {
                curvePoints_.erase(it);
                SetSelectedNode(IndexOf(AddNewCurvePoint(CurvePoint(GetNewPointId(), h, v))));
            }
        }
    } else if (chosen == kMenuDeletePoint) {
        DeleteSelectedPoints();
    }
    BeginInteractiveChange();
    FinishInteractiveChange();
}

bool CurveEditor::UI_DoCursor(const PointT<float>& local, qorui::ModifierFlags modifiers) {
    if (IsEventFromChild() || !GetHitRect().Contains(local))
        return RulerGridBase::UI_DoCursor(local, modifiers);
    int cursor = kCursorArrow;
    if (FindCurvePointForPixel(local, false, true) != curvePoints_.end())
        cursor = kCursorMovePoint;
    else if (FindCurvePointForPixel(local, true, false) == curvePoints_.end() &&
             GetContentRect().Contains(local) && curvePoints_.size() < maxPointCount_)
        cursor = kCursorAddPoint;
    UI_SetCursor(cursor);
    return true;
}

bool CurveEditor::UI_DoKeyboardEvent(const qorui::KeyboardEvent& event) {
    const qorui::UI_Window* window = GetWindow();
    if (!window || window->GetFocusNode() != this || IsDisabled() || !event.IsActionKeyDown())
        return false;
    // The arrows are the editor's while a point is selected; otherwise they go on up.
    const bool has_selection = GetSelectedNode() >= 0;
    switch (event.GetCode()) {
    case KeyboardCode::kDelete:
    case KeyboardCode::kBackspace:
        if (!event.GetModKey().IsEmpty() || event.IsRepeat())
            return false;
        return DeleteSelectedPoints();
    case KeyboardCode::kPageDown: SelectNextVisiblePoint(1); return true;
    case KeyboardCode::kPageUp: SelectNextVisiblePoint(-1); return true;
    case KeyboardCode::kDown: MoveSelection(0, 1); break;
    case KeyboardCode::kUp: MoveSelection(0, -1); break;
    case KeyboardCode::kLeft: MoveSelection(-1, 0); break;
    case KeyboardCode::kRight: MoveSelection(1, 0); break;
    default: return false;
    }
    return has_selection;
}

// ---------------------------------------------------------------------------------------------
// Drawing

void CurveEditor::DrawContent(qorui::penrig::Penrig* penrig, const RectT<float>& rect) const {
    if (!penrig)
        return;
    qorui::penrig::Penrig& p = *penrig;
    const bool disabled = IsDisabled();
    if (drawLinearReference_) {
        qorcore::ColorRGBA color = GetGridColor();
        if (disabled)
            color.alpha = 0.5f;
        p.SetPen(1.0f, color);
        p.DrawLine(rect.x + 0.5f, rect.Bottom() + 0.5f, rect.Right() + 0.5f, rect.y + 0.5f);
    }
    const RectT<float> content = GetContentRect();
    if (!contentLayers_.empty()) {
        qorui::penrig::Penrig::StateSaver saver(p);
        p.ClipToRect(content);
        for (const IntrusivePtr<ContentLayer>& layer : contentLayers_)
            layer->Draw(penrig, GetScaleFactor());
    }
    {
        // One pixel more on each side, so that dots and lines on the content's edges show.
        qorui::penrig::Penrig::StateSaver saver(p);
        p.ClipToRect(
            {content.x - 1.0f, content.y - 1.0f, content.width + 2.0f, content.height + 2.0f});
        DrawDataCurve(penrig);
        DrawCurvePoints(penrig);
    }
    if (drawSegmentNumbers_ || !pointLabels_.empty()) {
        qorui::penrig::Penrig::StateSaver saver(p);
        p.ClipToRect(GetContentRectWithBorders());
        if (drawSegmentNumbers_)
            DrawSegmentNumbers(penrig);
        if (!pointLabels_.empty())
            DrawPointLabels(penrig);
    }
}

void CurveEditor::DrawDataCurve(qorui::penrig::Penrig* penrig) const {
    DrawDataCurve(penrig, responseData0_, curveColor0_);
    DrawDataCurve(penrig, responseData1_, curveColor1_);
}

void CurveEditor::DrawDataCurve(qorui::penrig::Penrig* penrig, const std::vector<double>& data,
                                const qorcore::ColorRGBA& color) const {
    const RectT<float> content = GetContentRect();
    if (!(content.width > 0.0f) || data.size() < 2 ||
        GetVerticalStartBounds() == GetVerticalEndBounds())
        return;
    float step = content.width / float(data.size());
    if (!(step > 0.0f))
        step = 1.0f;
    // Values far outside the view are held a few view heights away, so that the mapping to
    // whole pixels stays in range while the lines keep their direction off the edge; a value
    // that is no number leaves a gap.
    const double low = std::min(GetVerticalStart(), GetVerticalEnd());
    const double high = std::max(GetVerticalStart(), GetVerticalEnd());
    const double margin = (high - low) * 4.0;
    const qorui::RulerBase* ruler = GetVerticalRuler().get();
    qorui::penrig::Penrig& p = *penrig;
    p.NewPath();
    // A fifth of a device pixel: what is left out can't be seen.
    PathSimplifier path(p, 0.2f / p.GetScaleFactor());
    for (std::size_t i = 0; i < data.size(); ++i) {
        if (std::isnan(data[i])) {
            path.Finish();
            continue;
        }
        const double value = std::clamp(data[i], low - margin, high + margin);
        const float x = content.x + std::min(content.width, float(i) * step) + 0.5f;
        // Between whole pixels, so that slopes are smooth at every scale.
        const float y = float(ruler ? ruler->GetPixelFromValueF(value)
                                    : double(GetPixelForVerticalValue(value))) +
                        0.5f;
        path.Add({x, y});
    }
    path.Finish();
    qorcore::ColorRGBA pen = color;
    if (IsDisabled())
        pen.alpha = 0.5f;
    p.SetPen(contentLineThickness_, pen);
    p.Stroke();
}

void CurveEditor::DrawCurvePoints(qorui::penrig::Penrig* penrig) const {
    qorui::penrig::Penrig& p = *penrig;
    const int selected = GetSelectedNode();
    for (int i = 0; i < int(curvePoints_.size()); ++i) {
        const CurvePoint& point = curvePoints_[i];
        if (!IsPointVisible(i) || !IsPointInCurrentRange(point))
            continue;
        // On whole pixels, centred on the point's pixel.
        const RectT<float> dot =
            GetDotRect(GetPixelForCoordinatePair(point.position)).Offset(0.5f, 0.5f);
        if (i == selected)
            p.FillRect(dot.Inset(-1.0f, -1.0f), selectedPointColor_);
        else
            p.FillRect(dot, curveColor0_);
    }
}

void CurveEditor::DrawPointLabels(qorui::penrig::Penrig* penrig) const {
    qorui::penrig::Penrig& p = *penrig;
    p.SetFont(qorui::penrig::Font(kPointLabelFontSize));
    p.SetColor(qorcore::ColorRGBAFixed::White);
    const RectT<float> content = GetContentRect();
    const RectT<float> bordered = GetContentRectWithBorders();
    const float height = kPointLabelFontSize + kPointLabelGap;
    const std::size_t count = std::min(pointLabels_.size(), curvePoints_.size());
    for (std::size_t i = 0; i < count; ++i) {
        const CurvePoint& point = curvePoints_[i];
        if (pointLabels_[i].empty() || !IsPointVisible(int(i)) || !IsPointInCurrentRange(point))
            continue;
        const std::string text = qorcore::Localize(pointLabels_[i]);
        const PointT<float> at = GetPixelForCoordinatePair(point.position);
        const float width = std::ceil(p.MeasureStringWidth(text));
        // Over the dot, or along the bottom of the content; a label with no room above its
        // dot goes under it rather than being cut off.
        float top = drawPointLabelsAtBottom_ ? content.Bottom() - height
                                             : at.y - 2.5f - kPointLabelGap - height;
        if (!drawPointLabelsAtBottom_ && top < bordered.y)
            top = at.y + 2.5f + kPointLabelGap;
        p.DrawText(text, {std::round(at.x + 0.5f - width * 0.5f), top, width, height},
                   qorui::penrig::HorizontalAlignment::kLeft,
                   qorui::penrig::VerticalAlignment::kCenter, false);
    }
}

void CurveEditor::DrawSegmentNumbers(qorui::penrig::Penrig* penrig) const {
    qorui::penrig::Penrig& p = *penrig;
    p.SetFont(qorui::penrig::Font(kSegmentNumberFontSize));
    p.SetColor(qorcore::ColorRGBAFixed::White);
    for (std::size_t i = 0; i + 1 < curvePoints_.size(); ++i) {
        const PointT<float> a = GetPixelForCoordinatePair(curvePoints_[i].position);
        const PointT<float> b = GetPixelForCoordinatePair(curvePoints_[i + 1].position);
        const std::string text = std::to_string(i + 1);
        const float width = std::ceil(p.MeasureStringWidth(text));
        const float height = kSegmentNumberFontSize + 4.0f;
        const PointT<float> middle((a.x + b.x) * 0.5f + 0.5f, (a.y + b.y) * 0.5f + 0.5f);
        p.DrawText(text,
                   {std::round(middle.x - width * 0.5f), std::round(middle.y - height * 0.5f),
                    width, height},
                   qorui::penrig::HorizontalAlignment::kLeft,
                   qorui::penrig::VerticalAlignment::kCenter, false);
    }
}

} // namespace qoraudiofiltersui
