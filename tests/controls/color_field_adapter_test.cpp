// Colour fields from node archives: the class's own section, the shared control and node
// sections, reports of bad values, and the one adapter of the library.
#include "controls/color_field_adapter.hpp"
#include "platform/archive/node_archive_writer.hpp"
#include "platform/archive/ui_node_builder.hpp"
#include "platform/dialogs/color_picker_dialog.hpp"
#include "platform/ui/headless_window.hpp"
#include "platform/ui/modal_testing.hpp"

#include <gtest/gtest.h>

using namespace qoraudiofiltersui;
using namespace qafui_testing::archive;
using qorcore::IntrusivePtr;

namespace {

std::string Field(const std::string& id, float left, const std::string& ownPairs,
                  const std::string& controlPairs = {}, const std::string& nodePairs = {}) {
    return Node("qoraudiofiltersui::ColorField",
                {Section("qoraudiofiltersui::ColorField", ownPairs),
                 Section("qorui::ui::UI_InteractiveControlView"),
                 Section("qorui::ui::UI_ControlView", controlPairs), SubViewSection(),
                 NodeSection(id, left, 10, 30, 20, nodePairs)});
}

struct Loaded {
    IntrusivePtr<qorui::UI_Node> root;
    qorui::UI_NodeBuilder::NodeMap nodes;
    qorui::NodeArchiveReport report;

    ColorField* Get(const std::string& id) { return dynamic_cast<ColorField*>(nodes[id].get()); }
};

Loaded Load(const std::vector<std::string>& fields) {
    GetColorFieldAdapter();
    Loaded loaded;
    loaded.root = qorui::UI_NodeBuilder::LoadViewFromXMLText(
        Document(Node("qorui::ui::UI_SubView",
                      {SubViewSection(fields), NodeSection("Root", 0, 0, 200, 60)})),
        {}, &loaded.nodes, {}, &loaded.report);
    return loaded;
}

TEST(ColorFieldAdapterTest, ArchivedFieldsTakeTheirOwnAndTheSharedSections) {
    Loaded loaded = Load({Field("Locked", 10, Pair("allowUserColorChange", Bool(false))),
                          Field("Plain", 50, {}, Pair("enabled", Bool(false))),
                          Field("ByInt", 90, Pair("allowUserColorChange", Int(0))),
                          Field("Open", 130, Pair("allowUserColorChange", Bool(true)), {},
                                Pair("tooltip", UStr("($$$/qafui/Test/ColorTip=Curve colour)")))});
    ASSERT_TRUE(loaded.root);
    EXPECT_TRUE(loaded.report.diagnostics.empty()) << loaded.report.diagnostics.front().path << ": "
                                                   << loaded.report.diagnostics.front().message;
    ASSERT_EQ(loaded.root->GetChildCount(), 4u);

    ColorField* locked = loaded.Get("Locked");
    ASSERT_NE(locked, nullptr);
    EXPECT_FALSE(locked->GetAllowUserColorChange());
    EXPECT_EQ(locked->GetFrame(), (qorcore::RectT<float>{10, 10, 30, 20}));
    ColorField* plain = loaded.Get("Plain");
    ASSERT_NE(plain, nullptr);
    EXPECT_TRUE(plain->GetAllowUserColorChange()) << "an absent key keeps the default";
    EXPECT_TRUE(plain->IsDisabled());
    ASSERT_NE(loaded.Get("ByInt"), nullptr);
    EXPECT_FALSE(loaded.Get("ByInt")->GetAllowUserColorChange());
    ColorField* open = loaded.Get("Open");
    ASSERT_NE(open, nullptr);
    EXPECT_TRUE(open->GetAllowUserColorChange());
    EXPECT_EQ(open->GetToolTipText(), "Curve colour");

    // The loaded fields work: the open one opens the picker, the locked one only selects.
    qorui::HeadlessWindow window(200, 60);
    window.AddNode(loaded.root);
    int opened = 0;
    qorui::testing::ScopedModalResponder responder([&](qorui::UI_ModalOverlay& overlay) {
        ++opened;
        dynamic_cast<sharedui::ColorPickerDialog&>(overlay).ChangeColor({1, 1, 0});
        overlay.EndModal(sharedui::ColorPickerDialog::kResponseAccept);
    });
    window.Click(140, 20);
    EXPECT_EQ(opened, 1);
    EXPECT_EQ(open->GetValue(), qorcore::ColorRGBA(1, 1, 0));
    window.AdvanceTime(1.0);
    window.Click(20, 20);
    EXPECT_EQ(opened, 1);
    EXPECT_TRUE(locked->IsSelected());
}

TEST(ColorFieldAdapterTest, AValueOfTheWrongKindIsReportedAndIgnored) {
    Loaded loaded = Load({Field("Odd", 10, Pair("allowUserColorChange", UStr("no")))});
    ColorField* odd = loaded.Get("Odd");
    ASSERT_NE(odd, nullptr);
    EXPECT_TRUE(odd->GetAllowUserColorChange());
    ASSERT_EQ(loaded.report.diagnostics.size(), 1u);
    const qorui::NodeArchiveDiagnostic& d = loaded.report.diagnostics.front();
    EXPECT_NE(d.path.find("allowUserColorChange"), std::string::npos) << d.path;
    EXPECT_NE(d.message.find("boolean"), std::string::npos) << d.message;
    EXPECT_GT(d.line, 1);
}

TEST(ColorFieldAdapterTest, TheLibraryHasOneAdapterAndTheClassOneEntry) {
    ColorFieldAdapter* adapter = GetColorFieldAdapter();
    ASSERT_NE(adapter, nullptr);
    EXPECT_EQ(GetColorFieldAdapter(), adapter);
    EXPECT_TRUE(adapter->IsRegistered());
    EXPECT_TRUE(adapter->Register()) << "a second call changes nothing";
    EXPECT_TRUE(qorui::UI_NodeBuilder::IsAdapterRegistered(ColorFieldAdapter::kClassName));
    ColorFieldAdapter another;
    EXPECT_FALSE(another.Register()) << "the class name is taken";
    EXPECT_FALSE(another.IsRegistered());

    // A node supplied in place of an archived field keeps its own settings.
    auto stranger = qorcore::MakeIntrusive<qorui::UI_Node>();
    qorui::NodeArchiveSection section("qoraudiofiltersui::ColorField",
                                      {{"allowUserColorChange", {}}}, {});
    adapter->ApplySection(*stranger, section);
    auto field = adapter->CreateColorField();
    adapter->ApplySection(*field, section);
    EXPECT_FALSE(field->GetAllowUserColorChange()) << "a default value is the boolean false";
}

} // namespace
