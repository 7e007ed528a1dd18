#pragma once

#include "platform/draw/image.hpp"
#include "platform/ui/ui_window.hpp"

#include <cstdint>
#include <map>
#include <memory>
#include <string>

struct SDL_Window;
struct SDL_Cursor;
union SDL_Event;

namespace qorui {

struct CursorPicture;

/// The node tree in a real SDL2 window: drawn into an image at the scale factor, dirty areas
/// copied to the window's surface, with the mouse, the keyboard, real-time timers and the
/// main-thread queue driving it. One thread (the main one) runs it.
///
/// Typed text arrives as key-down events of code kUnknown that carry the text. Cursors are
/// chosen by number: 0 arrow, 1 I-beam, 2 wait, 3 crosshair, 4 hand, 5 west-east, 6 north-south,
/// 7 move, 8 not allowed; other numbers show the arrow.
class SdlWindow : public UI_Window {
public:
    /// Opens the window. Throws std::runtime_error with SDL's reason when there is no display
    /// or the window can't be made.
    SdlWindow(const std::string& title, int width, int height, float scale = 1.0f);
    ~SdlWindow() override;

    TimeStamp GetTime() const override;

    /// Waits up to `timeoutMs` for input, a due timer or posted work; handles all of it, fires
    /// due timers, runs the main-thread queue and repaints what is dirty. False once the window
    /// has been asked to close.
    bool ProcessEvents(int timeoutMs) override;
    /// Runs until the window is closed.
    void Run();
    void RequestClose() { open_ = false; }
    bool IsOpen() const { return open_; }

    std::uint32_t GetWindowID() const;
    /// A device pixel as presented on the window's surface.
    qorcore::ColorRGBA ReadPixel(int x, int y) const;
    /// The SDL cursor the window made for a cursor number (a picture entered with
    /// `SetCursorPicture`, else the system cursor of that meaning); null before it was shown.
    SDL_Cursor* GetShownCursor(int cursor) const;
    /// How many times dirty areas were presented, and the areas of the last time.
    int GetPresentCount() const { return presentCount_; }
    const std::vector<RectT<float>>& GetLastPresentedRects() const { return lastPresented_; }

protected:
    void OnCursorChanged(int cursor) override;
    bool CatchesUpOnTimers() const override { return false; }

private:
    void HandleEvent(const SDL_Event& event);
    void Present();
    void MakeBacking();

    SDL_Window* window_ = nullptr;
    IntrusivePtr<penrig::Image> image_;
    std::unique_ptr<Penrig> penrig_;
    SDL_Cursor* MakePictureCursor(const CursorPicture& picture) const;

    std::map<int, SDL_Cursor*> cursors_;
    PointT<float> lastPointer_;
    bool open_ = true;
    int presentCount_ = 0;
    std::vector<RectT<float>> lastPresented_;
};

} // namespace qorui
