#include "AnswerJson.h"
#include "CommandLine.h"
#include "Commands.h"
#include "CsText.h"
#include "CsvOptions.h"
#include "FileNames.h"
#include "Output.h"
#include "PointText.h"
#include "Reason.h"
#include "Session.h"
#include "SharedOptions.h"

#include <coordsys/Measures.h>

#include <QFile>
#include <QObject>
#include <QVector>

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>

using namespace nivora::cs;

namespace {

using Line = QVector<QPointF>;

/// The lines of points of a file, each behind a blank line or one that begins with '>'.
class LineReading
{
public:
    explicit LineReading(const FileFormat &format)
        : m_format(format)
    {}
    /// What cannot be read is reported and passed over. Throws Failure.
    void read(QIODevice &source);
    const QVector<Line> &lines() const { return m_lines; }
    int badLines() const { return m_badLines; }

private:
    void take(const QByteArray &text);
    bool takeHead(std::string_view text);

    const FileFormat &m_format;
    std::shared_ptr<const PointReader> m_reader; ///< null before the first line
    QVector<Line> m_lines{Line()};
    int m_number = 0;
    int m_badLines = 0;
};

void LineReading::read(QIODevice &source)
{
    while (!source.atEnd())
        take(source.readLine());
    m_lines.erase(std::remove_if(m_lines.begin(), m_lines.end(), [](const Line &l) { return l.isEmpty(); }),
                  m_lines.end());
}

/// True for a header.
bool LineReading::takeHead(std::string_view text)
{
    if (m_reader)
        return false;
    const FileHead head = m_format.head(text);
    m_reader = head.reader;
    return head.isHeader;
}

void LineReading::take(const QByteArray &bytes)
{
    ++m_number;
    const QByteArray text = bytes.trimmed();
    if (text.isEmpty() || text.startsWith('>')) {
        m_lines << Line();
        return;
    }
    const std::string_view view(text.constData(), static_cast<std::size_t>(text.size()));
    if (m_format.passesOn(view) || takeHead(view))
        return;
    QPointF point;
    Columns columns;
    Reason why;
    if (m_reader->read(view, point, columns, why)) {
        m_lines.last() << point;
        return;
    }
    ++m_badLines;
    report(QObject::tr("line %1: %2").arg(QString::number(m_number), why.text()));
}

std::unique_ptr<FileFormat> formatOf(const CommandLine &line, const CoordSystem &cs)
{
    const CoordinateNotation notation{cs.isLatLong(), line.isSet("decimal-comma")};
    checkCsvOptions(line, {"delimiter", "x", "y"});
    if (line.isSet("csv"))
        return std::make_unique<CsvFormat>(csvOptions(line, notation));
    return std::make_unique<PlainFormat>(std::make_shared<XyReader>(notation));
}

void readFile(const QStringList &files, LineReading &reading)
{
    if (files.size() > 1)
        throw Failure(QObject::tr("measure takes one file"));
    const QString name = files.value(0, QStringLiteral("-"));
    QFile file(localPath(name));
    const bool isOpen =
        name == QLatin1String("-") ? file.open(stdin, QIODevice::ReadOnly) : file.open(QIODevice::ReadOnly);
    if (!isOpen)
        throw Failure(QObject::tr("cannot read %1: %2").arg(name, file.errorString()));
    reading.read(file);
}

QString metres(double value) { return QString::number(value, 'f', 4); }

/// The sum of a measure over the parts of a line; nothing when a part has none.
template <typename Measure> std::optional<double> sumOf(const Line &points, Measure &&measure)
{
    double sum = 0.0;
    bool ok = true;
    for (int i = 1; ok && i < points.size(); ++i)
        sum += measure(points.at(i - 1), points.at(i), &ok);
    return ok ? std::make_optional(sum) : std::nullopt;
}

/// The plane's unit; its name is empty where nobody names it.
struct PlaneUnit
{
    QString name;
    double metres = 1.0;
};

PlaneUnit planeUnit(const CoordSystem &cs)
{
    try {
        return cs.isLatLong() ? PlaneUnit{QStringLiteral("m"), 1.0}
                              : PlaneUnit{cs.unit().name(), cs.unit().conversion()};
    } catch (const std::logic_error &) {
        return {};
    }
}

/// By the trapezia under the sides, seen from the first point, whose coordinates may be long.
double planarArea(const Line &points)
{
    double twice = 0.0;
    for (int i = 0; i < points.size(); ++i) {
        const QPointF a = points.at(i) - points.first();
        const QPointF b = points.at((i + 1) % points.size()) - points.first();
        twice += a.x() * b.y() - b.x() * a.y();
    }
    return std::fabs(twice) / 2.0;
}

/// What is known of a line of points; metres, degrees, and the plane's unit.
struct Measured
{
    int points = 0;
    std::optional<double> geodesicM, sphereM, plane, planeArea;
    std::optional<GeodesicLine> geodesic, rhumb; ///< of two points
    std::optional<GeodesicPolygon> polygon;
    PlaneUnit unit;
};

Measured measured(const CoordSystem &cs, const Measures &measures, const Line &points)
{
    Measured m;
    m.points = points.size();
    m.unit = planeUnit(cs);
    m.geodesicM = measures.lengthM(points);
    if (points.size() == 2) {
        m.geodesic = measures.line(points.first(), points.last());
        m.rhumb = measures.rhumbLine(points.first(), points.last());
    }
    m.polygon = measures.polygon(points);
    if (!cs.isNonEarth())
        m.sphereM = sumOf(points, [&cs](const QPointF &a, const QPointF &b, bool *ok) {
            return cs.sphericalDistance(a, b, ok);
        });
    m.plane = sumOf(points,
                    [&cs](const QPointF &a, const QPointF &b, bool *) { return cs.cartesianDistance(a, b); });
    if (points.size() > 2 && !cs.isLatLong())
        m.planeArea = planarArea(points);
    return m;
}

QString degrees(double value) { return QString::number(value, 'f', 9); }

QString geodesicText(const Measured &m)
{
    if (!m.geodesicM)
        return {};
    QString text = QObject::tr("Geodesic length: %1 m\n").arg(metres(*m.geodesicM));
    if (m.geodesic)
        text += QObject::tr("Azimuth at the start: %1°\nAzimuth at the end: %2°\n")
                    .arg(degrees(m.geodesic->startAzimuthDeg), degrees(m.geodesic->endAzimuthDeg));
    if (m.rhumb)
        text += QObject::tr("Rhumb line: %1 m, azimuth %2°\n")
                    .arg(metres(m.rhumb->lengthM), degrees(m.rhumb->startAzimuthDeg));
    if (m.polygon)
        text += QObject::tr("Perimeter when closed: %1 m\nArea when closed: %2 m²\n")
                    .arg(metres(m.polygon->perimeterM), metres(m.polygon->areaM2));
    return text;
}

/// " (on the ellipsoid 5.0000 ft)" where the plane counts in another unit; \p power is 2 for areas.
QString besideText(const Measured &m, const std::optional<double> &valueM, int power)
{
    if (!valueM || m.unit.metres == 1.0 || m.unit.name.isEmpty())
        return {};
    return QObject::tr(" (on the ellipsoid %1)").arg(metres(*valueM / std::pow(m.unit.metres, power)));
}

QString measuredText(const Measured &m)
{
    QString text = geodesicText(m);
    if (m.sphereM)
        text += QObject::tr("Length on a sphere of %1 m: %2 m\n")
                    .arg(QString::number(CoordSystem::EARTH_SPHERE_RADIUS, 'f', 0), metres(*m.sphereM));
    if (m.plane)
        text += QObject::tr("Length in the plane: %1 %2").arg(metres(*m.plane), m.unit.name) +
                besideText(m, m.geodesicM, 1) + QLatin1Char('\n');
    const auto areaM2 = m.polygon ? std::make_optional(m.polygon->areaM2) : std::nullopt;
    if (m.planeArea)
        text += QObject::tr("Area in the plane when closed: %1 %2²").arg(metres(*m.planeArea), m.unit.name) +
                besideText(m, areaM2, 2) + QLatin1Char('\n');
    return text;
}

QJsonObject measuredJson(const Measured &m)
{
    const auto azimuth = [](const std::optional<GeodesicLine> &line, double GeodesicLine::*member) {
        return line ? QJsonValue((*line).*member) : QJsonValue();
    };
    return {{QStringLiteral("points"), m.points},
            {QStringLiteral("geodesicLength"), numberOrNull(m.geodesicM)},
            {QStringLiteral("startAzimuth"), azimuth(m.geodesic, &GeodesicLine::startAzimuthDeg)},
            {QStringLiteral("endAzimuth"), azimuth(m.geodesic, &GeodesicLine::endAzimuthDeg)},
            {QStringLiteral("rhumbLength"), azimuth(m.rhumb, &GeodesicLine::lengthM)},
            {QStringLiteral("rhumbAzimuth"), azimuth(m.rhumb, &GeodesicLine::startAzimuthDeg)},
            {QStringLiteral("perimeter"), m.polygon ? QJsonValue(m.polygon->perimeterM) : QJsonValue()},
            {QStringLiteral("area"), m.polygon ? QJsonValue(m.polygon->areaM2) : QJsonValue()},
            {QStringLiteral("sphereLength"), numberOrNull(m.sphereM)},
            {QStringLiteral("planeLength"), numberOrNull(m.plane)},
            {QStringLiteral("planeArea"), numberOrNull(m.planeArea)},
            {QStringLiteral("planeUnit"), m.unit.name},
            {QStringLiteral("planeUnitMetres"), m.unit.metres}};
}

/// Why a line cannot be measured; empty when it can.
QString refusalOf(const CoordSystem &cs, const Measures &measures, const Line &points)
{
    if (points.size() < 2)
        return QObject::tr("measure needs two points at least");
    return cs.isNonEarth() || measures.lengthM(points) ? QString()
                                                       : QObject::tr("a point has no place on the earth");
}

/// False when one of several lines could not be measured. Throws Failure for a single one.
bool printMeasures(const CommandLine &line, const CoordSystemPtr &cs, const QVector<Line> &lines)
{
    const Measures measures(cs);
    QString text;
    QJsonArray json;
    bool allDone = true;
    for (int i = 0; i < qMax(1, lines.size()); ++i) {
        const QString refusal = refusalOf(*cs, measures, lines.value(i));
        if (!refusal.isEmpty() && lines.size() < 2)
            throw Failure(refusal);
        const QString title =
            lines.size() > 1 ? QObject::tr("Line %1").arg(QString::number(i + 1)) : QString();
        if (!refusal.isEmpty()) {
            complain(title + QStringLiteral(": ") + refusal);
            allDone = false;
            continue;
        }
        const Measured m = measured(*cs, measures, lines.at(i));
        text += (title.isEmpty() ? title : title + QLatin1Char('\n')) + measuredText(m);
        json << measuredJson(m);
    }
    if (line.isSet("json"))
        printJson({{QStringLiteral("measures"), json}});
    else
        print(text);
    return allDone;
}

int run(const CommandLine &line)
{
    const Session session(line);
    const CoordSystemPtr cs = systemOfOption(session, line, "cs");
    const std::unique_ptr<FileFormat> format = formatOf(line, *cs);
    LineReading reading(*format);
    readFile(line.arguments(), reading);
    const bool allDone = printMeasures(line, cs, reading.lines());
    return allDone && reading.badLines() == 0 ? Success : SomeFailed;
}

constexpr const char *help = QT_TRANSLATE_NOOP(
    "QObject", R"(Reads a line of points, x and y on each line of the FILE or of standard input, and
writes its length along geodesics of the system's own ellipsoid; of two points also
the azimuths (from north, clockwise) and the rhumb line, of more the perimeter and
area of the polygon that the points make when it is closed. Beside them stand the
length on a sphere, and length and area in the plane of the coordinates (of
degrees: a degree is as long everywhere), with the ellipsoid's in the same unit.
A blank line, or one that begins with '>', begins another line of points. Points
are written as transform reads them, or stand in a table with --csv; a line without
one is reported and passed over, and the exit status is 1 then.

Examples:
  printf '37.6 55.75\n30.3 59.94\n' | nivora-cs measure --cs 4326
)");

std::vector<Option> options()
{
    return {
        shared::pointSystem,
        shared::csv,
        shared::delimiter,
        shared::x,
        shared::y,
        shared::decimalComma,
        {"json", nullptr, QT_TRANSLATE_NOOP("QObject", "A JSON object.")},
    };
}

} // namespace

const Command &measureCommand()
{
    static const Command command = {
        "measure",
        "--cs CS [options] [FILE]",
        QT_TRANSLATE_NOOP("QObject", "Length, azimuths and area on the ellipsoid of a system."),
        help,
        Command::AnyCount,
        options(),
        run,
    };
    return command;
}
