// The curve editor's conversation with the user: the point menu and edit dialog, notes,
// `AddNewPoint` and `Invert`, the keyboard, tool tips and cursors, then data curves, content
// layers and drawing. Modal answers come from the toolkit's test responder.
#include "curve_editor_scene.hpp"

#include "golden_image.hpp"
#include "graphs/spectrum_content_layer.hpp"
#include "graphs/spectrum_draw.hpp"
#include "platform/core/localizer.hpp"
#include "platform/core/null_pointer_exception.hpp"
#include "platform/dialogs/curve_point_edit_dialog.hpp"
#include "platform/dialogs/ui_modal_dialog.hpp"
#include "platform/draw/cairo_supplier.hpp"
#include "platform/draw/image.hpp"
#include "platform/draw/penrig.hpp"
#include "platform/menus/ui_menu_overlay.hpp"
#include "platform/rulers/decibel_ruler.hpp"
#include "platform/rulers/log_ruler.hpp"
#include "platform/skins/skins.hpp"
#include "platform/ui/keyboard_code.hpp"
#include "platform/ui/modal_testing.hpp"
#include "platform/ui/ui_tool_tip.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <functional>
#include <limits>
#include <memory>
#include <numbers>
#include <sstream>
#include <string>
#include <vector>

using namespace curve_editor_testing;
using qormediaui::CurvePointEditDialog;
using qorui::KeyboardCode;
using qorui::MouseButton;
using Texts = std::vector<std::string>;
namespace ModifierKey = qorui::ModifierKey;

namespace {

/// Answers every modal the editor opens: menus and dialogs by the functions given, notes by
/// keeping their title and text.
struct ModalAnswers {
    std::function<void(qorui::UI_MenuOverlay&)> menu;
    std::function<void(CurvePointEditDialog&)> dialog;
    Texts kinds;
    Texts items; ///< "id text" each, of the last menu
    Texts notes; ///< "title: text" each
    qorui::testing::ScopedModalResponder responder{[this](qorui::UI_ModalOverlay& overlay) {
        kinds.emplace_back(overlay.GetModalKind());
        if (auto* m = dynamic_cast<qorui::UI_MenuOverlay*>(&overlay)) {
            items.clear();
            for (const auto& item : m->GetMenu().GetItems())
                items.push_back(std::to_string(item.id) + " " + item.text);
            if (menu)
                menu(*m);
        } else if (auto* d = dynamic_cast<CurvePointEditDialog*>(&overlay)) {
            if (dialog)
                dialog(*d);
        } else if (auto* n = dynamic_cast<qorui::messagebox::UI_NoteDialog*>(&overlay)) {
            notes.push_back(n->GetTitle() + ": " + n->GetText());
        }
    }};
};

/// A field of the point dialog: "value in min..max unit, places", and "off" when disabled;
/// + 0.0 turns -0 into 0.
std::string Field(const qorui::UI_HotTextNumber& n) {
    std::ostringstream out;
    out.precision(17);
    out << n.GetValue() + 0.0 << " in " << n.GetMinValue() + 0.0 << ".." << n.GetMaxValue() + 0.0
        << " " << n.GetTextLabel() << ", " << n.GetDecimalPlaces() << (n.IsEnabled() ? "" : " off");
    return out.str();
}

/// A dialog answer that types two values and accepts.
std::function<void(CurvePointEditDialog&)> Accept(double first, double second) {
    return [=](CurvePointEditDialog& d) {
        d.GetHotTextNumber1()->SetValue(first);
        d.GetHotTextNumber2()->SetValue(second);
        EXPECT_TRUE(d.PressButton(CurvePointEditDialog::kResponseAccept));
    };
}

void Cancel(CurvePointEditDialog& d) {
    d.PressButton(CurvePointEditDialog::kResponseCancelButton);
}

std::function<void(qorui::UI_MenuOverlay&)> Choose(int id) {
    return [id](qorui::UI_MenuOverlay& m) {
        EXPECT_TRUE(m.ChooseItem(id));
    };
}

const char* const kTaken = "Cannot Edit Point: A point at the requested location already exists.";

struct LabelledScene : CurveScene {
    LabelledScene() {
        editor->SetHorizontalEditDialogLabel("Input:");
        editor->SetVerticalEditDialogLabel("Output:");
        editor->SetHorizontalEditDialogUnit("dB");
        editor->SetVerticalEditDialogUnit("dB");
        SetPoints({{0, 0}, {100, 50}, {200, 100}, {400, 200}});
    }
    bool RightClick(double h, double v, qorui::ModifierFlags modifiers = {}) {
        window.AdvanceTime(1.0);
        const PointT<float> p = At(h, v);
        return !modifiers.IsEmpty() ? window.Click(p.x, p.y, MouseButton::kLeft, modifiers)
                                    : window.Click(p.x, p.y, MouseButton::kRight);
    }
};

TEST(CurveEditorDialogTest, EditPointReplacesThePointUnlessCancelledOrThePlaceIsTaken) {
    LabelledScene s;
    const CurveEditor::CurvePoints original = s.editor->GetCurvePoints();
    ModalAnswers answers;
    answers.menu = Choose(CurveEditor::kMenuEditPoint);
    answers.dialog = [](CurvePointEditDialog& d) {
        d.GetHotTextNumber2()->SetValue(10);
        Cancel(d);
    };
    s.RightClick(100, 50);
    EXPECT_EQ(s.editor->GetCurvePoints(), original);
    EXPECT_EQ(s.editor->GetSelectedNode(), 1);
    answers.dialog = Accept(200, 10); // where the next point is
    s.RightClick(100, 50);
    EXPECT_EQ(s.editor->GetCurvePoints(), original);
    EXPECT_EQ(answers.notes, (Texts{kTaken}));

    answers.kinds.clear();
    s.Forget();
    answers.dialog = [](CurvePointEditDialog& d) {
        EXPECT_EQ(d.GetTitle(), "Edit Point");
        EXPECT_EQ(d.GetLabel1(), "Input:");
        EXPECT_EQ(d.GetLabel2(), "Output:");
        EXPECT_EQ(Field(*d.GetHotTextNumber1()), "100 in 0..400 dB, 1");
        EXPECT_EQ(Field(*d.GetHotTextNumber2()), "50 in 0..200 dB, 1");
        Accept(150, 75)(d);
    };
    s.RightClick(100, 50);
    EXPECT_EQ(answers.kinds, (Texts{"menu", "curve point edit"}));
    EXPECT_EQ(answers.items, (Texts{"1000 Edit Point...", "1001 Delete Point"}));
    EXPECT_EQ(s.Points(), "0,0 150,75* 200,100 400,200");
    EXPECT_GE(s.Point(1).id, CurveEditor::kFirstPointId);
    EXPECT_EQ(s.changes, (std::vector<int>{0, 2}));

    // An end keeps its place and can't be deleted: the horizontal field is disabled and its
    // value is not taken.
    answers.dialog = [](CurvePointEditDialog& d) {
        EXPECT_EQ(Field(*d.GetHotTextNumber1()), "0 in 0..400 dB, 1 off");
        Accept(300, 30)(d);
    };
    s.RightClick(0, 0);
    EXPECT_EQ(answers.items, (Texts{"1000 Edit Point..."}));
    EXPECT_EQ(s.Points(), "0,30* 150,75 200,100 400,200");
}

TEST(CurveEditorDialogTest, DeleteFromTheMenuAndMenusNeedBothLabels) {
    LabelledScene s;
    ModalAnswers answers;
    answers.menu = Choose(CurveEditor::kMenuDeletePoint);
    s.RightClick(200, 100);
    EXPECT_EQ(s.Points(), "0,0 100,50 400,200");
    s.RightClick(100, 50, ModifierKey::kControl); // Control with the left button as well
    EXPECT_EQ(s.Horizontal(), (Values{0, 400}));
    EXPECT_EQ(answers.kinds.size(), 2u);

    // Without a label there is no menu, but the click selects and makes an empty gesture.
    s.editor->SetVerticalEditDialogLabel("");
    s.Forget();
    s.RightClick(400, 200);
    EXPECT_EQ(s.editor->GetSelectedNode(), 1);
    EXPECT_EQ(s.changes, (std::vector<int>{0, 2}));
    // A right click on empty content: no menu, an empty gesture, consumed.
    s.editor->SetVerticalEditDialogLabel("Output:");
    s.Forget();
    EXPECT_TRUE(s.RightClick(250, 150));
    EXPECT_EQ(answers.kinds.size(), 2u);
    EXPECT_EQ(s.changes, (std::vector<int>{0, 2}));
}

TEST(CurveEditorDialogTest, TranslatorsShapeWhatTheDialogShows) {
    LabelledScene s;
    // The dialog shows the horizontal value doubled and the vertical one falling.
    s.editor->SetHorizontalEditDialogTranslators([](double d) { return d / 2; },
                                                 [](double v) { return v * 2; });
    s.editor->SetVerticalEditDialogTranslators([](double d) { return -d; },
                                               [](double v) { return -v; });
    ModalAnswers answers;
    answers.menu = Choose(CurveEditor::kMenuEditPoint);
    answers.dialog = [](CurvePointEditDialog& d) {
        EXPECT_EQ(Field(*d.GetHotTextNumber1()), "200 in 0..800 dB, 1");
        EXPECT_EQ(Field(*d.GetHotTextNumber2()), "-50 in -200..0 dB, 1"); // put in order
        Accept(300, -120)(d);
    };
    s.RightClick(100, 50);
    EXPECT_EQ(s.Points(), "0,0 150,120* 200,100 400,200");
}

TEST(CurveEditorDialogTest, AddNewPointAsksForItsValues) {
    LabelledScene s;
    ModalAnswers answers;
    answers.dialog = [](CurvePointEditDialog& d) {
        EXPECT_EQ(Field(*d.GetHotTextNumber1()), "0 in 0..400 dB, 1");
        EXPECT_EQ(d.GetHotTextNumber2()->GetValue(), 0);
        Accept(150, 30)(d);
    };
    EXPECT_TRUE(s.editor->AddNewPoint());
    EXPECT_EQ(s.Points(), "0,0 100,50 150,30 200,100 400,200");
    EXPECT_GE(s.Point(2).id, CurveEditor::kFirstPointId);
    EXPECT_FALSE(s.editor->AddNewPoint()); // 150 is taken now
    EXPECT_EQ(answers.notes, (Texts{kTaken}));
    answers.dialog = Cancel;
    EXPECT_FALSE(s.editor->AddNewPoint());
    EXPECT_EQ(s.editor->GetCurvePoints().size(), 5u);
    // Outside a window there is nowhere to ask.
    auto loose = qorcore::MakeIntrusive<CurveEditor>(nullptr, nullptr);
    EXPECT_THROW(loose->AddNewPoint(), std::invalid_argument);
}

TEST(CurveEditorDialogTest, InvertMirrorsARisingCurveOrSaysWhyNot) {
    CurveScene s;
    s.editor->SetRanges(-100, 0, 0, -100); // the vertical axis runs from 0 down to -100
    ModalAnswers answers;
    s.SetPoints({{-100, -100}, {-60, -40}, {-20, -10}, {0, 0}});
    EXPECT_TRUE(s.editor->Invert());
    EXPECT_EQ(s.Points(), "-100,-100 -40,-60 -10,-20 0,0");
    EXPECT_EQ(s.Point(1).id, 2u);
    s.SetPoints({{-100, -100}, {0, 0}});
    EXPECT_TRUE(s.editor->Invert());
    EXPECT_EQ(s.Points(), "-100,-100 0,0");
    s.SetPoints({});
    EXPECT_TRUE(s.editor->Invert());
    EXPECT_TRUE(answers.notes.empty());

    s.SetPoints({{-100, -90}, {-60, -40}, {0, 0}});
    EXPECT_FALSE(s.editor->Invert());
    s.SetPoints({{-100, -100}, {-60, -40}, {-20, -40}, {0, 0}});
    EXPECT_FALSE(s.editor->Invert());
    EXPECT_EQ(s.Points(), "-100,-100 -60,-40 -20,-40 0,0");
    // The texts go through the localiser.
    qorcore::Localizer::Get().AddEntry("$$$/qoraudiofiltersui/curveeditor/CannotInvert",
                                       "Umkehren geht nicht");
    EXPECT_FALSE(s.editor->Invert());
    qorcore::Localizer::Get().Clear();
    EXPECT_EQ(answers.notes, (Texts{"Cannot Invert: Endpoints must be at -100,-100 and 0,0",
                                    "Cannot Invert: Current graph is not invertable",
                                    "Umkehren geht nicht: Current graph is not invertable"}));
}

TEST(CurveEditorKeyboardTest, PageKeysWalkTheVisiblePointsAndDeleteRemovesTheSelected) {
    CurveScene s;
    s.SetPoints({{0, 0}, {100, 50}, {200, 100}, {400, 200}});
    s.editor->UI_RequestFocus();
    for (int expected : {0, 1, 2, 3, 0}) {
        EXPECT_TRUE(s.window.PressKey(KeyboardCode::kPageDown));
        EXPECT_EQ(s.editor->GetSelectedNode(), expected);
    }
    EXPECT_TRUE(s.window.PressKey(KeyboardCode::kPageUp));
    EXPECT_EQ(s.editor->GetSelectedNode(), 3);
    s.editor->SetVisiblePoints({1, 0, 1, 1});
    s.editor->SetSelectedNode(0);
    s.window.PressKey(KeyboardCode::kPageDown);
    EXPECT_EQ(s.editor->GetSelectedNode(), 2); // 1 is hidden
    s.window.PressKey(KeyboardCode::kPageUp);
    EXPECT_EQ(s.editor->GetSelectedNode(), 0);
    // A hidden selection stays put, though the key is taken and the selection told again.
    s.editor->SetSelectedNode(1);
    s.Forget();
    EXPECT_TRUE(s.window.PressKey(KeyboardCode::kPageDown));
    EXPECT_EQ(s.editor->GetSelectedNode(), 1);
    EXPECT_EQ(s.selections, (std::vector<int>{1}));
    EXPECT_EQ(s.changes, (std::vector<int>{0, 2}));

    // Delete and Backspace remove the selected point, but not with Shift, on a repeat or for an
    // anchor.
    s.editor->SetVisiblePoints({});
    s.editor->SetSelectedNode(2);
    EXPECT_FALSE(s.window.PressKey(KeyboardCode::kDelete, ModifierKey::kShift));
    EXPECT_FALSE(s.window.KeyDown(KeyboardCode::kDelete, {}, true));
    EXPECT_EQ(s.editor->GetCurvePoints().size(), 4u);
    EXPECT_TRUE(s.window.PressKey(KeyboardCode::kDelete));
    EXPECT_EQ(s.Horizontal(), (Values{0, 100, 400}));
    s.editor->SetSelectedNode(1);
    EXPECT_TRUE(s.window.PressKey(KeyboardCode::kBackspace));
    s.editor->SetSelectedNode(0);
    EXPECT_FALSE(s.window.PressKey(KeyboardCode::kDelete));
    EXPECT_EQ(s.Horizontal(), (Values{0, 400}));

    s.SetPoints({});
    EXPECT_TRUE(s.window.PressKey(KeyboardCode::kPageDown));
    EXPECT_TRUE(s.selections.empty());
}

TEST(CurveEditorKeyboardTest, KeysReachOnlyAFocusedEnabledEditor) {
    CurveScene s;
    s.SetPoints({{0, 0}, {100, 50}, {400, 200}});
    s.editor->SetSelectedNode(1);
    EXPECT_FALSE(s.window.PressKey(KeyboardCode::kUp)); // no focus
    EXPECT_EQ(s.Points(), "0,0 100,50* 400,200");
    s.editor->UI_RequestFocus();
    EXPECT_TRUE(s.window.PressKey(KeyboardCode::kUp));
    EXPECT_EQ(s.Points(), "0,0 100,51* 400,200");
    s.editor->SetSelectedNode(-1);
    EXPECT_FALSE(s.window.PressKey(KeyboardCode::kUp)); // nothing selected: not taken
    s.editor->SetSelectedNode(1);
    EXPECT_FALSE(s.editor->UI_DoKeyboardEvent(
        qorui::KeyboardEvent(qorui::KeyAction::kKeyUp, KeyboardCode::kUp)));
    s.editor->SetDisabled(true);
    EXPECT_FALSE(s.editor->UI_DoKeyboardEvent(
        qorui::KeyboardEvent(qorui::KeyAction::kKeyDown, KeyboardCode::kUp)));
    EXPECT_EQ(s.Points(), "0,0 100,51* 400,200");
}

TEST(CurveEditorToolTipTest, HoveringOrDraggingShowsTheValuesThroughTheTranslators) {
    CurveScene s;
    s.SetPoints({{0, 0}, {100, 50}, {400, 200}});
    s.editor->SetHorizontalEditDialogUnit("Hz");
    s.editor->SetVerticalEditDialogUnit("dB");
    s.editor->SetHorizontalEditDialogTranslators(nullptr, [](double v) { return v * 10; });
    const auto tip = [&] {
        const auto* t = s.editor->GetToolTip();
        return t ? t->GetText() + (t->IsShowing() ? "" : " (hidden)") : "none";
    };
    s.MoveTo(100, 50);
    EXPECT_EQ(tip(), "1000.0 Hz --> 50.0 dB");
    EXPECT_EQ(s.editor->GetToolTip()->GetAnchor(), s.At(100, 50));
    s.MoveTo(250, 120); // off the point
    EXPECT_EQ(tip(), "none");
    s.editor->SetEnableMousePositionToolTip(true);
    s.MoveTo(250, 120);
    EXPECT_EQ(tip(), "2500.0 Hz --> 120.0 dB");
    s.window.MouseLeave();
    EXPECT_EQ(tip(), "none");

    // A drag with the position tip shows the point while inside.
    s.editor->SetHorizontalEditDialogTranslators(nullptr, nullptr);
    s.Press(100, 50);
    EXPECT_EQ(tip(), "none"); // closed by the press
    s.MoveTo(150, 70);
    EXPECT_EQ(tip(), "150.0 Hz --> 70.0 dB");
    s.window.MouseMove(470, 300); // outside the editor, the point held at the content's edge
    EXPECT_EQ(tip(), "none");
    s.window.MouseUp(470, 300);
    EXPECT_EQ(s.Horizontal(), (Values{0, 399, 400}));

    s.editor->SetVerticalEditDialogUnit(""); // both units are needed
    s.MoveTo(0, 0);
    EXPECT_EQ(tip(), "none");
}

TEST(CurveEditorToolTipTest, CursorsSayWhatAPressWouldDo) {
    CurveScene s;
    s.SetPoints({{100, 100}});
    // The point, empty content, the point's column, the border.
    const std::pair<PointT<float>, int> places[] = {
        {s.At(100, 100), CurveEditor::kCursorMovePoint},
        {s.At(250, 100), CurveEditor::kCursorAddPoint},
        {s.At(100, 20), CurveEditor::kCursorArrow},
        {{16, 250}, CurveEditor::kCursorArrow},
    };
    for (const auto& [p, cursor] : places) {
        s.window.MouseMove(p.x, p.y);
        EXPECT_EQ(s.window.GetCursor(), cursor) << p.x << "," << p.y;
    }
    s.SetPoints({{100, 100}, {200, 100}, {300, 100}});
    s.MoveTo(250, 100);
    EXPECT_EQ(s.window.GetCursor(), CurveEditor::kCursorArrow); // full
    s.window.SetCursor(99);
    s.window.MouseMove(250, 375); // over the ruler: the grid decides, the window shows the arrow
    EXPECT_EQ(s.window.GetCursor(), 0);
}

/// A layer that records what it is told, in a shared log of draws.
class RecordingLayer : public qoraudiofiltersui::ContentLayer {
public:
    RecordingLayer(Texts* log, std::string name) : log_(log), name_(std::move(name)) {}
    void Draw(qorui::penrig::Penrig*, float) override { log_->push_back(name_); }
    void SetBounds(const RectT<float>& content, float scale) override {
        bounds.push_back(content);
        scales.push_back(scale);
    }
    std::vector<RectT<float>> bounds;
    std::vector<float> scales;

private:
    Texts* log_;
    std::string name_;
};

/// Whether the bordered content was repainted.
bool ContentRepainted(CurveScene& s) {
    return s.window.GetDirtyRegion().GetBoundingRect().Contains(
        {CurveScene::kLeft + 5, CurveScene::kTop + 5, 409, 209});
}

TEST(CurveEditorDataTest, ResponseDataTakesIndexZeroOrOneAndDataIsAskedForTheWidth) {
    CurveScene s;
    s.editor->SetResponseData({1, 2, 3}, 0);
    s.editor->SetResponseData({4, 5}, 1);
    s.window.Render();
    ASSERT_TRUE(s.window.GetDirtyRegion().IsEmpty());
    s.editor->SetResponseData({7, 8, 9}, 2);
    EXPECT_EQ(s.editor->GetResponseData(0), (Values{1, 2, 3}));
    EXPECT_EQ(s.editor->GetResponseData(1), (Values{4, 5}));
    EXPECT_TRUE(s.editor->GetResponseData(2).empty());
    EXPECT_TRUE(ContentRepainted(s)) << "always repaints";

    std::vector<int> widths;
    s.editor->SetRequestDataFunction(
        std::make_shared<std::function<void(int)>>([&](int width) { widths.push_back(width); }));
    s.editor->SetCurrentRange(0, 200, 200, 0);
    EXPECT_EQ(widths, (std::vector<int>{400}));
    const RectT<float> frame = s.editor->GetFrame();
    s.editor->SetFrame({frame.x, frame.y, frame.width - 100, frame.height});
    EXPECT_EQ(widths.back(), 300);
    s.editor->SetRequestDataFunction(std::make_shared<std::function<void(int)>>());
    EXPECT_THROW(s.editor->SetCurrentRange(0, 100, 200, 0), std::bad_function_call);
}

TEST(CurveEditorDataTest, LayersAreKeptOnceInOrderAndFollowTheContent) {
    CurveScene s;
    Texts draws;
    auto low = qorcore::MakeIntrusive<RecordingLayer>(&draws, "low");
    auto high = qorcore::MakeIntrusive<RecordingLayer>(&draws, "high");
    s.editor->AddContentLayer(low);
    s.editor->AddContentLayer(high);
    s.editor->AddContentLayer(low);
    EXPECT_EQ(s.editor->GetContentLayers().size(), 2u);
    EXPECT_EQ(low->bounds, (std::vector<RectT<float>>{{9, 9, 400, 200}}));
    EXPECT_EQ(low->scales, (std::vector<float>{1.0f}));
    s.window.RenderAll();
    EXPECT_EQ(draws, (Texts{"low", "high"}));

    // Removing an unknown layer changes nothing and repaints nothing.
    s.editor->RemoveContentLayer(qorcore::MakeIntrusive<RecordingLayer>(&draws, "stranger"));
    EXPECT_TRUE(s.window.GetDirtyRegion().IsEmpty());
    s.editor->RemoveContentLayer(low);
    EXPECT_EQ(s.editor->GetContentLayers().size(), 1u);
    EXPECT_TRUE(ContentRepainted(s));
    draws.clear();
    s.window.Render();
    EXPECT_EQ(draws, (Texts{"high"}));

    // Joining a parent and a new size hand the layers the content again.
    const std::size_t told = high->bounds.size();
    IntrusivePtr<CurveEditor> keep = s.editor;
    s.editor->RemoveFromParent();
    s.window.AddNode(s.editor);
    EXPECT_EQ(high->bounds.size(), told + 1);
    const RectT<float> frame = s.editor->GetFrame();
    s.editor->SetFrame({frame.x, frame.y, frame.width + 50, frame.height});
    EXPECT_EQ(high->bounds.back(), (RectT<float>{9, 9, 450, 200}));
    EXPECT_THROW(s.editor->AddContentLayer(nullptr), qorcore::NullPointerException);
}

/// A curve scene without grid and reference line, for drawing checks at 1x.
struct DrawScene : CurveScene {
    explicit DrawScene(float scale = 1.0f) : CurveScene(scale) {
        editor->ShowGrid(false);
        editor->SetDrawLinearReference(false);
    }
    qorcore::ColorRGBA PixelAt(const PointT<float>& p) {
        return window.GetPixel(int(p.x), int(p.y));
    }
    /// Whether the pixel at the values (h, v), moved by (dx, dy) pixels, has `color`.
    bool Shows(double h, double v, const qorcore::ColorRGBA& color, float dx = 0, float dy = 0) {
        const auto c = PixelAt({At(h, v).x + dx, At(h, v).y + dy});
        return std::abs(c.red - color.red) <= 0.02f && std::abs(c.green - color.green) <= 0.02f &&
               std::abs(c.blue - color.blue) <= 0.02f;
    }
    /// How many nearly white pixels a window rectangle holds (label and number text).
    int WhitePixels(const RectT<float>& area) {
        int count = 0;
        for (int y = int(area.y); y < int(area.Bottom()); ++y)
            for (int x = int(area.x); x < int(area.Right()); ++x) {
                const auto c = window.GetPixel(x, y);
                count += c.red > 0.8f && c.green > 0.8f && c.blue > 0.8f;
            }
        return count;
    }
};

const auto kBlack = qorcore::ColorRGBAFixed::Black;

TEST(CurveEditorDrawTest, DotsSelectionAndHiddenPoints) {
    DrawScene s;
    s.SetPoints({{100, 50}, {200, 100}, {300, 150}});
    s.editor->SetSelectedNode(1);
    s.editor->SetVisiblePoints({1, 1, 0});
    s.window.RenderAll();
    const auto plain = s.editor->GetCurveColor(0), selected = s.editor->GetSelectedPointColor();
    EXPECT_TRUE(s.Shows(100, 50, plain) && s.Shows(100, 50, plain, 2, -2)); // 5 by 5
    EXPECT_TRUE(s.Shows(100, 50, kBlack, 3));
    EXPECT_TRUE(s.Shows(200, 100, selected) && s.Shows(200, 100, selected, -3, 3)); // 7 by 7
    EXPECT_TRUE(s.Shows(200, 100, kBlack, 4));
    EXPECT_TRUE(s.Shows(300, 150, kBlack)); // hidden
}

TEST(CurveEditorDrawTest, DataCurvesAndTheLinearReference) {
    DrawScene s;
    s.editor->SetResponseData(std::vector<double>(400, 100.0), 0);
    s.editor->SetResponseData(std::vector<double>(200, 150.0), 1);
    s.window.RenderAll();
    EXPECT_TRUE(s.Shows(250, 100, s.editor->GetCurveColor(0)));
    EXPECT_TRUE(s.Shows(250, 150, qorcore::ColorRGBAFixed::Red));
    EXPECT_TRUE(s.Shows(250, 125, kBlack));
    // Disabled, the curves are drawn at half strength.
    s.editor->SetDisabled(true);
    s.window.RenderAll();
    EXPECT_NEAR(s.PixelAt(s.At(250, 150)).red, 0.5f, 0.02f);
    s.editor->SetDisabled(false);

    // One value is no curve; values past the view, or no numbers, break nothing.
    s.editor->SetResponseData({100.0}, 0);
    s.editor->SetResponseData({1e300, -std::numeric_limits<double>::infinity(),
                               std::numeric_limits<double>::quiet_NaN(), 150.0, 150.0},
                              1);
    s.window.RenderAll();
    EXPECT_TRUE(s.Shows(250, 100, kBlack));
    EXPECT_TRUE(s.Shows(300, 150, qorcore::ColorRGBAFixed::Red));

    // The reference runs from the bottom left to the top right of the content.
    s.editor->SetResponseData({}, 1);
    s.window.RenderAll();
    EXPECT_TRUE(s.Shows(200, 100, kBlack));
    s.editor->SetDrawLinearReference(true);
    s.window.RenderAll();
    EXPECT_GT(s.PixelAt(s.At(200, 100)).green, 0.05f);
}

TEST(CurveEditorDrawTest, LabelsSitOverTheirPointsOrAlongTheBottom) {
    DrawScene s;
    s.SetPoints({{100, 100}, {300, 100}});
    const PointT<float> a = s.At(100, 100);
    const RectT<float> above{a.x - 30, a.y - 30, 60, 25};
    const RectT<float> bottom{a.x - 30, s.At(0, 0).y - 22, 60, 22};
    const RectT<float> between{s.At(200, 100).x - 10, a.y - 10, 20, 20};
    s.window.RenderAll();
    EXPECT_EQ(s.WhitePixels(above) + s.WhitePixels(bottom) + s.WhitePixels(between), 0);
    s.editor->SetPointLabels({"Knee"});
    s.window.RenderAll();
    EXPECT_GT(s.WhitePixels(above), 20);
    EXPECT_EQ(s.WhitePixels(bottom), 0);
    s.editor->SetDrawPointLabelsAtBottom(true);
    s.window.RenderAll();
    EXPECT_EQ(s.WhitePixels(above), 0);
    EXPECT_GT(s.WhitePixels(bottom), 20);
    // The segment between the two points is numbered 1, halfway between them.
    s.editor->SetDrawSegmentNumbers(true);
    s.window.RenderAll();
    EXPECT_GT(s.WhitePixels(between), 5);
}

TEST(CurveEditorDrawTest, ADenseCurveLooksAsEveryValueDrawnWould) {
    // The oracle draws every value as its own segment; the editor leaves out what lies within a
    // fraction of a pixel of its lines, and a single-value spike must survive that.
    for (const float scale : {1.0f, 2.0f}) {
        DrawScene s(scale);
        std::vector<double> data(1600);
        for (std::size_t i = 0; i < data.size(); ++i)
            data[i] = 100 + 60 * std::sin(i * 0.011) + 15 * std::sin(i * 0.13);
        data[800] = 190;
        s.editor->SetResponseData(data, 0);
        s.window.RenderAll();

        auto oracle = qorui::penrig::Image::Create(480, 520, scale);
        qorui::penrig::CairoSupplier supplier(scale);
        auto p = supplier.CreatePenrig(*oracle);
        p->Clear(qorcore::ColorRGBAFixed::Black);
        p->Translate(CurveScene::kLeft, CurveScene::kTop);
        const RectT<float> content = s.editor->GetContentRect();
        p->ClipToRect(content.Inset(-1, -1));
        p->NewPath();
        for (std::size_t i = 0; i < data.size(); ++i) {
            const float x = content.x + i * content.width / data.size() + 0.5f;
            const float y = float(s.editor->GetVerticalRuler()->GetPixelFromValueF(data[i])) + 0.5f;
            if (i == 0)
                p->MoveTo(x, y);
            else
                p->LineTo(x, y);
        }
        p->SetPen(s.editor->GetContentLineThickness(), s.editor->GetCurveColor(0));
        p->Stroke();

        double ink = 0, oracle_ink = 0, worst = 0;
        const RectT<float> device = content.Offset(CurveScene::kLeft, CurveScene::kTop);
        for (int y = int(device.y * scale); y < int(device.Bottom() * scale); ++y)
            for (int x = int(device.x * scale); x < int(device.Right() * scale); ++x) {
                const float a = s.window.GetPixel(x, y).blue;
                const float b = oracle->GetPixel(x, y).blue;
                ink += a;
                oracle_ink += b;
                worst = std::max(worst, double(std::abs(a - b)));
            }
        EXPECT_NEAR(ink, oracle_ink, oracle_ink * 0.01) << scale;
        EXPECT_LT(worst, 0.35) << scale;
        // Just under the spike's tip, inside both strokes.
        const PointT<float> tip = s.At(800 * 400.0 / 1600, 190);
        const int tx = int((tip.x + 0.5f) * scale);
        const int ty = int((tip.y + 1.5f) * scale);
        EXPECT_GT(oracle->GetPixel(tx, ty).blue, 0.5f) << scale;
        EXPECT_GT(s.window.GetPixel(tx, ty).blue, 0.5f) << scale;
    }
}

/// Gain at `hz` of the curve the points draw on a log-frequency axis: straight lines in
/// log-frequency between neighbouring points, flat beyond the ends.
double CurveGainAt(const CurveEditor::CurvePoints& points, double hz) {
    if (hz <= points.front().position.first)
        return points.front().position.second;
    for (std::size_t i = 1; i < points.size(); ++i) {
        const auto [f1, g1] = points[i].position;
        const auto [f0, g0] = points[i - 1].position;
        if (hz <= f1) {
            const double t = std::log2(hz / f0) / std::log2(f1 / f0);
            return g0 + t * (g1 - g0);
        }
    }
    return points.back().position.second;
}

/// Gain in dB of a peaking equaliser section (bilinear transform of the analogue prototype)
/// at `hz`, evaluated on the unit circle.
double PeakingGainAt(double hz, double centre, double gain_db, double q, double rate) {
    const double a = std::pow(10.0, gain_db / 40.0);
    const double w0 = 2 * std::numbers::pi * centre / rate;
    const double alpha = std::sin(w0) / (2 * q);
    const double b0 = 1 + alpha * a, b1 = -2 * std::cos(w0), b2 = 1 - alpha * a;
    const double a0 = 1 + alpha / a, a1 = -2 * std::cos(w0), a2 = 1 - alpha / a;
    const double w = 2 * std::numbers::pi * hz / rate;
    const std::complex<double> z1 = std::polar(1.0, -w), z2 = std::polar(1.0, -2 * w);
    const std::complex<double> h = (b0 + b1 * z1 + b2 * z2) / (a0 + a1 * z1 + a2 * z2);
    return 20 * std::log10(std::abs(h));
}

/// Magnitudes of a test signal, by a plain DFT over a Hann window: tones at 200 Hz and 3 kHz
/// over a falling deterministic noise.
std::vector<float> TestSpectrum(int fft_size, double rate) {
    std::vector<double> signal(fft_size);
    unsigned state = 2024;
    double smooth = 0;
    for (int n = 0; n < fft_size; ++n) {
        state = state * 1103515245u + 12345u;
        smooth = 0.9 * smooth + 0.1 * (double((state >> 8) & 0xffff) / 65535.0 - 0.5);
        const double t = n / rate;
        signal[n] = 0.3 * std::sin(2 * std::numbers::pi * 200 * t) +
                    0.05 * std::sin(2 * std::numbers::pi * 3000 * t) + 0.2 * smooth;
        signal[n] *= 0.5 - 0.5 * std::cos(2 * std::numbers::pi * n / fft_size);
    }
    std::vector<float> bins(fft_size / 2 + 1);
    for (int k = 0; k <= fft_size / 2; ++k) {
        double re = 0, im = 0;
        for (int n = 0; n < fft_size; ++n) {
            const double phase = 2 * std::numbers::pi * k * n / fft_size;
            re += signal[n] * std::cos(phase);
            im -= signal[n] * std::sin(phase);
        }
        bins[k] = float(std::sqrt(re * re + im * im) * 4.0 / fft_size);
    }
    return bins;
}

/// A frequency graph as an equaliser shows it: breakpoints on a log axis over a decibel axis,
/// the curve they make, a reference band's response in red, the live spectrum under them,
/// labels, segment numbers and a selected point.
void RenderGoldenCurveEditor(float scale, const std::string& name) {
    qorui::skins::ScopedSkin look(qorui::skins::Skin::kClassic);
    constexpr double rate = 48000.0;
    auto editor = qorcore::MakeIntrusive<CurveEditor>(
        qorcore::MakeIntrusive<qorui::LogRuler>(), qorcore::MakeIntrusive<qorui::DecibelRuler>());
    const PointT<float> size = editor->GetSizeForContentSize({360, 200});
    qorui::HeadlessWindow window(size.x + 20, size.y + 20, scale);
    editor->SetFrame({10, 10, size.x, size.y});
    window.AddNode(editor);
    editor->SetRanges(20, 20000, 12, -60);
    editor->SetDrawHorizontalMinorTicks(true);
    editor->SetCurvePoints({CurvePoint(1, 20, -6), CurvePoint(2, 150, 6), CurvePoint(3, 1000, -12),
                            CurvePoint(4, 5000, 0), CurvePoint(5, 20000, -24)});
    editor->SetSelectedNode(2);
    editor->SetPointLabels({"", "Low", "Mid", "High", ""});
    editor->SetDrawSegmentNumbers(true);

    const int width = int(editor->GetContentRect().width);
    std::vector<double> curve(width), band(width);
    for (int x = 0; x < width; ++x) {
        const double hz = editor->GetHorizontalRuler()->GetValueFromPixelF(
            editor->GetContentRect().x + double(x) * editor->GetContentRect().width / width);
        curve[x] = CurveGainAt(editor->GetCurvePoints(), hz);
        band[x] = PeakingGainAt(hz, 1000, -12, 2, rate);
    }
    editor->SetResponseData(curve, 0);
    editor->SetResponseData(band, 1);

    auto spectrum = qorcore::MakeIntrusive<qoraudiofiltersui::SpectrumDraw>(float(rate));
    spectrum->SetDBRange({-60.0f, 12.0f});
    constexpr int fft_size = 2048;
    spectrum->SetSpectrumData(fft_size, TestSpectrum(fft_size, rate), fft_size / 2, 0, true);
    editor->AddContentLayer(
        qorcore::MakeIntrusive<qoraudiofiltersui::SpectrumContentLayer>(spectrum));
    window.RenderAll();
    spectrum->SetFreqRange(spectrum->GetFreqRange()); // counts the columns the frame sized
    window.RenderAll();
    EXPECT_TRUE(qafui_testing::MatchesGolden(window.GetImage(), name));
}

TEST(CurveEditorGoldenTest, FrequencyCurveAt1x) {
    RenderGoldenCurveEditor(1.0f, "curve_editor_1x");
}

TEST(CurveEditorGoldenTest, FrequencyCurveAt2x) {
    RenderGoldenCurveEditor(2.0f, "curve_editor_2x");
}

} // namespace
