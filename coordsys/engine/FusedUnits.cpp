#include "FusedUnits_p.h"

#include <QMutexLocker>
#include <QStringList>

namespace nivora::cs {
namespace {

// As PROJ writes them at the ends of what it makes for two systems in degrees.
const QLatin1String degreesToRadians("+proj=unitconvert +xy_in=deg +xy_out=rad");
const QLatin1String radiansToDegrees("+proj=unitconvert +xy_in=rad +xy_out=deg");
const QLatin1String inverseMark("+inv ");

/// "+proj=pipeline +step A +step +inv B" as A, +inv B. None for an object of another kind: one without a
/// text chooses among operations.
QStringList stepsOf(PJ *pj)
{
    const char *text = proj_as_proj_string(globalProjContext(), pj, PJ_PROJ_5, nullptr);
    QStringList steps = QString::fromUtf8(text).split(QStringLiteral(" +step "));
    const bool isPipeline = steps.takeFirst() == QLatin1String("+proj=pipeline");
    return isPipeline ? steps : QStringList();
}

QString joined(const QStringList &steps)
{
    return QStringLiteral("+proj=pipeline +step ") + steps.join(QLatin1String(" +step "));
}

bool speaksDegrees(const ProjOperation &step, int side)
{
    const CoordinateUnits &in = step.in[side];
    return in.toEngine == 1.0 && in.fromEngine == 1.0;
}

CoordinateUnits forFirstStep(CoordinateUnits end)
{
    end.toEngine = engineRadiansPerDegree;
    end.stands = CoordinateUnits::Stands::ForFirstStep;
    return end;
}

CoordinateUnits forLastStep(CoordinateUnits end)
{
    end.fromEngine = 1.0 / engineRadiansPerDegree;
    end.stands = CoordinateUnits::Stands::ForLastStep;
    return end;
}

/// Takes what it can off the ends; true when that was something.
bool takeEnds(QStringList &steps, ProjOperation &step)
{
    const bool first = steps.size() > 1 && steps.first() == degreesToRadians && speaksDegrees(step, 0);
    if (first)
        steps.removeFirst();
    const bool last = steps.size() > 1 && steps.last() == radiansToDegrees && speaksDegrees(step, 1);
    if (last)
        steps.removeLast();
    step.setEnds(first ? forFirstStep(step.in[0]) : step.in[0], last ? forLastStep(step.in[1]) : step.in[1]);
    return first || last;
}

} // namespace

ProjOperation withFusedUnits(const ProjOperation &step)
{
    const QMutexLocker lock(globalProj4Mutex());
    QStringList steps = stepsOf(step.pj.get());
    ProjOperation lean = step;
    if (!takeEnds(steps, lean))
        return step;
    lean.isInverse = steps.size() == 1 && steps.first().startsWith(inverseMark);
    const QString text = steps.size() > 1 ? joined(steps)
                         : lean.isInverse ? steps.first().mid(inverseMark.size())
                                          : steps.first();
    lean.pj = ownPj(proj_create(globalProjContext(), text.toUtf8().constData()));
    return lean ? lean : step;
}

} // namespace nivora::cs
