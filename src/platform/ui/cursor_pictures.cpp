#include "platform/ui/cursor_pictures.hpp"

#include <map>
#include <utility>

namespace qorui {

namespace {

std::map<int, CursorPicture>& Table() {
    static std::map<int, CursorPicture> table;
    return table;
}

} // namespace

void SetCursorPicture(int cursor, CursorPicture picture) {
    if (!picture.picture) {
        Table().erase(cursor);
        return;
    }
    Table()[cursor] = std::move(picture);
}

const CursorPicture* FindCursorPicture(int cursor) {
    const auto found = Table().find(cursor);
    return found == Table().end() ? nullptr : &found->second;
}

void ClearCursorPictures() {
    Table().clear();
}

} // namespace qorui
