#pragma once

#include "platform/core/high_precision_time.hpp"
#include "platform/draw/image.hpp"
#include "platform/ui/ui_window.hpp"

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qorui {

/// A window without a display: the tree drawn into an image, events injected by the caller,
/// and a virtual clock that moves only when told. Timers fire at their exact due times as the
/// clock passes them, and tasks posted to the main thread run as it moves. Every widget and
/// editor test runs in one.
///
/// While it lives, the window's clock is also `HighPrecisionTime`'s (unless asked not to), so
/// code that stamps times sees the virtual time. The clock starts at one second.
class HeadlessWindow : public UI_Window {
public:
    HeadlessWindow(float width, float height, float scale = 1.0f,
                   bool drivesHighPrecisionTime = true);
    ~HeadlessWindow() override;

    // Time
    TimeStamp GetTime() const override { return now_.load(std::memory_order_acquire); }
    double GetTimeSeconds() const;
    /// Moves the clock on, firing each timer as its time comes, and runs the main-thread queue
    /// after each step. Negative or non-finite seconds throw std::invalid_argument.
    void AdvanceTime(double seconds);
    /// Runs the tasks other threads posted to the main thread; returns how many ran.
    std::size_t PumpMainQueue();

    // Input, in window coordinates. Each returns whether something consumed the event.
    bool MouseMove(float x, float y, ModifierFlags modifiers = {});
    bool MouseDown(float x, float y, MouseButton button = MouseButton::kLeft,
                   ModifierFlags modifiers = {});
    bool MouseUp(float x, float y, MouseButton button = MouseButton::kLeft,
                 ModifierFlags modifiers = {});
    /// A press and a release at one place (a move there first).
    bool Click(float x, float y, MouseButton button = MouseButton::kLeft,
               ModifierFlags modifiers = {});
    bool MouseWheel(float x, float y, float deltaY, float deltaX = 0.0f,
                    ModifierFlags modifiers = {});
    /// The pointer leaves the window.
    bool MouseLeave();
    bool KeyDown(KeyboardCode code, ModifierFlags modifiers = {}, bool repeat = false);
    bool KeyUp(KeyboardCode code, ModifierFlags modifiers = {});
    /// Key down and up.
    bool PressKey(KeyboardCode code, ModifierFlags modifiers = {});
    /// A typed-text event.
    bool TypeText(const std::string& text);

    // Pixels
    /// Paints what is dirty and returns the areas painted, in window coordinates.
    std::vector<RectT<float>> Render();
    /// Paints everything.
    void RenderAll();
    /// The backing image in device pixels (width * scale by height * scale).
    const penrig::Image& GetImage() const { return *image_; }
    /// Renders what is dirty, then writes the image. Throws std::runtime_error on failure.
    void WritePNG(const std::string& path);
    /// A device pixel of the last rendering.
    qorcore::ColorRGBA GetPixel(int x, int y) const { return image_->GetPixel(x, y); }

    /// A new size; everything repaints at the next render.
    void SetSize(float width, float height);

private:
    void MakeBacking();

    std::atomic<TimeStamp> now_;
    IntrusivePtr<penrig::Image> image_;
    std::unique_ptr<Penrig> penrig_;
    PointT<float> lastPointer_;
    std::optional<qorcore::HighPrecisionTime::ScopedClock> clock_;
};

} // namespace qorui
