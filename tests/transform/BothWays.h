#pragma once

#include <support/Support.h>

/// Empty when \p conversion maps the two points onto each other, \p to within \p toTolerance and back \p from
/// within \p fromTolerance; else what came out.
template <typename Conversion>
QString notBothWays(const Conversion &conversion, const QPointF &from, const QPointF &to, double toTolerance,
                    double fromTolerance)
{
    QPointF there, back;
    const bool done = conversion.forward(from, there) && conversion.inverse(to, back);
    if (done && support::near(there, to, toTolerance) && support::near(back, from, fromTolerance))
        return {};
    QString text;
    QDebug(&text) << qSetRealNumberPrecision(15) << done << from << "->" << there << to << "->" << back;
    return text;
}

#define VERIFY_BOTH_WAYS(conversion, from, to, toTolerance, fromTolerance)                                   \
    QCOMPARE(notBothWays(conversion, from, to, toTolerance, fromTolerance), QString())
