#pragma once

#include "graphs/content_layer.hpp"
#include "graphs/ruler_grid_base.hpp"
#include "platform/core/color_rgba.hpp"
#include "platform/core/connection.hpp"
#include "platform/core/intrusive_ptr.hpp"
#include "platform/core/signal.hpp"
#include "platform/ui/modifier_keys.hpp"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace qorui {
class UI_ToolTip;
}

namespace qoraudiofiltersui {

class CurvePointMoveCapture;

/// The interactive graph on which the user places and drags the points of a curve: a transfer
/// curve, a filter's breakpoints, a distortion curve. Under the points it paints its content
/// layers and up to two data curves that the owner computes.
///
/// Points are kept sorted by horizontal value and addressed by index; a point's identity is its
/// id, which stays with it while it moves. The first and last points are anchors by default:
/// they slide vertically, and neither move horizontally nor die. With unique horizontal
/// positions (the default) a dragged point is held one pixel beside a neighbour it runs into
/// until it has been pulled far enough past, and then jumps over it with a new id.
///
/// Every user change is one interactive change of the control (begin, continues, finish or
/// cancel), which is how owners learn that the points changed.
class CurveEditor : public RulerGridBase {
public:
    /// A point's identity and its pair of values, horizontal first.
    struct CurvePoint {
        CurvePoint() = default;
        CurvePoint(std::uint32_t point_id, double horizontal, double vertical)
            : id(point_id), position(horizontal, vertical) {}

        std::uint32_t id = 0;
        std::pair<double, double> position;

        friend bool operator==(const CurvePoint&, const CurvePoint&) = default;
    };
    using CurvePoints = std::vector<CurvePoint>;
    using Translator = std::function<double(double)>;

    /// The first id handed out to a point the editor makes.
    static constexpr std::uint32_t kFirstPointId = 32768;
    /// Context menu identifiers of a point.
    static constexpr int kMenuEditPoint = 1000;
    static constexpr int kMenuDeletePoint = 1001;
    /// Cursor numbers over the content.
    static constexpr int kCursorArrow = 0;
    static constexpr int kCursorAddPoint = 202;
    static constexpr int kCursorMovePoint = 203;
    /// A modifier bit with which a moved point passes its neighbours at once; keyboard moves
    /// always carry it.
    static constexpr std::uint8_t kMoveFreelyModifier = 4;
    /// How far above or below the content a deletable point must be pulled to die.
    static constexpr float kPullOffDistance = 100.0f;
    /// How far past a neighbour a dragged point must be pulled before it jumps over.
    static constexpr int kJumpDistance = 50;

    CurveEditor(qorcore::IntrusivePtr<qorui::RulerBase> horizontal,
                qorcore::IntrusivePtr<qorui::RulerBase> vertical);

    // Points
    /// Replaces the points as given, without sorting. A selection past the new end is cleared
    /// (with the signal). A position that is not finite throws std::invalid_argument and
    /// changes nothing.
    void SetCurvePoints(const CurvePoints& points);
    const CurvePoints& GetCurvePoints() const { return curvePoints_; }
    /// Asks for a point's values in the edit dialog and adds it; false on cancel, or with a
    /// note when a point already sits at that horizontal value.
    bool AddNewPoint();
    /// Deletes the selected point if the rules allow it; false otherwise.
    bool DeleteSelectedPoints();
    /// Mirrors the inner points of a rising curve about the diagonal (swaps their two values).
    /// Refused with a note unless the ends lie on the range corners and the curve strictly rises.
    bool Invert();
    /// Tells the listeners that the points changed: an interactive change begun and finished.
    void NotifyChanged();

    // Rules. An empty list means the default rule; an index past a non-empty list takes the
    // list's default (see the queries below).
    /// The most points a click may lead to; points set by code or the dialog are not capped.
    void SetMaxPointCount(std::size_t count) { maxPointCount_ = count; }
    std::size_t GetMaxPointCount() const { return maxPointCount_; }
    void SetUniqueHorizontalPositions(bool unique) { uniqueHorizontalPositions_ = unique; }
    bool GetUniqueHorizontalPositions() const { return uniqueHorizontalPositions_; }
    void SetEnableDeletePoints(bool enable) { enableDeletePoints_ = enable; }
    void SetDeletablePoints(const std::vector<char>& deletable);
    void SetMoveablePoints(const std::vector<char>& moveable, bool horizontal);
    void SetVisiblePoints(const std::vector<char>& visible);
    bool IsPointVisible(int index) const;
    /// The default rule looks at the selection, not at `index`: it is only asked about the
    /// selection, and keeps the ends of the curve alive.
    bool IsPointDeletable(int index) const;
    /// The same holds for the default horizontal rule: the ends don't move sideways.
    bool IsPointMoveable(int index, bool horizontal = true) const;

    // Selection
    /// The selected index, or -1 when none is selected or it lies past the end.
    int GetSelectedNode() const;
    /// Selects a point (an index out of range selects none), repaints and fires the signal.
    void SetSelectedNode(int index);
    [[nodiscard]] qorcore::Connection ConnectSelectionChanged(std::function<void(int)> slot);

    // Labels and hints
    void SetPointLabels(const std::vector<std::string>& labels);
    void SetDrawPointLabelsAtBottom(bool at_bottom);
    void SetDrawSegmentNumbers(bool draw);
    void SetDrawLinearReference(bool draw);
    /// A tool tip with the values under the mouse while it moves over the content.
    void SetEnableMousePositionToolTip(bool enable) { enableMousePositionToolTip_ = enable; }
    bool GetEnableMousePositionToolTip() const { return enableMousePositionToolTip_; }

    // Edit dialog and tool tip texts. Tool tips appear only when both units are set, and the
    // point menu only when both labels are.
    void SetHorizontalEditDialogLabel(std::string label) { horizontalLabel_ = std::move(label); }
    void SetVerticalEditDialogLabel(std::string label) { verticalLabel_ = std::move(label); }
    void SetHorizontalEditDialogUnit(std::string unit) { horizontalUnit_ = std::move(unit); }
    void SetVerticalEditDialogUnit(std::string unit) { verticalUnit_ = std::move(unit); }
    /// From what the dialog and the tool tip show to the point's value and back; empty
    /// functions show the values themselves.
    void SetHorizontalEditDialogTranslators(Translator display_to_value,
                                            Translator value_to_display);
    void SetVerticalEditDialogTranslators(Translator display_to_value, Translator value_to_display);

    // Data curves
    /// Asked for data whenever the range or the size changes, with the content width in pixels.
    void SetRequestDataFunction(std::shared_ptr<std::function<void(int)>> request);
    /// Vertical values spread evenly over the content width; index 0 or 1 (any other index
    /// discards the data). Repaints either way.
    void SetResponseData(const std::vector<double>& data, int index);
    const std::vector<double>& GetResponseData(int index) const;
    void SetCurveColor(const qorcore::ColorRGBA& color, int index);
    /// Opaque black for an index other than 0 and 1.
    qorcore::ColorRGBA GetCurveColor(int index) const;
    void SetSelectedPointColor(const qorcore::ColorRGBA& color);
    const qorcore::ColorRGBA& GetSelectedPointColor() const { return selectedPointColor_; }
    void SetContentLineThickness(float thickness);
    float GetContentLineThickness() const { return contentLineThickness_; }

    // Content layers, drawn in the order added (the first lowest). A null layer throws the
    // null-pointer exception; adding a layer twice or removing an unknown one does nothing.
    void AddContentLayer(qorcore::IntrusivePtr<ContentLayer> layer);
    void RemoveContentLayer(const qorcore::IntrusivePtr<ContentLayer>& layer);
    const std::vector<qorcore::IntrusivePtr<ContentLayer>>& GetContentLayers() const {
        return contentLayers_;
    }

    /// Repaints the content with its borders, widened to whole pixels.
    void InvalidateContentRect();

    // Point arithmetic, in the control's coordinates.
    /// The first visible point inside the current ranges under `point`: within the 9-pixel
    /// box around its dot with `use_dot_size`, else within its own pixel and the next;
    /// `ignore_vertical` looks at the column only. The end iterator when none is.
    CurvePoints::const_iterator FindCurvePointForPixel(const qorcore::PointT<float>& point,
                                                       bool ignore_vertical,
                                                       bool use_dot_size) const;
    /// The 5 by 5 dot of a point at `pixel`.
    static qorcore::RectT<float> GetDotRect(const qorcore::PointT<float>& pixel);
    /// Whether some point's horizontal value lies closer than `tolerance` to `value`.
    bool HasHorizontalPoint(double value, double tolerance) const;
    /// Moves point `index` towards `pixel` by the rules of dragging and returns where it is now,
    /// or -1 when it was pulled off and deleted (or `index` names no point).
    int MoveCurvePoint(int index, const qorcore::PointT<float>& pixel,
                       qorui::ModifierFlags modifiers);
    /// Moves the selected point by whole pixels, as the arrow keys do.
    void MoveSelection(float dx, float dy);

    // Tool tip
    /// Shows `values` (a point's, or those under the mouse) in the tool tip, at their pixel.
    void SetToolTip(const std::pair<double, double>& values);
    void CloseToolTip();
    /// The tool tip showing or waiting, or null.
    qorui::UI_ToolTip* GetToolTip() const { return toolTip_.get(); }

    // Overrides
    void SetCurrentRange(double horizontal_start, double horizontal_end, double vertical_start,
                         double vertical_end) override;
    void DrawContent(qorui::penrig::Penrig* penrig,
                     const qorcore::RectT<float>& content) const override;
    bool UI_DoCursor(const qorcore::PointT<float>& local, qorui::ModifierFlags modifiers) override;
    bool UI_DoKeyboardEvent(const qorui::KeyboardEvent& event) override;
    bool UI_DoMouseEvent(const qorui::MouseEvent& event) override;
    void UI_NodeChanged(NodeChange change) override;
    void UI_SizeChanged() override;

    // Drawing steps subclasses may replace.
    virtual void DrawCurvePoints(qorui::penrig::Penrig* penrig) const;
    /// Both data curves, 0 under 1.
    virtual void DrawDataCurve(qorui::penrig::Penrig* penrig) const;

protected:
    ~CurveEditor() override;

    /// One data curve: a path over the content width in `color`.
    void DrawDataCurve(qorui::penrig::Penrig* penrig, const std::vector<double>& data,
                       const qorcore::ColorRGBA& color) const;
    void DrawPointLabels(qorui::penrig::Penrig* penrig) const;
    void DrawSegmentNumbers(qorui::penrig::Penrig* penrig) const;

    /// Inserts before the first point with a greater horizontal value, so after equal ones.
    CurvePoints::iterator AddNewCurvePoint(const CurvePoint& point);
    std::uint32_t GetNewPointId() { return nextPointId_++; }
    /// Runs the edit dialog on `horizontal` and `vertical`; true (with the values written
    /// back) when accepted.
    bool RunEditDialog(double& horizontal, double& vertical, bool horizontal_enabled);
    void DisplayAlreadyExistsMessage();

private:
    friend class CurvePointMoveCapture;

    /// The area in which the editor handles the mouse itself: the content and its frame.
    qorcore::RectT<float> GetHitRect() const;
    bool IsPointInCurrentRange(const CurvePoint& point) const;
    bool IsEventFromChild() const;
    int IndexOf(CurvePoints::const_iterator it) const;
    /// Puts a dragged point back as it was when a gesture is cancelled.
    void RestorePoint(int index, const CurvePoint& original);
    void SelectNextVisiblePoint(int direction);
    void RunPointContextMenu(int index, const qorcore::PointT<float>& position);
    void RefreshLayerBounds();
    void RequestData();
    std::string FormatToolTipValue(double value, const Translator& value_to_display) const;

    qorcore::ColorRGBA curveColor0_{0.3f, 0.4f, 1.0f, 1.0f};
    qorcore::ColorRGBA curveColor1_{1.0f, 0.0f, 0.0f, 1.0f};
    CurvePoints curvePoints_;
    qorcore::Signal<void(int)> selectionChanged_;
    std::uint32_t nextPointId_ = kFirstPointId;
    std::shared_ptr<std::function<void(int)>> requestData_;
    qorcore::ColorRGBA selectedPointColor_{0.9f, 1.0f, 1.0f, 1.0f};
    int selectedIndex_ = -1;
    std::vector<double> responseData0_;
    std::vector<double> responseData1_;
    std::size_t maxPointCount_ = 3;
    std::string horizontalLabel_;
    std::string verticalLabel_;
    std::string horizontalUnit_;
    std::string verticalUnit_;
    bool drawSegmentNumbers_ = false;
    bool drawLinearReference_ = true;
    bool uniqueHorizontalPositions_ = true;
    bool enableMousePositionToolTip_ = false;
    bool enableDeletePoints_ = true;
    bool drawPointLabelsAtBottom_ = false;
    std::vector<std::string> pointLabels_;
    std::vector<char> visiblePoints_;
    std::vector<char> deletablePoints_;
    std::vector<char> horizontallyMoveablePoints_;
    std::vector<char> verticallyMoveablePoints_;
    qorcore::IntrusivePtr<qorui::UI_ToolTip> toolTip_;
    Translator horizontalDisplayToValue_;
    Translator horizontalValueToDisplay_;
    Translator verticalDisplayToValue_;
    Translator verticalValueToDisplay_;
    float contentLineThickness_ = 1.6f;
    std::vector<qorcore::IntrusivePtr<ContentLayer>> contentLayers_;
};

} // namespace qoraudiofiltersui
