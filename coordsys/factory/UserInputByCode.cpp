#include "UserInputReader_p.h"

#include "CoordSysTexts_p.h"
#include <coordsys/ProjLibMetadata.h>

#include <QRegularExpression>

namespace nivora::cs {

CoordSystemPtr UserInputReader::readCode(const QString &text)
{
    const CodeText codes = *codeTextOf(text, databaseAuthorities);
    noteCompound(codes);
    return fromCode(codes.parts.first());
}

void UserInputReader::noteCompound(const CodeText &codes)
{
    for (int i = 1; i < codes.parts.size(); ++i) {
        const CodeReference part = canonical(codes.parts.at(i));
        if (databaseName(part.authority, part.code).isEmpty())
            throwUnknownCode(part);
    }
    if (codes.parts.size() > 1)
        m_notes << CoordSysTexts::tr("Взята только плановая часть: %1")
                       .arg(canonical(codes.parts.first()).text());
    if (!codes.leftAside.isEmpty())
        m_notes << CoordSysTexts::tr("Геометрия отброшена: %1").arg(shownText(codes.leftAside));
}

/// With the authority as the database writes it.
CodeReference UserInputReader::canonical(const CodeReference &given)
{
    CodeReference code = given;
    if (code.authority.compare(QLatin1String("CRS"), Qt::CaseInsensitive) == 0)
        code.authority = QStringLiteral("OGC");
    if (code.authority.compare(ProjLibMetadata::EPSG, Qt::CaseInsensitive) == 0) {
        code.authority = ProjLibMetadata::EPSG; // always there, and the list of all takes 7 ms
        return code;
    }
    const QStringList known = databaseAuthorities();
    for (const QString &authority : {code.authority, code.authority + QLatin1Char('_') + code.version}) {
        const int index = known.indexOf(
            QRegularExpression(QRegularExpression::anchoredPattern(QRegularExpression::escape(authority)),
                               QRegularExpression::CaseInsensitiveOption));
        if (index < 0)
            continue;
        code.authority = known.at(index);
        bool isNumber = false;
        code.code.toInt(&isNumber);
        if (isNumber && code.authority == QLatin1String("OGC"))
            code.code.prepend(QLatin1String("CRS")); // "CRS:84"
        return code;
    }
    const QString nearest = nearestWord(given.authority, known);
    refuse(CoordSysTexts::tr("В базе нет организации %1. Есть: %2. Ближайшее: %3")
               .arg(given.authority, known.join(QStringLiteral(", ")),
                    nearest.isEmpty() ? shownList({}) : nearest + QLatin1Char(':') + given.code),
           Error::Code::UnknownCode);
}

CoordSystemPtr UserInputReader::fromCode(const CodeReference &given)
{
    const CodeReference code = canonical(given);
    // ESRI's numbers go on EPSG's, and people mix the two up.
    const bool isEpsg = code.authority == QLatin1String("EPSG");
    const bool isEsri = code.authority == QLatin1String("ESRI");
    const QString other = isEpsg ? QStringLiteral("ESRI") : QStringLiteral("EPSG");
    QVector<CodeReference> candidates{code, {code.authority, QString(), code.code.toUpper()}};
    if (isEpsg || isEsri)
        candidates << CodeReference{other, QString(), code.code};
    for (const CodeReference &candidate : qAsConst(candidates)) {
        if (databaseName(candidate.authority, candidate.code).isEmpty())
            continue;
        if (candidate.authority != code.authority)
            m_notes << CoordSysTexts::tr("Кода %1 нет, взят %2").arg(code.text(), candidate.text());
        return candidate.authority == QLatin1String("EPSG")
                   ? m_factory.createFromEpsg(candidate.code.toInt())
                   : fromDefinition(candidate.text(), candidate.text());
    }
    throwUnknownCode(code);
}

void UserInputReader::throwUnknownCode(const CodeReference &code) const
{
    refuse(CoordSysTexts::tr("В базе нет системы %1. Ближайшее: %2")
               .arg(code.text(), shownList(nearestCodes(code.authority, code.code))),
           Error::Code::UnknownCode);
}

} // namespace nivora::cs
