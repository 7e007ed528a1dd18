// A small node tree rendered by the headless backend and compared with the goldens in
// tests/golden/ at 1x and 2x; then a partial repaint must give the same pixels as a full one.
#include "golden_image.hpp"
#include "platform/draw/penrig.hpp"
#include "platform/ui/headless_window.hpp"
#include "platform/ui/ui_sub_view.hpp"

#include <gtest/gtest.h>

#include <string>

using namespace qorui;
using qorcore::ColorRGBA;

namespace {

// A labelled box with a crisp frame and a level bar, drawn the way controls draw.
class LabelNode : public UI_Node {
public:
    LabelNode(std::string text, float level) : text_(std::move(text)), level_(level) {}

    void SetLevel(float level) {
        level_ = level;
        EmitInvalidate();
    }

    void UI_FocusChanged(bool) override { EmitInvalidate(); }

    void UI_Draw(Penrig* p) override {
        const RectT<float> b = GetBounds();
        p->FillRect(b, HasFocus() ? ColorRGBA(1.0f, 0.97f, 0.85f) : ColorRGBA(1, 1, 1));
        p->FrameRect(b, ColorRGBA(0.35f, 0.35f, 0.4f));
        p->FillRect({2, b.height - 6, (b.width - 4) * level_, 4}, ColorRGBA(0.2f, 0.6f, 0.3f));
        p->SetColor(ColorRGBA(0.1f, 0.1f, 0.1f));
        p->SetFont(penrig::Font(11));
        p->DrawText(text_, {4, 0, b.width - 8, b.height - 6}, penrig::HorizontalAlignment::kLeft);
        UI_Node::UI_Draw(p);
    }

private:
    std::string text_;
    float level_;
};

struct Scene {
    explicit Scene(float scale) : window(240, 120, scale) {
        window.SetBackgroundColor(ColorRGBA(0.9f, 0.9f, 0.92f));
        auto panel = qorcore::MakeIntrusive<UI_SubView>();
        panel->SetFrame({10, 10, 220, 100});
        panel->SetBackgroundColor(ColorRGBA(0.8f, 0.84f, 0.9f));
        panel->SetBorderColor(ColorRGBA(0.2f, 0.25f, 0.4f));
        const char* names[] = {"Threshold", "Ratio", "Attack (ms)", "A very long release label"};
        for (int i = 0; i < 4; ++i) {
            qorcore::IntrusivePtr<LabelNode> label(new LabelNode(names[i], 0.25f * float(i + 1)));
            label->SetFrame({8 + float(i % 2) * 104, 8 + float(i / 2) * 34, 100, 28});
            label->SetWantsKeyboardFocus(true);
            labels.push_back(label);
            panel->ChildPushBack(label);
        }
        // A child larger than its parent is clipped to it.
        auto clipped = qorcore::MakeIntrusive<UI_Container>();
        clipped->SetFrame({8, 76, 204, 16});
        clipped->SetBackgroundColor(ColorRGBA(0.3f, 0.3f, 0.35f));
        auto wide = qorcore::MakeIntrusive<UI_Container>();
        wide->SetFrame({150, 4, 200, 30});
        wide->SetBackgroundColor(ColorRGBA(0.9f, 0.5f, 0.1f));
        clipped->ChildPushBack(wide);
        panel->ChildPushBack(clipped);
        // A hidden node draws nothing.
        auto hidden = qorcore::MakeIntrusive<UI_Container>();
        hidden->SetFrame({0, 0, 220, 100});
        hidden->SetBackgroundColor(ColorRGBA(1, 0, 0));
        hidden->UI_SetVisible(false);
        panel->ChildPushBack(hidden);
        window.AddNode(panel);
    }

    HeadlessWindow window;
    std::vector<qorcore::IntrusivePtr<LabelNode>> labels;
};

class WindowGolden : public ::testing::TestWithParam<float> {};

} // namespace

TEST_P(WindowGolden, NodeTreeRendersLikeItsGolden) {
    Scene scene(GetParam());
    scene.labels[1]->UI_RequestFocus();
    scene.window.Render();
    EXPECT_EQ(scene.window.GetImage().GetPixelWidth(), int(240 * GetParam()));
    EXPECT_TRUE(qafui_testing::MatchesGolden(
        scene.window.GetImage(), "window_nodes_" + std::to_string(int(GetParam())) + "x"));
}

TEST_P(WindowGolden, PartialRepaintMatchesAFullRepaint) {
    Scene partial(GetParam());
    partial.window.Render();
    partial.labels[2]->SetLevel(0.9f);
    partial.window.MouseDown(30, 40); // focus moves to the first label
    const auto painted = partial.window.Render();
    EXPECT_EQ(painted.size(), 2u);

    Scene full(GetParam());
    full.labels[2]->SetLevel(0.9f);
    full.labels[0]->UI_RequestFocus();
    full.window.RenderAll();
    const auto& a = partial.window.GetImage();
    const auto& b = full.window.GetImage();
    int different = 0;
    for (int y = 0; y < a.GetPixelHeight(); ++y)
        for (int x = 0; x < a.GetPixelWidth(); ++x)
            different += a.GetRawPixel(x, y) != b.GetRawPixel(x, y);
    EXPECT_EQ(different, 0);
}

INSTANTIATE_TEST_SUITE_P(Scales, WindowGolden, ::testing::Values(1.0f, 2.0f),
                         [](const auto& info) { return info.param == 1.0f ? "1x" : "2x"; });
