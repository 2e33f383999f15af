#include "CommandLine.h"
#include "Commands.h"
#include "CsText.h"
#include "FileNames.h"
#include "Output.h"
#include "PointText.h"
#include "Reason.h"
#include "Session.h"

#include <coordsys/Measures.h>

#include <QFile>
#include <QObject>
#include <QVector>

#include <optional>

using nivora::cs::CoordSystem;
using nivora::cs::CoordSystemPtr;
using nivora::cs::Measures;

namespace {

/// Throws Failure, naming the line, for one that is no point; blank lines and comments are passed over.
QVector<QPointF> pointsOf(QIODevice &source, const QString &name, const CoordinateNotation &notation)
{
    const XyReader reader(notation);
    QVector<QPointF> points;
    for (int line = 1; !source.atEnd(); ++line) {
        const QByteArray text = source.readLine().trimmed();
        if (text.isEmpty() || text.startsWith('#'))
            continue;
        QPointF point;
        Columns columns;
        Reason why;
        if (!reader.read({text.constData(), static_cast<std::size_t>(text.size())}, point, columns, why))
            throw Failure(QObject::tr("%1, line %2: %3").arg(name, QString::number(line), why.text()));
        points << point;
    }
    return points;
}

QVector<QPointF> readPoints(const QStringList &files, const CoordinateNotation &notation)
{
    if (files.size() > 1)
        throw Failure(QObject::tr("measure takes one file"));
    const QString name = files.value(0, QStringLiteral("-"));
    QFile file(localPath(name));
    const bool isOpen =
        name == QLatin1String("-") ? file.open(stdin, QIODevice::ReadOnly) : file.open(QIODevice::ReadOnly);
    if (!isOpen)
        throw Failure(QObject::tr("cannot read %1: %2").arg(name, file.errorString()));
    return pointsOf(file, name, notation);
}

QString metres(double value) { return QString::number(value, 'f', 4); }

/// The sum of a measure over the parts of a line; nothing when a part has none.
template <typename Measure> std::optional<double> sumOf(const QVector<QPointF> &points, Measure &&measure)
{
    double sum = 0.0;
    bool ok = true;
    for (int i = 1; ok && i < points.size(); ++i)
        sum += measure(points.at(i - 1), points.at(i), &ok);
    return ok ? std::make_optional(sum) : std::nullopt;
}

QString planeUnit(const CoordSystem &cs)
{
    try {
        return cs.isLatLong() ? QStringLiteral("m") : cs.unit().name();
    } catch (const std::logic_error &) {
        return {}; // a unit that nobody names
    }
}

/// Lengths that do not look at the ellipsoid: on one sphere for all systems, and in the plane.
QString otherLengths(const CoordSystem &cs, const QVector<QPointF> &points)
{
    const auto spherical = sumOf(points, [&cs](const QPointF &a, const QPointF &b, bool *ok) {
        return cs.sphericalDistance(a, b, ok);
    });
    const auto planar = sumOf(
        points, [&cs](const QPointF &a, const QPointF &b, bool *) { return cs.cartesianDistance(a, b); });
    QString text;
    if (spherical && !cs.isNonEarth())
        text = QObject::tr("Length on a sphere of %1 m: %2 m\n")
                   .arg(QString::number(CoordSystem::EARTH_SPHERE_RADIUS, 'f', 0), metres(*spherical));
    if (planar)
        text += QObject::tr("Length in the plane: %1 %2\n").arg(metres(*planar), planeUnit(cs));
    return text;
}

QString lineText(const Measures &measures, const QVector<QPointF> &points)
{
    const auto line = measures.line(points.first(), points.last());
    const auto degrees = [](double value) { return QString::number(value, 'f', 9); };
    return line ? QObject::tr("Azimuth at the start: %1°\nAzimuth at the end: %2°\n")
                      .arg(degrees(line->startAzimuthDeg), degrees(line->endAzimuthDeg))
                : QString();
}

QString polygonText(const Measures &measures, const QVector<QPointF> &points)
{
    const auto polygon = measures.polygon(points);
    return polygon ? QObject::tr("Perimeter when closed: %1 m\nArea when closed: %2 m²\n")
                         .arg(metres(polygon->perimeterM), metres(polygon->areaM2))
                   : QString();
}

/// Nothing of a plan. Throws Failure for points that have no place on the earth.
QString geodesicText(const CoordSystem &cs, const Measures &measures, const QVector<QPointF> &points)
{
    const auto length = measures.lengthM(points);
    if (!length && cs.isNonEarth())
        return {};
    if (!length)
        throw Failure(QObject::tr("a point has no place on the earth"));
    return QObject::tr("Geodesic length: %1 m\n").arg(metres(*length)) +
           (points.size() == 2 ? lineText(measures, points) : polygonText(measures, points));
}

int run(const CommandLine &line)
{
    const Session session(line);
    const CoordSystemPtr cs = systemOfOption(session, line, "cs");
    const QVector<QPointF> points = readPoints(line.arguments(), {cs->isLatLong(), false});
    if (points.size() < 2)
        throw Failure(QObject::tr("measure needs two points at least"));
    print(geodesicText(*cs, Measures(cs), points) + otherLengths(*cs, points));
    return Success;
}

} // namespace

const Command &measureCommand()
{
    static const Command command = {
        "measure",
        "--cs CS [options] [FILE]",
        QT_TRANSLATE_NOOP("QObject", "Length, azimuths and area on the ellipsoid of a system."),
        QT_TRANSLATE_NOOP(
            "QObject", R"(Reads a line of points, x and y on each line of the FILE or of standard input, and
writes its length along geodesics of the system's own ellipsoid; of two points also
the azimuths (from north, clockwise), of more the perimeter and area of the polygon
that the points make when it is closed. Beside them stand the lengths on a sphere
and in the plane of the coordinates (of degrees: a degree is as long everywhere).
Points are written as transform reads them.

Examples:
  printf '37.6 55.75\n30.3 59.94\n' | nivora-cs measure --cs 4326
)"),
        Command::AnyCount,
        {
            {"cs", "CS", QT_TRANSLATE_NOOP("QObject", "The system of the points.")},
        },
        run,
    };
    return command;
}
