#pragma once

#include <QString>

#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
#include <QStringView>
#else
#include <QStringRef>
#endif

namespace nivora::cs {

#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
/// A part of a text that another object owns.
using TextRef = QStringView;
#else
/// A part of a text that another object owns.
using TextRef = QStringRef;
#endif

} // namespace nivora::cs
