#pragma once

#include "reading/Table.h"

#include <QRegularExpression>

namespace catalogue {

/// A regular expression of a table, compiled. Throws Failure for a bad one.
inline QRegularExpression pattern(const QString &text)
{
    QRegularExpression expression(text);
    if (!expression.isValid())
        throw Failure(QStringLiteral("bad pattern: %1").arg(text));
    expression.optimize();
    return expression;
}

} // namespace catalogue
