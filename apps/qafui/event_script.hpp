#pragma once

// Event scripts: what a person does to an editor, one event a line, replayed through a headless
// window on its virtual clock.
//
//   click TARGET            double-click TARGET        right-click TARGET
//   drag TARGET to TARGET [steps N]                    wheel TARGET N
//   key NAME                type TEXT                  wait SECONDS
//   answer N
//
// TARGET is an identifier (the centre of that node's frame) or X,Y in the editor's
// coordinates. `shift+`, `ctrl+` and `alt+` before a verb or a key name hold modifiers. `#`
// starts a comment. `answer N` answers a menu (its N-th item, separators not counted) or a
// dialog (its N-th button) with N from 1; 0 cancels. Written before the event that opens the
// menu, it waits for it; written after, it ends the menu or dialog that opened, once the lines
// between (typing into the dialog, say) have run inside it.

#include "platform/core/point.hpp"
#include "platform/ui/keyboard_code.hpp"
#include "platform/ui/modifier_keys.hpp"

#include <deque>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace qorui {
class HeadlessWindow;
class UI_ModalOverlay;
class UI_Node;
} // namespace qorui

namespace qafui::cli {

/// Where an event happens: the centre of a node by its identifier, or a point.
struct event_target_t {
    std::string id; ///< empty for a point
    qorcore::PointT<float> point;
};

struct event_t {
    enum class kind_t { click, double_click, right_click, drag, wheel, key, type, wait, answer };
    kind_t kind = kind_t::click;
    int line = 0;
    qorui::ModifierFlags modifiers;
    event_target_t target;
    event_target_t to; ///< drag
    int steps = 10;    ///< drag
    double amount = 0; ///< wheel notches, wait seconds, answer number
    qorui::KeyboardCode key = qorui::KeyboardCode::kUnknown;
    std::string text; ///< type
};

struct event_script_t {
    std::string file;
    std::vector<event_t> events;
};

/// A fault of a script, as "FILE:LINE: reason".
class event_script_error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reads a whole script; the first bad line throws event_script_error, so nothing runs.
event_script_t parse_event_script(const std::string& text, const std::string& file);
/// The same from a file; an unreadable file throws event_script_error.
event_script_t read_event_script(const std::string& path);

/// Plays scripts into a headless window that shows `editor`. `keep_time(seconds)` moves the
/// window's clock (and whatever runs beside it, such as the reference host) on.
class event_player_t {
public:
    using keep_time_t = std::function<void(double seconds)>;

    /// After each event the clock moves on by this much, so that the editor's timer (a hundred
    /// ticks a second) takes what happened to the effect.
    static constexpr double kSettleSeconds = 0.05;

    event_player_t(qorui::HeadlessWindow& window, qorui::UI_Node& editor, keep_time_t keep_time);

    /// Runs every event in order. A target that is not there, an answer that fits no menu or
    /// dialog, or an answer left over at the end throws event_script_error with the line.
    void play(const event_script_t& script);

private:
    void run(const event_t& event);
    void respond(qorui::UI_ModalOverlay& overlay);
    /// Answers the overlay with `number`; false with `error_` set when it does not fit.
    bool answer(qorui::UI_ModalOverlay& overlay, int number, int line);
    qorcore::PointT<float> locate(const event_target_t& target, int line) const;
    void click(const qorcore::PointT<float>& at, int mouse_button, int clicks,
               qorui::ModifierFlags modifiers);
    [[noreturn]] void fail(int line, const std::string& reason) const;

    qorui::HeadlessWindow& window_;
    qorui::UI_Node& editor_;
    keep_time_t keepTime_;
    const event_script_t* script_ = nullptr;
    std::size_t next_ = 0;
    std::deque<event_t> answers_;      ///< answers written before their menu opened
    std::optional<std::string> error_; ///< a fault met inside a modal loop, thrown after it
    double lastPress_ = -1.0;
};

} // namespace qafui::cli
