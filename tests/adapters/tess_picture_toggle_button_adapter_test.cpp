// "wex_picture_toggle_button" in layouts: its faces by image name, its state from the cell
// without a write back, and a press written to the cell.
#include "adapter_scene.hpp"

#include "adapters/tess_picture_toggle_button_adapter.hpp"
#include "platform/draw/image.hpp"

#include <gtest/gtest.h>

#include <map>

namespace {

using namespace adapter_testing;
using qoraudiofiltersui::PictureToggleButton;

const char* const kToggleSheet = R"(sheet Eq {
interface:
    low2ndorder: true;
    high2ndorder: false;
})";

const char* const kToggleLayout = R"(layout Eq { view row(margin: 4, spacing: 4) {
    wex_picture_toggle_button(identifier: 'Low', bind: @low2ndorder,
                              off_image: 'LowShelf_FirstOrder_Sm',
                              on_image: 'LowShelf_SecondOrder_Sm');
    wex_picture_toggle_button(identifier: 'High', bind: @high2ndorder,
                              off_image: @HighShelf_FirstOrder_Sm,
                              on_image: @HighShelf_SecondOrder_Sm);
    wex_picture_toggle_button(identifier: 'Bare');
} })";

/// The faces the engine's image supply knows, by name.
std::map<std::string, qorcore::IntrusivePtr<qorui::penrig::Image>>& Faces() {
    static std::map<std::string, qorcore::IntrusivePtr<qorui::penrig::Image>> faces;
    if (faces.empty())
        for (const char* name : {"LowShelf_FirstOrder_Sm", "LowShelf_SecondOrder_Sm",
                                 "HighShelf_FirstOrder_Sm", "HighShelf_SecondOrder_Sm"})
            faces[name] = qorui::penrig::Image::Create(20, 16, 1.0f);
    return faces;
}

struct ToggleScene : AdapterScene {
    ToggleScene()
        : AdapterScene(kToggleSheet, kToggleLayout, [](qormarltess::UI_Tess& engine) {
              engine.SetImageSupplyFunction([](const std::string& name) {
                  const auto found = Faces().find(name);
                  return found == Faces().end() ? nullptr : found->second;
              });
          }) {}
};

TEST(TessPictureToggleButtonAdapter, FacesByNameAndTheStateFromTheCell) {
    ToggleScene scene;
    auto& low = scene.As<PictureToggleButton>("Low");
    EXPECT_EQ(low.GetNormalImage(), Faces()["LowShelf_FirstOrder_Sm"].get());
    EXPECT_EQ(low.GetDownImage(), Faces()["LowShelf_SecondOrder_Sm"].get());
    auto& high = scene.As<PictureToggleButton>("High");
    EXPECT_EQ(high.GetDownImage(), Faces()["HighShelf_SecondOrder_Sm"].get())
        << "an image named with @ works the same";
    EXPECT_EQ(low.GetFrame().Size(), (qorcore::PointT<float>{20, 16})) << "as large as its faces";
    EXPECT_EQ(scene.Control("Bare").GetFrame().width, 22.0f) << "without faces, a default size";

    // The state at creation comes from the cell, and nothing goes back.
    EXPECT_TRUE(low.GetState());
    EXPECT_FALSE(high.GetState());
    std::vector<any_regular_t> writes;
    auto watch = scene.sheet->monitor_value(vorlen::name_t("low2ndorder"),
                                            [&](const any_regular_t& v) { writes.push_back(v); });
    writes.clear();
    scene.Set("high2ndorder", any_regular_t(true));
    EXPECT_TRUE(high.GetState());
    EXPECT_TRUE(writes.empty());
    watch.disconnect();
}

TEST(TessPictureToggleButtonAdapter, APressWritesTheNewState) {
    ToggleScene scene;
    auto& low = scene.As<PictureToggleButton>("Low");
    scene.Click("Low");
    EXPECT_FALSE(low.GetState());
    EXPECT_EQ(scene.Get("low2ndorder"), any_regular_t(false));
    scene.window->AdvanceTime(1.0);
    scene.Click("Low");
    EXPECT_EQ(scene.Get("low2ndorder"), any_regular_t(true));
    scene.Click("Bare");
    EXPECT_TRUE(scene.As<PictureToggleButton>("Bare").GetState()) << "unbound, it still toggles";
}

} // namespace
