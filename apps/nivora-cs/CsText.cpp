#include "CsText.h"

#include "CommandLine.h"
#include "NumberText.h"
#include "Output.h"
#include "Session.h"

#include <QFile>
#include <QRegularExpression>

#include <cmath>

using nivora::cs::CoordSystem;
using nivora::cs::CoordSystemPtr;

const char *const coordSystemHelp = QT_TRANSLATE_NOOP(
    "QObject", R"(CS is a coordinate system in one of these notations; a tag may stand before it:
  32637                 EPSG code; also epsg:32637
  oracle:8307           Oracle Spatial number
  '+proj=utm +zone=37'  PROJ string; also proj:... or proj4:...
  'PROJCS["..."]'       WKT 1 or WKT 2; also wkt:...
  'CoordSys Earth Projection 1, 104'
                        MapInfo CoordSys string; also prj:...
  @FILE                 what the file holds, in any of these notations

x is always first: longitude or easting, then latitude or northing, whatever
order an authority has for the system. Angles are degrees. The decimal mark is
the point.
)");

namespace {

struct Tag
{
    const char *text;
    CoordSystem::SourceType type;
};
constexpr Tag tags[] = {
    {"proj:", CoordSystem::Proj4}, {"proj4:", CoordSystem::Proj4},   {"wkt:", CoordSystem::Wkt},
    {"epsg:", CoordSystem::Epsg},  {"oracle:", CoordSystem::Oracle}, {"prj:", CoordSystem::Prj},
};

constexpr qint64 largestFile = 1024 * 1024;

QString readFile(const QString &fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        throw Failure(QObject::tr("cannot read %1: %2").arg(fileName, file.errorString()));
    const QByteArray content = file.read(largestFile + 1);
    if (content.size() > largestFile)
        throw Failure(QObject::tr("%1 is too large for the text of a coordinate system").arg(fileName));
    QString text = QString::fromUtf8(content);
    if (text.startsWith(QChar::ByteOrderMark))
        text.remove(0, 1);
    return text;
}

CoordSystem::SourceType typeByBeginning(const QString &text)
{
    // "PROJCRS[" or "geogcs ("; only WKT has a word followed by a bracket at its very beginning.
    static const QRegularExpression wkt(
        QStringLiteral(
            "^(GEOGCS|PROJCS|LOCAL_CS|GEOCCS|COMPD_CS|VERT_CS|FITTED_CS|GEOGCRS|GEOGRAPHICCRS|GEODCRS|"
            "GEODETICCRS|PROJCRS|PROJECTEDCRS|BOUNDCRS|COMPOUNDCRS|VERTCRS|VERTICALCRS|ENGCRS|"
            "ENGINEERINGCRS|DERIVEDPROJCRS)\\s*[[(]"),
        QRegularExpression::CaseInsensitiveOption);
    // "32637"
    static const QRegularExpression digits(QStringLiteral("^[0-9]+$"));
    if (text.startsWith(QLatin1String("+proj="), Qt::CaseInsensitive))
        return CoordSystem::Proj4;
    if (wkt.match(text).hasMatch())
        return CoordSystem::Wkt;
    return digits.match(text).hasMatch() ? CoordSystem::Epsg : CoordSystem::Prj;
}

CoordSystem::SourceData untagged(const QString &text)
{
    for (const Tag &tag : tags)
        if (text.startsWith(QLatin1String(tag.text), Qt::CaseInsensitive))
            return {tag.type, text.mid(static_cast<int>(qstrlen(tag.text))).trimmed()};
    return {typeByBeginning(text), text};
}

void checkCode(const CoordSystem::SourceData &source)
{
    bool ok = false;
    if (source.string.toInt(&ok) <= 0 || !ok)
        throw Failure((source.type == CoordSystem::Epsg ? QObject::tr("\"%1\" is no EPSG code")
                                                        : QObject::tr("\"%1\" is no Oracle number"))
                          .arg(source.string));
}

} // namespace

CoordSystem::SourceData readSource(const QString &text)
{
    const bool fromFile = text.startsWith(QLatin1Char('@'));
    CoordSystem::SourceData source = untagged((fromFile ? readFile(text.mid(1)) : text).trimmed());
    if (source.type == CoordSystem::Epsg || source.type == CoordSystem::Oracle)
        checkCode(source);
    if (fromFile && source.type != CoordSystem::Wkt)
        source.string = source.string.simplified(); // line ends are no separators in the other notations
    return source;
}

CoordSystemPtr makeSystem(const Session &session, const CoordSystem::SourceData &source)
{
    const nivora::cs::CoordSysFactory &factory = session.factory();
    switch (source.type) {
    case CoordSystem::Proj4:
        return factory.createFromProj(source.string);
    case CoordSystem::Epsg:
        return factory.createFromEpsg(source.string.toInt());
    case CoordSystem::Wkt:
        return factory.createFromWkt(source.string);
    case CoordSystem::Oracle:
        return factory.createFromOracleSRID(source.string.toInt());
    case CoordSystem::Prj:
    case CoordSystem::Unknown:
        break;
    }
    return factory.createFromPrj(source.string);
}

CoordSystemPtr systemOfOption(const Session &session, const CommandLine &line, const char *option)
{
    const QString text = line.required(option);
    try {
        return makeSystem(session, readSource(text));
    } catch (const std::exception &e) {
        throw Failure(QStringLiteral("--%1: %2").arg(QLatin1String(option), QString::fromUtf8(e.what())));
    }
}

int fittingDecimals(const CoordSystem &cs)
{
    constexpr double resolutionM = 1e-4;
    constexpr int forDegrees = 9;
    constexpr int forUnnamedUnit = 6;
    if (cs.isLatLong())
        return forDegrees;
    try {
        const double metres = cs.unit().conversion();
        if (!(metres > 0.0))
            return forUnnamedUnit;
        const double decimals = std::ceil(std::log10(metres / resolutionM) - 1e-9);
        return static_cast<int>(qBound(0.0, decimals, static_cast<double>(mostDecimals)));
    } catch (const std::logic_error &) {
        return forUnnamedUnit;
    }
}
