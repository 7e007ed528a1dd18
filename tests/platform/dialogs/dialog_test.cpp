// Modal dialogs and notes through the headless window: answered by the responder, clicked,
// confirmed with Return, cancelled with Escape, and modal towards the views below.
#include "platform/dialogs/ui_modal_dialog.hpp"
#include "platform/ui/headless_window.hpp"
#include "platform/ui/modal_testing.hpp"

#include <gtest/gtest.h>

#include <stdexcept>

using namespace qorui;

namespace {

class CountingNode : public UI_Node {
public:
    bool UI_DoMouseEvent(const MouseEvent& event) override {
        presses += event.IsAction(PointerAction::kPress);
        return true;
    }
    int presses = 0;
};

struct DialogScene {
    DialogScene() : window(400, 300) {
        below = qorcore::MakeIntrusive<CountingNode>();
        below->SetFrame(window.GetBounds());
        window.AddNode(below);
    }
    int Run(std::function<void(UI_ModalDialog&)> answer) {
        IntrusivePtr<UI_ModalDialog> dialog(new UI_ModalDialog("Edit Point", 200, 60));
        dialog->AddButton(1, "OK");
        dialog->AddButton(2, "Cancel");
        qorui::testing::ScopedModalResponder responder(
            [&](UI_ModalOverlay& overlay) { answer(dynamic_cast<UI_ModalDialog&>(overlay)); });
        return dialog->RunModal(window);
    }
    HeadlessWindow window;
    IntrusivePtr<CountingNode> below;
};

TEST(ModalDialogTest, ButtonsKeysAndCancelGiveTheirResponses) {
    DialogScene scene;
    EXPECT_EQ(scene.Run([](UI_ModalDialog& d) { EXPECT_TRUE(d.PressButton(2)); }), 2);
    EXPECT_EQ(scene.Run([&](UI_ModalDialog& d) {
        const auto r = d.GetButtonRect(1);
        scene.window.Click(r.Center().x, r.Center().y);
    }),
              2);
    EXPECT_EQ(scene.Run([&](UI_ModalDialog&) { scene.window.PressKey(KeyboardCode::kReturn); }), 1);
    EXPECT_EQ(scene.Run([&](UI_ModalDialog&) { scene.window.PressKey(KeyboardCode::kEscape); }), 0);
    // A press that leaves the button before the release presses nothing; a press outside the
    // panel neither closes the dialog nor reaches the view below.
    EXPECT_EQ(scene.Run([&](UI_ModalDialog& d) {
        const auto r = d.GetButtonRect(0);
        scene.window.MouseDown(r.Center().x, r.Center().y);
        scene.window.MouseUp(r.Center().x, r.Bottom() + 30);
        scene.window.Click(5, 5);
        EXPECT_TRUE(d.IsRunning());
        EXPECT_FALSE(d.PressButton(9));
    }),
              0);
    EXPECT_EQ(scene.below->presses, 0);
    EXPECT_EQ(scene.window.GetRoot()->GetChildCount(), 1u);
    EXPECT_THROW(UI_ModalDialog("Bad", 0, 10), std::invalid_argument);
    UI_ModalDialog dialog("Buttons", 10, 10);
    EXPECT_THROW(dialog.AddButton(0, "Zero"), std::invalid_argument);
}

TEST(ShowNoteTest, NoteShowsItsTextAndIsDismissed) {
    DialogScene scene;
    std::string seenKind, seenText;
    int result = -1;
    {
        qorui::testing::ScopedModalResponder responder([&](UI_ModalOverlay& overlay) {
            seenKind = overlay.GetModalKind();
            auto& note = dynamic_cast<messagebox::UI_NoteDialog&>(overlay);
            seenText = note.GetText();
            EXPECT_EQ(note.GetTitle(), "Curve Editor");
            scene.window.RenderAll();
            const auto r = note.GetButtonRect(0);
            scene.window.Click(r.Center().x, r.Center().y);
            result = note.GetResponse();
        });
        messagebox::ShowNote(scene.below.get(), "Curve Editor", "Current graph is not invertable");
    }
    EXPECT_EQ(seenKind, "note");
    EXPECT_EQ(seenText, "Current graph is not invertable");
    EXPECT_EQ(result, 1);
    auto loose = qorcore::MakeIntrusive<UI_Node>();
    EXPECT_THROW(messagebox::ShowNote(loose.get(), "T", "X"), std::invalid_argument);
    // Given the window directly, and with no responder: it ends cancelled instead of hanging.
    messagebox::ShowNote(nullptr, "T", "X", &scene.window);
    EXPECT_EQ(scene.window.GetRoot()->GetChildCount(), 1u);
}

} // namespace
