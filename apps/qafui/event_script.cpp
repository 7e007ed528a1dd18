#include "event_script.hpp"
#include "number_reading.hpp"

#include "platform/core/ascii_case.hpp"
#include "platform/dialogs/ui_modal_dialog.hpp"
#include "platform/menus/ui_menu_overlay.hpp"
#include "platform/ui/headless_window.hpp"
#include "platform/ui/modal_testing.hpp"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <fstream>
#include <sstream>
#include <utility>

namespace qafui::cli {

namespace {

using qorui::KeyboardCode;
using qorui::ModifierFlags;

// Bounds that keep a script's run finite and its numbers sensible.
constexpr int kMaxDragSteps = 10000;
constexpr double kMaxWaitSeconds = 3600.0;
constexpr double kMaxWheelNotches = 1000.0;
constexpr double kDoubleClickSeconds = 0.5; // the toolkit's double-click time
constexpr float kMaxCoordinate = 100000.0f;

struct key_name_t {
    const char* name;
    KeyboardCode code;
};

constexpr key_name_t kKeyNames[] = {
    {"Tab", KeyboardCode::kTab},       {"Backspace", KeyboardCode::kBackspace},
    {"Return", KeyboardCode::kReturn}, {"Enter", KeyboardCode::kReturn},
    {"Escape", KeyboardCode::kEscape}, {"Space", KeyboardCode::kSpace},
    {"Insert", KeyboardCode::kInsert}, {"Delete", KeyboardCode::kDelete},
    {"Home", KeyboardCode::kHome},     {"End", KeyboardCode::kEnd},
    {"PageUp", KeyboardCode::kPageUp}, {"PageDown", KeyboardCode::kPageDown},
    {"Left", KeyboardCode::kLeft},     {"Right", KeyboardCode::kRight},
    {"Up", KeyboardCode::kUp},         {"Down", KeyboardCode::kDown},
    {"Plus", KeyboardCode::kPlus},     {"Minus", KeyboardCode::kMinus},
    {"Equal", KeyboardCode::kEqual},   {"Comma", KeyboardCode::kComma},
    {"Period", KeyboardCode::kPeriod}, {"Slash", KeyboardCode::kSlash},
};

std::optional<KeyboardCode> key_code(const std::string& name) {
    for (const key_name_t& key : kKeyNames)
        if (qorcore::EqualIgnoringCase(name, key.name))
            return key.code;
    if (name.size() == 1) {
        switch (name[0]) {
        case '+': return KeyboardCode::kPlus;
        case '-': return KeyboardCode::kMinus;
        case '=': return KeyboardCode::kEqual;
        case ',': return KeyboardCode::kComma;
        case '.': return KeyboardCode::kPeriod;
        case '/': return KeyboardCode::kSlash;
        default: break;
        }
        const KeyboardCode code = qorui::KeyboardCodeForCharacter(name[0]);
        if (code != KeyboardCode::kUnknown)
            return code;
    }
    if ((name[0] == 'F' || name[0] == 'f') && name.size() <= 3) {
        int n = 0;
        const auto [end, error] = std::from_chars(name.data() + 1, name.data() + name.size(), n);
        if (error == std::errc() && end == name.data() + name.size() && n >= 1 && n <= 12)
            return KeyboardCode(int(KeyboardCode::kF1) + n - 1);
    }
    return std::nullopt;
}

/// Splits "shift+ctrl+word" into modifiers and the word; false for an unknown modifier.
bool take_modifiers(std::string& word, ModifierFlags& modifiers, std::string& error) {
    std::size_t plus;
    // A lone "+" (or a name ending in one) is the key itself, not a separator.
    while ((plus = word.find('+')) != std::string::npos && plus + 1 < word.size()) {
        const std::string prefix = word.substr(0, plus);
        if (qorcore::EqualIgnoringCase(prefix, "shift"))
            modifiers.Set(qorui::ModifierKey::kShift);
        else if (qorcore::EqualIgnoringCase(prefix, "ctrl") ||
                 qorcore::EqualIgnoringCase(prefix, "control"))
            modifiers.Set(qorui::ModifierKey::kControl);
        else if (qorcore::EqualIgnoringCase(prefix, "alt"))
            modifiers.Set(qorui::ModifierKey::kAlt);
        else {
            error = "unknown modifier '" + prefix + "' (shift, ctrl or alt)";
            return false;
        }
        word.erase(0, plus + 1);
    }
    return true;
}

/// A target: "X,Y" or an identifier.
bool read_target(const std::string& word, event_target_t& target, std::string& error) {
    const std::size_t comma = word.find(',');
    if (comma != std::string::npos) {
        double x = 0, y = 0;
        if (!read_number(std::string_view(word).substr(0, comma), x) ||
            !read_number(std::string_view(word).substr(comma + 1), y) ||
            std::abs(x) > kMaxCoordinate || std::abs(y) > kMaxCoordinate) {
            error = "'" + word + "' is not a point X,Y";
            return false;
        }
        target.point = {float(x), float(y)};
        return true;
    }
    const bool identifier = std::all_of(word.begin(), word.end(), [](char c) {
        return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '-' || c == '.' ||
               c == ':' || c == '/';
    });
    if (word.empty() || !identifier) {
        error = "'" + word + "' is neither an identifier nor a point X,Y";
        return false;
    }
    target.id = word;
    return true;
}

struct verb_t {
    const char* name;
    event_t::kind_t kind;
};

constexpr verb_t kVerbs[] = {
    {"click", event_t::kind_t::click},
    {"double-click", event_t::kind_t::double_click},
    {"right-click", event_t::kind_t::right_click},
    {"drag", event_t::kind_t::drag},
    {"wheel", event_t::kind_t::wheel},
    {"key", event_t::kind_t::key},
    {"type", event_t::kind_t::type},
    {"wait", event_t::kind_t::wait},
    {"answer", event_t::kind_t::answer},
};

/// Reads one line that holds an event; the reason when it is wrong, else "".
std::string read_event(const std::string& line, event_t& event) {
    std::istringstream words(line);
    std::string verb;
    words >> verb;
    std::string error;
    if (!take_modifiers(verb, event.modifiers, error))
        return error;
    const verb_t* found = nullptr;
    for (const verb_t& candidate : kVerbs)
        if (verb == candidate.name)
            found = &candidate;
    if (!found)
        return "unknown event '" + verb +
               "' (click, double-click, right-click, drag, wheel, key, type, wait, answer)";
    event.kind = found->kind;
    const bool takesModifiers =
        event.kind == event_t::kind_t::click || event.kind == event_t::kind_t::double_click ||
        event.kind == event_t::kind_t::right_click || event.kind == event_t::kind_t::drag ||
        event.kind == event_t::kind_t::wheel;
    if (!event.modifiers.IsEmpty() && !takesModifiers)
        return "'" + verb + "' takes no modifiers";

    std::vector<std::string> rest;
    for (std::string word; words >> word;)
        rest.push_back(word);
    auto expect_count = [&](std::size_t low, std::size_t high, const char* form) -> std::string {
        if (rest.size() < low || rest.size() > high)
            return std::string("'") + verb + "' takes " + form;
        return {};
    };

    switch (event.kind) {
    case event_t::kind_t::click:
    case event_t::kind_t::double_click:
    case event_t::kind_t::right_click:
        if (auto e = expect_count(1, 1, "one TARGET"); !e.empty())
            return e;
        return read_target(rest[0], event.target, error) ? "" : error;
    case event_t::kind_t::drag: {
        const char* form = "TARGET to TARGET [steps N]";
        if (auto e = expect_count(3, 5, form); !e.empty())
            return e;
        if (rest[1] != "to" || rest.size() == 4 || (rest.size() == 5 && rest[3] != "steps"))
            return std::string("'drag' takes ") + form;
        if (!read_target(rest[0], event.target, error) || !read_target(rest[2], event.to, error))
            return error;
        if (rest.size() == 5) {
            double steps = 0;
            if (!read_number(rest[4], steps) || steps < 1 || steps > kMaxDragSteps ||
                steps != std::floor(steps))
                return "steps takes a whole number from 1 to " + std::to_string(kMaxDragSteps);
            event.steps = int(steps);
        }
        return {};
    }
    case event_t::kind_t::wheel:
        if (auto e = expect_count(2, 2, "TARGET N"); !e.empty())
            return e;
        if (!read_target(rest[0], event.target, error))
            return error;
        if (!read_number(rest[1], event.amount) || event.amount == 0 ||
            std::abs(event.amount) > kMaxWheelNotches)
            return "'" + rest[1] + "' is not a number of wheel notches (not 0, at most 1000)";
        return {};
    case event_t::kind_t::key: {
        if (auto e = expect_count(1, 1, "one key NAME"); !e.empty())
            return e;
        std::string name = rest[0];
        if (!take_modifiers(name, event.modifiers, error))
            return error;
        const std::optional<KeyboardCode> code = key_code(name);
        if (!code)
            return "unknown key '" + name + "'";
        event.key = *code;
        return {};
    }
    case event_t::kind_t::type: {
        // The text is the rest of the line as written, spaces inside it included.
        const std::size_t start = line.find_first_not_of(" \t", line.find(verb) + verb.size());
        if (start == std::string::npos)
            return "'type' takes the TEXT to type";
        event.text = line.substr(start);
        return {};
    }
    case event_t::kind_t::wait:
        if (auto e = expect_count(1, 1, "a number of SECONDS"); !e.empty())
            return e;
        if (!read_number(rest[0], event.amount) || event.amount < 0 ||
            event.amount > kMaxWaitSeconds)
            return "'" + rest[0] + "' is not a number of seconds from 0 to 3600";
        return {};
    case event_t::kind_t::answer:
        if (auto e = expect_count(1, 1, "one number N"); !e.empty())
            return e;
        if (!read_number(rest[0], event.amount) || event.amount < 0 || event.amount > 1000 ||
            event.amount != std::floor(event.amount))
            return "'" + rest[0] + "' is not an item or button number (0 cancels)";
        return {};
    }
    return {};
}

std::string strip_comment(const std::string& line) {
    // `type` keeps a '#' that is part of its text only when written as the text itself; a
    // comment starts at the first '#' everywhere, which keeps the rule one rule.
    const std::size_t hash = line.find('#');
    std::string kept = hash == std::string::npos ? line : line.substr(0, hash);
    while (!kept.empty() && std::isspace(static_cast<unsigned char>(kept.back())))
        kept.pop_back();
    return kept;
}

} // namespace

event_script_t parse_event_script(const std::string& text, const std::string& file) {
    event_script_t script;
    script.file = file;
    std::istringstream lines(text);
    std::string line;
    for (int number = 1; std::getline(lines, line); ++number) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        const std::string kept = strip_comment(line);
        if (kept.find_first_not_of(" \t") == std::string::npos)
            continue;
        event_t event;
        event.line = number;
        if (const std::string reason = read_event(kept, event); !reason.empty())
            throw event_script_error(file + ":" + std::to_string(number) + ": " + reason);
        script.events.push_back(std::move(event));
    }
    return script;
}

event_script_t read_event_script(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in)
        throw event_script_error("cannot read the event script '" + path + "'");
    std::ostringstream text;
    text << in.rdbuf();
    return parse_event_script(text.str(), path);
}

event_player_t::event_player_t(qorui::HeadlessWindow& window, qorui::UI_Node& editor,
                               keep_time_t keep_time)
    : window_(window), editor_(editor), keepTime_(std::move(keep_time)) {}

void event_player_t::fail(int line, const std::string& reason) const {
    throw event_script_error(script_->file + ":" + std::to_string(line) + ": " + reason);
}

qorcore::PointT<float> event_player_t::locate(const event_target_t& target, int line) const {
    if (target.id.empty())
        return editor_.UI_LocalToGlobalF(target.point);
    qorui::UI_Node* node = editor_.FindNodeByID(target.id);
    if (!node)
        fail(line, "no node '" + target.id + "' in the editor (see qafui describe)");
    if (!node->IsShown())
        fail(line, "'" + target.id + "' is not shown");
    const auto& frame = node->GetFrame();
    return node->UI_LocalToGlobalF(qorcore::PointT<float>{frame.width / 2, frame.height / 2});
}

void event_player_t::click(const qorcore::PointT<float>& at, int mouse_button, int clicks,
                           ModifierFlags modifiers) {
    // Two single clicks in a row must not read as a double click: wait out the toolkit's
    // double-click time first, as a person would.
    if (clicks == 1 && lastPress_ >= 0.0) {
        const double since = window_.GetTimeSeconds() - lastPress_;
        if (since < kDoubleClickSeconds)
            keepTime_(kDoubleClickSeconds - since + 0.01);
    }
    for (int i = 0; i < clicks; ++i)
        window_.Click(at.x, at.y, qorui::MouseButton(mouse_button), modifiers);
    lastPress_ = window_.GetTimeSeconds();
}

void event_player_t::run(const event_t& event) {
    using kind_t = event_t::kind_t;
    switch (event.kind) {
    case kind_t::click:
        click(locate(event.target, event.line), int(qorui::MouseButton::kLeft), 1, event.modifiers);
        break;
    case kind_t::double_click:
        click(locate(event.target, event.line), int(qorui::MouseButton::kLeft), 2, event.modifiers);
        break;
    case kind_t::right_click:
        click(locate(event.target, event.line), int(qorui::MouseButton::kRight), 1,
              event.modifiers);
        break;
    case kind_t::drag: {
        const auto from = locate(event.target, event.line);
        const auto to = locate(event.to, event.line);
        window_.MouseMove(from.x, from.y, event.modifiers);
        window_.MouseDown(from.x, from.y, qorui::MouseButton::kLeft, event.modifiers);
        for (int i = 1; i <= event.steps; ++i) {
            const float t = float(i) / float(event.steps);
            window_.MouseMove(from.x + (to.x - from.x) * t, from.y + (to.y - from.y) * t,
                              event.modifiers);
            keepTime_(0.01);
        }
        window_.MouseUp(to.x, to.y, qorui::MouseButton::kLeft, event.modifiers);
        lastPress_ = -1.0;
        break;
    }
    case kind_t::wheel: {
        const auto at = locate(event.target, event.line);
        window_.MouseMove(at.x, at.y, event.modifiers);
        window_.MouseWheel(at.x, at.y, float(event.amount), 0.0f, event.modifiers);
        break;
    }
    case kind_t::key: window_.PressKey(event.key, event.modifiers); break;
    case kind_t::type: window_.TypeText(event.text); break;
    case kind_t::wait: keepTime_(event.amount); return;
    case kind_t::answer: answers_.push_back(event); return;
    }
    if (error_) {
        std::string reason = std::move(*error_);
        error_.reset();
        throw event_script_error(reason);
    }
    keepTime_(kSettleSeconds);
}

bool event_player_t::answer(qorui::UI_ModalOverlay& overlay, int number, int line) {
    const std::string where = script_->file + ":" + std::to_string(line) + ": ";
    if (number == 0) {
        overlay.Cancel();
        return true;
    }
    if (auto* menu = dynamic_cast<qorui::UI_MenuOverlay*>(&overlay)) {
        std::vector<const qorui::OS_Menu::Item*> items;
        for (const auto& item : menu->GetMenu().GetItems())
            if (!item.IsSeparator())
                items.push_back(&item);
        if (std::size_t(number) > items.size()) {
            error_ = where + "answer " + std::to_string(number) + ": the menu has " +
                     std::to_string(items.size()) + " items";
            return false;
        }
        if (!menu->ChooseItem(items[std::size_t(number) - 1]->id)) {
            error_ = where + "answer " + std::to_string(number) + ": '" +
                     items[std::size_t(number) - 1]->text + "' is disabled";
            return false;
        }
        return true;
    }
    if (auto* dialog = dynamic_cast<qorui::UI_ModalDialog*>(&overlay)) {
        const auto& buttons = dialog->GetButtons();
        if (std::size_t(number) > buttons.size()) {
            error_ = where + "answer " + std::to_string(number) + ": the " +
                     std::string(overlay.GetModalKind()) + " has " +
                     std::to_string(buttons.size()) + " buttons";
            return false;
        }
        dialog->PressButton(buttons[std::size_t(number) - 1].response);
        return true;
    }
    error_ = where + "answer " + std::to_string(number) + ": a " +
             std::string(overlay.GetModalKind()) + " has no items or buttons (answer 0 cancels)";
    return false;
}

void event_player_t::respond(qorui::UI_ModalOverlay& overlay) {
    if (error_)
        return; // the loop ends cancelled; the fault is thrown once it has
    if (!answers_.empty()) {
        const event_t waiting = answers_.front();
        answers_.pop_front();
        answer(overlay, int(waiting.amount), waiting.line);
        return;
    }
    // No answer was waiting: the lines that follow run inside the menu or dialog until one of
    // them ends it, or an answer does.
    while (overlay.IsRunning() && next_ < script_->events.size() && !error_) {
        const event_t& event = script_->events[next_++];
        if (event.kind == event_t::kind_t::answer) {
            answer(overlay, int(event.amount), event.line);
            return;
        }
        try {
            run(event);
        } catch (const event_script_error& error) {
            error_ = error.what();
        }
    }
}

void event_player_t::play(const event_script_t& script) {
    script_ = &script;
    next_ = 0;
    answers_.clear();
    error_.reset();
    const qorui::testing::ScopedModalResponder responder(
        [this](qorui::UI_ModalOverlay& overlay) { respond(overlay); });
    while (next_ < script.events.size())
        run(script.events[next_++]);
    if (!answers_.empty())
        fail(answers_.front().line, "no menu or dialog opened to take this answer");
}

} // namespace qafui::cli
