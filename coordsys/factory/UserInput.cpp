#include <coordsys/CoordSysFactory.h>

#include "CodedError_p.h"
#include "CoordSysText_p.h"
#include "CoordSystem_p.h"
#include "CrsDefinition_p.h"
#include "UserInputFile_p.h"
#include "UserInputNames_p.h"
#include "UserInputText_p.h"
#include <coordsys/CoordSystem.h>
#include <coordsys/MapHeaderCoordsysConverter.h>
#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/MapinfoPrjReader.h>
#include <coordsys/MapinfoSearch.h>
#include <coordsys/ProjEngine.h>
#include <coordsys/ProjLibMetadata.h>
#include <coordsys/SystemSearch.h>
#include <coordsys/TABProjInfo.h>
#include <coordsys/UserCoordSystem.h>

#include <proj.h>

#include <QFileInfo>
#include <QMutexLocker>
#include <QObject>
#include <QRegularExpression>
#include <QTextStream>

#include <algorithm>
#include <optional>
#include <stdexcept>

namespace nivora::cs {
namespace {

constexpr int longestDefinition = 1024 * 1024; ///< of PROJJSON and WKT
constexpr int longestText = 10000;             ///< of everything else

/// The whole sentence that a caller gets.
class NotUnderstood : public CodedError<std::runtime_error>
{
public:
    using CodedError::CodedError;
};

[[noreturn]] void refuse(const QString &reason, Error::Code code = Error::Code::NotUnderstood)
{
    throwCoded<std::runtime_error>(code, reason);
}

/// The code of what went wrong behind a reading; what has none was not understood.
Error::Code codeBehind(const std::exception &reason)
{
    const Error::Code code = Error::codeOf(reason);
    return code == Error::Code::Other || code == Error::Code::Engine ? Error::Code::NotUnderstood : code;
}

QString shownList(const QStringList &items)
{
    return items.isEmpty() ? QObject::tr("нет") : items.join(QStringLiteral("; "));
}

void checkText(const QString &text)
{
    if (text.isEmpty())
        throwCoded<std::invalid_argument>(Error::Code::EmptyText, QObject::tr("Строка КС пустая"));
    if (text.size() >
        (text.startsWith(QLatin1Char('{')) || isWktText(text) ? longestDefinition : longestText))
        refuse(QObject::tr("Текст слишком длинный для системы координат: «%1»").arg(shownText(text)));
    if (text.contains(QChar(QChar::Null)) || !text.isValidUtf16())
        refuse(QObject::tr("В тексте системы координат недопустимые символы: «%1»").arg(shownText(text)));
    if (isNestedTooDeep(text))
        refuse(QObject::tr("Слишком глубокая вложенность скобок: «%1»").arg(shownText(text)));
}

/// The name behind the sign "@": as it stands, when there is such a file, else without blanks and quotes
/// around it. One that begins with a colon would be one of Qt's resources.
QString fileBehind(const QString &input, const QString &bare)
{
    const QString exact = input.startsWith(QLatin1Char('@')) ? input.mid(1) : bare.mid(1);
    const auto local = [](const QString &name) {
        return name.startsWith(QLatin1Char(':')) ? QStringLiteral("./") + name : name;
    };
    if (!exact.isEmpty() && QFileInfo::exists(local(exact)))
        return local(exact);
    return local(withoutQuotes(bare.mid(1).trimmed()));
}

/// How many parameters the projection of a CoordSys string has; nothing for one without a known projection.
std::optional<int> parameterCountIn(const QString &prj)
{
    const CoordSysText text(prj);
    const auto number =
        std::find_if(text.tokens().begin(), text.tokens().end(),
                     [](const CoordSysToken &token) { return token.kind == CoordSysToken::Number; });
    const int projection = number != text.tokens().end() ? number->text.toInt() % 1000 : 0;
    const int count = paramForPrj(projection);
    return count > 0 ? std::make_optional(count) : std::nullopt;
}

QString termName(const QString &term) { return term.section(QLatin1Char('='), 0, 0); }

/// The terms of \p base, without those that \p more states anew, and those of \p more behind them.
QString mergedTerms(const QString &base, const QStringList &more)
{
    QStringList terms = base.simplified().split(QLatin1Char(' '));
    for (const QString &term : more)
        terms.erase(std::remove_if(terms.begin(), terms.end(),
                                   [&](const QString &old) { return termName(old) == termName(term); }),
                    terms.end());
    return (terms + more).join(QLatin1Char(' '));
}

/// Reads one text. Each reader takes a text of its notation and throws when it holds no system.
class Reader
{
public:
    explicit Reader(const CoordSysFactory &factory)
        : m_factory(factory)
    {}

    UserInput read(const QString &input);

private:
    struct NotationRow
    {
        const char *name; ///< for people; a message of the catalogue of translations
        CoordSystemPtr (Reader::*read)(const QString &text);
    };
    static const NotationRow notations[]; ///< by Notation

    /// Line feeds are no separators in it, or stand within quotes.
    static bool hasOwnLines(const QString &text);

    CoordSystemPtr readTagged(const QString &text);
    CoordSystemPtr readDefinition(const QString &text) { return fromDefinition(text, shownText(text)); }
    CoordSystemPtr readAuto(const QString &text);
    CoordSystemPtr readWkt(const QString &text) { return m_factory.createFromWkt(text); }
    CoordSystemPtr readProj(const QString &text);
    CoordSystemPtr readCatalogueLine(const QString &text);
    CoordSystemPtr readCoordSys(const QString &text);
    CoordSystemPtr readCode(const QString &text);
    CoordSystemPtr readName(const QString &text);
    CoordSystemPtr ownSystem(const QString &name) const;

    QString fromFile(const QString &input, const QString &bare);
    QString fromDated(const DatedText &dated);
    CoordSystemPtr fromInit(const QString &proj);
    CoordSystemPtr fromDefinition(const QString &definition, const QString &shown);
    CoordSystemPtr fromCode(const CodeReference &given);
    CoordSystemPtr fromNumber(const QString &number);
    CoordSystemPtr fromEntry(const CoordSystemParams &entry);
    CoordSystemPtr onlyOne(const QVector<NamedSystem> &systems, const QString &text);
    CoordSystemPtr fromNamed(const NamedSystem &named);
    CodeReference canonical(const CodeReference &given) const;
    void noteCompound(const CodeText &codes);
    void noteIdentity(const CoordSystem &system);
    [[noreturn]] void throwUnknownCode(const CodeReference &code) const;
    QStringList nearestNames(const QString &text, const SystemNames &names) const;
    [[noreturn]] void throwUnknown(const QString &text, const SystemNames &names) const;
    [[noreturn]] static void throwAmbiguous(const QString &text, const QVector<NamedSystem> &systems);

    const CoordSysFactory &m_factory;
    QStringList m_notes;
};

const Reader::NotationRow Reader::notations[] = {
    {QT_TRANSLATE_NOOP("QObject", "строка с меткой"), &Reader::readTagged},
    {QT_TRANSLATE_NOOP("QObject", "PROJJSON"), &Reader::readDefinition},
    {QT_TRANSLATE_NOOP("QObject", "WKT"), &Reader::readWkt},
    {QT_TRANSLATE_NOOP("QObject", "строка PROJ"), &Reader::readProj},
    {QT_TRANSLATE_NOOP("QObject", "строка каталога"), &Reader::readCatalogueLine},
    {QT_TRANSLATE_NOOP("QObject", "строка CoordSys"), &Reader::readCoordSys},
    {QT_TRANSLATE_NOOP("QObject", "AUTO"), &Reader::readAuto},
    {QT_TRANSLATE_NOOP("QObject", "код"), &Reader::readCode},
    {QT_TRANSLATE_NOOP("QObject", "URN"), &Reader::readDefinition},
    {QT_TRANSLATE_NOOP("QObject", "название"), &Reader::readName},
};

bool Reader::hasOwnLines(const QString &text)
{
    const Notation notation = notationOf(text, databaseAuthorities);
    return notation == Notation::Wkt || notation == Notation::Json || notation == Notation::CatalogueLine;
}

UserInput Reader::read(const QString &input)
{
    QString text = withoutQuotes(input.trimmed());
    if (text.startsWith(QLatin1Char('@')))
        text = fromFile(input, text);
    checkText(text);
    if (const std::optional<DatedText> dated = datedTextOf(text))
        text = fromDated(*dated);
    const NotationRow &notation = notations[static_cast<int>(notationOf(text, databaseAuthorities))];
    const QString name = QObject::tr(notation.name);
    try {
        const CoordSystemPtr system = (this->*notation.read)(text);
        noteIdentity(*system);
        return {system, m_notes, name};
    } catch (const NotUnderstood &) {
        throw;
    } catch (const std::exception &e) {
        refuse(QObject::tr("Не удалось прочитать систему координат (%1) «%2»: %3")
                   .arg(name, shownText(text), QString::fromUtf8(e.what()).simplified()),
               codeBehind(e));
    }
}

/// A file's line feeds are no separators but in the notations that have lines or text in quotes.
QString Reader::fromFile(const QString &input, const QString &bare)
{
    const QString path = fileBehind(input, bare);
    if (path.isEmpty())
        refuse(QObject::tr("За знаком @ нужно имя файла"));
    const QString text = systemTextInFile(path, m_notes).trimmed();
    if (text.startsWith(QLatin1Char('@')))
        refuse(QObject::tr("Файл %1 ссылается на другой файл").arg(path));
    return hasOwnLines(text) ? text : text.simplified();
}

QString Reader::fromDated(const DatedText &dated)
{
    if (!dated.epoch.isEmpty())
        m_notes << QObject::tr("Эпоха координат %1 в систему не входит").arg(dated.epoch);
    checkText(dated.system);
    return dated.system;
}

// ---- Tags and CoordSys strings

CoordSystemPtr Reader::readTagged(const QString &text)
{
    const QString tag = tagOf(text);
    const QString body = text.mid(tag.size() + 1).trimmed();
    if (tag == QLatin1String("wkt"))
        return m_factory.createFromWkt(body);
    if (tag == QLatin1String("prj"))
        return readCoordSys(body);
    if (tag != QLatin1String("oracle"))
        return projTextOf(body) ? readProj(body) : m_factory.createFromProj(body);
    bool isNumber = false;
    const int srid = body.toInt(&isNumber);
    if (!isNumber)
        refuse(QObject::tr("«%1» не номер Oracle").arg(shownText(body)));
    return m_factory.createFromOracleSRID(srid);
}

CoordSystemPtr Reader::readCoordSys(const QString &text)
{
    try {
        const CoordSystemPtr system = m_factory.createFromPrj(text.simplified()); // it may go over lines
        m_notes << system->assumptions();
        return system;
    } catch (const NotEnoughtParamsException &e) {
        const std::optional<int> count = parameterCountIn(text);
        if (!count)
            throw;
        refuse(QObject::tr("%1: за датумом и единицей у этой проекции %2 чисел")
                   .arg(QString::fromUtf8(e.what()), QString::number(*count)));
    }
}

CoordSystemPtr Reader::readCatalogueLine(const QString &text)
{
    QString lines = text;
    QTextStream stream(&lines);
    MapinfoPrjReader reader(&stream);
    QVector<CoordSystemParams> entries;
    while (reader.readNext())
        if (reader.capturedCategoryName().isNull())
            entries << reader.prj();
    if (entries.size() != 1)
        refuse(QObject::tr("Нужна одна строка каталога, а здесь их %1").arg(entries.size()));
    return fromEntry(entries.first());
}

/// The code counts when it is that of the text.
CoordSystemPtr Reader::fromEntry(const CoordSystemParams &entry)
{
    CoordSystemPtr system = readCoordSys(entry.asPrjString());
    if (entry.epsg() > 0) {
        const QString code = QStringLiteral("EPSG:%1").arg(entry.epsg());
        const CoordSystemPtr coded =
            !databaseName(ProjLibMetadata::EPSG, QString::number(entry.epsg())).isEmpty()
                ? m_factory.createFromEpsg(entry.epsg())
                : nullptr;
        if (coded && coded->isEqual(system, true))
            system = coded;
        else
            m_notes << QObject::tr("Код %1 не соответствует параметрам и отброшен").arg(code);
    }
    system->setDescription(entry.name());
    return system;
}

// ---- PROJ text and other definitions

CoordSystemPtr Reader::readProj(const QString &text)
{
    static const QRegularExpression definition(QStringLiteral("\\+(proj|init)="),
                                               QRegularExpression::CaseInsensitiveOption);
    const QString proj = projTextOf(text).value_or(text);
    if (proj.count(definition) > 1 && !proj.contains(QLatin1String("+proj=pipeline")))
        refuse(QObject::tr("Здесь больше одной системы"));
    if (proj.startsWith(QLatin1String("+init="), Qt::CaseInsensitive))
        return fromInit(proj);
    const bool isPlain = text.startsWith(QLatin1String("+proj=")) && !text.contains(QLatin1Char('<'));
    return m_factory.createFromProj(isPlain ? text : proj);
}

CoordSystemPtr Reader::fromInit(const QString &proj)
{
    if (const auto code = initCodeOf(proj))
        return fromCode(*code);
    const QStringList terms = proj.split(QLatin1Char(' '));
    const auto code = initCodeOf(terms.first());
    if (!code)
        refuse(QObject::tr("Неверный код в «%1»").arg(terms.first()));
    return m_factory.createFromProj(mergedTerms(fromCode(*code)->projStr(), terms.mid(1)));
}

/// A system of the Web Map Service for a place.
CoordSystemPtr Reader::readAuto(const QString &text)
{
    const std::optional<QString> known = autoTextOf(text);
    if (!known)
        refuse(QObject::tr("Системы AUTO читаются в виде AUTO:код,долгота,широта; AUTO2 — только в метрах"));
    return fromDefinition(*known, shownText(text));
}

CoordSystemPtr Reader::fromDefinition(const QString &definition, const QString &shown)
{
    const CrsDefinitionPtr identity = CrsDefinition::from(definition);
    if (!identity)
        refuse(QObject::tr("PROJ не знает такой системы"));
    if (!identity->isHorizontal())
        refuse(QObject::tr("КС не имеет плановой части: %1").arg(shown), Error::Code::NoPlane);
    const int epsg = identity->verifiedCode();
    if (epsg > 0 && !identity->hasOwnShift() && !identity->affine()) // which the code's system has not
        return m_factory.createFromEpsg(epsg);
    if (identity->isDemotedTo2D())
        m_notes << QObject::tr("Взята только плановая часть: %1").arg(shown);
    return m_factory.createFromWkt(identity->stored());
}

/// Of systems that their source names: what it has besides a plane, and whether it is out of force.
void Reader::noteIdentity(const CoordSystem &system)
{
    const CoordSystem::SourceData source = system.sourceParameters();
    if (source.type != CoordSystem::Epsg && source.type != CoordSystem::Wkt)
        return;
    const CrsDefinitionPtr identity = privateOf(system).identity();
    if (!identity || !identity->isHorizontal())
        return;
    if (identity->isDemotedTo2D())
        m_notes << QObject::tr("Вертикальная часть опущена."); // as systemInfo() says it
    const QMutexLocker lock(globalProj4Mutex());
    if (proj_is_deprecated(identity->crs()))
        m_notes << QObject::tr("Система помечена в базе как устаревшая: %1")
                       .arg(QString::fromUtf8(proj_get_name(identity->crs())));
}

// ---- Codes

CoordSystemPtr Reader::readCode(const QString &text)
{
    const CodeText codes = *codeTextOf(text, databaseAuthorities);
    noteCompound(codes);
    return fromCode(codes.parts.first());
}

void Reader::noteCompound(const CodeText &codes)
{
    for (int i = 1; i < codes.parts.size(); ++i) {
        const CodeReference part = canonical(codes.parts.at(i));
        if (databaseName(part.authority, part.code).isEmpty())
            throwUnknownCode(part);
    }
    if (codes.parts.size() > 1)
        m_notes << QObject::tr("Взята только плановая часть: %1").arg(canonical(codes.parts.first()).text());
    if (!codes.leftAside.isEmpty())
        m_notes << QObject::tr("Геометрия отброшена: %1").arg(shownText(codes.leftAside));
}

/// With the authority as the database writes it.
CodeReference Reader::canonical(const CodeReference &given) const
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
    refuse(QObject::tr("В базе нет организации %1. Есть: %2. Ближайшее: %3")
               .arg(given.authority, known.join(QStringLiteral(", ")),
                    nearest.isEmpty() ? shownList({}) : nearest + QLatin1Char(':') + given.code),
           Error::Code::UnknownCode);
}

CoordSystemPtr Reader::fromCode(const CodeReference &given)
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
            m_notes << QObject::tr("Кода %1 нет, взят %2").arg(code.text(), candidate.text());
        return candidate.authority == QLatin1String("EPSG")
                   ? m_factory.createFromEpsg(candidate.code.toInt())
                   : fromDefinition(candidate.text(), candidate.text());
    }
    throwUnknownCode(code);
}

void Reader::throwUnknownCode(const CodeReference &code) const
{
    refuse(QObject::tr("В базе нет системы %1. Ближайшее: %2")
               .arg(code.text(), shownList(nearestCodes(code.authority, code.code))),
           Error::Code::UnknownCode);
}

// ---- Names

/// The user's own system of that name, letter case aside where no name is the same; null without one, and for
/// one that cannot be made.
CoordSystemPtr Reader::ownSystem(const QString &name) const
{
    for (const Qt::CaseSensitivity sensitivity : {Qt::CaseSensitive, Qt::CaseInsensitive})
        for (const UserCoordSystem::CsDataType &branch : m_factory.userCoordSystem()->data())
            for (const UserCoordSystem::CoordSystemParam &entry : branch.entries)
                if (entry.description().simplified().compare(name.simplified(), sensitivity) == 0)
                    return entry.storedSystem();
    return nullptr;
}

CoordSystemPtr Reader::readName(const QString &text)
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
        m_notes << QObject::tr("Взята только плановая часть: %1").arg(text.left(plus).trimmed());
        return readName(text.left(plus));
    }
    if (systems.isEmpty())
        throwUnknown(text, names);
    if (systems.size() > 1)
        throwAmbiguous(text, systems);
    if (!loose.isEmpty())
        m_notes << QObject::tr("Понято как %1").arg(systems.first().shown());
    return fromNamed(systems.first());
}

/// An entry that is not the one of its code keeps its own figures.
CoordSystemPtr Reader::fromNamed(const NamedSystem &named)
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

void Reader::throwAmbiguous(const QString &text, const QVector<NamedSystem> &systems)
{
    QStringList shown;
    for (const NamedSystem &system : systems)
        shown << system.shown();
    throw NotUnderstood(
        Error::Code::AmbiguousName,
        QObject::tr("Название «%1» носят несколько систем: %2").arg(shownText(text), shownList(shown)));
}

/// What the search finds for the text, as everywhere else. Names that look alike stand before that when words
/// had to be left out, as of "WGS 85".
QStringList Reader::nearestNames(const QString &text, const SystemNames &names) const
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

void Reader::throwUnknown(const QString &text, const SystemNames &names) const
{
    const QString remark = names.remark(text);
    if (!remark.isEmpty())
        throw NotUnderstood(Error::Code::NotUnderstood,
                            QStringLiteral("%1: %2").arg(shownText(text), remark));
    if (QFileInfo(text).isFile())
        throw NotUnderstood(
            Error::Code::NotUnderstood,
            QObject::tr("«%1» — файл: чтобы прочитать его, напишите @%1").arg(shownText(text)));
    const QStringList nearest = nearestNames(text, names);
    QStringList tried;
    for (const NotationRow &notation : notations)
        tried << QObject::tr(notation.name);
    throw NotUnderstood(
        Error::Code::NotUnderstood,
        QObject::tr("Непонятно, какая это система координат: «%1». Проверено: %2. Ближайшее: %3")
            .arg(shownText(text), tried.join(QStringLiteral(", ")), shownList(nearest)));
}

} // namespace

UserInput CoordSysFactory::readUserInput(const QString &text) const
{
    const CatalogueScope scope(*this);
    return Reader(*this).read(text);
}

CoordSystemPtr CoordSysFactory::createFromUserInput(const QString &text) const
{
    return readUserInput(text).system;
}

} // namespace nivora::cs
