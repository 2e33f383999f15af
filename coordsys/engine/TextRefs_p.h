#pragma once

#include <coordsys/TextRef.h>

#include <QVector>

namespace nivora::cs {

// The same calls for the types of both versions of Qt. A position beyond the end gives an empty part.

#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
inline TextRef refOf(const QString &text) { return text; }
inline TextRef midRef(const QString &text, qsizetype from, qsizetype length)
{
    return QStringView(text).mid(from, length);
}
inline TextRef leftRef(const QString &text, qsizetype length) { return QStringView(text).left(length); }
inline QList<TextRef> splitRef(const QString &text, QChar separator)
{
    return QStringView(text).split(separator, Qt::SkipEmptyParts);
}
inline bool isPartOf(TextRef part, const QString &text)
{
    return part.data() >= text.constData() && part.data() < text.constData() + text.size();
}
#else
inline TextRef refOf(const QString &text) { return QStringRef(&text); }
inline TextRef midRef(const QString &text, int from, int length) { return text.midRef(from, length); }
inline TextRef leftRef(const QString &text, int length) { return text.leftRef(length); }
inline QVector<TextRef> splitRef(const QString &text, QChar separator)
{
    return text.splitRef(separator, Qt::SkipEmptyParts);
}
inline bool isPartOf(const TextRef &part, const QString &text) { return part.string() == &text; }
#endif

} // namespace nivora::cs
