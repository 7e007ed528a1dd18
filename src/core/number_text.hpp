#pragma once

#include <string>

namespace vorlen {

/// The shortest decimal text that reads back as the same double ("NaN", "Infinity", "-Infinity"
/// for the special values); 1.0 is "1", with no forced fraction.
std::string number_text(double x);

} // namespace vorlen
