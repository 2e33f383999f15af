#include "EllipsoidOperation_p.h"

#include <platform/Utils.h>

#include <proj.h>

#include <QMutexLocker>

#include <cmath>

namespace nivora::cs {

EllipsoidOperation::EllipsoidOperation(const QString &terms, double semiMajorM, double inverseFlattening)
{
    const QString second = inverseFlattening == 0.0
                               ? QStringLiteral("+b=") + utils::toString(semiMajorM)
                               : QStringLiteral("+rf=") + utils::toString(inverseFlattening);
    const QByteArray text =
        QStringLiteral("%1 +a=%2 %3").arg(terms, utils::toString(semiMajorM), second).toLatin1();
    const QMutexLocker lock(globalProj4Mutex());
    m_pj = ownPj(proj_create(globalProjContext(), text.constData()));
    if (!m_pj)
        throw ProjException(QString());
}

EllipsoidOperation::Numbers EllipsoidOperation::trans(int direction, const Numbers &in) const
{
    const QMutexLocker lock(globalProj4Mutex());
    const PJ_COORD out = proj_trans(m_pj.get(), static_cast<PJ_DIRECTION>(direction),
                                    proj_coord(in[0], in[1], in[2], HUGE_VAL));
    return {out.xyz.x, out.xyz.y, out.xyz.z};
}

} // namespace nivora::cs
