// "wex_picture_toggle_button" in layouts: its faces by image name, its state from the cell
// without a write back, and a press written to the cell.
#include "adapter_scene.hpp"

#include "adapters/tess_picture_toggle_button_adapter.hpp"
#include "platform/draw/image.hpp"
#include "platform/draw/penrig.hpp"

#include <gtest/gtest.h>

#include <map>

namespace {

using adapter_testing::AdapterScene;
using adapter_testing::FailureOf;
using qoraudiofiltersui::PictureToggleButton;
using vorlen::any_regular_t;
using vorlen::name_t;

const char* const kSheet = R"(sheet Eq {
interface:
    low2ndorder: true;
    high2ndorder: false;
    gain: 3;
})";

const char* const kLayout = R"(layout Eq { view row(margin: 4, spacing: 4) {
    wex_picture_toggle_button(identifier: 'Low', bind: @low2ndorder,
                              off_image: 'LowShelf_FirstOrder_Sm',
                              on_image: 'LowShelf_SecondOrder_Sm');
    wex_picture_toggle_button(identifier: 'High', bind: @high2ndorder,
                              off_image: @HighShelf_FirstOrder_Sm,
                              on_image: @HighShelf_SecondOrder_Sm);
    wex_picture_toggle_button(identifier: 'Bare');
} })";

/// An image supply that knows the faces by name and remembers what it was asked.
struct Faces {
    std::map<std::string, qorcore::IntrusivePtr<qorui::penrig::Image>> images;
    std::vector<std::string> asked;

    Faces() {
        for (const char* name : {"LowShelf_FirstOrder_Sm", "LowShelf_SecondOrder_Sm",
                                 "HighShelf_FirstOrder_Sm", "HighShelf_SecondOrder_Sm"}) {
            auto image = qorui::penrig::Image::Create(20, 16, 1.0f);
            images[name] = image;
        }
    }
    void Install(qormarltess::UI_Tess& engine) {
        engine.SetImageSupplyFunction([this](const std::string& name) {
            asked.push_back(name);
            const auto found = images.find(name);
            return found == images.end() ? nullptr : found->second;
        });
    }
};

TEST(TessPictureToggleButtonAdapter, FacesByNameAndTheStateFromTheCell) {
    Faces faces;
    std::vector<any_regular_t> writes;
    AdapterScene scene(kSheet, kLayout, [&](qormarltess::UI_Tess& e) { faces.Install(e); });
    auto& low = scene.As<PictureToggleButton>("Low");
    EXPECT_EQ(low.GetNormalImage(), faces.images["LowShelf_FirstOrder_Sm"].get());
    EXPECT_EQ(low.GetDownImage(), faces.images["LowShelf_SecondOrder_Sm"].get());
    auto& high = scene.As<PictureToggleButton>("High");
    EXPECT_EQ(high.GetDownImage(), faces.images["HighShelf_SecondOrder_Sm"].get())
        << "an image named with @ works the same";
    EXPECT_EQ(low.GetFrame().width, 20.0f) << "as large as its faces";
    EXPECT_EQ(low.GetFrame().height, 16.0f);
    EXPECT_EQ(scene.Control("Bare").GetFrame().width, 22.0f) << "without faces, a default size";

    // The state at creation comes from the cell, and nothing goes back.
    EXPECT_TRUE(low.GetState());
    EXPECT_FALSE(high.GetState());
    auto watch = scene.sheet->monitor_value(name_t("low2ndorder"),
                                            [&](const any_regular_t& v) { writes.push_back(v); });
    writes.clear();
    scene.Set("high2ndorder", any_regular_t(true));
    EXPECT_TRUE(high.GetState());
    EXPECT_TRUE(writes.empty());
    watch.disconnect();
}

TEST(TessPictureToggleButtonAdapter, APressWritesTheNewState) {
    Faces faces;
    AdapterScene scene(kSheet, kLayout, [&](qormarltess::UI_Tess& e) { faces.Install(e); });
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

TEST(TessPictureToggleButtonAdapter, ANonBooleanCellFails) {
    const std::string wrong = FailureOf(kSheet, "layout L { view row() { "
                                                "wex_picture_toggle_button(bind: @gain); } }");
    EXPECT_NE(wrong.find("bad_cast: double -> bool"), std::string::npos) << wrong;
}

} // namespace
