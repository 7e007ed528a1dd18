// The colour view: its colour under its children, limited to 0..1, repainted when it changes.
#include "controls/color_view.hpp"
#include "platform/ui/headless_window.hpp"

#include <gtest/gtest.h>

#include <cmath>

using qoraudiofiltersui::ColorView;
using qorcore::ColorRGBA;
using qorui::HeadlessWindow;

namespace {

bool Near(const ColorRGBA& a, const ColorRGBA& b) {
    const float t = 1.5f / 255;
    return std::abs(a.red - b.red) <= t && std::abs(a.green - b.green) <= t &&
           std::abs(a.blue - b.blue) <= t;
}

TEST(ColorViewTest, FillsItselfUnderItsChildren) {
    HeadlessWindow window(100, 60);
    auto view = qorcore::MakeIntrusive<ColorView>();
    EXPECT_EQ(view->GetValue(), ColorView::GetDefaultValue());
    EXPECT_EQ(view->GetDefaultValue(), ColorRGBA(0, 0, 0, 1));
    view->SetFrame({10, 10, 60, 40});
    auto child = qorcore::MakeIntrusive<ColorView>();
    child->SetValue({1, 1, 1});
    child->SetFrame({10, 10, 20, 20});
    view->ChildPushBack(child);
    window.AddNode(view);
    view->SetValue({0.9f, 0.5f, 0.1f});
    window.Render();
    EXPECT_TRUE(Near(window.GetPixel(60, 40), ColorRGBA(0.9f, 0.5f, 0.1f)));
    EXPECT_TRUE(Near(window.GetPixel(25, 25), ColorRGBA(1, 1, 1))) << "the child on top";
    EXPECT_TRUE(Near(window.GetPixel(5, 5), window.GetBackgroundColor()));

    // Limited to 0..1; the same colour again repaints nothing.
    view->SetValue({2.0f, -1.0f, std::nanf(""), 0.5f});
    EXPECT_EQ(view->GetValue(), ColorRGBA(1, 0, 0, 0.5f));
    window.Render();
    view->SetValue({1.0f, 0.0f, 0.0f, 0.5f});
    EXPECT_TRUE(window.GetDirtyRegion().IsEmpty());
}

} // namespace
