// CompressorExpanderList: the row rule on the slopes that matter (neutral within its tolerance,
// flat segments, compressing and expanding), the order of rows and their thresholds, the
// refresh of the table, its best size, and how it draws in both looks.
#include "controls/compressor_expander_list.hpp"
#include "golden_image.hpp"
#include "platform/skins/control_drawing.hpp"
#include "platform/skins/skins.hpp"
#include "platform/ui/headless_window.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <tuple>
#include <vector>

using namespace qoraudiofiltersui;
using Points = CompressorExpanderList::Points;
using Row = CompressorExpanderRow;
using qorui::skins::Skin;

namespace {

TEST(CompressorExpanderListRows, FollowTheSlopeOfEachSegmentFromTheTopDown) {
    const struct {
        const char* what;
        Points points;
        std::vector<Row> rows;
    } cases[] = {
        {"no points", {}, {}},
        {"one point", {{-20, -20}}, {}},
        {"unity", {{-100, -100}, {0, 0}}, {{"1", "1.0", "Neutral", "Above -100.0 dB"}}},
        // Input over output of 1.0101 and of 0.99: both within 0.02 of one; 0.98 is outside.
        {"1.0101", {{-40, -40}, {-39, -39.01f}}, {{"1", "1.0", "Neutral", "Above -40.0 dB"}}},
        {"0.99", {{-40, -40}, {-39.01f, -39}}, {{"1", "1.0", "Neutral", "Above -40.0 dB"}}},
        {"1.5", {{-40, -40}, {-37, -38}}, {{"1", "1.5:1", "Compressor", "Above -40.0 dB"}}},
        {"0.98", {{-40, -40}, {-39.02f, -38}}, {{"1", "2.0:1", "Expander", "Above -40.0 dB"}}},
        // A flat top at 0 dB out is a limiter; the same flat segment elsewhere expands.
        {"limiter", {{-20, 0}, {0, 0}}, {{"1", "Infinite", "Compressor", "Above -20.0 dB"}}},
        {"flat below",
         {{-100, -80}, {-60, -80}, {0, -20}},
         {{"1", "1.0", "Neutral", "Above -60.0 dB"},
          {"2", "Infinite", "Expander", "Below -60.0 dB"}}},
        // Ratios read above one for both kinds.
        {"2:1 down", {{-40, -40}, {-38, -39}}, {{"1", "2.0:1", "Compressor", "Above -40.0 dB"}}},
        {"2:1 up", {{-40, -40}, {-39, -38}}, {{"1", "2.0:1", "Expander", "Above -40.0 dB"}}},
        {"3:1 down", {{-30, -30}, {0, -20}}, {{"1", "3.0:1", "Compressor", "Above -30.0 dB"}}},
        {"3:1 up", {{-80, -100}, {-60, -40}}, {{"1", "3.0:1", "Expander", "Above -80.0 dB"}}},
        // A gate below -60, unity to -20, 4:1 above: three segments, the top one first.
        {"three",
         {{-100, -100}, {-60, -90}, {-20, -20}, {0, -15}},
         {{"1", "4.0:1", "Compressor", "Above -20.0 dB"},
          {"2", "1.8:1", "Expander", "Below -20.0 dB"},
          {"3", "4.0:1", "Compressor", "Below -60.0 dB"}}},
        // Thresholds keep one decimal place.
        {"rounded", {{-30.26f, -30}, {0, -10}}, {{"1", "1.5:1", "Compressor", "Above -30.3 dB"}}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(CompressorExpanderList::MakeRows(c.points), c.rows) << c.what;
}

TEST(CompressorExpanderList, TheTableShowsTheRowsAndRefreshesInPlace) {
    auto list = qorcore::MakeIntrusive<CompressorExpanderList>();
    qorui::UI_MultiColumnTree& tree = *list->GetTree();
    list->SetCurve({{-100, -100}, {-20, -20}, {0, -10}});
    ASSERT_EQ(tree.CountRows(), 2u);
    EXPECT_EQ(tree.GetRowAt(0)->GetText(CompressorExpanderList::kColumnRatio), "2.0:1");
    EXPECT_EQ(tree.GetRowAt(1)->GetText(CompressorExpanderList::kColumnType), "Neutral");
    const qorui::UI_MultiColumnTreeRow* first = tree.GetRowAt(0);

    // The same number of segments: the rows stay and only their texts change.
    list->SetCurve({{-100, -100}, {-30, -30}, {0, 0}});
    ASSERT_EQ(tree.CountRows(), 2u);
    EXPECT_EQ(tree.GetRowAt(0), first);
    EXPECT_EQ(tree.GetRowAt(0)->GetText(CompressorExpanderList::kColumnRatio), "1.0");
    EXPECT_EQ(tree.GetRowAt(0)->GetText(CompressorExpanderList::kColumnThreshold),
              "Above -30.0 dB");

    list->SetCurve({{-100, -100}, {0, 0}});
    EXPECT_EQ(tree.CountRows(), 1u);
    EXPECT_EQ(list->GetRows(), CompressorExpanderList::MakeRows(list->GetCurve()));
    list->SetCurve({});
    EXPECT_EQ(tree.CountRows(), 0u);
}

TEST(CompressorExpanderList, BestSizeHoldsTheColumnsAndSixRows) {
    auto list = qorcore::MakeIntrusive<CompressorExpanderList>();
    qorui::UI_MultiColumnTreeHeaderRow& header = *list->GetTree()->GetHeaderRow();
    const auto best = list->GetBestSize();
    EXPECT_EQ(best.x, header.GetTotalWidth() + 20);
    EXPECT_EQ(best.y, header.GetDesiredHeight() + 6 * list->GetTree()->GetRowHeight() + 20);

    // The tree fills the list.
    list->SetFrame({5, 5, best.x, best.y});
    EXPECT_EQ(list->GetTree()->GetFrame(), (qorcore::RectT<float>{0, 0, best.x, best.y}));
    // A fitted column is as wide as the widest text it can hold, with its padding.
    header.FitColumnWidth(CompressorExpanderList::kColumnThreshold);
    const auto width = [](const char* text) {
        return qorui::control_drawing::MeasureText(text, qorui::control_drawing::GetControlFont())
            .width;
    };
    const float widest =
        std::max({width("Threshold"), width("Above -100.0 dB"), width("Below -100.0 dB")});
    EXPECT_EQ(header.GetColumnWidth(CompressorExpanderList::kColumnThreshold),
              std::ceil(widest + 2 * qorui::UI_MultiColumnTreeHeaderRow::kCellPadding));
}

TEST(CompressorExpanderList, RowsCannotBeSelected) {
    qorui::HeadlessWindow window(420, 220);
    auto list = qorcore::MakeIntrusive<CompressorExpanderList>();
    list->SetFrame({10, 10, 400, 200});
    window.AddNode(list);
    list->SetCurve({{-100, -100}, {-20, -20}, {0, -10}});
    const auto row = list->GetTree()->UI_LocalToGlobalF(list->GetTree()->GetRowRect(0).Center());
    window.Click(row.x, row.y);
    window.PressKey(qorui::KeyboardCode::kDown);
    EXPECT_EQ(list->GetTree()->GetSelectedRowIndex(), -1);
}

using GoldenParam = std::tuple<Skin, bool>;

class CompressorExpanderListGolden : public ::testing::TestWithParam<GoldenParam> {};

TEST_P(CompressorExpanderListGolden, LooksLikeItsGolden) {
    const auto [skin, enabled] = GetParam();
    qorui::skins::ScopedSkin look(skin);
    auto list = qorcore::MakeIntrusive<CompressorExpanderList>();
    const auto best = list->GetBestSize();
    qorui::HeadlessWindow window(best.x, best.y);
    window.SetBackgroundColor(qorui::skins::GetContentBackgroundColor());
    list->SetFrame({10, 10, best.x - 20, best.y - 20});
    window.AddNode(list);
    // A column too narrow for its texts cuts them with an ellipsis.
    list->GetTree()->GetHeaderRow()->SetColumnWidth(CompressorExpanderList::kColumnThreshold, 80);
    list->SetCurve({{-100, -100}, {-60, -90}, {-40, -90}, {-20, -20}, {0, -15}});
    list->UI_SetEnabled(enabled);
    window.RenderAll();
    const std::string name = std::string("compressor_expander_list_") +
                             (skin == Skin::kV7 ? "v7" : "classic") + (enabled ? "" : "_disabled");
    EXPECT_TRUE(qafui_testing::MatchesGolden(window.GetImage(), name));
}

INSTANTIATE_TEST_SUITE_P(Looks, CompressorExpanderListGolden,
                         ::testing::Values(GoldenParam{Skin::kClassic, true},
                                           GoldenParam{Skin::kV7, true},
                                           GoldenParam{Skin::kClassic, false}));

} // namespace
