#pragma once

#include "graphs/ruler_handler.hpp"
#include "platform/core/color_rgba.hpp"
#include "platform/core/connection.hpp"
#include "platform/core/intrusive_ptr.hpp"
#include "platform/core/signal.hpp"
#include "platform/menus/os_menu.hpp"
#include "platform/rulers/ruler_base.hpp"
#include "platform/widgets/ui_interactive_control_view.hpp"

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace qoraudiofiltersui {

/// The abstract control behind every zoomable graph: a content area with a horizontal ruler
/// below it and a vertical ruler to its right, a grid under the content, borders, and zooming
/// and scrolling in the value space of the two rulers. Subclasses draw the content.
///
/// Each axis runs from its start to its end inside its bounds, ascending or descending (an end
/// bound below the start bound, as on decibel axes); every change of range goes through
/// `SetCurrentRange`, which mends ranges that leave the bounds or are narrower than the minimum
/// span. The vertical start lies at the top of the content.
///
/// The four doubles of the range setters are always horizontal start, horizontal end, vertical
/// start, vertical end.
class RulerGridBase : public qorui::UI_InteractiveControlView {
public:
    /// Menu identifiers of the ruler context menu.
    static constexpr int kMenuZoomIn = 3040;
    static constexpr int kMenuZoomOut = 3041;
    static constexpr int kMenuZoomOutFull = 3042;

    // Layout constants in pixels.
    static constexpr float kOuterFrame = 5.0f;
    static constexpr float kLeftTopContentBorder = 4.0f;
    static constexpr float kRightBottomContentBorder = 5.0f;
    static constexpr float kVerticalRulerWidth = 40.0f;
    static constexpr float kHorizontalRulerHeight = 25.0f;
    static constexpr float kRulerOverhang = 10.0f;
    static constexpr float kBestContentWidth = 370.0f;
    static constexpr float kBestContentHeight = 320.0f;

    /// Either ruler may be null; the grid then has no such axis to draw or zoom. The vertical
    /// ruler is made vertical and the horizontal one horizontal.
    RulerGridBase(qorcore::IntrusivePtr<qorui::RulerBase> horizontal,
                  qorcore::IntrusivePtr<qorui::RulerBase> vertical);

    void SetRulers(qorcore::IntrusivePtr<qorui::RulerBase> horizontal,
                   qorcore::IntrusivePtr<qorui::RulerBase> vertical);
    const qorcore::IntrusivePtr<qorui::RulerBase>& GetHorizontalRuler() const {
        return horizontalRuler_;
    }
    const qorcore::IntrusivePtr<qorui::RulerBase>& GetVerticalRuler() const {
        return verticalRuler_;
    }
    RulerHandler& GetHorizontalHandler() const { return *horizontalHandler_; }
    RulerHandler& GetVerticalHandler() const { return *verticalHandler_; }

    // Ranges. Bounds that are not finite throw std::invalid_argument and change nothing; a
    // range a ruler can't show (not above zero on a log ruler) throws its std::invalid_argument
    // and changes nothing.
    /// Sets the bounds and the range at once.
    virtual void SetRanges(double horizontal_start, double horizontal_end, double vertical_start,
                           double vertical_end);
    /// Sets the bounds and applies the current range again within them.
    virtual void SetRangeBounds(double horizontal_start, double horizontal_end,
                                double vertical_start, double vertical_end);
    /// The one place where the range changes: mends it against the bounds and the minimum span,
    /// hands it to the rulers, repaints and fires the range changed signal.
    virtual void SetCurrentRange(double horizontal_start, double horizontal_end,
                                 double vertical_start, double vertical_end);
    double GetHorizontalStart() const { return horizontalStart_; }
    double GetHorizontalEnd() const { return horizontalEnd_; }
    double GetHorizontalStartBounds() const { return horizontalStartBound_; }
    double GetHorizontalEndBounds() const { return horizontalEndBound_; }
    double GetVerticalStart() const { return verticalStart_; }
    double GetVerticalEnd() const { return verticalEnd_; }
    double GetVerticalStartBounds() const { return verticalStartBound_; }
    double GetVerticalEndBounds() const { return verticalEndBound_; }
    double GetHorizontalMinimumSpan() const { return horizontalMinimumSpan_; }
    double GetVerticalMinimumSpan() const { return verticalMinimumSpan_; }

    // Queries
    bool CanZoomInHorizontal() const;
    bool CanZoomOutHorizontal() const;
    bool CanZoomInVertical() const;
    bool CanZoomOutVertical() const;

    // Commands. Positive steps zoom in: each step moves both ends 10 percent of their pixel
    // distance towards the value. Without the ruler of the axis they throw the null-pointer
    // exception.
    void DoHorizontalZoomAroundValue(double value, int steps);
    void DoHorizontalZoomInAroundValue(double value) { DoHorizontalZoomAroundValue(value, 3); }
    void DoHorizontalZoomOutAroundValue(double value) { DoHorizontalZoomAroundValue(value, -3); }
    void DoSimpleHorizontalZoomIn();
    void DoSimpleHorizontalZoomOut();
    void DoVerticalZoomAroundValue(double value, int steps);
    void DoVerticalZoomInAroundValue(double value) { DoVerticalZoomAroundValue(value, 3); }
    void DoVerticalZoomOutAroundValue(double value) { DoVerticalZoomAroundValue(value, -3); }
    void DoSimpleVerticalZoomIn();
    void DoSimpleVerticalZoomOut();

    // Geometry, in the control's coordinates.
    /// Where the content is drawn.
    qorcore::RectT<float> GetContentRect() const;
    /// The content with its borders: the area filled with the background colour.
    qorcore::RectT<float> GetContentRectWithBorders() const;
    qorcore::PointT<float> GetBestSize() const;
    /// The size of control whose content has `size`.
    qorcore::PointT<float> GetSizeForContentSize(qorcore::PointT<float> size) const;
    float GetLeftContentBorder() const;
    float GetTopContentBorder() const;
    float GetRightContentBorder() const;
    float GetBottomContentBorder() const;
    float GetOuterFrame() const;
    float GetScaleFactor() const { return 1.0f; }

    // Mapping
    float GetPixelForHorizontalValue(double value) const;
    float GetPixelForVerticalValue(double value) const;
    qorcore::PointT<float> GetPixelForCoordinatePair(std::pair<double, double> values) const;
    /// The values under a point, limited to the current range.
    std::pair<double, double> GetCoordinatePairForPixel(qorcore::PointT<float> pixel) const;
    /// The major tick pixels over the content, relative to the content's start.
    std::vector<float> GetMajorTicks(bool horizontal) const;

    // View state, to keep the view across rebuilds of an editor.
    qorcore::IntrusivePtr<qorcore::RefCountedObject> GetOpaqueViewState() const;
    /// Applies a state from `GetOpaqueViewState`; any other object is ignored.
    void SetOpaqueViewState(qorcore::IntrusivePtr<qorcore::RefCountedObject> state);

    // Appearance
    void SetBackgroundColor(const qorcore::ColorRGBA& color);
    const qorcore::ColorRGBA& GetBackgroundColor() const { return backgroundColor_; }
    void SetRulerBackgroundColor(const qorcore::ColorRGBA& color);
    const qorcore::ColorRGBA& GetRulerBackgroundColor() const { return rulerBackgroundColor_; }
    void SetGridColor(const qorcore::ColorRGBA& color);
    const qorcore::ColorRGBA& GetGridColor() const { return gridColor_; }
    void ShowGrid(bool show);
    bool IsGridShown() const { return showGrid_; }
    void SetDrawBorder(bool draw);
    bool GetDrawBorder() const { return drawBorder_; }
    void SetDrawContentBorders(bool draw);
    void SetIndicateFocus(bool indicate);
    void SetDrawHorizontalMinorTicks(bool draw);
    void SetDrawVerticalMinorTicks(bool draw);
    void SetHorizontalRulerFontSize(float size);
    void SetVerticalRulerFontSize(float size);
    void SetHorizontalStepFactor(double factor);
    void SetVerticalStepFactor(double factor);
    void SetHorizontalLabel1(std::string label);
    void SetHorizontalLabel2(std::string label);
    void SetVerticalLabel1(std::string label);
    void SetVerticalLabel2(std::string label);

    /// Whether the rulers take mouse gestures (scroll, zoom, menu, wheel); off at first.
    void SetRulersSupportZooming(bool supports);
    bool GetRulersSupportZooming() const { return rulersSupportZooming_; }

    [[nodiscard]] qorcore::Connection ConnectCurrentRangeChanged(std::function<void()> slot);

    // Subclasses
    /// Draws the content into `content`, over the background and the grid.
    virtual void DrawContent(qorui::penrig::Penrig* penrig,
                             const qorcore::RectT<float>& content) const = 0;
    /// Reads the theme's colours again.
    virtual void ThemeChanged();
    /// The context menu of a ruler: zoom in, zoom out, zoom out full.
    virtual std::unique_ptr<qorui::OS_Menu> BuildRulerContextMenu(bool vertical);

    // Toolkit
    bool UI_DoCursor(const qorcore::PointT<float>& local, qorui::ModifierFlags modifiers) override;
    bool UI_DoMouseEvent(const qorui::MouseEvent& event) override;
    void UI_Draw(qorui::penrig::Penrig* penrig) override;
    const qorui::penrig::SupplierInterface* UI_GetDrawSupplier() const override;
    void UI_NodeChanged(NodeChange change) override;
    void UI_SizeChanged() override;

protected:
    ~RulerGridBase() override;

    /// Lays the rulers and their handlers out for the current size.
    void UpdateRulerLayout();
    void DrawBackground(qorui::penrig::Penrig* penrig) const;
    void DrawGridPath(qorui::penrig::Penrig* penrig, const std::vector<int>& pixels,
                      bool horizontal, bool major) const;

private:
    void ConnectHandlers();
    void ApplyBounds(double hs, double he, double vs, double ve,
                     const std::function<void()>& apply_range);
    void ApplyRulerSettings();
    void OnHorizontalRulerScrolled(const qorcore::PointT<int>& current,
                                   const qorcore::PointT<int>& last);
    void OnVerticalRulerScrolled(const qorcore::PointT<int>& current,
                                 const qorcore::PointT<int>& last);
    void OnHorizontalRulerZoomRegionChanged();
    void OnVerticalRulerZoomRegionChanged();
    void OnHorizontalRulerZoomCaptureEnded(bool zoomed, int first, int second, bool cancelled);
    void OnVerticalRulerZoomCaptureEnded(bool zoomed, int first, int second, bool cancelled);
    void OnHorizontalRulerMouseWheelChanged(const qorui::MouseEvent& event);
    void OnVerticalRulerMouseWheelChanged(const qorui::MouseEvent& event);
    void OnRulerZoomCaptureEnded(bool vertical, bool zoomed, int first, int second, bool cancelled);
    void DoZoomAroundValue(bool vertical, double value, int steps);
    void OnRulerScrolled(bool vertical, int current, int last);

    qorcore::IntrusivePtr<qorui::RulerBase> verticalRuler_;
    qorcore::IntrusivePtr<qorui::RulerBase> horizontalRuler_;
    qorcore::IntrusivePtr<RulerHandler> verticalHandler_;
    qorcore::IntrusivePtr<RulerHandler> horizontalHandler_;
    qorcore::ColorRGBA backgroundColor_;
    qorcore::ColorRGBA rulerBackgroundColor_;
    qorcore::ColorRGBA gridColor_;
    double horizontalStart_ = 0.0;
    double horizontalEnd_ = 100.0;
    double verticalStart_ = 0.0;
    double verticalEnd_ = 100.0;
    double horizontalStartBound_ = 0.0;
    double horizontalEndBound_ = 100.0;
    double verticalStartBound_ = 0.0;
    double verticalEndBound_ = 100.0;
    double horizontalMinimumSpan_ = 0.1;
    double verticalMinimumSpan_ = 0.1;
    bool showGrid_ = true;
    bool drawHorizontalMinorTicks_ = false;
    bool drawVerticalMinorTicks_ = false;
    bool rulersSupportZooming_ = false;
    bool drawBorder_ = true;
    bool drawContentBorders_ = true;
    bool indicateFocus_ = true;
    const qorui::penrig::SupplierInterface* drawSupplier_ = nullptr;
    float windowScale_ = 0.0f;
    qorcore::ScopedConnection horizontalScrolled_;
    qorcore::ScopedConnection horizontalZoomRegionChanged_;
    qorcore::ScopedConnection horizontalZoomCaptureEnded_;
    qorcore::ScopedConnection horizontalMouseWheelChanged_;
    qorcore::ScopedConnection verticalScrolled_;
    qorcore::ScopedConnection verticalZoomRegionChanged_;
    qorcore::ScopedConnection verticalZoomCaptureEnded_;
    qorcore::ScopedConnection verticalMouseWheelChanged_;
    qorcore::ScopedConnection themeChanged_;
    qorcore::Signal<void()> currentRangeChanged_;
};

} // namespace qoraudiofiltersui
