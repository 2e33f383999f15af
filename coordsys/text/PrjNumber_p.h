#pragma once

#include "TextRefs_p.h"

#include <optional>

namespace nivora::cs {

/// The finite decimal number that a text wholly is, white space around it left aside; "-0" is 0, so that
/// records do not differ that mean the same. Nothing for other text: "3O", "nan", "1e999", "500 000".
std::optional<double> wholeNumber(const TextRef &text);

/// A number of a CoordSys record: text that is no finite number counts as 0.
inline double prjNumber(const QString &text) { return wholeNumber(refOf(text)).value_or(0.0); }

} // namespace nivora::cs
