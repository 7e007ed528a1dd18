// The editor-facing half of the host: the base of every editor and the registry of factories.

#include "platform/host/parameter_store_filter.hpp"
#include "platform/hostui/audio_filter_editor_view_base.hpp"
#include "platform/hostui/audio_filter_view_factory_registrar.hpp"
#include "platform/ui/headless_window.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <vector>

using namespace qoraudiofilterhost;
using qoraudiofilterhostui::AudioFilterEditorViewBase;
using qoraudiofilterhostui::AudioFilterViewFactoryRegistrar;
using qoraudiofilterhostui::AudioFilterViewFactoryRegistry;
using qorcore::IntrusivePtr;

namespace {

std::shared_ptr<ParameterStoreFilter> MakeFilter() {
    return std::make_shared<ParameterStoreFilter>(
        std::vector<ParameterDescriptor>{{"a", 0.0f, 1.0f, 0.0f}});
}

} // namespace

TEST(AudioFilterViewFactoryRegistry, FindsByGuidTextInAnyCaseAndKeepsTheFirstEntry) {
    auto& registry = AudioFilterViewFactoryRegistry::Get();
    int made = 0;
    AudioFilterViewFactoryRegistrar registrar(
        "0a1b2c3d-0000-4000-8000-00000000abcd", [&](std::shared_ptr<AudioFilter> filter) {
            ++made;
            return IntrusivePtr<AudioFilterEditorViewBase>(
                new AudioFilterEditorViewBase(std::move(filter)));
        });
    EXPECT_TRUE(registrar.IsRegistered());
    EXPECT_TRUE(registry.Contains("0A1B2C3D-0000-4000-8000-00000000ABCD"));
    EXPECT_TRUE(registry.Contains("{0a1b2c3d-0000-4000-8000-00000000abcd}"));
    EXPECT_FALSE(registry.Contains("0A1B2C3D-0000-4000-8000-00000000ABCE"));

    AudioFilterViewFactoryRegistrar second(
        "0A1B2C3D-0000-4000-8000-00000000ABCD",
        [](std::shared_ptr<AudioFilter>) { return IntrusivePtr<AudioFilterEditorViewBase>(); });
    EXPECT_FALSE(second.IsRegistered());
    AudioFilterViewFactoryRegistrar empty("1A1B2C3D-0000-4000-8000-00000000ABCD", nullptr);
    EXPECT_FALSE(empty.IsRegistered());

    auto filter = MakeFilter();
    auto view = registry.CreateEditor("0a1b2c3d-0000-4000-8000-00000000abcd", filter);
    ASSERT_TRUE(view);
    EXPECT_EQ(made, 1) << "the first factory stays";
    EXPECT_EQ(view->GetAudioFilter(), filter);
    EXPECT_FALSE(registry.CreateEditor("not a guid", filter));
    EXPECT_THROW(registry.CreateEditor("0a1b2c3d-0000-4000-8000-00000000abcd", nullptr),
                 std::invalid_argument);
}

TEST(HostEditorViewBase, OpensHandsFocusAndReportsContent) {
    EXPECT_THROW(IntrusivePtr<AudioFilterEditorViewBase>(new AudioFilterEditorViewBase(nullptr)),
                 std::invalid_argument);
    qorui::HeadlessWindow window(200, 100, 2.0f);
    IntrusivePtr<AudioFilterEditorViewBase> view(new AudioFilterEditorViewBase(MakeFilter()));
    view->SetFrame({10, 10, 100, 50});
    EXPECT_FALSE(view->DispatchKeyboardFocus(true)) << "outside a window";

    IntrusivePtr<qorui::UI_Node> first(new qorui::UI_Node);
    IntrusivePtr<qorui::UI_Node> last(new qorui::UI_Node);
    first->SetWantsKeyboardFocus(true);
    last->SetWantsKeyboardFocus(true);
    view->ChildPushBack(first);
    view->ChildPushBack(last);
    window.AddNode(view);
    EXPECT_TRUE(view->WantsToDispatchKeyboardFocus());
    EXPECT_FALSE(view->DispatchCurrentFocus());
    ASSERT_TRUE(view->DispatchKeyboardFocus(false));
    EXPECT_EQ(window.GetFocusNode(), last.get());
    EXPECT_TRUE(view->DispatchCurrentFocus());
    ASSERT_TRUE(view->DispatchKeyboardFocus(true));
    EXPECT_EQ(window.GetFocusNode(), first.get());

    int sizeChanges = 0;
    auto connection = view->ConnectContentSizeChanged([&] { ++sizeChanges; });
    view->SendContentSizeChangedSignal();
    EXPECT_EQ(sizeChanges, 1);
    const auto content = view->GetContentRect();
    EXPECT_EQ(content.width, 100.0f);
    const auto scaled = view->GetInverseScaledRect({0, 0, 100, 50});
    EXPECT_EQ(scaled.width, 50.0f);
    EXPECT_EQ(scaled.height, 25.0f);
}
