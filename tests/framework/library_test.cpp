#include "framework/exports.hpp"
#include "framework/image_provider.hpp"
#include "framework/library.hpp"
#include "framework/resource_manager.hpp"
#include "platform/draw/cairo_supplier.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

using namespace qoraudiofiltersui;

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

    qorui::penrig::CairoSupplier first{1.0f};
    qorui::penrig::CairoSupplier second{2.0f};
    std::vector<std::string> log;
};

} // namespace

TEST_F(LibraryTest, InitializeMakesTheThreeObjectsAndTerminateUndoesThemInTheSameOrder) {
    EXPECT_EQ(GetLibraryDrawSupplier(), nullptr);
    EXPECT_EQ(GetLibraryResourceManager(), nullptr);
    EXPECT_EQ(GetLibraryImageProvider(), nullptr);
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
    EXPECT_EQ(GetLibraryDrawSupplier(), nullptr);
    EXPECT_EQ(GetLibraryResourceManager(), nullptr);
    EXPECT_EQ(GetLibraryImageProvider(), nullptr);
    EXPECT_EQ(log, (std::vector<std::string>{"filters+", "media+first", "filters-", "media-"}));
}

TEST_F(LibraryTest, NestedInitializeOnlyCountsAndKeepsTheFirstSupplier) {
    Initialize(&first);
    ResourceManager* manager = GetLibraryResourceManager();
    Initialize(&second);
    EXPECT_EQ(GetLibraryUseCount(), 2u);
    EXPECT_EQ(GetLibraryDrawSupplier(), &first);
    Terminate();
    EXPECT_EQ(GetLibraryUseCount(), 1u);
    EXPECT_EQ(GetLibraryResourceManager(), manager) << "all three objects stay alive";
    EXPECT_NE(GetLibraryImageProvider(), nullptr);
    EXPECT_EQ(GetLibraryDrawSupplier(), &first);
    EXPECT_EQ(log, (std::vector<std::string>{"filters+", "media+first"}))
        << "the libraries are started once";
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
    EXPECT_EQ(log, (std::vector<std::string>{"filters+", "media+first", "filters-", "media-",
                                             "filters+", "media+other", "filters-", "media-"}));
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
    auto fake = reinterpret_cast<qormarltess::UI_QORClientWidgetTessAdapter*>(0x1000);

    EXPECT_EQ((*factory)(vorlen::name_t("my_widget"), arguments, nullptr, token), nullptr)
        << "no hook: null";
    std::vector<std::string> asked;
    const ClientAdapterFactory hook = [&](const vorlen::name_t& name, const vorlen::dictionary_t&,
                                          qorui::UI_Node*, const qormarltess::FactoryToken&) {
        asked.push_back(name.c_str());
        return fake;
    };
    SetClientAdapterFactoryProc(&hook);
    EXPECT_EQ((*factory)(vorlen::name_t("my_widget"), arguments, nullptr, token), fake);
    EXPECT_EQ(asked, std::vector<std::string>{"my_widget"});
    // That the library's own names never reach the hook is shown where a real view builds them
    // (the adapters' tests): they need a live token.

    const ClientAdapterFactory empty;
    SetClientAdapterFactoryProc(&empty);
    EXPECT_THROW((*factory)(vorlen::name_t("my_widget"), arguments, nullptr, token),
                 std::bad_function_call);
    SetClientAdapterFactoryProc(nullptr);
    EXPECT_EQ(GetClientAdapterFactoryProc(), nullptr);
    EXPECT_EQ((*factory)(vorlen::name_t("my_widget"), arguments, nullptr, token), nullptr);
}
