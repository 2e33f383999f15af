#include "Losses.h"

#include "Output.h"

#include <QObject>

void Losses::add(const QString &what)
{
    if (!m_allowed)
        throw Failure(QObject::tr("%1; --lossy goes on without").arg(what));
    if (!m_all.contains(what))
        m_all << what;
}
