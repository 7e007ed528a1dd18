#pragma once

#include "platform/core/intrusive_ptr.hpp"
#include "platform/core/point.hpp"
#include "platform/draw/image.hpp"

namespace qorui {

/// The pictures of cursors that are not the system's own: a library enters them by number (the
/// numbers a node gives `UI_SetCursor`, 200 and up), and a window backend shows them. Main
/// thread only.
struct CursorPicture {
    qorcore::IntrusivePtr<penrig::Image> picture;   ///< 32 by 32 pixels
    qorcore::IntrusivePtr<penrig::Image> picture2x; ///< 64 by 64; may be null
    qorcore::PointT<int> hotSpot;                   ///< in the 32-pixel picture
};

/// Enters (or replaces) the picture of a cursor number; a null picture removes it.
void SetCursorPicture(int cursor, CursorPicture picture);
/// The picture of a cursor number; null when none was entered.
const CursorPicture* FindCursorPicture(int cursor);
/// Removes every picture (a library that entered them is going away).
void ClearCursorPictures();

} // namespace qorui
