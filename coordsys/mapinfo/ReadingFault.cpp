#include "ReadingFault_p.h"

#include "CodedError_p.h"
#include "CoordSysText_p.h"
#include "CoordSysTexts_p.h"

#include <stdexcept>

namespace nivora::cs {
namespace {

CodedError<std::logic_error> logicError(const QString &message)
{
    return {Error::Code::NotUnderstood, message};
}

QString shown(const CoordSysToken &token) { return token.text.left(40).toString(); }

} // namespace

void ReadingFault::note(Kind kind, const CoordSysToken *token, const char *place, const QString &count)
{
    if (isNoted())
        return;
    m_kind = kind;
    m_token = token;
    m_place = place;
    m_count = count;
}

void ReadingFault::throwNoted() const
{
    const auto message = [this](const QString &text) {
        const QString place = CoordSysTexts::tr(m_place ? m_place : "").replace(QLatin1String("%1"), m_count);
        return logicError(text.arg(shown(*m_token), QString::number(m_token->position + 1), place));
    };
    switch (m_kind) {
    case NoNumber:
        throw message(CoordSysTexts::tr("Не число: «%1» (знак %2), %3"));
    case UnknownUnit:
        throw message(CoordSysTexts::tr("Неизвестная единица: «%1» (знак %2)"));
    case Surplus:
        throw message(CoordSysTexts::tr("Лишнее в строке КС: «%1» (знак %2)"));
    case ShortDatum:
        throw message(CoordSysTexts::tr("Недостаёт параметров датума «%1» (знак %2)"));
    case NoCorners:
        throw message(CoordSysTexts::tr("Углы границ стоят в скобках, (x1, y1) (x2, y2): «%1» (знак %2)"));
    case None:
        break;
    }
}

void checkSeparators(const CoordSysText &text)
{
    const CoordSysToken *odd = text.oddSeparator();
    if (!odd)
        return;
    const QString place = QString::number(odd->position + 1);
    throw logicError(odd->isItem()
                         ? CoordSysTexts::tr("Пробел вместо запятой или внутри числа перед «%1» (знак %2)")
                               .arg(shown(*odd), place)
                         : CoordSysTexts::tr("Пустое место или лишняя скобка (знак %1)").arg(place));
}

} // namespace nivora::cs
