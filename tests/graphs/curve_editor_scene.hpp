#pragma once

// A curve editor in a headless window, laid out so that one value is one pixel: the content is
// 400 by 200 pixels, the horizontal axis runs from 0 to 400 left to right and the vertical one
// from 200 at the top to 0 at the bottom. In window coordinates value (h, v) lies at
// (19 + h, 359 - v); the window leaves room above and below the content for pulling points off.

#include "graphs/curve_editor.hpp"
#include "graphs/curve_point_move_capture.hpp"
#include "platform/rulers/linear_ruler.hpp"
#include "platform/ui/headless_window.hpp"
#include "platform/ui/ui_node_manager.hpp"
#include "platform/widgets/ui_interactive_control_view.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace curve_editor_testing {

using qoraudiofiltersui::CurveEditor;
using qorcore::IntrusivePtr;
using qorcore::PointT;
using qorcore::RectT;
using CurvePoint = CurveEditor::CurvePoint;
using Values = std::vector<double>;

struct CurveScene {
    static constexpr float kLeft = 10.0f;
    static constexpr float kTop = 150.0f;

    explicit CurveScene(float scale = 1.0f) : window(480, 520, scale) {
        editor = qorcore::MakeIntrusive<CurveEditor>(qorcore::MakeIntrusive<qorui::LinearRuler>(),
                                                     qorcore::MakeIntrusive<qorui::LinearRuler>());
        const PointT<float> size = editor->GetSizeForContentSize({400, 200});
        editor->SetFrame({kLeft, kTop, size.x, size.y});
        window.AddNode(editor);
        editor->SetRanges(0, 400, 200, 0);
        selection_connection =
            editor->ConnectSelectionChanged([this](int index) { selections.push_back(index); });
        change_connection = editor->ConnectChangedInteractively(
            [this](const qorui::UI_InteractiveControlChangedMessage& message) {
                changes.push_back(message.GetChangeMessage());
            });
    }

    /// Window coordinates of a pair of values.
    PointT<float> At(double h, double v) const {
        const PointT<float> p = editor->GetPixelForCoordinatePair({h, v});
        return {p.x + kLeft, p.y + kTop};
    }

    /// Sets points with ids 1, 2, 3, ... and forgets the signals that caused.
    void SetPoints(std::initializer_list<std::pair<double, double>> values) {
        CurveEditor::CurvePoints points;
        std::uint32_t id = 1;
        for (const auto& [h, v] : values)
            points.emplace_back(id++, h, v);
        editor->SetCurvePoints(points);
        Forget();
    }

    /// The horizontal values, rounded to a millionth so that pixel arithmetic compares exactly.
    std::vector<double> Horizontal() const {
        std::vector<double> values;
        for (const CurvePoint& point : editor->GetCurvePoints())
            values.push_back(std::round(point.position.first * 1e6) / 1e6);
        return values;
    }

    /// The points as "h,v" in the list's order, rounded to a billionth, with "*" after the
    /// selected one: the whole state of the list in one comparable text.
    std::string Points() const {
        std::ostringstream out;
        out.precision(12);
        const auto round = [](double x) {
            return std::round(x * 1e9) / 1e9 + 0.0;
        };
        for (std::size_t i = 0; i < editor->GetCurvePoints().size(); ++i) {
            const auto& [h, v] = editor->GetCurvePoints()[i].position;
            out << (i ? " " : "") << round(h) << "," << round(v)
                << (int(i) == editor->GetSelectedNode() ? "*" : "");
        }
        return out.str();
    }

    ::testing::AssertionResult IsAt(int index, double h, double v) const {
        if (index < 0 || index >= int(editor->GetCurvePoints().size()))
            return ::testing::AssertionFailure() << "no point " << index;
        const auto& [ph, pv] = editor->GetCurvePoints()[index].position;
        if (std::abs(ph - h) > 1e-9 || std::abs(pv - v) > 1e-9)
            return ::testing::AssertionFailure()
                   << "point " << index << " is at (" << ph << ", " << pv << ")";
        return ::testing::AssertionSuccess();
    }

    const CurvePoint& Point(int index) const { return editor->GetCurvePoints().at(index); }

    void Press(double h, double v, qorui::ModifierFlags modifiers = {}) {
        window.AdvanceTime(1.0); // presses apart in time, never a double click
        const PointT<float> p = At(h, v);
        window.MouseMove(p.x, p.y, modifiers);
        window.MouseDown(p.x, p.y, qorui::MouseButton::kLeft, modifiers);
    }
    void MoveTo(double h, double v, qorui::ModifierFlags modifiers = {}) {
        const PointT<float> p = At(h, v);
        window.MouseMove(p.x, p.y, modifiers);
    }
    void Release(double h, double v) {
        const PointT<float> p = At(h, v);
        window.MouseUp(p.x, p.y);
    }
    void ClickAt(double h, double v) {
        Press(h, v);
        Release(h, v);
    }
    void Drag(double h, double v, double to_h, double to_v, qorui::ModifierFlags modifiers = {}) {
        Press(h, v, modifiers);
        MoveTo(to_h, to_v, modifiers);
        Release(to_h, to_v);
    }

    /// The index of the point a local pixel hits, or -1.
    int Hit(PointT<float> pixel, bool column, bool dot) const {
        const auto found = editor->FindCurvePointForPixel(pixel, column, dot);
        const auto& points = editor->GetCurvePoints();
        return found == points.end() ? -1 : int(found - points.begin());
    }

    /// The drag running now, or null.
    static qoraudiofiltersui::CurvePointMoveCapture* Capture() {
        return dynamic_cast<qoraudiofiltersui::CurvePointMoveCapture*>(
            qorui::UI_NodeManager::Get().GetCurrentCapture());
    }

    void Forget() {
        selections.clear();
        changes.clear();
    }

    qorui::HeadlessWindow window;
    IntrusivePtr<CurveEditor> editor;
    qorcore::Connection selection_connection;
    qorcore::Connection change_connection;
    std::vector<int> selections;
    std::vector<int> changes; ///< interactive changes: 0 begin, 1 continue, 2 finish, 3 cancel
};

} // namespace curve_editor_testing
