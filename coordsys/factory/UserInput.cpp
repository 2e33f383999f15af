#include "UserInputReader_p.h"

#include "CoordSysText_p.h"
#include "CoordSysTexts_p.h"
#include "CoordSystem_p.h"
#include "CrsDefinition_p.h"
#include "MapinfoScanner_p.h"
#include "UserInputFile_p.h"
#include <coordsys/CoordSystem.h>
#include <coordsys/MapHeaderCoordsysConverter.h>
#include <coordsys/ProjEngine.h>
#include <coordsys/ProjLibMetadata.h>
#include <coordsys/TABProjInfo.h>

#include <proj.h>

#include <QFileInfo>
#include <QMutexLocker>
#include <QRegularExpression>

#include <algorithm>
#include <optional>

namespace nivora::cs {
namespace {

constexpr int longestDefinition = 1024 * 1024; ///< of PROJJSON and WKT
constexpr int longestText = 10000;             ///< of everything else

/// The code of what went wrong behind a reading; what has none was not understood.
Error::Code codeBehind(const std::exception &reason)
{
    const Error::Code code = Error::codeOf(reason);
    return code == Error::Code::Other || code == Error::Code::Engine ? Error::Code::NotUnderstood : code;
}

void checkText(const QString &text)
{
    if (text.isEmpty())
        throwCoded<std::invalid_argument>(Error::Code::EmptyText, CoordSysTexts::tr("Строка КС пустая"));
    if (text.size() >
        (text.startsWith(QLatin1Char('{')) || isWktText(text) ? longestDefinition : longestText))
        refuse(CoordSysTexts::tr("Текст слишком длинный для системы координат: «%1»").arg(shownText(text)));
    if (text.contains(QChar(QChar::Null)) || !text.isValidUtf16())
        refuse(
            CoordSysTexts::tr("В тексте системы координат недопустимые символы: «%1»").arg(shownText(text)));
    if (isNestedTooDeep(text))
        refuse(CoordSysTexts::tr("Слишком глубокая вложенность скобок: «%1»").arg(shownText(text)));
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

} // namespace

[[noreturn]] void refuse(const QString &reason, Error::Code code)
{
    throwCoded<std::runtime_error>(code, reason);
}

QString shownList(const QStringList &items)
{
    return items.isEmpty() ? CoordSysTexts::tr("нет") : items.join(QStringLiteral("; "));
}

const UserInputReader::NotationRow UserInputReader::notations[10] = {
    {QT_TRANSLATE_NOOP("CoordSysTexts", "строка с меткой"), &UserInputReader::readTagged},
    {QT_TRANSLATE_NOOP("CoordSysTexts", "PROJJSON"), &UserInputReader::readDefinition},
    {QT_TRANSLATE_NOOP("CoordSysTexts", "WKT"), &UserInputReader::readWkt},
    {QT_TRANSLATE_NOOP("CoordSysTexts", "строка PROJ"), &UserInputReader::readProj},
    {QT_TRANSLATE_NOOP("CoordSysTexts", "строка каталога"), &UserInputReader::readCatalogueLine},
    {QT_TRANSLATE_NOOP("CoordSysTexts", "строка CoordSys"), &UserInputReader::readCoordSys},
    {QT_TRANSLATE_NOOP("CoordSysTexts", "AUTO"), &UserInputReader::readAuto},
    {QT_TRANSLATE_NOOP("CoordSysTexts", "код"), &UserInputReader::readCode},
    {QT_TRANSLATE_NOOP("CoordSysTexts", "URN"), &UserInputReader::readDefinition},
    {QT_TRANSLATE_NOOP("CoordSysTexts", "название"), &UserInputReader::readName},
};

bool UserInputReader::hasOwnLines(const QString &text)
{
    const Notation notation = notationOf(text, databaseAuthorities);
    return notation == Notation::Wkt || notation == Notation::Json || notation == Notation::CatalogueLine;
}

UserInput UserInputReader::read(const QString &input)
{
    QString text = withoutQuotes(input.trimmed());
    if (text.startsWith(QLatin1Char('@')))
        text = fromFile(input, text);
    checkText(text);
    if (const std::optional<DatedText> dated = datedTextOf(text))
        text = fromDated(*dated);
    const NotationRow &notation = notations[static_cast<int>(notationOf(text, databaseAuthorities))];
    const QString name = CoordSysTexts::tr(notation.name);
    try {
        const CoordSystemPtr system = (this->*notation.read)(text);
        noteIdentity(*system);
        return {system, m_notes, name};
    } catch (const NotUnderstood &) {
        throw;
    } catch (const std::exception &e) {
        refuse(CoordSysTexts::tr("Не удалось прочитать систему координат (%1) «%2»: %3")
                   .arg(name, shownText(text), QString::fromUtf8(e.what()).simplified()),
               codeBehind(e));
    }
}

/// A file's line feeds are no separators but in the notations that have lines or text in quotes.
QString UserInputReader::fromFile(const QString &input, const QString &bare)
{
    const QString path = fileBehind(input, bare);
    if (path.isEmpty())
        refuse(CoordSysTexts::tr("За знаком @ нужно имя файла"));
    const QString text = systemTextInFile(path, m_notes).trimmed();
    if (text.startsWith(QLatin1Char('@')))
        refuse(CoordSysTexts::tr("Файл %1 ссылается на другой файл").arg(path));
    return hasOwnLines(text) ? text : text.simplified();
}

QString UserInputReader::fromDated(const DatedText &dated)
{
    if (!dated.epoch.isEmpty())
        m_notes << CoordSysTexts::tr("Эпоха координат %1 в систему не входит").arg(dated.epoch);
    checkText(dated.system);
    return dated.system;
}

// ---- Tags and CoordSys strings

CoordSystemPtr UserInputReader::readTagged(const QString &text)
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
        refuse(CoordSysTexts::tr("«%1» не номер Oracle").arg(shownText(body)));
    return m_factory.createFromOracleSRID(srid);
}

CoordSystemPtr UserInputReader::readCoordSys(const QString &text)
{
    try {
        const CoordSystemPtr system = m_factory.createFromPrj(text.simplified()); // it may go over lines
        m_notes << system->assumptions();
        return system;
    } catch (const NotEnoughtParamsException &e) {
        const std::optional<int> count = parameterCountIn(text);
        if (!count)
            throw;
        refuse(CoordSysTexts::tr("%1: за датумом и единицей у этой проекции %2 чисел")
                   .arg(QString::fromUtf8(e.what()), QString::number(*count)));
    }
}

CoordSystemPtr UserInputReader::readCatalogueLine(const QString &text)
{
    QList<CoordSystemParamsList> categories;
    const int count = scanCategories(text, categories);
    if (count != 1)
        refuse(CoordSysTexts::tr("Нужна одна строка каталога, а здесь их %1").arg(count));
    return fromEntry(categories.first().entries.first());
}

/// The code counts when it is that of the text.
CoordSystemPtr UserInputReader::fromEntry(const CoordSystemParams &entry)
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
            m_notes << CoordSysTexts::tr("Код %1 не соответствует параметрам и отброшен").arg(code);
    }
    system->setDescription(entry.name());
    return system;
}

// ---- PROJ text and other definitions

CoordSystemPtr UserInputReader::readProj(const QString &text)
{
    static const QRegularExpression definition(QStringLiteral("\\+(proj|init)="),
                                               QRegularExpression::CaseInsensitiveOption);
    const QString proj = projTextOf(text).value_or(text);
    if (proj.count(definition) > 1 && !proj.contains(QLatin1String("+proj=pipeline")))
        refuse(CoordSysTexts::tr("Здесь больше одной системы"));
    if (proj.startsWith(QLatin1String("+init="), Qt::CaseInsensitive))
        return fromInit(proj);
    const bool isPlain = text.startsWith(QLatin1String("+proj=")) && !text.contains(QLatin1Char('<'));
    return m_factory.createFromProj(isPlain ? text : proj);
}

CoordSystemPtr UserInputReader::fromInit(const QString &proj)
{
    if (const auto code = initCodeOf(proj))
        return fromCode(*code);
    const QStringList terms = proj.split(QLatin1Char(' '));
    const auto code = initCodeOf(terms.first());
    if (!code)
        refuse(CoordSysTexts::tr("Неверный код в «%1»").arg(terms.first()));
    return m_factory.createFromProj(mergedTerms(fromCode(*code)->projStr(), terms.mid(1)));
}

/// A system of the Web Map Service for a place.
CoordSystemPtr UserInputReader::readAuto(const QString &text)
{
    const std::optional<QString> known = autoTextOf(text);
    if (!known)
        refuse(CoordSysTexts::tr(
            "Системы AUTO читаются в виде AUTO:код,долгота,широта; AUTO2 — только в метрах"));
    return fromDefinition(*known, shownText(text));
}

CoordSystemPtr UserInputReader::fromDefinition(const QString &definition, const QString &shown)
{
    const CrsDefinitionPtr identity = CrsDefinition::from(definition);
    if (!identity)
        refuse(CoordSysTexts::tr("PROJ не знает такой системы"));
    if (!identity->isHorizontal())
        refuse(CoordSysTexts::tr("КС не имеет плановой части: %1").arg(shown), Error::Code::NoPlane);
    const int epsg = identity->verifiedCode();
    if (epsg > 0 && !identity->hasOwnShift() && !identity->affine()) // which the code's system has not
        return m_factory.createFromEpsg(epsg);
    if (identity->isDemotedTo2D())
        m_notes << CoordSysTexts::tr("Взята только плановая часть: %1").arg(shown);
    return m_factory.createFromWkt(identity->stored());
}

/// Of systems that their source names: what it has besides a plane, and whether it is out of force.
void UserInputReader::noteIdentity(const CoordSystem &system)
{
    const CoordSystem::SourceData source = system.sourceParameters();
    if (source.type != CoordSystem::Epsg && source.type != CoordSystem::Wkt)
        return;
    const CrsDefinitionPtr identity = privateOf(system).identity();
    if (!identity || !identity->isHorizontal())
        return;
    if (identity->isDemotedTo2D())
        m_notes << CoordSysTexts::tr("Вертикальная часть опущена."); // as systemInfo() says it
    const QMutexLocker lock(globalProj4Mutex());
    if (proj_is_deprecated(identity->crs()))
        m_notes << CoordSysTexts::tr("Система помечена в базе как устаревшая: %1")
                       .arg(QString::fromUtf8(proj_get_name(identity->crs())));
}

UserInput CoordSysFactory::readUserInput(const QString &text) const
{
    const CatalogueScope scope(*this);
    return UserInputReader(*this).read(text);
}

CoordSystemPtr CoordSysFactory::createFromUserInput(const QString &text) const
{
    return readUserInput(text).system;
}

} // namespace nivora::cs
