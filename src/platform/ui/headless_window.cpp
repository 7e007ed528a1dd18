#include "platform/ui/headless_window.hpp"

#include "platform/core/main_thread_queue.hpp"
#include "platform/draw/penrig.hpp"

#include <cmath>
#include <stdexcept>

namespace qorui {

namespace {

constexpr qorcore::HighPrecisionTime::TimeStamp kStartTime = 1'000'000'000;

} // namespace

HeadlessWindow::HeadlessWindow(float width, float height, float scale, bool drivesHighPrecisionTime)
    : UI_Window(width, height, scale), now_(kStartTime) {
    MakeBacking();
    if (drivesHighPrecisionTime)
        clock_.emplace([this] { return GetTime(); });
}

HeadlessWindow::~HeadlessWindow() {
    CloseTree();
    // The penrig goes before the image it draws on.
    penrig_.reset();
}

void HeadlessWindow::MakeBacking() {
    penrig_.reset();
    image_ = GetDrawSupplier().CreateImage(GetWidth(), GetHeight());
    penrig_ = GetDrawSupplier().CreatePenrig(*image_);
}

double HeadlessWindow::GetTimeSeconds() const {
    return qorcore::HighPrecisionTime::ConvertToSeconds(GetTime());
}

void HeadlessWindow::AdvanceTime(double seconds) {
    if (!(seconds >= 0.0) || !std::isfinite(seconds))
        throw std::invalid_argument("HeadlessWindow::AdvanceTime: seconds must be 0 or more");
    const TimeStamp target = GetTime() + qorcore::HighPrecisionTime::FromSeconds(seconds);
    while (auto next = GetNextTimerDue()) {
        if (*next > target)
            break;
        if (*next > GetTime())
            now_.store(*next, std::memory_order_release);
        FireDueTimers();
        PumpMainQueue();
    }
    now_.store(target, std::memory_order_release);
    FireDueTimers();
    PumpMainQueue();
}

std::size_t HeadlessWindow::PumpMainQueue() {
    return qorcore::MainThreadQueue::Get().RunPending();
}

bool HeadlessWindow::MouseMove(float x, float y, ModifierFlags modifiers) {
    lastPointer_ = {x, y};
    return DispatchMouseEvent(
        MouseEvent(PointerAction::kMove, {x, y}, MouseButton::kNone, modifiers));
}

bool HeadlessWindow::MouseDown(float x, float y, MouseButton button, ModifierFlags modifiers) {
    lastPointer_ = {x, y};
    return DispatchMouseEvent(MouseEvent(PointerAction::kPress, {x, y}, button, modifiers));
}

bool HeadlessWindow::MouseUp(float x, float y, MouseButton button, ModifierFlags modifiers) {
    lastPointer_ = {x, y};
    return DispatchMouseEvent(MouseEvent(PointerAction::kRelease, {x, y}, button, modifiers));
}

bool HeadlessWindow::Click(float x, float y, MouseButton button, ModifierFlags modifiers) {
    MouseMove(x, y, modifiers);
    const bool down = MouseDown(x, y, button, modifiers);
    const bool up = MouseUp(x, y, button, modifiers);
    return down || up;
}

bool HeadlessWindow::MouseWheel(float x, float y, float deltaY, float deltaX,
                                ModifierFlags modifiers) {
    lastPointer_ = {x, y};
    return DispatchMouseEvent(MouseEvent(PointerAction::kWheel, {x, y}, MouseButton::kNone,
                                         modifiers, 0, {deltaX, deltaY}));
}

bool HeadlessWindow::MouseLeave() {
    return DispatchMouseEvent(MouseEvent(PointerAction::kLeave, lastPointer_));
}

bool HeadlessWindow::KeyDown(KeyboardCode code, ModifierFlags modifiers, bool repeat) {
    return DispatchKeyboardEvent(
        KeyboardEvent(KeyAction::kKeyDown, code, modifiers, int(code), repeat));
}

bool HeadlessWindow::KeyUp(KeyboardCode code, ModifierFlags modifiers) {
    return DispatchKeyboardEvent(KeyboardEvent(KeyAction::kKeyUp, code, modifiers, int(code)));
}

bool HeadlessWindow::PressKey(KeyboardCode code, ModifierFlags modifiers) {
    const bool down = KeyDown(code, modifiers);
    const bool up = KeyUp(code, modifiers);
    return down || up;
}

bool HeadlessWindow::TypeText(const std::string& text) {
    return DispatchKeyboardEvent(KeyboardEvent::Text(text));
}

std::vector<RectT<float>> HeadlessWindow::Render() {
    return PaintDirty(*penrig_);
}

void HeadlessWindow::RenderAll() {
    InvalidateAll();
    Render();
}

void HeadlessWindow::WritePNG(const std::string& path) {
    Render();
    image_->WritePNG(path);
}

void HeadlessWindow::SetSize(float width, float height) {
    if (!(width > 0 && height > 0 && std::isfinite(width) && std::isfinite(height)))
        throw std::invalid_argument("HeadlessWindow::SetSize: width and height must be positive");
    Resize(width, height);
    MakeBacking();
}

} // namespace qorui
