#pragma once

#include <coordsys/Error.h>

#include <QString>

namespace nivora::cs {

/// A standard exception with a code: hosts catch the type that is documented.
template <typename Standard> class CodedError : public Standard, public Error
{
public:
    CodedError(Code code, const QString &text)
        : Standard(text.toStdString())
        , Error(code)
    {}
};

template <typename Standard> [[noreturn]] void throwCoded(Error::Code code, const QString &text)
{
    throw CodedError<Standard>(code, text);
}

} // namespace nivora::cs
