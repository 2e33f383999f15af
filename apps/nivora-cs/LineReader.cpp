#include "LineReader.h"

#include "Output.h"

#include <QByteArray>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr std::size_t readSize = 256 * 1024;
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

bool isStandardInput(const QString &fileName) { return fileName == QLatin1String("-"); }

[[noreturn]] void throwUnreadable(const QString &fileName, int error)
{
    throw Failure(QStringLiteral("cannot read %1: %2")
                      .arg(isStandardInput(fileName) ? QStringLiteral("standard input") : fileName,
                           systemMessage(error)));
}

int openFile(const QString &fileName)
{
    if (isStandardInput(fileName))
        return STDIN_FILENO;
    const QByteArray path = fileName.toUtf8();
    const int descriptor = ::open(path.constData(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        throwUnreadable(fileName, errno);
    return descriptor;
}

} // namespace

LineReader::LineReader(const QString &fileName)
    : m_fileName(fileName)
    , m_descriptor(openFile(fileName))
    , m_capacity(2 * readSize)
    , m_buffer(std::make_unique<char[]>(m_capacity))
{}

LineReader::~LineReader()
{
    if (m_descriptor != STDIN_FILENO)
        ::close(m_descriptor);
}

LineReader::Chunk LineReader::next()
{
    std::size_t searched = m_begin; // no line end before this
    for (;;) {
        const void *last = ::memrchr(m_buffer.get() + searched, '\n', m_end - searched);
        if (last)
            return take(static_cast<std::size_t>(static_cast<const char *>(last) - m_buffer.get()) + 1);
        if (m_end - m_begin > LongestLine)
            return skipLine();
        const std::size_t kept = m_end - m_begin;
        makeRoom();
        searched = m_begin + kept;
        if (!fill())
            return take(m_end);
    }
}

LineReader::Chunk LineReader::take(std::size_t end)
{
    std::string_view text(m_buffer.get() + m_begin, end - m_begin);
    m_begin = end;
    if (m_atStart && text.substr(0, byteOrderMark.size()) == byteOrderMark)
        text.remove_prefix(byteOrderMark.size());
    m_atStart = false;
    return {text, false};
}

LineReader::Chunk LineReader::skipLine()
{
    m_atStart = false;
    for (;;) {
        m_begin = m_end = 0;
        if (!fill())
            return {"\n", true};
        if (const void *lineEnd = std::memchr(m_buffer.get(), '\n', m_end)) {
            m_begin = static_cast<std::size_t>(static_cast<const char *>(lineEnd) - m_buffer.get()) + 1;
            return {"\n", true};
        }
    }
}

void LineReader::makeRoom()
{
    const std::size_t kept = m_end - m_begin;
    if (kept + readSize > m_capacity) {
        m_capacity *= 2;
        auto larger = std::make_unique<char[]>(m_capacity);
        std::memcpy(larger.get(), m_buffer.get() + m_begin, kept);
        m_buffer = std::move(larger);
    } else {
        std::memmove(m_buffer.get(), m_buffer.get() + m_begin, kept);
    }
    m_begin = 0;
    m_end = kept;
}

bool LineReader::fill()
{
    for (;;) {
        const ssize_t got = ::read(m_descriptor, m_buffer.get() + m_end, readSize);
        if (got >= 0) {
            m_end += static_cast<std::size_t>(got);
            m_bytesRead += got;
            m_atEnd = got == 0;
            return !m_atEnd;
        }
        if (errno == EAGAIN || errno == EWOULDBLOCK) {
            pollfd ready{m_descriptor, POLLIN, 0};
            ::poll(&ready, 1, -1);
        } else if (errno != EINTR) {
            throwUnreadable(m_fileName, errno);
        }
    }
}

void checkReadable(const QString &fileName)
{
    if (isStandardInput(fileName))
        return;
    const QByteArray path = fileName.toUtf8();
    struct stat status;
    if (::stat(path.constData(), &status) != 0 || ::access(path.constData(), R_OK) != 0)
        throwUnreadable(fileName, errno);
    if (S_ISDIR(status.st_mode))
        throwUnreadable(fileName, EISDIR);
}

qint64 fileSize(const QString &fileName)
{
    struct stat status;
    const QByteArray path = fileName.toUtf8();
    const int failed =
        isStandardInput(fileName) ? ::fstat(STDIN_FILENO, &status) : ::stat(path.constData(), &status);
    return failed == 0 && S_ISREG(status.st_mode) ? static_cast<qint64>(status.st_size) : -1;
}
