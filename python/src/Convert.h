#pragma once

#include <pybind11/pybind11.h>

#include <QString>
#include <QStringList>

namespace nivora::python {

inline pybind11::str textOf(const QString &text)
{
    const QByteArray utf8 = text.toUtf8();
    return {utf8.constData(), static_cast<std::size_t>(utf8.size())};
}

inline pybind11::list listOf(const QStringList &texts)
{
    pybind11::list list;
    for (const QString &text : texts)
        list.append(textOf(text));
    return list;
}

/// A named tuple of nivora_cs._types.
template <typename... Values> pybind11::object record(const char *type, Values &&...values)
{
    return pybind11::module_::import("nivora_cs._types").attr(type)(std::forward<Values>(values)...);
}

/// None for a negative code.
inline pybind11::object codeOrNone(int code)
{
    return code < 0 ? pybind11::object(pybind11::none()) : pybind11::object(pybind11::int_(code));
}

} // namespace nivora::python
