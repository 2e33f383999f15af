#include <coordsys/CoordSystem.h>

#include "CoordSystem_p.h"
#include "CrsJudge_p.h"
#include <coordsys/MapHeaderCoordsysConverter.h>

#include <proj.h>

#include <QMutexLocker>
#include <QWriteLocker>

namespace nivora::cs {

bool CoordSystem::isEqual(const CoordSystemPtr &other, bool ignoreRect) const
{
    return other && isEqual(*other, ignoreRect);
}

bool CoordSystem::testEqual(const CoordSystemPtr &a, const CoordSystemPtr &b, bool ignoreRect)
{
    return a->isEqual(b, ignoreRect);
}

bool CoordSystem::isEqual(const CoordSystem &other, bool ignoreRect) const
{
    if (this == &other)
        return true;
    const AskedCatalogues asked(d->m_catalogues);
    return d->isEqualByText(*other.d, ignoreRect) &&
           (d->m_source == other.d->m_source ||
            sameHorizontalCrs(d->judgedIdentity(), other.d->judgedIdentity()));
}

/// The definition that names the system's datum; null where none does. CoordSys text has the driver's names
/// for datums, which are not the database's.
CrsDefinitionPtr CoordSystemPrivate::judgedIdentity() const
{
    if (m_isEntry)
        return codedIdentity();
    return m_source.type == Prj || m_source.type == Oracle ? nullptr : identity();
}

bool CoordSystemPrivate::isEqualByText(const CoordSystemPrivate &other, bool ignoreRect) const
{
    if (!samePj(other) || !sameUnit(other) || !(ignoreRect || sameRect(other)) || !sameAffine(other) ||
        !sameSpecialDatum(other))
        return false;
    if (m_source == other.m_source)
        return true;
    if (m_source.type != Prj || other.m_source.type != Prj)
        return true;
    const auto mine = record();
    const auto others = other.record();
    if (!mine || !others)
        return false;
    const int datum = mine->nDatumId;
    return datum <= 0 || others->nDatumId <= 0 || datum == others->nDatumId;
}

bool CoordSystemPrivate::samePj(const CoordSystemPrivate &other) const
{
    const PJ *const mine = pj();
    const PJ *const others = other.pj();
    if (!mine || !others || mine == others)
        return mine == others;
    const QMutexLocker lock(globalProj4Mutex());
    return proj_is_equivalent_to(mine, others, PJ_COMP_STRICT) != 0;
}

bool CoordSystemPrivate::sameUnit(const CoordSystemPrivate &other) const
{
    const auto manager = activeCatalogues()->projectionParamsManager();
    const auto detected = [&manager](const CoordSystemPrivate &cs) {
        cs.ensureMade();
        const QWriteLocker lock(&cs.m_lock);
        return cs.detectUnitLocked(*manager, nullptr);
    };
    const LinearUnit mine = detected(*this);
    const LinearUnit others = detected(other);
    if (mine && others)
        return mine == others;
    // Units that no catalogue names (an Indian yard, say) are compared by their length.
    return !mine && !others && qFuzzyCompare(osrLinearUnits(nullptr), other.osrLinearUnits(nullptr));
}

bool CoordSystemPrivate::sameAffine(const CoordSystemPrivate &other) const
{
    if (!m_affine || !other.m_affine)
        return !m_affine && !other.m_affine;
    return qFuzzyCompare(*m_affine, *other.m_affine);
}

bool CoordSystemPrivate::sameSpecialDatum(const CoordSystemPrivate &other) const
{
    const QString mine = datumName();
    const QString others = other.datumName();
    if (mine.isNull() || others.isNull() || !(q->isSpecialDatum() || other.q->isSpecialDatum()))
        return true;
    return mine.compare(others, Qt::CaseInsensitive) == 0;
}

} // namespace nivora::cs
