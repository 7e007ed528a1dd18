// The solver reading the sheet, which only the reader may.
#include "layout/tess.hpp"
#include "sheet/sheet.hpp"
