#include "Progress.h"

#include <platform/system/Descriptors.h>

#include <QObject>

#include <cstdio>

namespace {

constexpr int redrawAfterMs = 200;
constexpr int width = 40;

} // namespace

Progress::Progress(bool wanted, qint64 total, Things things)
    : m_active(wanted && nivora::system::isTerminal(nivora::system::standardError))
    , m_total(total)
    , m_things(things)
{
    m_sinceDrawn.start();
}

void Progress::update(qint64 done, qint64 things)
{
    if (!m_active || m_sinceDrawn.elapsed() < redrawAfterMs)
        return;
    m_sinceDrawn.restart();
    m_drawn = true;
    if (m_total <= 0) {
        const QString text = m_things == Lines ? QObject::tr("%1 lines") : QObject::tr("%1 features");
        std::fprintf(stderr, "\r%s", text.arg(things).toUtf8().constData());
    } else {
        const double share = qMin(1.0, static_cast<double>(done) / static_cast<double>(m_total));
        const int filled = static_cast<int>(share * width);
        std::fprintf(stderr, "\r[%.*s%*s] %3d %%", filled, "########################################",
                     width - filled, "", static_cast<int>(share * 100.0));
    }
    std::fflush(stderr);
}

void Progress::clear()
{
    if (!m_drawn)
        return;
    std::fputs("\r\033[K", stderr);
    std::fflush(stderr);
    m_drawn = false;
}
