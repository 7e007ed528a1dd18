// The window backend on a real X display. CTest runs this under xvfb-run; without a display
// every test skips.
#include "platform/core/main_thread_queue.hpp"
#include "platform/core/trace.hpp"
#include "platform/draw/penrig.hpp"
#include "platform/sdl/sdl_window.hpp"
#include "platform/ui/cursor_pictures.hpp"
#include "platform/ui/test_nodes.hpp"

#include <SDL.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

using namespace qorui;
using qafui_testing::MakeNode;
using qafui_testing::RecordingNode;
using qorcore::ColorRGBA;

namespace {

class SdlWindowTest : public ::testing::Test {
protected:
    void SetUp() override {
        const char* display = std::getenv("DISPLAY");
        if (!display || !*display)
            GTEST_SKIP() << "no X display (run under xvfb-run)";
    }

    static void Push(SdlWindow& window, Uint32 type, int x, int y, Uint8 button = SDL_BUTTON_LEFT) {
        SDL_Event e{};
        e.type = type;
        if (type == SDL_MOUSEMOTION) {
            e.motion.windowID = window.GetWindowID();
            e.motion.x = x;
            e.motion.y = y;
        } else {
            e.button.windowID = window.GetWindowID();
            e.button.button = button;
            e.button.x = x;
            e.button.y = y;
            e.button.clicks = 1;
            e.button.state = type == SDL_MOUSEBUTTONDOWN ? SDL_PRESSED : SDL_RELEASED;
        }
        ASSERT_EQ(SDL_PushEvent(&e), 1) << SDL_GetError();
    }

    // Lets the window map and take its exposures (which repaint everything) until nothing has
    // been presented for a while.
    static void Settle(SdlWindow& window) {
        int quiet = 0;
        for (int i = 0; i < 40 && quiet < 4; ++i) {
            const int before = window.GetPresentCount();
            window.ProcessEvents(100);
            quiet = window.GetPresentCount() == before ? quiet + 1 : 0;
        }
    }

    static bool Near(const ColorRGBA& a, const ColorRGBA& b) {
        return std::abs(a.red - b.red) < 0.01f && std::abs(a.green - b.green) < 0.01f &&
               std::abs(a.blue - b.blue) < 0.01f;
    }
};

} // namespace

TEST_F(SdlWindowTest, ClickRepaintsOnlyTheChangedNodeAndPixelsReadBack) {
    for (float scale : {1.0f, 2.0f}) {
        SdlWindow window("qafui test", 160, 120, scale);
        window.SetBackgroundColor(ColorRGBA(1, 1, 1));
        auto button = MakeNode("button", {20, 30, 60, 40});
        button->SetBackgroundColor(ColorRGBA(1, 0, 0));
        button->consumeMouse = true;
        button->onMouse = [&](const MouseEvent& e) {
            if (e.IsLeftButtonSingleDown())
                button->SetBackgroundColor(ColorRGBA(0, 0.5f, 1));
        };
        window.AddNode(button);
        Settle(window);
        const int s = int(scale);
        EXPECT_TRUE(Near(window.ReadPixel(50 * s, 50 * s), ColorRGBA(1, 0, 0))) << scale;
        EXPECT_TRUE(Near(window.ReadPixel(5 * s, 5 * s), ColorRGBA(1, 1, 1))) << scale;

        const int presents = window.GetPresentCount();
        Push(window, SDL_MOUSEMOTION, 50 * s, 50 * s);
        Push(window, SDL_MOUSEBUTTONDOWN, 50 * s, 50 * s);
        Push(window, SDL_MOUSEBUTTONUP, 50 * s, 50 * s);
        window.ProcessEvents(100);
        ASSERT_EQ(button->mouseEvents.size(), 4u) << "enter, move, press, release";
        EXPECT_EQ(button->mouseEvents[2].GetPosition(), PointT<float>(30, 20));
        EXPECT_EQ(window.GetPresentCount(), presents + 1);
        ASSERT_EQ(window.GetLastPresentedRects().size(), 1u);
        EXPECT_EQ(window.GetLastPresentedRects()[0], RectT<float>(20, 30, 60, 40));
        EXPECT_TRUE(Near(window.ReadPixel(50 * s, 50 * s), ColorRGBA(0, 0.5f, 1))) << scale;
        EXPECT_TRUE(Near(window.ReadPixel(5 * s, 5 * s), ColorRGBA(1, 1, 1))) << scale;
    }
}

TEST_F(SdlWindowTest, KeysTimersAndPostedWorkArrive) {
    SdlWindow window("qafui test", 100, 100);
    auto node = MakeNode("node", {0, 0, 100, 100});
    node->SetWantsKeyboardFocus(true);
    window.AddNode(node);
    ASSERT_TRUE(node->UI_RequestFocus());

    SDL_Event key{};
    key.type = SDL_KEYDOWN;
    key.key.windowID = window.GetWindowID();
    key.key.keysym.sym = SDLK_PAGEDOWN;
    key.key.keysym.mod = KMOD_LSHIFT;
    ASSERT_EQ(SDL_PushEvent(&key), 1);
    window.ProcessEvents(100);
    ASSERT_EQ(node->keyEvents.size(), 1u);
    EXPECT_TRUE(node->keyEvents[0].CompareShortcut(KeyboardCode::kPageDown, ModifierKey::kShift));

    ASSERT_TRUE(node->UI_InstallTimer(0.02f, 9));
    for (int i = 0; i < 200 && node->timerTicks.size() < 3; ++i)
        window.ProcessEvents(50);
    EXPECT_GE(node->timerTicks.size(), 3u);
    EXPECT_EQ(node->timerTicks[0], 9);
    node->UI_RemoveTimer(9);

    // Work posted from another thread wakes a window that would otherwise sleep for an hour: a
    // loop that missed the post hangs here, and the test's own timeout (CMakeLists) fails it.
    bool ran = false;
    std::thread poster([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        qorcore::PostToMainThread([&] { ran = true; });
    });
    while (!ran)
        window.ProcessEvents(3600 * 1000);
    poster.join();
    EXPECT_TRUE(ran);
}

TEST_F(SdlWindowTest, ClosingEndsTheLoop) {
    SdlWindow window("qafui test", 50, 50);
    EXPECT_TRUE(window.ProcessEvents(0));
    SDL_Event close{};
    close.type = SDL_WINDOWEVENT;
    close.window.windowID = window.GetWindowID();
    close.window.event = SDL_WINDOWEVENT_CLOSE;
    ASSERT_EQ(SDL_PushEvent(&close), 1);
    EXPECT_FALSE(window.ProcessEvents(100));
    EXPECT_FALSE(window.IsOpen());
}

namespace {

/// A node whose press handler fails, as a control with a broken lookup would.
class ThrowingNode : public qorui::UI_Node {
public:
    bool UI_DoMouseEvent(const qorui::MouseEvent& event) override {
        if (event.IsAction(qorui::PointerAction::kPress))
            throw std::logic_error("Invalid type conversion.");
        return false;
    }
};

} // namespace

TEST_F(SdlWindowTest, AFailingHandlerIsTracedAndTheWindowGoesOn) {
    SdlWindow window("qafui test", 100, 100);
    qorcore::IntrusivePtr<ThrowingNode> node(new ThrowingNode);
    node->SetFrame({0, 0, 100, 100});
    window.AddNode(node);
    Settle(window);
    std::vector<std::string> traces;
    qorcore::debug::SetTraceSettings("SdlWindow*=1");
    qorcore::debug::SetTraceSink(
        [&](int, std::string_view, std::string_view text) { traces.emplace_back(text); });
    Push(window, SDL_MOUSEBUTTONDOWN, 10, 10);
    Push(window, SDL_MOUSEBUTTONUP, 10, 10);
    bool open = false;
    EXPECT_NO_THROW(open = window.ProcessEvents(100));
    qorcore::debug::SetTraceSink({});
    qorcore::debug::SetTraceSettings("");
    EXPECT_TRUE(open);
    ASSERT_EQ(traces.size(), 1u);
    EXPECT_EQ(traces[0], "event: Invalid type conversion.\n");
}

TEST_F(SdlWindowTest, TheCursorANodeAsksForIsShownAsItsPictureOrTheSystems) {
    // A picture entered for a number is shown with its hot spot at the window's density; other
    // numbers are the system cursors of the same meaning.
    qorui::SetCursorPicture(
        250, {penrig::Image::Create(32, 32, 1.0f), penrig::Image::Create(32, 32, 2.0f), {3, 4}});
    for (const float scale : {1.0f, 2.0f}) {
        SdlWindow window("qafui test", 100, 100, scale);
        auto node = MakeNode("node", {0, 0, 100, 100});
        window.AddNode(node);
        const int s = int(scale);
        node->cursor = 250;
        Push(window, SDL_MOUSEMOTION, 10 * s, 10 * s);
        window.ProcessEvents(50);
        ASSERT_NE(window.GetShownCursor(250), nullptr) << scale;
        EXPECT_EQ(SDL_GetCursor(), window.GetShownCursor(250)) << scale;
        node->cursor = 4; // the hand
        Push(window, SDL_MOUSEMOTION, 20 * s, 20 * s);
        window.ProcessEvents(50);
        ASSERT_NE(window.GetShownCursor(4), nullptr);
        EXPECT_EQ(SDL_GetCursor(), window.GetShownCursor(4));
        EXPECT_NE(window.GetShownCursor(4), window.GetShownCursor(250));
    }
    qorui::SetCursorPicture(250, {});
    EXPECT_EQ(qorui::FindCursorPicture(250), nullptr);
}
