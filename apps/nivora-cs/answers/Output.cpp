#include "Output.h"

#include <platform/system/Descriptors.h>

#include <QByteArray>
#include <QObject>

#include <cerrno>
#include <cstring>

namespace {

constexpr int longestMessage = 400;

bool wouldBlock(int error) { return error == EAGAIN || error == EWOULDBLOCK; }

} // namespace

QString oneLine(const QString &text)
{
    const QString line = text.simplified();
    if (line.size() <= longestMessage)
        return line;
    const int half = longestMessage / 2;
    return line.left(half) + QStringLiteral(" … ") + line.right(half);
}

void complain(const QString &text) { report(QStringLiteral("nivora-cs: ") + oneLine(text)); }

void report(const QString &line)
{
    const QByteArray utf8 = (line + QLatin1Char('\n')).toUtf8();
    // One call, so that lines of several processes do not mix; nothing can be done when stderr is closed.
    const auto written = nivora::system::writeSome(nivora::system::standardError, utf8.constData(),
                                                   static_cast<std::size_t>(utf8.size()));
    static_cast<void>(written);
}

QString systemMessage(int error) { return QString::fromLocal8Bit(std::strerror(error)); }

Output::Output(int descriptor)
    : m_buffer(std::make_unique<char[]>(capacity))
    , m_descriptor(descriptor)
{}

char *Output::reserve(std::size_t size)
{
    if (size > capacity - m_size)
        flush();
    return m_buffer.get() + m_size;
}

void Output::write(std::string_view bytes)
{
    if (bytes.size() > capacity) {
        flush();
        writeAll(bytes.data(), bytes.size());
        return;
    }
    char *room = reserve(bytes.size());
    bytes.copy(room, bytes.size()); // unlike memcpy, nothing may lie at null
    advance(room + bytes.size());
}

void Output::write(const QString &text)
{
    const QByteArray utf8 = text.toUtf8();
    write(std::string_view(utf8.constData(), static_cast<std::size_t>(utf8.size())));
}

void Output::flush()
{
    const std::size_t size = m_size;
    m_size = 0;
    writeAll(m_buffer.get(), size);
}

void Output::writeAll(const char *bytes, std::size_t size) const
{
    while (size > 0) {
        const std::ptrdiff_t written = nivora::system::writeSome(m_descriptor, bytes, size);
        if (written >= 0) {
            bytes += written;
            size -= static_cast<std::size_t>(written);
        } else if (wouldBlock(errno)) {
            nivora::system::waitForRoom(m_descriptor);
        } else if (errno == EPIPE && m_descriptor == nivora::system::standardOutput) {
            throw ReaderGone();
        } else if (errno != EINTR) {
            throw Failure(QObject::tr("cannot write the output: %1").arg(systemMessage(errno)));
        }
    }
}

void print(const QString &text)
{
    Output out(nivora::system::standardOutput);
    out.write(text);
    out.flush();
}
