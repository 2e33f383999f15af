#include "UserInputReader_p.h"

#include "CoordSysTexts_p.h"
#include <coordsys/CoordSystem.h>
#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/MapinfoSearch.h>
#include <coordsys/SystemSearch.h>
#include <coordsys/UserCoordSystem.h>

#include <QFileInfo>

#include <optional>

namespace nivora::cs {

/// The user's own system of that name, letter case aside where no name is the same; null without one, and for
/// one that cannot be made.
CoordSystemPtr UserInputReader::ownSystem(const QString &name) const
{
    for (const Qt::CaseSensitivity sensitivity : {Qt::CaseSensitive, Qt::CaseInsensitive})
        for (const UserCoordSystem::CsDataType &branch : m_factory.userCoordSystem()->data())
            for (const UserCoordSystem::CoordSystemParam &entry : branch.entries)
                if (entry.description().simplified().compare(name.simplified(), sensitivity) == 0)
                    return entry.storedSystem();
    return nullptr;
}

CoordSystemPtr UserInputReader::readName(const QString &text)
{
    if (const CoordSystemPtr own = ownSystem(text))
        return own;
    const SystemNames names(*m_factory.mapinfoCoordSystem(), m_factory.resourceDir(), m_factory.language());
    QVector<NamedSystem> systems = names.named(text);
    const bool isExact = !systems.isEmpty() && systems.first().isHorizontal();
    const QVector<NamedSystem> loose = isExact ? QVector<NamedSystem>() : names.namedLoosely(text);
    if (!loose.isEmpty())
        systems = loose;
    const int plus = text.indexOf(QLatin1String(" + ")); // "RGF93 v1 / Lambert-93 + NGF-IGN69 height"
    if (systems.isEmpty() && plus > 0 && names.named(text.left(plus)).size() == 1 &&
        !names.named(text.mid(plus + 3)).isEmpty()) {
        m_notes << CoordSysTexts::tr("Взята только плановая часть: %1").arg(text.left(plus).trimmed());
        return readName(text.left(plus));
    }
    if (systems.isEmpty())
        throwUnknown(text, names);
    if (systems.size() > 1)
        throwAmbiguous(text, systems);
    if (!loose.isEmpty())
        m_notes << CoordSysTexts::tr("Понято как %1").arg(systems.first().shown());
    return fromNamed(systems.first());
}

/// An entry that is not the one of its code keeps its own figures.
CoordSystemPtr UserInputReader::fromNamed(const NamedSystem &named)
{
    const QString code = named.code.section(QLatin1Char(':'), 1);
    if (named.prj.isEmpty())
        return fromCode({named.code.section(QLatin1Char(':'), 0, 0), QString(), code});
    const auto entry =
        named.code.isEmpty() ? std::nullopt : m_factory.mapinfoCoordSystem()->entryByEpsg(code.toInt());
    if (entry && entry->asPrjString() == named.prj)
        return m_factory.createFromEpsg(code.toInt());
    const CoordSystemPtr system = readCoordSys(named.prj);
    if (!named.isForeign)
        system->setDescription(named.name);
    return system;
}

void UserInputReader::throwAmbiguous(const QString &text, const QVector<NamedSystem> &systems)
{
    QStringList shown;
    for (const NamedSystem &system : systems)
        shown << system.shown();
    throw NotUnderstood(
        Error::Code::AmbiguousName,
        CoordSysTexts::tr("Название «%1» носят несколько систем: %2").arg(shownText(text), shownList(shown)));
}

/// What the search finds for the text, as everywhere else. Names that look alike stand before that when words
/// had to be left out, as of "WGS 85".
QStringList UserInputReader::nearestNames(const QString &text, const SystemNames &names) const
{
    constexpr int mostShown = 5;
    const auto search = systemSearch(m_factory);
    const MapinfoSearch::Answer answer =
        search ? search->answer(text, std::nullopt, mostShown) : MapinfoSearch::Answer();
    QStringList shown =
        answer.hits.isEmpty() || !answer.without.isEmpty() ? names.nearest(text) : QStringList();
    for (const MapinfoSearch::Hit &hit : answer.hits)
        shown << (hit.code.isEmpty() ? hit.name : QStringLiteral("%1 (%2)").arg(hit.name, hit.code));
    shown.removeDuplicates();
    return shown.mid(0, mostShown);
}

void UserInputReader::throwUnknown(const QString &text, const SystemNames &names) const
{
    const QString remark = names.remark(text);
    if (!remark.isEmpty())
        throw NotUnderstood(Error::Code::NotUnderstood,
                            QStringLiteral("%1: %2").arg(shownText(text), remark));
    if (QFileInfo(text).isFile())
        throw NotUnderstood(
            Error::Code::NotUnderstood,
            CoordSysTexts::tr("«%1» — файл: чтобы прочитать его, напишите @%1").arg(shownText(text)));
    const QStringList nearest = nearestNames(text, names);
    QStringList tried;
    for (const NotationRow &notation : notations)
        tried << CoordSysTexts::tr(notation.name);
    throw NotUnderstood(
        Error::Code::NotUnderstood,
        CoordSysTexts::tr("Непонятно, какая это система координат: «%1». Проверено: %2. Ближайшее: %3")
            .arg(shownText(text), tried.join(QStringLiteral(", ")), shownList(nearest)));
}

} // namespace nivora::cs
