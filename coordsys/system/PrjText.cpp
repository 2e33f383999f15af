#include <coordsys/PrjText.h>

#include "CatalogueCache_p.h"
#include "CoordSysTexts_p.h"
#include "CoordSystem_p.h"
#include "PrjWriter_p.h"
#include <coordsys/CoordSystemStrings.h>
#include <coordsys/MapHeaderCoordsysConverter.h>
#include <coordsys/SystemInfo.h>

#include <QStringList>

#include <algorithm>
#include <cmath>
#include <optional>

namespace nivora::cs {
namespace {

/// Never destroyed: statics may still ask while the process ends.
CatalogueCache<QString, PrjText> &writtenTexts()
{
    static auto &texts = *new CatalogueCache<QString, PrjText>(1000);
    return texts;
}

/// The second affine transformation behind the first one; both as A to F.
void multiplyIn(const QTransform &second, double *first)
{
    const double a = second.m11(), b = second.m21(), c = second.dx();
    const double d = second.m12(), e = second.m22(), f = second.dy();
    const double p[] = {first[0], first[1], first[2], first[3], first[4], first[5]};
    const double product[] = {a * p[0] + b * p[3], a * p[1] + b * p[4], a * p[2] + b * p[5] + c,
                              d * p[0] + e * p[3], d * p[1] + e * p[4], d * p[2] + e * p[5] + f};
    std::copy(std::begin(product), std::end(product), first);
}

/// Metres of a unit that the notation has no number for; 0 for others.
double unnamedUnitM(const CoordSystem &cs)
{
    if (cs.isLatLong())
        return 0.0;
    try {
        cs.unit();
        return 0.0;
    } catch (const std::exception &) {
        return systemInfo(cs).metresPerUnit;
    }
}

} // namespace

/// An affine clause of the text's own comes before the object's transformation.
QString CoordSystemPrivate::withOwnClauses(const QString &written) const
{
    if (!hasAffineOrBoundsInString(written).affine)
        return withClauses(written, m_affine.get());
    QString text = written;
    if (m_affine) {
        const MapHeaderCoordsysConverter converter;
        TABProjInfo_t record = converter.prjStrToTABProjInfo(written);
        multiplyIn(*m_affine, record.dAffineParams);
        text = converter.tabProjInfoToString(record);
    }
    return q->isRectSet() ? text + boundConditionAsString(m_rect) : text;
}

/// Without affine transformation and bounds.
PrjText CoordSystemPrivate::writtenText() const
{
    const auto catalogues = activeCatalogues();
    if (m_source.type == Epsg)
        if (const auto known = catalogues->writtenText(m_source.string.toInt()))
            return *known;
    const auto write = [this] { return PrjWriter(*q).written(); };
    if (m_source.string.isEmpty() || m_given)
        return write();
    const QString key = QStringLiteral("%1 %2 %3 ")
                            .arg(reinterpret_cast<quintptr>(catalogues.get()))
                            .arg(m_source.type)
                            .arg(m_epsg.load()) +
                        m_source.string;
    if (const std::optional<PrjText> known = writtenTexts().find(key))
        return *known;
    const unsigned since = catalogueRevision();
    return writtenTexts().keep(key, write(), since);
}

QString PrjText::reason() const
{
    const QString metres = QString::number(lackM, 'g', 3);
    switch (lack) {
    case Lack::Projection:
        return CoordSysTexts::tr("у CoordSys нет такой проекции");
    case Lack::Ellipsoid:
        return CoordSysTexts::tr("у CoordSys нет такого эллипсоида, ближайший отличается на %1 м")
            .arg(metres);
    case Lack::PrimeMeridian:
        return CoordSysTexts::tr("у датума в CoordSys другой начальный меридиан");
    case Lack::Plane:
        return CoordSysTexts::tr("плоскость ближайшей строки CoordSys отличается на %1 м").arg(metres);
    case Lack::Places:
        return CoordSysTexts::tr("ни одно место области применения не вычисляется");
    case Lack::Nothing:
        break;
    }
    return {};
}

QString PrjText::remark() const
{
    constexpr double toldM = 1e-3;
    QStringList parts;
    if (planeErrorM > toldM)
        parts << CoordSysTexts::tr("плоскость отличается на %1 м").arg(QString::number(planeErrorM, 'f', 3));
    if (withoutAffineM > toldM)
        parts << CoordSysTexts::tr("программы на GDAL пропускают Affine без сообщения: ошибка до %1 м")
                     .arg(withoutAffineM < 10.0 ? QString::number(withoutAffineM, 'f', 3)
                                                : QString::number(std::round(withoutAffineM), 'f', 0));
    if (unnamedUnitM > 0.0)
        parts << CoordSysTexts::tr("единицы в %1 м у CoordSys нет, строка называет её метром")
                     .arg(QString::number(unnamedUnitM, 'g', 10));
    return parts.join(QStringLiteral("; "));
}

PrjText prjTextOf(const CoordSystem &cs)
{
    const CoordSystemPrivate &own = privateOf(cs);
    const AskedCatalogues asked(own.m_catalogues);
    if (own.m_source.type == CoordSystem::Prj || own.isNonEarth() || !own.hasSrs()) {
        PrjText text;
        text.text = own.sourcePrj();
        return text;
    }
    own.nameAffineUnit();
    PrjText text = own.writtenText();
    if (text.isRefused())
        return text;
    text.text = own.withOwnClauses(text.text);
    text.unnamedUnitM = unnamedUnitM(cs);
    return text;
}

PrjText prjTextWithDatum(const CoordSystem &cs, const QString &datum)
{
    const AskedCatalogues asked(privateOf(cs).m_catalogues);
    const TABProjInfo_t record =
        MapHeaderCoordsysConverter().prjStrToTABProjInfo(QStringLiteral("Earth Projection 1, ") + datum);
    return PrjWriter(cs).withDatum(record);
}

} // namespace nivora::cs
