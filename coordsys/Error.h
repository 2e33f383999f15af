#pragma once

#include <coordsys/coordsys_export.h>

#include <exception>

namespace nivora::cs {

/// What the library's exceptions have besides their standard base: a code that is the same in every language
/// of the texts. catch (const std::exception &e) and Error::codeOf(e) suit most callers. Thread-safe.
class NIVORA_CS_EXPORT Error
{
public:
    /// What went wrong. New codes come at the end.
    enum class Code {
        Other,             ///< none of those below, and every exception that is not of this library
        EmptyText,         ///< a text without anything in it
        NotUnderstood,     ///< a text that is no system, or not in the notation asked for
        AmbiguousName,     ///< several systems have the name
        UnknownCode,       ///< no registry has a usable system of the number
        UnknownUnit,       ///< no catalogue has the unit
        MissingParameters, ///< a CoordSys string with too few figures
        NoPlane,           ///< geocentric, or a height alone
        NotWritable,       ///< the notation has no form for the system
        NoOperation,       ///< no way between the systems, or none that was chosen
        MissingGrid,       ///< the chosen operation needs a file that is not here
        PointFailed,       ///< coordinates outside of the domain
        InvalidArgument,   ///< null, not finite, without extent, singular
        NotReady,          ///< no catalogues are active
        NoDatabase,        ///< proj.db is not found or cannot be used
        FileFailed,        ///< a file cannot be opened, read or written
        Engine,            ///< PROJ or GDAL refuses, for a reason of its own
    };

    virtual ~Error();

    /// What went wrong.
    Code code() const { return m_code; }
    /// The code's name in lower case with hyphens, "unknown-code"; the same for ever.
    static const char *nameOf(Code code);
    /// The code of any exception; Other for those of other libraries.
    static Code codeOf(const std::exception &error);

protected:
    /// For the exceptions that derive from it.
    explicit Error(Code code)
        : m_code(code)
    {}
    Error(const Error &) = default; ///< copies
    /// Copies.
    Error &operator=(const Error &) = default;

private:
    Code m_code;
};

} // namespace nivora::cs
