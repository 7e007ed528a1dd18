// Every editor that can be shown, soaked with seeded random use: moves, drags, clicks, double and
// right clicks, the wheel, keys and typing, with every menu and dialog that opens answered at
// random. After each event every parameter is a number from 0 to 1; once the buttons are up no
// gesture is left open; the editor closes cleanly. QAFUI_SOAK_EVENTS sets the events per editor
// (`make soak` runs 10 000; the suite's default is 1 000).
#include "editor_session.hpp"

#include "live_editor.hpp"

#include "framework/effect_catalogue.hpp"
#include "platform/ui/keyboard_code.hpp"
#include "platform/ui/modal_testing.hpp"
#include "platform/ui/modifier_keys.hpp"
#include "platform/ui/mouse_event.hpp"
#include "platform/ui/ui_modal_overlay.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

namespace {

using qorui::KeyboardCode;
using qorui::MouseButton;

std::size_t EventsPerEditor() {
    if (const char* text = std::getenv("QAFUI_SOAK_EVENTS"))
        if (const long n = std::strtol(text, nullptr, 10); n > 0)
            return std::size_t(n);
    return 1000;
}

std::vector<std::string> ReadyEditors() {
    // Readiness asks the library for its resources.
    qorui::penrig::CairoSupplier supplier(1.0f);
    qoraudiofiltersui::Initialize(&supplier);
    std::vector<std::string> names;
    for (const qoraudiofiltersui::EffectEntry& effect : qoraudiofiltersui::GetEffectCatalogue())
        if (qafui::cli::check_editor(effect).status ==
            qafui::cli::editor_readiness_t::status_t::ready)
            names.push_back(effect.name);
    qoraudiofiltersui::Terminate();
    return names;
}

/// A person at random: where and what, from one seeded generator.
class RandomUser {
public:
    RandomUser(qorui::HeadlessWindow& window, unsigned seed) : window_(window), random_(seed) {}

    void Act() {
        const float w = window_.GetBounds().width, h = window_.GetBounds().height;
        const float x = Uniform(0, w), y = Uniform(0, h);
        switch (Pick(10)) {
        case 0:
        case 1: window_.MouseMove(x, y); break;
        case 2:
        case 3: { // a drag in a few steps
            window_.MouseDown(x, y);
            float px = x, py = y;
            for (int step = 0, steps = 1 + Pick(6); step < steps; ++step) {
                px += Uniform(-40, 40);
                py += Uniform(-40, 40);
                window_.MouseMove(px, py);
            }
            window_.MouseUp(px, py);
            break;
        }
        case 4: window_.Click(x, y); break;
        case 5: // a right click, or a double click: two clicks with no time between
            if (Pick(2)) {
                window_.Click(x, y, MouseButton::kRight);
            } else {
                window_.Click(x, y);
                window_.Click(x, y);
            }
            break;
        case 6: window_.MouseWheel(x, y, Uniform(-3, 3)); break;
        case 7:
            window_.TypeText(Pick(2) ? "-12.5" : "3000");
            window_.PressKey(KeyboardCode::kReturn);
            break;
        default: {
            static const KeyboardCode keys[] = {
                KeyboardCode::kTab,    KeyboardCode::kLeft,  KeyboardCode::kRight,
                KeyboardCode::kUp,     KeyboardCode::kDown,  KeyboardCode::kReturn,
                KeyboardCode::kEscape, KeyboardCode::kSpace, KeyboardCode::kPageUp,
                KeyboardCode::kDelete, KeyboardCode::kHome,  KeyboardCode::kEnd};
            const std::uint8_t shift = Pick(4) == 0 ? qorui::ModifierKey::kShift : 0;
            window_.PressKey(keys[Pick(int(std::size(keys)))], qorui::ModifierFlags(shift));
            break;
        }
        }
    }

    /// Inside a menu or dialog: a few keys, then it is left to end (chosen or cancelled).
    void Answer() {
        static const KeyboardCode keys[] = {KeyboardCode::kDown, KeyboardCode::kUp,
                                            KeyboardCode::kTab, KeyboardCode::kReturn,
                                            KeyboardCode::kEscape};
        for (int i = 0, n = Pick(4); i < n; ++i) {
            if (Pick(3) == 0)
                window_.TypeText("7");
            else
                window_.PressKey(keys[Pick(int(std::size(keys)))]);
        }
    }

private:
    int Pick(int n) { return std::uniform_int_distribution<int>(0, n - 1)(random_); }
    float Uniform(float a, float b) { return std::uniform_real_distribution<float>(a, b)(random_); }

    qorui::HeadlessWindow& window_;
    std::mt19937 random_;
};

class EditorSoak : public ::testing::TestWithParam<std::string> {};

TEST_P(EditorSoak, RandomUseKeepsParametersInRangeAndGesturesBalanced) {
    qafui_testing::EditorSession session({}, {}, GetParam());
    qorui::HeadlessWindow& window = session->window();
    const auto& filter = *session->editor().filter();
    RandomUser user(window, unsigned(std::hash<std::string>{}(GetParam())));
    const qorui::testing::ScopedModalResponder responder(
        [&user](qorui::UI_ModalOverlay&) { user.Answer(); });
    const std::size_t events = EventsPerEditor();
    std::vector<float> last(filter.GetParameterCount());
    for (int i = 0; i < int(last.size()); ++i)
        last[std::size_t(i)] = filter.GetParameterValue(i);
    std::size_t changes = 0;
    for (std::size_t event = 0; event < events; ++event) {
        user.Act();
        session->editor().run(0.01, [&window](double seconds) { window.AdvanceTime(seconds); });
        if (event % 50 == 0)
            window.Render();
        for (int i = 0; i < int(last.size()); ++i) {
            const float value = filter.GetParameterValue(i);
            ASSERT_TRUE(value >= 0.0f && value <= 1.0f)
                << GetParam() << ": parameter " << i << " = " << value << " after event " << event;
            changes += value != last[std::size_t(i)];
            last[std::size_t(i)] = value;
        }
    }
    // The random user really reached the controls.
    EXPECT_GT(changes, 0u) << GetParam();
    // With every button up and a tick gone by, no gesture stays open.
    window.MouseUp(0, 0);
    window.MouseUp(0, 0, MouseButton::kRight);
    session->editor().run(0.05, [&window](double seconds) { window.AdvanceTime(seconds); });
    for (int i = 0; i < int(filter.GetParameterCount()); ++i)
        EXPECT_FALSE(filter.IsParameterBeingEdited(i)) << GetParam() << ": parameter " << i;
    window.RenderAll();
}

INSTANTIATE_TEST_SUITE_P(Editors, EditorSoak, ::testing::ValuesIn(ReadyEditors()),
                         [](const ::testing::TestParamInfo<std::string>& info) {
                             return info.param;
                         });

} // namespace
