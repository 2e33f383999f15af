#include <coordsys/UserInputText_p.h>

#include <coordsys/ProjectionParamsManager.h>
#include <coordsys/TABProjInfo.h>

#include <QRegularExpression>
#include <QStringList>
#include <QUrl>
#include <QUrlQuery>

#include <algorithm>

namespace nivora::cs {
namespace {

constexpr auto anyCase = QRegularExpression::CaseInsensitiveOption;
constexpr int deepestNesting = 64;
constexpr int longestShown = 120;
constexpr int longestCode = 1000;

/// Forms of one code, with the groups "authority" (EPSG when there is none), "version" and "code". The first
/// that fits counts.
const QVector<QRegularExpression> &codeForms()
{
    static const auto made = [] {
        QVector<QRegularExpression> forms;
        for (
            const char *form : {
                R"(^(?<code>\d+)$)", // 4326
                R"(^urn:(x-)?ogc:def:crs:(?<authority>[\w-]+):(?<version>[^:]*):(?<code>[^:]+)$)",
                R"(^urn:(x-)?ogc:def:crs:(?<authority>[\w-]+):(?<code>[^:]+)$)", // without the version's
                                                                                 // place
                R"(^(urn:x-ogc:def:)?crs:(?<authority>EPSG):(?<version>[^:]*):(?<code>\d+)$)",
                R"(^https?://(www\.)?opengis\.net/def/crs/(?<authority>[\w-]+)/(?<version>[^/]+)/(?<code>[^/]+)/?$)",
                R"(^https?://(www\.)?opengis\.net/gml/srs/(?<authority>\w+)\.xml#(?<code>\d+)$)",
                R"(^https?://(www\.)?spatialreference\.org/ref/(?<authority>[\w-]+)/(?<code>[\w-]+)(/.*)?$)",
                R"(^(https?://)?(www\.)?epsg\.io/((?<authority>ESRI):)?(?<code>\d+)([-./].*)?$)",
                R"(^(https?://)?(www\.)?epsg\.org/crs[_/](?<code>\d+)(/.*)?$)",
                R"(^SRID\s*[=:\s]\s*(?<code>\d+)$)",                        // SRID=4326
                R"(^.*\((?<authority>EPSG|ESRI|IGNF|OGC):(?<code>\w+)\)$)", // WGS 84 (EPSG:4326)
                R"(^(?<authority>CRS)\s*:\s*(?<code>\d+)$)",                // CRS:84
                R"(^(?<authority>[A-Za-z]\w*)\s*:((?<version>[\d.]*):)?\s*(?<code>[\w.-]+)$)", // EPSG::4326
                R"(^(?<authority>EPSG|ESRI)[\s#=_-]*(code|код)?[\s#=:]*(?<code>\d+)$)",        // epsg 4326
            })
            forms << QRegularExpression(QString::fromUtf8(form), anyCase);
        return forms;
    }();
    return made;
}

std::optional<CodeReference> oneCode(const QString &text)
{
    for (const QRegularExpression &form : codeForms()) {
        const QRegularExpressionMatch match = form.match(text);
        if (!match.hasMatch())
            continue;
        const QString authority = match.captured(QStringLiteral("authority"));
        return CodeReference{authority.isEmpty() ? QStringLiteral("EPSG") : authority,
                             match.captured(QStringLiteral("version")),
                             match.captured(QStringLiteral("code")).trimmed()};
    }
    return std::nullopt;
}

/// "IGNF LAMB93"
std::optional<CodeReference> codeBehindAuthority(const QString &text,
                                                 const std::function<QStringList()> &authorities)
{
    static const QRegularExpression words(QStringLiteral("^(\\w+)\\s+([\\w.-]+)$"));
    const QRegularExpressionMatch match = words.match(text);
    if (!match.hasMatch() || !authorities().contains(match.captured(1), Qt::CaseInsensitive))
        return std::nullopt;
    return CodeReference{match.captured(1), QString(), match.captured(2)};
}

/// The parts of "urn:ogc:def:crs,crs:EPSG::27700,crs:EPSG::5701"; empty for other texts.
QStringList partsOfUrn(const QString &text)
{
    static const QRegularExpression start(QStringLiteral("^urn:(x-)?ogc:def:crs\\s*,"), anyCase);
    if (!start.match(text).hasMatch())
        return {};
    QStringList parts = text.split(QLatin1Char(',')).mid(1);
    for (QString &part : parts)
        part = QStringLiteral("urn:ogc:def:") + part.trimmed();
    return parts;
}

/// The parts of "http://www.opengis.net/def/crs-compound?1=…&2=…"; empty for other texts.
QStringList partsOfUrl(const QString &text)
{
    static const QRegularExpression start(
        QStringLiteral("^https?://(www\\.)?opengis\\.net/def/crs-compound/?\\?"), anyCase);
    if (!start.match(text).hasMatch())
        return {};
    QStringList parts;
    const QUrlQuery query(QUrl(text).query(QUrl::FullyEncoded));
    for (const auto &item : query.queryItems(QUrl::FullyDecoded))
        parts << item.second;
    return parts;
}

/// "EPSG:27700+5701", "EPSG:4326+EPSG:5773": the authority may stand once.
QVector<CodeReference> joinedCodes(const QString &text)
{
    QVector<CodeReference> codes;
    for (const QString &part : text.split(QLatin1Char('+'))) {
        std::optional<CodeReference> code = oneCode(part.trimmed());
        if (!code)
            return {};
        static const QRegularExpression number(QStringLiteral("^\\s*\\d+\\s*$"));
        if (!codes.isEmpty() && number.match(part).hasMatch())
            code->authority = codes.first().authority;
        codes << *code;
    }
    return codes;
}

QVector<CodeReference> codesOf(const QStringList &parts)
{
    QVector<CodeReference> codes;
    for (const QString &part : parts) {
        const std::optional<CodeReference> code = oneCode(part);
        if (!code)
            return {};
        codes << *code;
    }
    return codes;
}

} // namespace

std::optional<CodeText> codeTextOf(const QString &text, const std::function<QStringList()> &authorities)
{
    if (text.size() > longestCode)
        return std::nullopt;
    // "SRID=4326;POINT(37 55)"
    static const QRegularExpression extended(QStringLiteral("^(SRID\\s*=\\s*\\d+)\\s*;\\s*(.*)$"),
                                             anyCase | QRegularExpression::DotMatchesEverythingOption);
    const QRegularExpressionMatch geometry = extended.match(text);
    if (geometry.hasMatch())
        return CodeText{codesOf({geometry.captured(1)}), geometry.captured(2)};
    if (const auto code = oneCode(text))
        return CodeText{{*code}, {}};
    if (const auto code = codeBehindAuthority(text, authorities))
        return CodeText{{*code}, {}};
    const QStringList parts = partsOfUrn(text) + partsOfUrl(text);
    const QVector<CodeReference> codes = parts.isEmpty() ? joinedCodes(text) : codesOf(parts);
    return codes.isEmpty() ? std::nullopt : std::make_optional(CodeText{codes, {}});
}

std::optional<QString> projTextOf(const QString &text)
{
    // "<32637> +proj=utm +zone=37 <>", as files of PROJ 4 have it
    static const QRegularExpression frame(QStringLiteral("^<[^>]*>\\s*|\\s*<>\\s*$"));
    static const QRegularExpression definition(QStringLiteral("(^|[\\s+])(proj|init)\\s*="), anyCase);
    static const QRegularExpression equals(QStringLiteral("\\s*=\\s*"));
    static const QRegularExpression termStart(QStringLiteral("(^|\\s)\\+\\s*"));
    const bool isSigned = text.contains(QLatin1Char('+'));
    QString plain = QString(text).remove(frame);
    static const QRegularExpression firstTerm(QStringLiteral("^\\+?\\s*\\w+\\s*(=|\\s|$)"));
    if (!definition.match(plain).hasMatch() || !firstTerm.match(plain).hasMatch())
        return std::nullopt;
    plain = plain.simplified().replace(equals, QStringLiteral("="));
    if (isSigned)
        plain.replace(termStart, QStringLiteral(" "));
    QStringList terms = plain.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    std::stable_partition(terms.begin(), terms.end(), [](const QString &term) {
        return term.startsWith(QLatin1String("proj="), Qt::CaseInsensitive) ||
               term.startsWith(QLatin1String("init="), Qt::CaseInsensitive);
    });
    return QLatin1Char('+') + terms.join(QStringLiteral(" +"));
}

std::optional<CodeReference> initCodeOf(const QString &proj)
{
    // "+init=epsg:4326 +type=crs"
    static const QRegularExpression form(
        QStringLiteral("^\\+init=(\\w+):(\\w+)(\\s+\\+(type=crs|no_defs|wktext))*$"), anyCase);
    const QRegularExpressionMatch match = form.match(proj);
    if (!match.hasMatch())
        return std::nullopt;
    return CodeReference{match.captured(1), QString(), match.captured(2)};
}

bool isWktText(const QString &text)
{
    // "PROJCRS[" or "geogcs ("; only WKT has such a word and a bracket at its very beginning.
    static const QRegularExpression start(
        QStringLiteral("^(\\w+(CS|CRS)\\s*[[(]|[A-Z]+_CS\\s*[[(]|\\w+\\s*\\[\\s*\")"), anyCase);
    return start.match(text).hasMatch();
}

bool isCoordSysText(const QString &text)
{
    // "CoordSys Earth", "Earth Projection 1, 104", "nonearth units", "Projection 1, 104", "1, 104"
    static const QRegularExpression start(
        QStringLiteral("^(coordsys\\b|earth(\\s+(projection|bounds|affine)\\b|$)|nonearth\\b|"
                       "projection\\s+\\d|\\d+\\s*,)"),
        anyCase);
    return start.match(text).hasMatch();
}

bool isNestedTooDeep(const QString &text)
{
    int depth = 0;
    bool isQuoted = false;
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (isQuoted && c == QLatin1Char('\\'))
            ++i;
        else if (c == QLatin1Char('"'))
            isQuoted = !isQuoted;
        else if (!isQuoted && QStringLiteral("[{(").contains(c) && ++depth > deepestNesting)
            return true;
        else if (!isQuoted && QStringLiteral("]})").contains(c))
            --depth;
    }
    return false;
}

std::optional<QString> unknownUnitOf(const QString &prj, const ProjectionParamsManager &manager)
{
    // Earth Projection 8, 104, "furlong", 39, 0, 1, 0, 0; a datum of one's own has its figures before the
    // unit
    static const QRegularExpression earth(
        QStringLiteral(
            R"rx(projection\s+\d+\s*,\s*(9999(?:\s*,[^,]*){9}|999(?:\s*,[^,]*){4}|\d+)\s*,\s*"?([^",]+)"?)rx"),
        anyCase);
    // NonEarth Units "furlong"
    static const QRegularExpression plan(QStringLiteral(R"rx(nonearth.*?(?<!affine\s)units\s*"([^"]*)")rx"),
                                         anyCase);
    const QRegularExpressionMatch match = earth.match(prj);
    const QString unit = match.hasMatch() ? match.captured(2) : plan.match(prj).captured(1);
    const QString name = unit.trimmed().toLower();
    if (name.isEmpty() || manager.unitByName(name, std::nothrow))
        return std::nullopt;
    return unit.trimmed();
}

QString shownText(const QString &text)
{
    QString line = text.left(2 * longestShown).simplified();
    std::replace_if(
        line.begin(), line.end(), [](QChar c) { return !c.isPrint() && !c.isSurrogate(); },
        QChar(QChar::ReplacementCharacter));
    return line.size() <= longestShown ? line : line.left(longestShown) + QStringLiteral("…");
}

} // namespace nivora::cs
