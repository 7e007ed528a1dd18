// The library: its lifetime (counted Initialize and Terminate, the objects it makes and the
// libraries it starts), its widget names and the adapter factory's hook; its resources by name
// and type from a folder before those embedded in it, the scripts an editor chooses for each
// look, and images from PNG resources.
#include "framework/editor_resources.hpp"
#include "framework/exports.hpp"
#include "framework/image_provider.hpp"
#include "framework/library.hpp"
#include "framework/resource_manager.hpp"
#include "platform/draw/cairo_supplier.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <unistd.h>
#include <vector>

using namespace qoraudiofiltersui;

namespace {

class ResourceFolder : public ::testing::Test {
protected:
    ResourceFolder() { std::filesystem::create_directories(folder); }
    ~ResourceFolder() override { std::filesystem::remove_all(folder); }
    void Write(const std::string& file, const std::string& text) {
        std::ofstream(folder / file, std::ios::binary) << text;
    }
    std::string Read(const ResourceManager& resources, const std::string& name) {
        std::vector<char> bytes{'x'};
        const bool found = resources.GetBinary(name, "tss", bytes);
        EXPECT_EQ(found, !bytes.empty()) << name;
        return {bytes.begin(), bytes.end()};
    }

    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() /
        ("qafui-resources-" + std::to_string(::getpid()) + "-" +
         ::testing::UnitTest::GetInstance()->current_test_info()->name());
};

TEST_F(ResourceFolder, LookupsIgnoreCaseOfNamesAndTypes) {
    Write("PARAMETRICEQ.mrl", "sheet ParametricEQ {}");
    Write("PARAMETRICEQ.TSS", "layout classic");
    ResourceManager resources(ModuleHandle{"self"}, folder);
    std::vector<char> bytes;
    ASSERT_TRUE(resources.GetBinary("ParametricEQ", "MRL", bytes));
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), "sheet ParametricEQ {}");
    EXPECT_EQ(Read(resources, "parametriceq"), "layout classic");
    EXPECT_FALSE(resources.HasBinary("parametriceq", "xml"));
    EXPECT_EQ(Read(resources, "Missing"), "") << "a miss empties the bytes";
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
    Write(name + ".TSS", "override");
    EXPECT_EQ(Read(ResourceManager(ModuleHandle{}), name), "embedded");
    EXPECT_EQ(Read(ResourceManager(ModuleHandle{}, folder), name), "override");
    EXPECT_EQ(Read(ResourceManager(ModuleHandle{}, folder / "does-not-exist"), name), "embedded");
}

TEST_F(ResourceFolder, EditorsChooseTheirScriptsForTheLook) {
    Write("PARAMETRICEQ.mrl", "sheet");
    Write("PARAMETRICEQ.tss", "classic layout");
    Write("PARAMETRICEQ.V7.tss", "v7 layout");
    Write("STUDIOREVERB.tss", "layout");
    Write("ANALOGDELAY.mrl", "a sheet that must not be read");
    Write("ANALOGDELAY.tss", "layout");
    ResourceManager resources(ModuleHandle{}, folder);
    const struct {
        const char* name;
        bool hasSheet, newerLook;
        const char *sheet, *layout, *layoutName;
    } cases[] = {
        // There are no V7 sheets; without a V7 variant the newer look takes the plain layout.
        {"parametriceq", true, true, "sheet", "v7 layout", "parametriceq.V7"},
        {"parametriceq", true, false, "sheet", "classic layout", "parametriceq"},
        {"StudioReverb", true, true, "", "layout", "StudioReverb"}, // a missing sheet is no error
        {"AnalogDelay", false, false, "", "layout", "AnalogDelay"}, // a layout-only editor
        {"Nothing", true, true, "", "", ""},
    };
    for (const auto& c : cases) {
        const EditorResources chosen =
            ChooseEditorResources(&resources, c.name, c.hasSheet, c.newerLook);
        EXPECT_EQ(chosen.sheetText, c.sheet) << c.name << c.newerLook;
        EXPECT_EQ(chosen.layoutText, c.layout) << c.name << c.newerLook;
        EXPECT_EQ(chosen.layoutName, c.layoutName) << c.name << c.newerLook;
    }
    EXPECT_TRUE(ChooseEditorResources(nullptr, "ParametricEQ", true, true).layoutName.empty());
}

TEST_F(ResourceFolder, ImagesComeFromPNGResourcesAndBadDataIsAMissingImage) {
    qorui::penrig::CairoSupplier supplier(1.0f);
    supplier.CreateImage(4, 3)->WritePNG((folder / "SP_ADD_SM_N_D.png").string());
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

} // namespace

namespace {

/// Records the calls into the libraries started with this one, and leaves the library as it
/// found it.
class LibraryTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(GetLibraryUseCount(), 0u);
        SetLibraryDependencies({[this] { log.push_back("filters+"); },
                                [this](const qorui::penrig::SupplierInterface* s) {
                                    log.push_back(s == &first ? "media+first" : "media+other");
                                },
                                [this] { log.push_back("filters-"); },
                                [this] {
                                    log.push_back("media-");
                                }});
    }
    void TearDown() override {
        while (GetLibraryUseCount() != 0 && GetLibraryUseCount() < 100)
            Terminate();
        SetLibraryDependencies({});
    }
    /// The draw supplier, the resource manager and the image provider.
    static std::vector<const void*> Objects() {
        return {GetLibraryDrawSupplier(), GetLibraryResourceManager(), GetLibraryImageProvider()};
    }
    using Log = std::vector<std::string>;

    qorui::penrig::CairoSupplier first{1.0f};
    qorui::penrig::CairoSupplier second{2.0f};
    Log log;
    const std::vector<const void*> none{nullptr, nullptr, nullptr};
};

} // namespace

TEST_F(LibraryTest, InitializeMakesTheThreeObjectsAndTerminateUndoesThemInTheSameOrder) {
    EXPECT_EQ(Objects(), none);
    Initialize(&first);
    EXPECT_EQ(GetLibraryUseCount(), 1u);
    EXPECT_EQ(GetLibraryDrawSupplier(), &first);
    ASSERT_NE(GetLibraryResourceManager(), nullptr);
    ASSERT_NE(GetLibraryImageProvider(), nullptr);
    EXPECT_EQ(GetLibraryImageProvider()->GetResourceManager(), GetLibraryResourceManager());
    EXPECT_EQ(GetLibraryImageProvider()->GetDrawSupplier(), &first);
    EXPECT_FALSE(GetLibraryResourceManager()->GetModule().path.empty())
        << "the module is found from the library's own code";
    Terminate();
    EXPECT_EQ(GetLibraryUseCount(), 0u);
    EXPECT_EQ(Objects(), none);
    EXPECT_EQ(log, (Log{"filters+", "media+first", "filters-", "media-"}));
}

TEST_F(LibraryTest, NestedInitializeOnlyCountsAndKeepsTheFirstSupplier) {
    Initialize(&first);
    const auto objects = Objects();
    Initialize(&second);
    EXPECT_EQ(GetLibraryUseCount(), 2u);
    EXPECT_EQ(Objects(), objects);
    Terminate();
    EXPECT_EQ(GetLibraryUseCount(), 1u);
    EXPECT_EQ(Objects(), objects) << "all three objects stay alive";
    EXPECT_EQ(log, (Log{"filters+", "media+first"})) << "the libraries are started once";
    Terminate();
    EXPECT_EQ(log.size(), 4u);
}

TEST_F(LibraryTest, TerminateWithoutInitializeWrapsTheCountAndTearsNothingDown) {
    Terminate();
    EXPECT_EQ(GetLibraryUseCount(), 4294967295u);
    EXPECT_TRUE(log.empty()) << "no library is terminated";
    // Every later Initialize only adds to the count; this one wraps it back to 0.
    Initialize(&first);
    EXPECT_EQ(GetLibraryUseCount(), 0u);
    EXPECT_EQ(GetLibraryDrawSupplier(), nullptr) << "nothing was started";
    EXPECT_TRUE(log.empty());
}

TEST_F(LibraryTest, ALaterInitializeRebuildsEverything) {
    Initialize(&first);
    Terminate();
    UIBuilderInitialize(&second);
    EXPECT_EQ(GetLibraryDrawSupplier(), &second);
    EXPECT_NE(GetLibraryResourceManager(), nullptr);
    UIBuilderTerminate();
    EXPECT_EQ(GetLibraryUseCount(), 0u);
    EXPECT_EQ(log, (Log{"filters+", "media+first", "filters-", "media-", "filters+", "media+other",
                        "filters-", "media-"}));
}

TEST(LibraryWidgets, AvailableWidgetNamesAppendAfterWhatIsThere) {
    std::vector<vorlen::name_t> names{vorlen::name_t("row"), vorlen::name_t("wex_edit_number")};
    GetAvailableWidgetNames(names);
    std::vector<std::string> texts;
    for (auto name : names)
        texts.push_back(name.c_str());
    EXPECT_EQ(texts,
              (std::vector<std::string>{"row", "wex_edit_number", "wex_edit_number",
                                        "wex_color_view", "wex_comp_exp_list", "wex_curve_editor",
                                        "qor_level_meter", "wex_picture_toggle_button"}));
}

TEST(LibraryWidgets, TheFactoryPassesUnknownNamesToTheHook) {
    const ClientAdapterFactory* factory = GetAdapterFactory();
    ASSERT_NE(factory, nullptr);
    EXPECT_EQ(factory, GetAdapterFactory()) << "one static object";
    const vorlen::dictionary_t arguments;
    const auto& token = *reinterpret_cast<const qormarltess::FactoryToken*>(&arguments);
    auto ask = [&] {
        return (*factory)(vorlen::name_t("my_widget"), arguments, nullptr, token);
    };
    auto fake = reinterpret_cast<qormarltess::UI_QORClientWidgetTessAdapter*>(0x1000);

    EXPECT_EQ(ask(), nullptr) << "no hook: null";
    std::vector<std::string> asked;
    const ClientAdapterFactory hook = [&](const vorlen::name_t& name, const vorlen::dictionary_t&,
                                          qorui::UI_Node*, const qormarltess::FactoryToken&) {
        asked.push_back(name.c_str());
        return fake;
    };
    SetClientAdapterFactoryProc(&hook);
    EXPECT_EQ(ask(), fake);
    EXPECT_EQ(asked, std::vector<std::string>{"my_widget"});
    // That the library's own names never reach the hook is shown where a real view builds them
    // (the adapters' tests): they need a live token.

    const ClientAdapterFactory empty;
    SetClientAdapterFactoryProc(&empty);
    EXPECT_THROW(ask(), std::bad_function_call);
    SetClientAdapterFactoryProc(nullptr);
    EXPECT_EQ(GetClientAdapterFactoryProc(), nullptr);
    EXPECT_EQ(ask(), nullptr);
}
