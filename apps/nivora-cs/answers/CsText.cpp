#include "CsText.h"

#include "CommandLine.h"
#include "FileNames.h"
#include "Output.h"
#include "PeopleText.h"
#include "Session.h"

#include <cmath>

using namespace nivora::cs;

const char *const coordSystemHelp =
    QT_TRANSLATE_NOOP("QObject", R"(CS is a coordinate system, in any of these notations:
  32637                 EPSG code; also EPSG:32637, urn:ogc:def:crs:EPSG::32637,
                        other authorities (ESRI:102100) and OGC:CRS84
  'ETRS89 / UTM zone 32N'
                        a name of the EPSG database or of the catalogue
  '+proj=utm +zone=37'  PROJ string
  'PROJCS["..."]'       WKT 1, WKT 2, WKT of Esri, PROJJSON
  'CoordSys Earth Projection 1, 104'
                        MapInfo CoordSys string; also a line of a catalogue file
  oracle:8307           Oracle Spatial number
  @FILE                 a .prj, .qpj, .wkt, .mif or .tab file

x is always first: longitude or easting, then latitude or northing, whatever
order an authority has for the system. Angles are degrees. Inside these texts the
decimal mark is the point; coordinates may have commas where transform tells so.
)");

UserInput readSystem(const Session &session, const QString &text)
{
    const bool namesFile = text.trimmed().startsWith(QLatin1Char('@'));
    return session.factory().readUserInput(namesFile ? text : typedText(text));
}

CoordSystemPtr systemOfOption(const Session &session, const CommandLine &line, const char *option,
                              Notes notes)
{
    const QString text = line.required(option);
    try {
        const UserInput input = readSystem(session, text);
        for (const QString &note : notes == Notes::Told ? input.notes : QStringList())
            complain(QStringLiteral("--%1: %2").arg(QLatin1String(option), note));
        return input.system;
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
