#include "CodelessSystems_p.h"

#include <coordsys/CoordSystem.h>
#include <coordsys/DefaultRects.h>

#include <QFile>
#include <QFileInfo>

#include <cmath>

namespace nivora::cs {
namespace {

enum Column { Mark, Text, Unit, Box, Extent = Box + 4, Columns = Extent + 4 };

QRectF areaIn(const QList<QByteArray> &cells, int first)
{
    const auto side = [&](int number) { return cells.at(first + number).toDouble(); };
    return {QPointF(side(0), side(1)), QPointF(side(2), side(3))};
}

bool isUsable(const QRectF &area)
{
    return std::isfinite(area.x() + area.y() + area.width() + area.height()) && area.width() > 0.0 &&
           area.height() > 0.0;
}

std::optional<QRectF> onEarth(const CoordSystem &system, const QRectF &box)
{
    if (!system.isLatLong())
        return system.toGeographic(box);
    // What every system of degrees has reaches beyond the poles.
    const QRectF earth = box & QRectF(-180.0, -90.0, 360.0, 180.0);
    return isUsable(earth) ? std::make_optional(earth) : std::nullopt;
}

} // namespace

std::optional<LocatedSystem> located(const CodelessSystem &codeless)
try {
    const CoordSystemPtr system = codeless.make();
    if (!system || system->isNonEarth())
        return std::nullopt;
    const QRectF box = system->rectWithoutSearch();
    const std::optional<QRectF> extent = isUsable(box) ? onEarth(*system, box) : std::nullopt;
    if (!extent || !isUsable(*extent))
        return std::nullopt;
    return LocatedSystem{box, *extent, system->isLatLong() ? 0.0 : system->unit().conversion()};
} catch (const std::exception &) { // its text is kept, whatever it says
    return std::nullopt;
}

CodelessAreas::CodelessAreas(const QFileInfo &info)
{
    QFile file(info.absoluteFilePath());
    if (info.filePath().isEmpty() || !file.open(QIODevice::ReadOnly))
        return;
    for (const QByteArray &line : file.readAll().split('\n')) {
        const QList<QByteArray> cells = line.split('\t');
        if (cells.first() != "=" || cells.size() < 2)
            continue;
        std::optional<LocatedSystem> &known = m_known[QString::fromUtf8(cells.at(1))];
        if (cells.size() == Columns)
            known = LocatedSystem{areaIn(cells, Box), areaIn(cells, Extent), cells.at(Unit).toDouble()};
    }
}

std::optional<LocatedSystem> CodelessAreas::of(const CodelessSystem &codeless) const
{
    const auto known = codeless.text.isEmpty() ? m_known.constEnd() : m_known.constFind(codeless.text);
    return known == m_known.constEnd() ? located(codeless) : *known;
}

QByteArray CodelessAreas::line(const CodelessSystem &codeless)
{
    QList<QByteArray> cells{"=", codeless.text.toUtf8()};
    if (const std::optional<LocatedSystem> there = located(codeless)) {
        cells << QByteArray::number(there->metresPerUnit, 'g', 10);
        for (const QRectF &area : {there->box, there->extent})
            for (const double side : {area.left(), area.top(), area.right(), area.bottom()})
                cells << QByteArray::number(side, 'g', 10);
    }
    return cells.join('\t') + '\n';
}

} // namespace nivora::cs
