#include "UserInputText_p.h"

#include "CoordSysText_p.h"
#include "ProjText_p.h"
#include <coordsys/UserInput.h>

#include <QJsonDocument>
#include <QJsonObject>
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
                R"(^SRID\s*[=:\s]\s*(?<code>\d+)$)",                                         // SRID=4326
                R"(^(\D[^:]*[\s(\[])?(?<authority>EPSG|ESRI|IGNF|OGC):(?<code>\w+)[)\]]?$)", // WGS 84
                                                                                             // (EPSG:4326)
                R"(^(?<authority>EPSG|ESRI|IGNF|OGC):(?<code>\w+)\s*[-–—(,\s]\s*[^+\d:][^:]*$)", // EPSG:4326
                                                                                                 // - WGS 84
                R"(^(?<code>CRS(84h?|83|27))$)",
                R"(^(?<authority>CRS)\s*:\s*(?<code>\d+)$)",                                   // CRS:84
                R"(^(?<authority>[A-Za-z]\w*)\s*:((?<version>[\d.]*):)?\s*(?<code>[\w.-]+)$)", // EPSG::4326
                R"(^(?<authority>EPSG|ESRI)[\s#=_/-]*(code|код)?[\s#=:]*(?<code>\d+)$)",       // epsg 4326
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
        const QString code = match.captured(QStringLiteral("code")).trimmed();
        const bool isOgc = code.startsWith(QLatin1String("CRS"), Qt::CaseInsensitive);
        return CodeReference{!authority.isEmpty() ? authority : QLatin1String(isOgc ? "OGC" : "EPSG"),
                             match.captured(QStringLiteral("version")), code};
    }
    return std::nullopt;
}

/// What stays behind in the hand that copied it: "EPSG:4326;", "[EPSG:4326]"
QString withoutEnds(QString text)
{
    static const QRegularExpression ends(QStringLiteral("[\\s.,;:/]+$"));
    static const QRegularExpression brackets(
        QStringLiteral("^(?:\\[([^][]*)\\]|\\(([^()]*)\\)|<([^<>]*)>|\\{([^{}]*)\\})$"));
    text.remove(ends);
    const QRegularExpressionMatch match = brackets.match(text);
    return match.hasMatch() ? match.captured(match.lastCapturedIndex()).trimmed() : text;
}

/// "IGNF LAMB93"
std::optional<CodeReference> codeBehindAuthority(const QString &text, const Authorities &authorities)
{
    static const QRegularExpression words(QStringLiteral("^([A-Z]\\w+)\\s+([\\w.-]+)$"), anyCase);
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

/// "EPSG:27700+5701", "IGNF:LAMB93+IGN69", "EPSG:4326+EPSG:5773": the authority may stand once.
QVector<CodeReference> joinedCodes(const QString &text)
{
    static const QRegularExpression bare(QStringLiteral("^\\w+$"));
    QVector<CodeReference> codes;
    for (const QString &part : text.split(QLatin1Char('+'))) {
        const QString word = part.trimmed();
        const bool isBare = !codes.isEmpty() && bare.match(word).hasMatch();
        const std::optional<CodeReference> code =
            isBare ? CodeReference{codes.first().authority, QString(), word} : oneCode(word);
        if (!code)
            return {};
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

std::optional<CodeText> codeTextOf(const QString &written, const Authorities &authorities)
{
    if (written.size() > longestCode)
        return std::nullopt;
    const QString text = withoutEnds(written);
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
    const QString title = isSigned ? titleIn(plain) : QString(); // words, which are no terms
    if (isSigned)
        plain = withoutTitle(plain).trimmed();
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
    const QString written = QLatin1Char('+') + terms.join(QStringLiteral(" +"));
    return title.isEmpty() ? written : written + QStringLiteral(" +title=") + title;
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

std::optional<DatedText> datedTextOf(const QString &text)
{
    // "COORDINATEMETADATA[GEOGCRS[…],EPOCH[2016.47]]"
    static const QRegularExpression wkt(QStringLiteral("^COORDINATEMETADATA\\s*[[(]\\s*(.*?)\\s*(?:,\\s*"
                                                       "EPOCH\\s*[[(]\\s*([\\d.]+)\\s*[\\])]\\s*)?[\\])]$"),
                                        anyCase | QRegularExpression::DotMatchesEverythingOption);
    // "EPSG:9057@2016.47"
    static const QRegularExpression code(QStringLiteral("^(\\w+:\\w+)\\s*@\\s*(\\d+(?:\\.\\d*)?)$"));
    for (const QRegularExpression &form : {wkt, code})
        if (const QRegularExpressionMatch match = form.match(text); match.hasMatch())
            return DatedText{match.captured(1), match.captured(2)};
    const QJsonObject json =
        text.startsWith(QLatin1Char('{')) ? QJsonDocument::fromJson(text.toUtf8()).object() : QJsonObject();
    if (json.value(QLatin1String("type")) != QLatin1String("CoordinateMetadata"))
        return std::nullopt;
    const QJsonObject crs = json.value(QLatin1String("crs")).toObject();
    const QJsonValue epoch = json.value(QLatin1String("coordinateEpoch"));
    return DatedText{QString::fromUtf8(QJsonDocument(crs).toJson()),
                     epoch.isDouble() ? QString::number(epoch.toDouble(), 'g', 10) : QString()};
}

bool isAutoText(const QString &text)
{
    static const QRegularExpression form(QStringLiteral("^AUTO2?:"), anyCase);
    return form.match(text).hasMatch();
}

std::optional<QString> autoTextOf(const QString &text)
{
    // "AUTO:42001,-93,0", with a unit's EPSG code "AUTO:42001,9001,-93,0", with its metres
    // "AUTO2:42001,1,-93,0"
    static const QRegularExpression form(
        QStringLiteral("^AUTO(?::(\\d+,(?:\\d+,)?)|2:(\\d+,)1(?:\\.0*)?,)([-+\\d.]+,[-+\\d.]+)$"), anyCase);
    const QRegularExpressionMatch match = form.match(QString(text).remove(QLatin1Char(' ')));
    if (!match.hasMatch())
        return std::nullopt;
    return QStringLiteral("AUTO:") + match.captured(1) + match.captured(2) + match.captured(3);
}

bool isWktText(const QString &text)
{
    // "PROJCRS[" or "geogcs ("; only WKT has such a word and a bracket at its very beginning.
    static const QRegularExpression start(
        QStringLiteral("^(\\w+(CS|CRS)\\s*[[(]|[A-Z]+_CS\\s*[[(]|\\w+\\s*\\[\\s*\")"), anyCase);
    return start.match(text).hasMatch();
}

QString tagOf(const QString &text)
{
    static const QRegularExpression tag(QStringLiteral("^(proj4?|wkt|prj|oracle):"), anyCase);
    return tag.match(text).captured(1).toLower();
}

QString withoutQuotes(const QString &text)
{
    static const QRegularExpression quoted(QStringLiteral("^(?:\"([^\"]*)\"|'([^']*)'|«([^»]*)»)$"));
    const QRegularExpressionMatch match = quoted.match(text);
    return match.hasMatch() ? match.captured(match.lastCapturedIndex()).trimmed() : text;
}

Notation notationOf(const QString &text, const Authorities &authorities)
{
    static const QRegularExpression term(QStringLiteral("^\\+[A-Za-z]")); // "+units=m": PROJ text, cut short
    const auto begins = [&text](const char *with) {
        return text.startsWith(QLatin1String(with), Qt::CaseInsensitive);
    };
    if (!tagOf(text).isEmpty())
        return Notation::Tagged;
    if (begins("{"))
        return Notation::Json;
    if (isWktText(text))
        return Notation::Wkt;
    if (term.match(text).hasMatch() || projTextOf(text))
        return Notation::Proj;
    if (begins("\""))
        return Notation::CatalogueLine;
    if (isCoordSysText(text))
        return Notation::CoordSys;
    if (isAutoText(text))
        return Notation::Auto;
    if (codeTextOf(text, authorities))
        return Notation::Code;
    // One that says more than a code ("…,cs:PROJ::ENh,coordinateOperation:EPSG::16031") is for PROJ to read.
    return begins("urn:") ? Notation::Urn : Notation::Name;
}

bool isSystemDefinition(const QString &text)
{
    const QString bare = withoutQuotes(text.trimmed());
    if (bare.startsWith(QLatin1Char('@')) || datedTextOf(bare))
        return true;
    static const QRegularExpression longCode(QStringLiteral("^(urn:|https?:)"), anyCase);
    const Notation notation = notationOf(bare, [] { return QStringList(); });
    return notation == Notation::Code ? longCode.match(bare).hasMatch() : notation != Notation::Name;
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

QString shownText(const QString &text)
{
    QString line = text.left(2 * longestShown).simplified();
    std::replace_if(
        line.begin(), line.end(), [](QChar c) { return !c.isPrint() && !c.isSurrogate(); },
        QChar(QChar::ReplacementCharacter));
    return line.size() <= longestShown ? line : line.left(longestShown) + QStringLiteral("…");
}

} // namespace nivora::cs
