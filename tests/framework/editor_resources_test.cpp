#include "framework/editor_resources.hpp"
#include "framework/image_provider.hpp"
#include "framework/resource_manager.hpp"
#include "platform/draw/cairo_supplier.hpp"

#include <gtest/gtest.h>

#include <algorithm>

#include <filesystem>
#include <fstream>
#include <unistd.h>

using namespace qoraudiofiltersui;

namespace {

class ResourceFolder : public ::testing::Test {
protected:
    void SetUp() override {
        folder = std::filesystem::temp_directory_path() /
                 ("qafui-resources-" + std::to_string(::getpid()) + "-" +
                  ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::create_directories(folder);
    }
    void TearDown() override { std::filesystem::remove_all(folder); }
    void Write(const std::string& file, const std::string& text) {
        std::ofstream(folder / file, std::ios::binary) << text;
    }

    std::filesystem::path folder;
};

} // namespace

TEST_F(ResourceFolder, LookupsIgnoreCaseOfNamesAndTypes) {
    Write("PARAMETRICEQ.mrl", "sheet ParametricEQ {}");
    Write("PARAMETRICEQ.TSS", "layout classic");
    ResourceManager resources(ModuleHandle{"self"}, folder);
    std::vector<char> bytes{'x'};
    ASSERT_TRUE(resources.GetBinary("ParametricEQ", "MRL", bytes));
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), "sheet ParametricEQ {}");
    EXPECT_TRUE(resources.HasBinary("parametriceq", "tss"));
    EXPECT_FALSE(resources.HasBinary("parametriceq", "xml"));
    EXPECT_FALSE(resources.GetBinary("Missing", "tss", bytes));
    EXPECT_TRUE(bytes.empty());
    // The folder's names join those embedded in the library.
    const auto names = resources.GetResourceDataNames("MRL");
    EXPECT_NE(std::find(names.begin(), names.end(), "PARAMETRICEQ"), names.end());
    EXPECT_NE(std::find(names.begin(), names.end(), "VOCALENHANCER"), names.end());
    EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
}

TEST_F(ResourceFolder, TheOverrideFolderComesBeforeEmbeddedResources) {
    // The table is process-wide: a fresh name for every run of the test.
    static int run = 0;
    const std::string name = "EmbeddedTest" + std::to_string(++run);
    ASSERT_TRUE(ResourceManager::RegisterEmbeddedResource(name, "tss", "embedded"));
    EXPECT_FALSE(ResourceManager::RegisterEmbeddedResource(name, "TSS", "again"));
    EXPECT_FALSE(ResourceManager::RegisterEmbeddedResource("", "tss", "nameless"));
    ResourceManager withoutFolder(ModuleHandle{});
    std::vector<char> bytes;
    ASSERT_TRUE(withoutFolder.GetBinary(name, "tss", bytes));
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), "embedded");

    Write(name + ".TSS", "override");
    ResourceManager withFolder(ModuleHandle{}, folder);
    ASSERT_TRUE(withFolder.GetBinary(name, "tss", bytes));
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), "override");

    ResourceManager missingFolder(ModuleHandle{}, folder / "does-not-exist");
    EXPECT_TRUE(missingFolder.HasBinary(name, "tss"));
}

TEST_F(ResourceFolder, TheNewerLookPrefersTheV7Layout) {
    Write("PARAMETRICEQ.mrl", "sheet");
    Write("PARAMETRICEQ.tss", "classic layout");
    Write("PARAMETRICEQ.V7.tss", "v7 layout");
    ResourceManager resources(ModuleHandle{}, folder);

    EditorResources newer = ChooseEditorResources(&resources, "parametriceq", true, true);
    EXPECT_EQ(newer.layoutText, "v7 layout");
    EXPECT_EQ(newer.layoutName, "parametriceq.V7");
    EXPECT_EQ(newer.sheetText, "sheet") << "there are no V7 sheets";

    EditorResources older = ChooseEditorResources(&resources, "parametriceq", true, false);
    EXPECT_EQ(older.layoutText, "classic layout");
    EXPECT_EQ(older.layoutName, "parametriceq");
}

TEST_F(ResourceFolder, WithoutAV7VariantTheNewerLookTakesThePlainLayout) {
    Write("DYNAMICS.tss", "layout");
    ResourceManager resources(ModuleHandle{}, folder);
    EditorResources chosen = ChooseEditorResources(&resources, "Dynamics", true, true);
    EXPECT_EQ(chosen.layoutText, "layout");
    EXPECT_TRUE(chosen.sheetText.empty()) << "a missing sheet is no error";
}

TEST_F(ResourceFolder, ALayoutOnlyEditorNeverReadsASheet) {
    Write("ANALOGDELAY.mrl", "a sheet that must not be read");
    Write("ANALOGDELAY.tss", "layout");
    ResourceManager resources(ModuleHandle{}, folder);
    EditorResources chosen = ChooseEditorResources(&resources, "AnalogDelay", false, false);
    EXPECT_TRUE(chosen.sheetText.empty());
    EXPECT_EQ(chosen.layoutText, "layout");
}

TEST_F(ResourceFolder, UnknownNamesAndNoManagerGiveEmptyTexts) {
    ResourceManager resources(ModuleHandle{}, folder);
    EditorResources chosen = ChooseEditorResources(&resources, "Nothing", true, true);
    EXPECT_TRUE(chosen.sheetText.empty());
    EXPECT_TRUE(chosen.layoutText.empty());
    EXPECT_TRUE(chosen.layoutName.empty());
    EXPECT_TRUE(ChooseEditorResources(nullptr, "ParametricEQ", true, true).layoutName.empty());
}

TEST_F(ResourceFolder, ImagesComeFromPNGResourcesAndBadDataIsAMissingImage) {
    qorui::penrig::CairoSupplier supplier(1.0f);
    auto image = supplier.CreateImage(4, 3);
    image->WritePNG((folder / "SP_ADD_SM_N_D.png").string());
    Write("BROKEN.png", "not a png");
    ResourceManager resources(ModuleHandle{}, folder);
    ImageProvider provider(&resources, &supplier);
    auto loaded = provider.GetImage("sp_add_sm_n_d");
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->GetPixelWidth(), 4);
    EXPECT_FALSE(provider.GetImage("BROKEN"));
    EXPECT_FALSE(provider.GetImage("ABSENT"));
    EXPECT_FALSE(ImageProvider(nullptr, &supplier).GetImage("SP_ADD_SM_N_D"));
}
