#pragma once

namespace qorui {

/// Key codes of the toolkit. Code that handles keys depends on these numbers; the editing and
/// arrow keys have fixed values, the rest are the toolkit's own.
enum class KeyboardCode : int {
    kUnknown = 0, ///< also the code of a typed-text event
    kTab = 1,
    kBackspace = 2,
    kReturn = 3,
    kEscape = 4,
    kSpace = 5,
    kKeypadEnter = 6,
    kInsert = 34,
    kDelete = 35,
    kHome = 36,
    kEnd = 37,
    kPageUp = 38,
    kPageDown = 39,
    kLeft = 42,
    kRight = 43,
    kUp = 44,
    kDown = 45,
    kA = 50, ///< kA + n for the n-th letter, up to kZ = 75
    kZ = 75,
    k0 = 80, ///< k0 + n for the digit n, up to k9 = 89
    k9 = 89,
    kF1 = 90, ///< kF1 + n - 1 for Fn, up to kF12 = 101
    kF12 = 101,
    kPlus = 110,
    kMinus = 111,
    kEqual = 112,
    kComma = 113,
    kPeriod = 114,
    kSlash = 115,
};

/// The code of a letter ('a'..'z' or 'A'..'Z') or digit, or kUnknown.
constexpr KeyboardCode KeyboardCodeForCharacter(char c) {
    if (c >= 'a' && c <= 'z')
        return KeyboardCode(int(KeyboardCode::kA) + (c - 'a'));
    if (c >= 'A' && c <= 'Z')
        return KeyboardCode(int(KeyboardCode::kA) + (c - 'A'));
    if (c >= '0' && c <= '9')
        return KeyboardCode(int(KeyboardCode::k0) + (c - '0'));
    return KeyboardCode::kUnknown;
}

} // namespace qorui
