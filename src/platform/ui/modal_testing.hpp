#pragma once

#include <functional>

namespace qorui {
class UI_ModalOverlay;
}

/// Hooks for tests and headless renderers. Nothing here is used by a real window unless asked.
namespace qorui::testing {

/// Called inside the nested loop of every modal overlay (menus, notes, dialogs) once it is
/// shown. It may answer directly (`EndModal`, a menu's `ChooseItem`, ...) or inject events into
/// the window; whatever it leaves open ends cancelled.
using ModalResponder = std::function<void(UI_ModalOverlay& overlay)>;

/// The responder in force, or empty.
const ModalResponder& GetModalResponder();

/// Installs a responder for a scope and puts the previous one back.
class ScopedModalResponder {
public:
    explicit ScopedModalResponder(ModalResponder responder);
    ~ScopedModalResponder();
    ScopedModalResponder(const ScopedModalResponder&) = delete;
    ScopedModalResponder& operator=(const ScopedModalResponder&) = delete;

private:
    ModalResponder previous_;
};

} // namespace qorui::testing
