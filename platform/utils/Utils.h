#pragma once

#include <QFileInfo>
#include <QRectF>
#include <QString>

namespace nivora::utils {

/// Shortest decimal text that reads back as the same double; never an exponent, never a locale's comma.
/// -0.0 gives "0", infinities "inf" and "-inf", not-a-number "nan".
QString toString(double value);

/// "(x, y, w, h)", each number as above.
QString toString(const QRectF &rect);

/// Relative comparison: true when |a - b| * factor does not exceed the smaller magnitude, or when a == b.
/// Zero equals only zero, NaN equals nothing, an infinity equals itself.
bool fuzzyEq(double a, double b, double factor);

/// x, y, width and height each within 1e-9 of the larger of 1 and the compared magnitudes.
bool fuzzyCompareRects(const QRectF &a, const QRectF &b);

/// Russian letters replaced by Latin ones from a fixed table; everything else stays.
QString translitString(const QString &text);

/// The existing file that stands for the given one: itself when it exists, else the only entry of its
/// directory whose name differs by letter case alone, else the argument.
QFileInfo lookUpExistingFileInDirectory(const QFileInfo &file);

/// The enumerator of this Qt version that makes QString::split drop empty parts.
#if QT_VERSION >= QT_VERSION_CHECK(5, 14, 0)
constexpr Qt::SplitBehaviorFlags skipEmptyParts = Qt::SkipEmptyParts;
#else
constexpr QString::SplitBehavior skipEmptyParts = QString::SkipEmptyParts;
#endif

} // namespace nivora::utils
