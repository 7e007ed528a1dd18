#include "platform/sdl/sdl_window.hpp"

#include "platform/ui/cursor_pictures.hpp"

#include "platform/core/trace.hpp"

#include "platform/core/main_thread_queue.hpp"
#include "platform/draw/penrig.hpp"

#include <SDL.h>

#include <algorithm>
#include <cairo.h>
#include <cmath>
#include <cstring>
#include <stdexcept>
#include <string>

namespace qorui {

namespace {

// SDL's video system is shared by all windows; it starts with the first and stops with the
// last. The main-thread queue wakes the event loop with an event of our own type.
int sdlUsers = 0;
std::uint32_t wakeUpEventType = 0;

void AcquireSdl() {
    if (sdlUsers == 0) {
        if (SDL_InitSubSystem(SDL_INIT_VIDEO | SDL_INIT_TIMER) != 0)
            throw std::runtime_error(std::string("SDL: ") + SDL_GetError());
        wakeUpEventType = SDL_RegisterEvents(1);
        qorcore::MainThreadQueue::Get().SetWakeUpFunction([] {
            SDL_Event event{};
            event.type = wakeUpEventType;
            SDL_PushEvent(&event);
        });
    }
    ++sdlUsers;
}

void ReleaseSdl() {
    if (--sdlUsers == 0) {
        qorcore::MainThreadQueue::Get().SetWakeUpFunction({});
        SDL_QuitSubSystem(SDL_INIT_VIDEO | SDL_INIT_TIMER);
    }
}

ModifierFlags Modifiers(std::uint16_t mod) {
    ModifierFlags flags;
    flags.Set(ModifierKey::kShift, (mod & KMOD_SHIFT) != 0);
    flags.Set(ModifierKey::kControl, (mod & KMOD_CTRL) != 0);
    flags.Set(ModifierKey::kAlt, (mod & KMOD_ALT) != 0);
    flags.Set(ModifierKey::kMeta, (mod & KMOD_GUI) != 0);
    return flags;
}

MouseButton Button(std::uint8_t button) {
    switch (button) {
    case SDL_BUTTON_LEFT: return MouseButton::kLeft;
    case SDL_BUTTON_RIGHT: return MouseButton::kRight;
    case SDL_BUTTON_MIDDLE: return MouseButton::kMiddle;
    default: return MouseButton::kNone;
    }
}

KeyboardCode Code(SDL_Keycode key) {
    if (key >= SDLK_a && key <= SDLK_z)
        return KeyboardCode(int(KeyboardCode::kA) + (key - SDLK_a));
    if (key >= SDLK_0 && key <= SDLK_9)
        return KeyboardCode(int(KeyboardCode::k0) + (key - SDLK_0));
    if (key >= SDLK_F1 && key <= SDLK_F12)
        return KeyboardCode(int(KeyboardCode::kF1) + (key - SDLK_F1));
    switch (key) {
    case SDLK_TAB: return KeyboardCode::kTab;
    case SDLK_BACKSPACE: return KeyboardCode::kBackspace;
    case SDLK_RETURN: return KeyboardCode::kReturn;
    case SDLK_ESCAPE: return KeyboardCode::kEscape;
    case SDLK_SPACE: return KeyboardCode::kSpace;
    case SDLK_KP_ENTER: return KeyboardCode::kKeypadEnter;
    case SDLK_INSERT: return KeyboardCode::kInsert;
    case SDLK_DELETE: return KeyboardCode::kDelete;
    case SDLK_HOME: return KeyboardCode::kHome;
    case SDLK_END: return KeyboardCode::kEnd;
    case SDLK_PAGEUP: return KeyboardCode::kPageUp;
    case SDLK_PAGEDOWN: return KeyboardCode::kPageDown;
    case SDLK_LEFT: return KeyboardCode::kLeft;
    case SDLK_RIGHT: return KeyboardCode::kRight;
    case SDLK_UP: return KeyboardCode::kUp;
    case SDLK_DOWN: return KeyboardCode::kDown;
    case SDLK_PLUS:
    case SDLK_KP_PLUS: return KeyboardCode::kPlus;
    case SDLK_MINUS:
    case SDLK_KP_MINUS: return KeyboardCode::kMinus;
    case SDLK_EQUALS: return KeyboardCode::kEqual;
    case SDLK_COMMA: return KeyboardCode::kComma;
    case SDLK_PERIOD: return KeyboardCode::kPeriod;
    case SDLK_SLASH: return KeyboardCode::kSlash;
    default: return KeyboardCode::kUnknown;
    }
}

SDL_SystemCursor SystemCursor(int cursor) {
    switch (cursor) {
    case 1: return SDL_SYSTEM_CURSOR_IBEAM;
    case 2: return SDL_SYSTEM_CURSOR_WAIT;
    case 3: return SDL_SYSTEM_CURSOR_CROSSHAIR;
    case 4: return SDL_SYSTEM_CURSOR_HAND;
    case 5: return SDL_SYSTEM_CURSOR_SIZEWE;
    case 6: return SDL_SYSTEM_CURSOR_SIZENS;
    case 7: return SDL_SYSTEM_CURSOR_SIZEALL;
    case 8: return SDL_SYSTEM_CURSOR_NO;
    case 13: return SDL_SYSTEM_CURSOR_HAND;    // an open hand: what can be dragged
    case 14: return SDL_SYSTEM_CURSOR_SIZEALL; // a closed hand: what is being dragged
    default: return SDL_SYSTEM_CURSOR_ARROW;
    }
}

} // namespace

SdlWindow::SdlWindow(const std::string& title, int width, int height, float scale)
    : UI_Window(float(width), float(height), scale) {
    // A plain software surface: the accelerated kind makes SDL re-create the X window on first
    // use, which shows up as a hide, a show and a full repaint.
    SDL_SetHint(SDL_HINT_FRAMEBUFFER_ACCELERATION, "0");
    AcquireSdl();
    const int w = int(std::ceil(width * scale));
    const int h = int(std::ceil(height * scale));
    window_ = SDL_CreateWindow(title.c_str(), SDL_WINDOWPOS_UNDEFINED, SDL_WINDOWPOS_UNDEFINED, w,
                               h, SDL_WINDOW_SHOWN | SDL_WINDOW_RESIZABLE);
    if (!window_) {
        const std::string reason = SDL_GetError();
        ReleaseSdl();
        throw std::runtime_error("SDL: cannot open a window: " + reason);
    }
    if (!SDL_GetWindowSurface(window_)) {
        const std::string reason = SDL_GetError();
        SDL_DestroyWindow(window_);
        ReleaseSdl();
        throw std::runtime_error("SDL: no surface for the window: " + reason);
    }
    MakeBacking();
}

SdlWindow::~SdlWindow() {
    CloseTree();
    penrig_.reset();
    for (auto& [number, cursor] : cursors_)
        SDL_FreeCursor(cursor);
    SDL_DestroyWindow(window_);
    ReleaseSdl();
}

void SdlWindow::MakeBacking() {
    penrig_.reset();
    image_ = GetDrawSupplier().CreateImage(GetWidth(), GetHeight());
    penrig_ = GetDrawSupplier().CreatePenrig(*image_);
    InvalidateAll();
}

UI_Window::TimeStamp SdlWindow::GetTime() const {
    return qorcore::HighPrecisionTime::GetCurrentTimeStamp();
}

std::uint32_t SdlWindow::GetWindowID() const {
    return SDL_GetWindowID(window_);
}

bool SdlWindow::ProcessEvents(int timeoutMs) {
    if (!open_)
        return false;
    int wait = std::max(0, timeoutMs);
    if (auto next = GetNextTimerDue()) {
        const TimeStamp now = GetTime();
        const int untilTimer = *next <= now ? 0 : int((*next - now + 999'999) / 1'000'000);
        wait = std::min(wait, untilTimer);
    }
    if (!GetDirtyRegion().IsEmpty() || qorcore::MainThreadQueue::Get().GetPendingCount() > 0)
        wait = 0;
    // A fault of one handler is reported and the window goes on: a live editor must not end
    // the program over one event.
    auto guarded = [](const char* what, auto&& step) {
        try {
            step();
        } catch (const std::exception& error) {
            qorcore::debug::Trace(1, "SdlWindow::ProcessEvents",
                                  std::string(what) + ": " + error.what() + "\n");
        }
    };
    SDL_Event event;
    if (SDL_WaitEventTimeout(&event, wait)) {
        guarded("event", [&] { HandleEvent(event); });
        while (open_ && SDL_PollEvent(&event))
            guarded("event", [&] { HandleEvent(event); });
    }
    guarded("timer", [&] { FireDueTimers(); });
    guarded("main queue", [&] { qorcore::MainThreadQueue::Get().RunPending(); });
    Present();
    return open_;
}

void SdlWindow::Run() {
    while (ProcessEvents(1000)) {
    }
}

void SdlWindow::HandleEvent(const SDL_Event& event) {
    const float scale = GetScaleFactor();
    if (event.type == wakeUpEventType)
        return; // the queue runs after the events
    switch (event.type) {
    case SDL_QUIT: open_ = false; break;
    case SDL_WINDOWEVENT:
        if (event.window.windowID != GetWindowID())
            break;
        switch (event.window.event) {
        case SDL_WINDOWEVENT_CLOSE: open_ = false; break;
        case SDL_WINDOWEVENT_EXPOSED: InvalidateAll(); break;
        case SDL_WINDOWEVENT_SIZE_CHANGED:
            Resize(event.window.data1 / scale, event.window.data2 / scale);
            MakeBacking();
            break;
        case SDL_WINDOWEVENT_FOCUS_LOST: LoseInputFocus(); break;
        case SDL_WINDOWEVENT_LEAVE:
            DispatchMouseEvent(MouseEvent(PointerAction::kLeave, lastPointer_));
            break;
        default: break;
        }
        break;
    case SDL_MOUSEMOTION:
        if (event.motion.windowID != GetWindowID())
            break;
        lastPointer_ = {event.motion.x / scale, event.motion.y / scale};
        DispatchMouseEvent(MouseEvent(PointerAction::kMove, lastPointer_, MouseButton::kNone,
                                      Modifiers(SDL_GetModState())));
        break;
    case SDL_MOUSEBUTTONDOWN:
    case SDL_MOUSEBUTTONUP:
        if (event.button.windowID != GetWindowID())
            break;
        lastPointer_ = {event.button.x / scale, event.button.y / scale};
        DispatchMouseEvent(MouseEvent(
            event.type == SDL_MOUSEBUTTONDOWN ? PointerAction::kPress : PointerAction::kRelease,
            lastPointer_, Button(event.button.button), Modifiers(SDL_GetModState()),
            event.type == SDL_MOUSEBUTTONDOWN ? event.button.clicks : 0));
        break;
    case SDL_MOUSEWHEEL:
        if (event.wheel.windowID != GetWindowID())
            break;
        DispatchMouseEvent(MouseEvent(PointerAction::kWheel, lastPointer_, MouseButton::kNone,
                                      Modifiers(SDL_GetModState()), 0,
                                      {event.wheel.preciseX, event.wheel.preciseY}));
        break;
    case SDL_KEYDOWN:
    case SDL_KEYUP:
        if (event.key.windowID != GetWindowID())
            break;
        DispatchKeyboardEvent(
            KeyboardEvent(event.type == SDL_KEYDOWN ? KeyAction::kKeyDown : KeyAction::kKeyUp,
                          Code(event.key.keysym.sym), Modifiers(event.key.keysym.mod),
                          event.key.keysym.sym, event.key.repeat != 0));
        break;
    case SDL_TEXTINPUT:
        if (event.text.windowID != GetWindowID())
            break;
        DispatchKeyboardEvent(KeyboardEvent::Text(event.text.text, Modifiers(SDL_GetModState())));
        break;
    default: break;
    }
}

void SdlWindow::Present() {
    if (GetDirtyRegion().IsEmpty())
        return;
    lastPresented_ = PaintDirty(*penrig_);
    SDL_Surface* surface = SDL_GetWindowSurface(window_);
    if (!surface)
        return;
    cairo_surface_t* source = image_->GetNativeSurface();
    cairo_surface_flush(source);
    const unsigned char* pixels = cairo_image_surface_get_data(source);
    const int stride = cairo_image_surface_get_stride(source);
    const float scale = GetScaleFactor();
    std::vector<SDL_Rect> rects;
    for (const auto& r : lastPresented_) {
        const auto device = qorcore::OutsetToIntegers(
            RectT<float>(r.x * scale, r.y * scale, r.width * scale, r.height * scale));
        const auto clipped =
            device.Intersection({0, 0, std::min(image_->GetPixelWidth(), surface->w),
                                 std::min(image_->GetPixelHeight(), surface->h)});
        if (clipped.IsEmpty())
            continue;
        if (SDL_MUSTLOCK(surface))
            SDL_LockSurface(surface);
        SDL_ConvertPixels(
            clipped.width, clipped.height, SDL_PIXELFORMAT_ARGB8888,
            pixels + clipped.y * stride + clipped.x * 4, stride, surface->format->format,
            static_cast<unsigned char*>(surface->pixels) + clipped.y * surface->pitch +
                clipped.x * surface->format->BytesPerPixel,
            surface->pitch);
        if (SDL_MUSTLOCK(surface))
            SDL_UnlockSurface(surface);
        rects.push_back({clipped.x, clipped.y, clipped.width, clipped.height});
    }
    if (!rects.empty())
        SDL_UpdateWindowSurfaceRects(window_, rects.data(), int(rects.size()));
    ++presentCount_;
}

qorcore::ColorRGBA SdlWindow::ReadPixel(int x, int y) const {
    SDL_Surface* surface = SDL_GetWindowSurface(window_);
    if (!surface || x < 0 || y < 0 || x >= surface->w || y >= surface->h)
        return {0, 0, 0, 0};
    std::uint32_t value = 0;
    const auto* row = static_cast<const unsigned char*>(surface->pixels) + y * surface->pitch;
    std::memcpy(&value, row + x * surface->format->BytesPerPixel,
                std::min<int>(4, surface->format->BytesPerPixel));
    std::uint8_t r, g, b, a;
    SDL_GetRGBA(value, surface->format, &r, &g, &b, &a);
    return qorcore::ColorRGBA::FromBytes(r, g, b, a);
}

void SdlWindow::OnCursorChanged(int cursor) {
    // A picture entered for the number wins; else the system cursor that means the same. The
    // key keeps the two kinds apart: pictures by their number, system cursors below zero.
    const CursorPicture* picture = FindCursorPicture(cursor);
    const int key = picture ? cursor : -1 - int(SystemCursor(cursor));
    auto it = cursors_.find(key);
    if (it == cursors_.end())
        it = cursors_
                 .emplace(key, picture ? MakePictureCursor(*picture)
                                       : SDL_CreateSystemCursor(SystemCursor(cursor)))
                 .first;
    if (it->second)
        SDL_SetCursor(it->second);
}

SDL_Cursor* SdlWindow::MakePictureCursor(const CursorPicture& picture) const {
    // The window's density picks the bitmap, and the hot spot scales with it.
    const bool twice = GetScaleFactor() >= 2.0f && picture.picture2x;
    const penrig::Image& image = twice ? *picture.picture2x : *picture.picture;
    const int factor = twice ? 2 : 1;
    const int w = image.GetPixelWidth();
    const int h = image.GetPixelHeight();
    SDL_Surface* surface = SDL_CreateRGBSurfaceWithFormat(0, w, h, 32, SDL_PIXELFORMAT_ARGB8888);
    if (!surface)
        return nullptr;
    for (int y = 0; y < h; ++y) {
        auto* row = reinterpret_cast<std::uint32_t*>(static_cast<unsigned char*>(surface->pixels) +
                                                     y * surface->pitch);
        for (int x = 0; x < w; ++x) {
            const qorcore::ColorRGBA c = image.GetPixel(x, y);
            row[x] = SDL_MapRGBA(surface->format, std::uint8_t(c.red * 255.0f + 0.5f),
                                 std::uint8_t(c.green * 255.0f + 0.5f),
                                 std::uint8_t(c.blue * 255.0f + 0.5f),
                                 std::uint8_t(c.alpha * 255.0f + 0.5f));
        }
    }
    SDL_Cursor* cursor =
        SDL_CreateColorCursor(surface, picture.hotSpot.x * factor, picture.hotSpot.y * factor);
    SDL_FreeSurface(surface);
    return cursor;
}

SDL_Cursor* SdlWindow::GetShownCursor(int cursor) const {
    const CursorPicture* picture = FindCursorPicture(cursor);
    const auto found = cursors_.find(picture ? cursor : -1 - int(SystemCursor(cursor)));
    return found == cursors_.end() ? nullptr : found->second;
}

} // namespace qorui
