#include "CommandLine.h"
#include "Commands.h"
#include "CsText.h"
#include "Output.h"
#include "Session.h"

#include <coordsys/Measures.h>

#include <QFile>
#include <QObject>
#include <QRegularExpression>
#include <QVector>

#include <cmath>

using nivora::cs::CoordSystemPtr;
using nivora::cs::Measures;

namespace {

/// Throws Failure, naming the line, for one that is no point; blank lines and comments are passed over.
QVector<QPointF> pointsOf(QIODevice &source, const QString &name)
{
    static const QRegularExpression separator(QStringLiteral("[\\s,;]+")); // "37.6, 55.7"
    QVector<QPointF> points;
    for (int line = 1; !source.atEnd(); ++line) {
        const QString text = QString::fromUtf8(source.readLine()).trimmed();
        if (text.isEmpty() || text.startsWith(QLatin1Char('#')))
            continue;
        const QStringList cells = text.split(separator);
        bool isX = false;
        bool isY = false;
        const QPointF point(cells.value(0).toDouble(&isX), cells.value(1).toDouble(&isY));
        if (!isX || !isY || !std::isfinite(point.x()) || !std::isfinite(point.y()))
            throw Failure(QObject::tr("%1, line %2: no point").arg(name, QString::number(line)));
        points << point;
    }
    return points;
}

QVector<QPointF> readPoints(const QStringList &files)
{
    if (files.size() > 1)
        throw Failure(QObject::tr("measure takes one file"));
    const QString name = files.value(0, QStringLiteral("-"));
    QFile file(name);
    const bool isOpen =
        name == QLatin1String("-") ? file.open(stdin, QIODevice::ReadOnly) : file.open(QIODevice::ReadOnly);
    if (!isOpen)
        throw Failure(QObject::tr("cannot read %1: %2").arg(name, file.errorString()));
    return pointsOf(file, name);
}

QString metres(double value) { return QString::number(value, 'f', 4); }

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

int run(const CommandLine &line)
{
    const Session session(line);
    const CoordSystemPtr cs = systemOfOption(session, line, "cs");
    const QVector<QPointF> points = readPoints(line.arguments());
    const Measures measures(cs);
    const auto length = measures.lengthM(points);
    if (points.size() < 2 || !length)
        throw Failure(points.size() < 2 ? QObject::tr("measure needs two points at least")
                                        : QObject::tr("a point has no place on the earth"));
    print(QObject::tr("Geodesic length: %1 m\n").arg(metres(*length)) +
          (points.size() == 2 ? lineText(measures, points) : polygonText(measures, points)));
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
that the points make when it is closed.

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
