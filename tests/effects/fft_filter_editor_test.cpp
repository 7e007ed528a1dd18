// The FFT filter editor over a table of its parameters: how the points reach the filter, how
// the graph follows the filter, the popups, the checkbox, reset and the advanced section.
#include "fft_filter_scene.hpp"
#include "platform/archive/node_archive_writer.hpp"

#include "framework/effect_catalogue.hpp"
#include "platform/core/null_pointer_exception.hpp"
#include "platform/dialogs/curve_point_edit_dialog.hpp"
#include "platform/menus/ui_menu_overlay.hpp"
#include "platform/rulers/linear_ruler.hpp"
#include "platform/rulers/log_ruler.hpp"
#include "platform/ui/modal_testing.hpp"
#include "platform/widgets/ui_checkbox.hpp"
#include "platform/widgets/ui_disclosure_triangle_button.hpp"
#include "platform/widgets/ui_picture_button.hpp"
#include "platform/widgets/ui_popup.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <unistd.h>

using namespace qoraudiofiltersui;
using namespace qafui_testing;
using qoraudiofilterhost::ParameterStoreFilter;
using Call = ParameterStoreFilter::Call;
using Kind = ParameterStoreFilter::CallKind;

namespace {

constexpr float kNyquist = kFFTFilterSampleRate * 0.5f;
constexpr float kZeroDecibels = 0.75f;  // the fader position of 0 dB
constexpr float kPerPoint = 0.0078125f; // the point count's parameter per point

std::shared_ptr<ResponseTableFilter> ThreePointFilter() {
    return std::make_shared<ResponseTableFilter>(
        FFTFilterValues({{20.0f, kZeroDecibels}, {1000.0f, 0.5f}, {kNyquist, kZeroDecibels}}));
}

std::vector<Call> Writes(const ParameterStoreFilter& filter) {
    std::vector<Call> writes;
    for (const Call& call : filter.GetCalls())
        if (call.kind == Kind::kSetParameterValue || call.kind == Kind::kSetParameterQuietly)
            writes.push_back(call);
    return writes;
}

/// The editor on three points: 20 Hz and Nyquist at 0 dB, 1 kHz at the fader's middle.
class FFTFilterEditor : public ::testing::Test {
protected:
    /// Presses on point `index` and moves by (dx, dy) with the button held; returns where to.
    qorcore::PointT<float> Drag(std::size_t index, float dx, float dy) {
        const auto at = scene.PointInWindow(index);
        scene.window->MouseDown(at.x, at.y);
        scene.window->MouseMove(at.x + dx, at.y + dy);
        return {at.x + dx, at.y + dy};
    }
    double Level(std::size_t point) const { return graph.GetCurvePoints()[point].position.second; }

    std::shared_ptr<ResponseTableFilter> table = ThreePointFilter();
    ResponseTableFilter& filter = *table;
    FFTFilterScene scene{table};
    FFTFilterGraph& graph = scene.Graph();
};

TEST_F(FFTFilterEditor, TheRegistryMakesItFromItsArchiveWithEveryControlShowingTheFilter) {
    EXPECT_TRUE(IsEditorClassBuilt(*FindEffect("FFTFilter")));
    ASSERT_EQ(scene.view->GetChildren().size(), 1u);
    EXPECT_EQ(scene.view->GetChildren()[0]->GetID(), "FFTFilterUI");
    EXPECT_EQ(StaticTexts(*scene.view),
              (std::vector<std::string>{"Scale:", "FFT Size:", "Window:"}));
    EXPECT_EQ(scene.Find<qorui::UI_Checkbox>("SplineCurves").GetText(), "Spline Curves");
    EXPECT_TRUE(scene.Find<qorui::UI_Checkbox>("SplineCurves").IsChecked());
    EXPECT_EQ(scene.Find<qorui::UI_DisclosureTriangleButton>("Advanced").GetText(), "Advanced");
    EXPECT_EQ(scene.Find<qorui::UI_PictureButton>("ResetButton").GetImageName(), "Reset_Sm");
    EXPECT_FALSE(scene.Find<qorui::UI_SubView>("AdvancedSection").IsVisible());
    const struct {
        const char* id;
        std::vector<std::string> items;
        const char* shown;
    } popups[] = {
        {"LinearLogMode", {"Linear", "Logarithmic"}, "Logarithmic"},
        {"WindowType",
         {"Triangular", "Hann", "Hamming", "Blackman", "Gaussian", "Blackman-Harris",
          "Kaiser (140 dB)", "Kaiser (180 dB)"},
         "Hann"},
        {"FFTSize",
         {"32", "64", "128", "256", "512", "1024", "2048", "4096", "8192", "16384", "32768"},
         "4096"}};
    for (const auto& p : popups) {
        EXPECT_EQ(scene.Find<qorui::UI_Popup>(p.id).GetItems(), p.items) << p.id;
        EXPECT_EQ(scene.Find<qorui::UI_Popup>(p.id).GetValueString(), p.shown) << p.id;
    }
    // Opening writes nothing but the visible range, quietly.
    for (const Call& call : Writes(filter))
        EXPECT_TRUE(call.kind == Kind::kSetParameterQuietly && (call.index == 5 || call.index == 6))
            << call.index;
}

TEST_F(FFTFilterEditor, TheGraphReadsThePointsWithTheEndsHeldInPlace) {
    const auto& points = graph.GetCurvePoints();
    ASSERT_EQ(points.size(), 3u);
    for (std::uint32_t i = 0; i < 3; ++i)
        EXPECT_EQ(points[i].id, i);
    EXPECT_NEAR(points[0].position.first, 20.0, 1e-3);
    EXPECT_NEAR(points[1].position.first, 1000.0, 1e-2);
    EXPECT_DOUBLE_EQ(points[1].position.second, 0.5);
    EXPECT_DOUBLE_EQ(points[2].position.first, kNyquist);
    // Deletable 0, moveable 0 sideways, 0 up and down, 1 sideways, 2 sideways.
    EXPECT_EQ((std::vector<bool>{graph.IsPointDeletable(0), graph.IsPointMoveable(0, true),
                                 graph.IsPointMoveable(0, false), graph.IsPointMoveable(1, true),
                                 graph.IsPointMoveable(2, true)}),
              (std::vector<bool>{false, false, true, true, false}));
    EXPECT_EQ(graph.GetMaxPointCount(), 128u);
    // The response is the filter's, as many values as asked for.
    EXPECT_EQ(graph.GetResponseData(0).size(), std::size_t(FFTFilterGraph::kResponsePointCount));
    EXPECT_TRUE(graph.IsLogarithmic());
    EXPECT_NE(dynamic_cast<qorui::LogRuler*>(graph.GetHorizontalRuler().get()), nullptr);
    EXPECT_DOUBLE_EQ(graph.GetHorizontalStart(), 20.0);
    EXPECT_DOUBLE_EQ(graph.GetHorizontalEnd(), kNyquist);
    EXPECT_DOUBLE_EQ(graph.GetVerticalStart(), 1.0);
    EXPECT_DOUBLE_EQ(graph.GetVerticalEnd(), 0.0);
    // The level axis reads decibels off fader positions.
    EXPECT_EQ(graph.GetVerticalRuler()->FormatValue(kZeroDecibels), "0");
    EXPECT_EQ(graph.GetVerticalRuler()->FormatValue(1.0), "+15");
}

TEST_F(FFTFilterEditor, EveryStepOfADragWritesAllPointsInsideTheQuietBracket) {
    std::vector<int> steps;
    const qorcore::ScopedConnection listening = graph.ConnectChangedInteractively(
        [&](const qorui::UI_InteractiveControlChangedMessage& message) {
            steps.push_back(message.GetChangeMessage());
        });
    filter.ClearCalls();
    const int asked = filter.responseRequests;
    const auto to = Drag(1, 30, -40);
    ASSERT_TRUE(graph.IsInteracting());
    scene.window->MouseUp(to.x, to.y);
    EXPECT_FALSE(graph.IsInteracting());

    const auto& points = graph.GetCurvePoints();
    EXPECT_GT(points[1].position.first, 1000.0);
    EXPECT_GT(points[1].position.second, 0.5);
    std::vector<Call> oneWrite = {{Kind::kSetParameterQuietly, 3, 1.0f},
                                  {Kind::kSetParameterQuietly, 9, 3 * kPerPoint}};
    for (int i = 0; i < 3; ++i) {
        const auto& position = points[std::size_t(i)].position;
        oneWrite.push_back(
            {Kind::kSetParameterValue, 10 + 2 * i, float(position.first / double(kNyquist))});
        oneWrite.push_back({Kind::kSetParameterValue, 11 + 2 * i, float(position.second)});
    }
    oneWrite.push_back({Kind::kSetParameterQuietly, 3, 0.0f});
    // The begin writes nothing; each continue and the finish write every point once.
    const auto writing = std::count_if(steps.begin(), steps.end(), [](int step) {
        return step == qorui::kInteractiveChangeContinue || step == qorui::kInteractiveChangeFinish;
    });
    ASSERT_EQ(steps.front(), qorui::kInteractiveChangeBegin);
    ASSERT_EQ(steps.back(), qorui::kInteractiveChangeFinish);
    std::vector<Call> expected;
    for (int i = 0; i < writing; ++i)
        expected.insert(expected.end(), oneWrite.begin(), oneWrite.end());
    EXPECT_EQ(Writes(filter), expected);
    EXPECT_EQ(filter.responseRequests, asked + int(writing)) << "one response after each write";
}

TEST_F(FFTFilterEditor, AnIdleTickRebuildsNothingAndAsksNoResponse) {
    scene.Tick();
    filter.ClearCalls();
    filter.SetRecordReads(true);
    const int asked = filter.responseRequests;
    for (int i = 0; i < 5; ++i)
        scene.Tick();
    EXPECT_EQ(filter.responseRequests, asked);
    EXPECT_TRUE(Writes(filter).empty());
    // Every tick compares each coordinate once; nothing past them is read.
    int pointReads = 0;
    for (const Call& call : filter.GetCalls(Kind::kGetParameterValue))
        if (call.index >= 10) {
            EXPECT_LT(call.index, 16);
            ++pointReads;
        }
    EXPECT_EQ(pointReads, 5 * 6);
}

TEST_F(FFTFilterEditor, OneChangedCoordinateRebuildsTheWholeCurve) {
    const int asked = filter.responseRequests;
    filter.StoreValue(13, 0.25f); // the middle point's level
    scene.Tick();
    EXPECT_EQ(filter.responseRequests, asked + 1);
    EXPECT_DOUBLE_EQ(Level(1), 0.25);

    // A new count rebuilds too, with the ends held again.
    for (const auto& [index, value] : std::vector<std::pair<int, float>>{{14, 5000.0f / kNyquist},
                                                                         {15, 0.6f},
                                                                         {16, 1.0f},
                                                                         {17, kZeroDecibels},
                                                                         {9, 4 * kPerPoint}})
        filter.StoreValue(index, value);
    scene.Tick();
    ASSERT_EQ(graph.GetCurvePoints().size(), 4u);
    EXPECT_FALSE(graph.IsPointDeletable(3));
    EXPECT_TRUE(graph.IsPointMoveable(2, true));

    // A value that is no number is read again on every tick, and the curve stays drawable.
    filter.StoreValue(12, std::nanf(""));
    scene.Tick();
    const int afterNaN = filter.responseRequests;
    scene.Tick();
    EXPECT_EQ(filter.responseRequests, afterNaN + 1);
    EXPECT_DOUBLE_EQ(graph.GetCurvePoints()[1].position.first, 0.0);
}

TEST_F(FFTFilterEditor, ParametersDoNotOverwriteADragUntilItEnds) {
    const auto to = Drag(1, 0, -30);
    const double dragged = Level(1);
    // An automation moves the point meanwhile.
    filter.StoreValue(13, 0.1f);
    scene.Tick();
    scene.Tick();
    EXPECT_DOUBLE_EQ(Level(1), dragged);
    scene.window->MouseUp(to.x, to.y);
    // The release writes the dragged points again, and the next tick takes them back.
    EXPECT_FLOAT_EQ(filter.GetParameterValue(13), float(dragged));
    scene.Tick();
    EXPECT_FLOAT_EQ(float(Level(1)), float(dragged));
}

TEST_F(FFTFilterEditor, ACancelledDragWritesNothingAtItsEnd) {
    Drag(1, 0, -30);
    filter.ClearCalls();
    scene.window->PressKey(qorui::KeyboardCode::kEscape);
    EXPECT_FALSE(graph.IsInteracting());
    EXPECT_TRUE(Writes(filter).empty());
    EXPECT_DOUBLE_EQ(Level(1), 0.5);
}

TEST_F(FFTFilterEditor, ScaleSwitchesRebuildTheRulersOverTheFullRange) {
    auto& popup = scene.Find<qorui::UI_Popup>("LinearLogMode");
    filter.ClearCalls();
    popup.ChooseItem(0); // "Linear"
    ASSERT_FALSE(filter.GetCalls(Kind::kSetParameterValue).empty());
    EXPECT_EQ(filter.GetCalls(Kind::kSetParameterValue).front(),
              (Call{Kind::kSetParameterValue, 4, 1.0f}));
    scene.Tick();
    EXPECT_FALSE(graph.IsLogarithmic());
    EXPECT_NE(dynamic_cast<qorui::LinearRuler*>(graph.GetHorizontalRuler().get()), nullptr);
    EXPECT_DOUBLE_EQ(graph.GetHorizontalStart(), 20.0);
    EXPECT_DOUBLE_EQ(graph.GetHorizontalEnd(), kNyquist);
    EXPECT_EQ(graph.GetSpectrumDraw()->GetFreqScale()->GetScaleType(), kLinearScale);
    // The range went to the filter quietly, over Nyquist.
    EXPECT_FLOAT_EQ(filter.GetParameterValue(5), 20.0f / kNyquist);
    EXPECT_FLOAT_EQ(filter.GetParameterValue(6), 1.0f);

    // From the filter's side, and the popup follows.
    filter.StoreValue(4, 0.0f);
    scene.Tick();
    EXPECT_TRUE(graph.IsLogarithmic());
    EXPECT_NE(dynamic_cast<qorui::LogRuler*>(graph.GetHorizontalRuler().get()), nullptr);
    EXPECT_EQ(graph.GetSpectrumDraw()->GetFreqScale()->GetScaleType(), kLogScale);
    EXPECT_EQ(popup.GetValueString(), "Logarithmic");
    ASSERT_EQ(graph.GetCurvePoints().size(), 3u) << "a scale switch keeps the points";
}

TEST_F(FFTFilterEditor, ResetWritesTwoPointsAtZeroDecibelsAndTheCurveFollows) {
    filter.ClearCalls();
    scene.Click("ResetButton");
    EXPECT_EQ(Writes(filter), (std::vector<Call>{{Kind::kSetParameterQuietly, 3, 1.0f},
                                                 {Kind::kSetParameterQuietly, 9, 2 * kPerPoint},
                                                 {Kind::kSetParameterValue, 10, 20.0f / kNyquist},
                                                 {Kind::kSetParameterValue, 11, kZeroDecibels},
                                                 {Kind::kSetParameterValue, 12, 1.0f},
                                                 {Kind::kSetParameterValue, 13, kZeroDecibels},
                                                 {Kind::kSetParameterQuietly, 3, 0.0f}}));
    scene.Tick();
    const auto& points = graph.GetCurvePoints();
    ASSERT_EQ(points.size(), 2u);
    EXPECT_DOUBLE_EQ(points[1].position.first, kNyquist);
    EXPECT_DOUBLE_EQ(points[1].position.second, kZeroDecibels);
}

TEST_F(FFTFilterEditor, TheSplinesCheckboxWritesParameterZeroAndFollowsIt) {
    auto& box = scene.Find<qorui::UI_Checkbox>("SplineCurves");
    const int asked = filter.responseRequests;
    scene.Click("SplineCurves");
    EXPECT_FALSE(box.IsChecked());
    EXPECT_EQ(filter.GetParameterValue(0), 0.0f);
    EXPECT_EQ(filter.responseRequests, asked + 1) << "the curve is read again after the write";
    filter.StoreValue(0, 0.5f);
    scene.Tick();
    EXPECT_TRUE(box.IsChecked());
}

TEST_F(FFTFilterEditor, TheFFTSizePopupSelectsByTextAndWritesOnlyItsElevenSizes) {
    auto& popup = scene.Find<qorui::UI_Popup>("FFTSize");
    popup.ChooseItem(3);
    EXPECT_FLOAT_EQ(filter.GetParameterValue(1), (256.0f - 32.0f) / 32736.0f);
    popup.ChooseItem(10);
    EXPECT_FLOAT_EQ(filter.GetParameterValue(1), 1.0f);
    // Each size read back from its 32-bit parameter shows as itself again.
    for (int row = 0; row < 11; ++row) {
        popup.ChooseItem(row);
        scene.Tick();
        EXPECT_EQ(popup.GetSelectedIndex(), row) << popup.GetItemText(std::size_t(row));
    }
    filter.StoreValue(1, (8192.0f - 32.0f) / 32736.0f);
    scene.Tick();
    EXPECT_EQ(popup.GetValueString(), "8192");
    filter.StoreValue(1, (3000.0f - 32.0f) / 32736.0f); // between two sizes
    scene.Tick();
    EXPECT_EQ(popup.GetSelectedIndex(), -1);

    // A twelfth row, past the table: nothing is written but the curve is read again.
    popup.AddItem("65536");
    filter.ClearCalls();
    const int asked = filter.responseRequests;
    popup.ChooseItem(11);
    EXPECT_TRUE(filter.GetCalls(Kind::kSetParameterValue).empty());
    EXPECT_EQ(filter.responseRequests, asked + 1);
}

TEST_F(FFTFilterEditor, TheWindowPopupMapsRowsToEighths) {
    auto& popup = scene.Find<qorui::UI_Popup>("WindowType");
    {
        // Through the menu, as the user picks it.
        qorui::testing::ScopedModalResponder responder([](qorui::UI_ModalOverlay& overlay) {
            auto* menu = dynamic_cast<qorui::UI_MenuOverlay*>(&overlay);
            ASSERT_NE(menu, nullptr);
            EXPECT_TRUE(menu->ChooseItem(6)); // the sixth row, "Blackman-Harris"
        });
        scene.Click("Advanced");
        scene.window->SetSize(scene.view->GetFrame().width, scene.view->GetFrame().height);
        scene.Click("WindowType");
    }
    EXPECT_EQ(popup.GetValueString(), "Blackman-Harris");
    EXPECT_FLOAT_EQ(filter.GetParameterValue(2), 5 * 0.125f);
    for (int row = 0; row < 8; ++row) {
        popup.ChooseItem(row);
        EXPECT_FLOAT_EQ(filter.GetParameterValue(2), float(row) * 0.125f) << row;
    }
    // From the filter: eighths, rounded down, and index 8 is no row.
    for (const auto& [value, shown] :
         std::vector<std::pair<float, int>>{{0.5f, 4}, {0.99f, 7}, {1.0f, -1}}) {
        filter.StoreValue(2, value);
        scene.Tick();
        EXPECT_EQ(popup.GetSelectedIndex(), shown) << value;
    }
    // A row past the eight writes the first window.
    popup.AddItem("Other");
    popup.ChooseItem(8);
    EXPECT_EQ(filter.GetParameterValue(2), 0.0f);
}

TEST_F(FFTFilterEditor, TheAdvancedSectionGrowsAndShrinksTheEditor) {
    auto& section = scene.Find<qorui::UI_SubView>("AdvancedSection");
    const float closed = scene.view->GetFrame().height;
    int signals = 0;
    const qorcore::ScopedConnection sized =
        scene.view->ConnectContentSizeChanged([&] { ++signals; });
    scene.Click("Advanced");
    EXPECT_TRUE(section.IsVisible());
    EXPECT_FLOAT_EQ(scene.view->GetFrame().height, closed + section.GetFrame().height);
    EXPECT_FLOAT_EQ(scene.view->GetChildren()[0]->GetFrame().height, scene.view->GetFrame().height);
    EXPECT_EQ(signals, 1);
    // The section's controls take clicks once shown.
    scene.window->SetSize(scene.view->GetFrame().width, scene.view->GetFrame().height);
    EXPECT_TRUE(scene.Find<qorui::UI_Popup>("FFTSize").IsShown());
    scene.Click("Advanced");
    EXPECT_FALSE(section.IsVisible());
    EXPECT_FLOAT_EQ(scene.view->GetFrame().height, closed);
    EXPECT_EQ(signals, 2);
}

TEST_F(FFTFilterEditor, CurvesOfFewerThanTwoPointsLeaveTheRulesAsTheyWere) {
    ASSERT_TRUE(graph.IsPointDeletable(1));
    // Counts of one, none and beyond 128 (held to what the parameters carry).
    for (const auto& [count, points] :
         std::vector<std::pair<float, std::size_t>>{{kPerPoint, 1}, {0.0f, 0}, {3.0f, 128}}) {
        filter.StoreValue(9, count);
        scene.Tick();
        EXPECT_EQ(graph.GetCurvePoints().size(), points) << count;
        if (points == 1) {
            EXPECT_TRUE(graph.IsPointDeletable(1)) << "the lists of three points stand";
        }
    }
}

TEST_F(FFTFilterEditor, ThePointDialogShowsDecibelsAndWritesFaderPositions) {
    std::vector<std::string> labels;
    double shownLevel = 0.0;
    qorui::testing::ScopedModalResponder responder([&](qorui::UI_ModalOverlay& overlay) {
        if (auto* menu = dynamic_cast<qorui::UI_MenuOverlay*>(&overlay)) {
            EXPECT_TRUE(menu->ChooseItem(CurveEditor::kMenuEditPoint));
        } else if (auto* dialog = dynamic_cast<qormediaui::CurvePointEditDialog*>(&overlay)) {
            labels = {dialog->GetLabel1(), dialog->GetLabel2()};
            shownLevel = dialog->GetHotTextNumber2()->GetValue();
            dialog->GetHotTextNumber1()->SetValue(2000.0);
            dialog->GetHotTextNumber2()->SetValue(-6.0);
            EXPECT_TRUE(dialog->PressButton(qormediaui::CurvePointEditDialog::kResponseAccept));
        }
    });
    const auto at = scene.PointInWindow(1);
    scene.window->Click(at.x, at.y, qorui::MouseButton::kRight);
    EXPECT_EQ(labels, (std::vector<std::string>{"Frequency:", "Level:"}));
    const auto& fader = graph.GetFaderTranslator();
    EXPECT_NEAR(shownLevel, fader.GetDecibelValue(0.5), 1e-9) << "shown in decibels";
    EXPECT_FLOAT_EQ(filter.GetParameterValue(12), 2000.0f / kNyquist);
    EXPECT_FLOAT_EQ(filter.GetParameterValue(13), float(fader.GetNormalizedValue(-6.0)));
}

TEST(FFTFilterPanel, AFilterWithoutResponseLeavesTheCurveAsItWas) {
    auto filter = ThreePointFilter();
    filter->answersResponse = false;
    FFTFilterScene scene(filter);
    EXPECT_TRUE(scene.Graph().GetResponseData(0).empty());
    for (const bool answers : {true, false}) {
        filter->answersResponse = answers;
        filter->StoreValue(13, answers ? 0.3f : 0.2f);
        scene.Tick();
        EXPECT_EQ(scene.Graph().GetResponseData(0).size(), 4096u) << "the last response stays";
    }
}

/// A panel of the editor's controls without some of them, in a folder that the library reads
/// before its own resources while the object lives.
class PartialArchive {
public:
    explicit PartialArchive(const std::vector<std::string>& leaveOut) {
        using namespace qafui_testing::archive;
        path_ = std::filesystem::temp_directory_path() /
                ("qafui_fft_archive_" + std::to_string(::getpid()));
        std::filesystem::create_directories(path_);
        auto button = [](const char* adapter, const char* id, float left) {
            return Node(adapter, {Section(adapter), Section("qorui::ui::UI_Button"),
                                  SubViewSection(), NodeSection(id, left, 310, 60, 20)});
        };
        std::vector<std::pair<std::string, std::string>> nodes = {
            {"FFTFilterGraph",
             Node("qorui::ui::UI_SubView",
                  {SubViewSection(), NodeSection("FFTFilterGraph", 0, 0, 500, 300)})},
            {"LinearLogMode", button("qorui::ui::UI_Popup", "LinearLogMode", 0)},
            {"SplineCurves", button("qorui::ui::UI_Checkbox", "SplineCurves", 70)},
            {"Advanced", button("qorui::ui::UI_DisclosureTriangleButton", "Advanced", 140)},
            {"ResetButton", button("qorui::ui::UI_PictureButton", "ResetButton", 210)},
            {"AdvancedSection",
             Node(
                 "qorui::ui::UI_SubView",
                 {SubViewSection({button("qorui::ui::UI_Popup", "FFTSize", 0),
                                  button("qorui::ui::UI_Popup", "WindowType", 70)}),
                  NodeSection("AdvancedSection", 0, 340, 500, 30, Pair("visible", Bool(false)))})}};
        std::vector<std::string> children;
        for (const auto& [id, node] : nodes)
            if (std::find(leaveOut.begin(), leaveOut.end(), id) == leaveOut.end())
                children.push_back(node);
        std::ofstream(path_ / "FFTFILTER.xml", std::ios::binary)
            << Document(Node("qorui::ui::UI_SubView",
                             {SubViewSection(children), NodeSection("Partial", 0, 0, 500, 340)}));
        ::setenv("QAFUI_RESOURCE_DIR", path_.c_str(), 1);
    }
    ~PartialArchive() {
        ::unsetenv("QAFUI_RESOURCE_DIR");
        std::filesystem::remove_all(path_);
    }

private:
    std::filesystem::path path_;
};

TEST(FFTFilterPanel, WithoutTheGraphItSyncsButResetNeedsIt) {
    const PartialArchive archive({"FFTFilterGraph"});
    FFTFilterScene scene(ThreePointFilter());
    EXPECT_FALSE(scene.view->GetGraph());
    // Ticks go on without a graph, and the controls still follow the filter.
    auto& filter = static_cast<ResponseTableFilter&>(*scene.filter);
    filter.StoreValue(0, 0.0f);
    scene.Tick();
    EXPECT_FALSE(scene.Find<qorui::UI_Checkbox>("SplineCurves").IsChecked());
    scene.Find<qorui::UI_Popup>("FFTSize").ChooseItem(2);
    EXPECT_FLOAT_EQ(filter.GetParameterValue(1), (128.0f - 32.0f) / 32736.0f);
    EXPECT_THROW(scene.Find<qorui::UI_PictureButton>("ResetButton").Click(),
                 qorcore::NullPointerException);
}

TEST(FFTFilterPanel, WithoutAControlItFailsAsItIsConnected) {
    const PartialArchive archive({"ResetButton"});
    EXPECT_THROW(FFTFilterScene scene(ThreePointFilter()), qorcore::NullPointerException);
    Terminate(); // the scene's constructor did not finish, so its destructor did not run
}

TEST(FFTFilterGraph, ANullFilterIsRefused) {
    EXPECT_THROW(IntrusivePtr<FFTFilterGraph>(new FFTFilterGraph(nullptr)),
                 qorcore::NullPointerException);
}

} // namespace
