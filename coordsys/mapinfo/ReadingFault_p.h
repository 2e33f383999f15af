#pragma once

#include <QString>

namespace nivora::cs {

struct CoordSysToken;
class CoordSysText;

/// The first token of a text that was not understood.
class ReadingFault
{
public:
    enum Kind { None, NoNumber, UnknownUnit, Surplus, ShortDatum, NoCorners };

    bool isNoted() const { return m_kind != None; }
    /// Later ones are left aside. \p place says what the token stands for: a message of the catalogue of
    /// translations, in which %1 is \p count.
    void note(Kind kind, const CoordSysToken *token, const char *place = nullptr,
              const QString &count = QString());
    /// std::logic_error with the token and where it stands; nothing when none is noted.
    void throwNoted() const;

private:
    Kind m_kind = None;
    const CoordSysToken *m_token = nullptr;
    const char *m_place = nullptr;
    QString m_count;
};

/// Throws std::logic_error where separators leave open what the figures of a text are.
void checkSeparators(const CoordSysText &text);

} // namespace nivora::cs
