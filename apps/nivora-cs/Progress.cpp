#include "Progress.h"

#include <cstdio>
#include <unistd.h>

namespace {

constexpr int redrawAfterMs = 200;
constexpr int width = 40;

} // namespace

Progress::Progress(bool wanted, qint64 totalBytes)
    : m_active(wanted && ::isatty(STDERR_FILENO) == 1)
    , m_totalBytes(totalBytes)
{
    m_sinceDrawn.start();
}

void Progress::update(qint64 bytes, qint64 lines)
{
    if (!m_active || m_sinceDrawn.elapsed() < redrawAfterMs)
        return;
    m_sinceDrawn.restart();
    m_drawn = true;
    if (m_totalBytes <= 0) {
        std::fprintf(stderr, "\r%lld lines", static_cast<long long>(lines));
    } else {
        const double share = qMin(1.0, static_cast<double>(bytes) / static_cast<double>(m_totalBytes));
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
