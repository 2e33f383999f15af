#pragma once

#include <QString>

class QTranslator;

namespace nivora::cs {

/// What people read in messages of the library, in a context of its own: a host's texts are translated by the
/// host alone. Thread-safe.
class CoordSysTexts
{
#ifdef LUPDATE_READS_THIS // it looks into every branch, and names the context by this line
    Q_DECLARE_TR_FUNCTIONS(CoordSysTexts)
#endif
public:
    /// In the application's language; where there is none, in that of setWithoutApplication().
    static QString tr(const char *text);
    /// \p texts is never destroyed; null: those of the sources.
    static void setWithoutApplication(const QTranslator *texts);
};

} // namespace nivora::cs
