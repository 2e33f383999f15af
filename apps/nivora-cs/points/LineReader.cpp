#include "LineReader.h"

#include "Output.h"
#include "PeopleText.h"

#include <platform/system/Descriptors.h>

#include <QByteArray>
#include <QFile>
#include <QObject>
#include <QTextCodec>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace sys = nivora::system;

namespace {

constexpr std::size_t readSize = 128 * 1024; // some 7000 lines: work enough for a turn
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

bool isStandardInput(const QString &fileName) { return fileName == QLatin1String("-"); }

[[noreturn]] void throwUnreadable(const QString &fileName, int error)
{
    const std::string name = fileName.toStdString();
    double number = 0.0;
    const QString hint =
        readNumber(name, number)
            ? QObject::tr(" (points come in files or by standard input: echo X Y | nivora-cs …)")
            : QString();
    throw Failure(QObject::tr("cannot read %1: %2")
                      .arg(isStandardInput(fileName) ? QStringLiteral("standard input") : fileName,
                           systemMessage(error)) +
                  hint);
}

int openFile(const QString &fileName)
{
    if (isStandardInput(fileName))
        return sys::standardInput;
    const QByteArray path = QFile::encodeName(fileName);
    const int descriptor = sys::openForReading(path.constData());
    if (descriptor < 0)
        throwUnreadable(fileName, errno);
    return descriptor;
}

} // namespace

Interrupt::Interrupt()
{
    if (!sys::makePipe(m_pipe))
        throw Failure(QObject::tr("cannot make a pipe: %1").arg(systemMessage(errno)));
}

Interrupt::~Interrupt()
{
    for (const int descriptor : m_pipe)
        sys::closeDescriptor(descriptor);
}

void Interrupt::raise() const
{
    const auto written = sys::writeSome(m_pipe[1], "", 1);
    static_cast<void>(written); // a full pipe was raised before
}

bool Interrupt::wait(int descriptor) const { return sys::waitForInput(descriptor, m_pipe[0]); }

void Chunk::reserve(std::size_t size, std::size_t kept)
{
    if (size <= m_capacity)
        return;
    m_capacity = 2 * size;
    std::unique_ptr<char[]> larger(new char[m_capacity]);
    std::copy_n(m_buffer.get(), kept, larger.get());
    m_buffer = std::move(larger);
}

LineReader::LineReader(const QString &fileName, const Interrupt &interrupt)
    : m_fileName(fileName)
    , m_interrupt(interrupt)
    , m_descriptor(openFile(fileName))
{}

LineReader::~LineReader()
{
    if (m_descriptor != sys::standardInput)
        sys::closeDescriptor(m_descriptor);
}

void LineReader::setQuotes(std::string_view delimiters) { m_quoteDelimiters = delimiters; }

bool LineReader::next(Chunk &chunk, Amount amount)
{
    chunk.oversized = false;
    chunk.reserve(m_rest.size() + readSize, 0);
    std::size_t size = m_rest.copy(chunk.m_buffer.get(), m_rest.size());
    for (;;) {
        if (const std::size_t end = findEnd(chunk.m_buffer.get(), size, amount))
            return take(chunk, size, end);
        if (m_atEnd)
            return take(chunk, size, size);
        if (size > LongestLine)
            return skipLine(chunk);
        chunk.reserve(size + readSize, size);
        size += fill(chunk.m_buffer.get() + size);
    }
}

/// Hands out what lies before \p end and keeps the rest.
bool LineReader::take(Chunk &chunk, std::size_t size, std::size_t end)
{
    m_rest.assign(chunk.m_buffer.get() + end, size - end);
    m_searched = m_searched < end ? 0 : m_searched - end;
    chunk.text = {chunk.m_buffer.get(), end};
    if (m_atStart && chunk.text.substr(0, byteOrderMark.size()) == byteOrderMark) {
        m_hasMark = true;
        chunk.text.remove_prefix(byteOrderMark.size());
    }
    m_atStart = false;
    return !chunk.text.empty(); // a file may hold a byte order mark alone
}

/// Behind a line end that was not searched before, 0 when there is none.
std::size_t LineReader::findEnd(const char *text, std::size_t size, Amount amount)
{
    const char *const from = text + m_searched;
    const std::size_t count = size - m_searched;
    const bool inQuotes = m_field == Field::Quoted || m_field == Field::QuoteInside;
    if (!m_quoteDelimiters.empty() && (inQuotes || std::memchr(from, '"', count)))
        return findQuotedEnd(text, size, amount);
    const std::string_view fresh(from, count);
    const std::size_t found = amount == OneLine ? fresh.find('\n') : fresh.rfind('\n');
    const std::size_t end = found == std::string_view::npos ? 0 : m_searched + found + 1;
    m_searched = end > 0 && amount == OneLine ? end : size;
    if (count > 0)
        m_field = after(Field::Bare, text[m_searched - 1]);
    return end;
}

std::size_t LineReader::findQuotedEnd(const char *text, std::size_t size, Amount amount)
{
    std::size_t end = 0;
    for (; m_searched < size; ++m_searched) {
        const char c = text[m_searched];
        m_field = after(m_field, c);
        const bool lineEnd = c == '\n' && m_field == Field::Begin;
        if (lineEnd)
            end = m_searched + 1;
        if (lineEnd && amount == OneLine) {
            m_searched = end;
            break;
        }
    }
    return end;
}

LineReader::Field LineReader::after(Field field, char c) const
{
    if (field == Field::Quoted)
        return c == '"' ? Field::QuoteInside : Field::Quoted;
    if (c == '"')
        return field == Field::Bare ? Field::Bare : Field::Quoted;
    const bool begins = c == '\n' || m_quoteDelimiters.find(c) != std::string::npos;
    return begins ? Field::Begin : Field::Bare;
}

bool LineReader::skipLine(Chunk &chunk)
{
    m_atStart = false;
    m_field = Field::Begin;
    m_searched = 0;
    m_rest.clear();
    chunk.text = "\n";
    chunk.oversized = true;
    while (!m_atEnd) {
        char *const buffer = chunk.m_buffer.get();
        const std::size_t size = fill(buffer);
        const void *const lineEnd = std::memchr(buffer, '\n', size);
        if (!lineEnd)
            continue;
        const char *const behind = static_cast<const char *>(lineEnd) + 1;
        m_rest.assign(behind, static_cast<std::size_t>(buffer + size - behind));
        break;
    }
    return true;
}

/// The count of bytes read; none at the end, which an interruption is too.
std::size_t LineReader::fill(char *to)
{
    if (m_bytesRead == 0)
        return readFirst(to);
    return m_utf16 ? readUtf16(to) : readInto(to, readSize);
}

std::size_t LineReader::readInto(char *to, std::size_t size)
{
    for (;;) {
        m_atEnd = !m_interrupt.wait(m_descriptor);
        const std::ptrdiff_t got = m_atEnd ? 0 : sys::readSome(m_descriptor, to, size);
        if (got >= 0) {
            m_bytesRead += got;
            m_atEnd = got == 0;
            return static_cast<std::size_t>(got);
        }
        if (errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR)
            throwUnreadable(m_fileName, errno);
    }
}

/// Waits for the next bytes only where the first ones may be half of a character.
std::size_t LineReader::readFirst(char *to)
{
    constexpr std::size_t telling = 4;
    const auto mayBeUtf16 = [to](std::size_t size) {
        return std::any_of(to, to + size, [](char c) { return c == '\0' || c == '\xFF' || c == '\xFE'; });
    };
    std::size_t size = readInto(to, readSize);
    while (size < telling && !m_atEnd && mayBeUtf16(size))
        size += readInto(to + size, readSize - size);
    if (!looksLikeUtf16({to, size}))
        return size;
    const bool hasMark = *to == '\xFF' || *to == '\xFE';
    const char *const name = hasMark ? "UTF-16" : *to == '\0' ? "UTF-16BE" : "UTF-16LE";
    m_utf16.reset(QTextCodec::codecForName(name)->makeDecoder());
    m_undecoded = QByteArray(to, static_cast<int>(size));
    m_atEnd = false;
    return readUtf16(to);
}

/// Two bytes become three at most.
std::size_t LineReader::readUtf16(char *to)
{
    constexpr int most = static_cast<int>(readSize / 2);
    QByteArray utf8;
    while (utf8.isEmpty() && !m_atEnd) {
        QByteArray raw = m_undecoded.left(most);
        m_undecoded.remove(0, raw.size());
        if (raw.isEmpty()) {
            raw.resize(most);
            raw.resize(static_cast<int>(readInto(raw.data(), most)));
        }
        utf8 = m_utf16->toUnicode(raw).toUtf8();
    }
    std::copy(utf8.begin(), utf8.end(), to);
    return static_cast<std::size_t>(utf8.size());
}

void checkReadable(const QString &fileName)
{
    if (isStandardInput(fileName))
        return;
    const QByteArray path = QFile::encodeName(fileName);
    const sys::FileFacts facts = sys::factsOf(path.constData());
    if (facts.error != 0)
        throwUnreadable(fileName, facts.error);
    if (facts.isFolder)
        throwUnreadable(fileName, EISDIR);
}

qint64 fileSize(const QString &fileName)
{
    const QByteArray path = QFile::encodeName(fileName);
    const sys::FileFacts facts =
        isStandardInput(fileName) ? sys::factsOf(sys::standardInput) : sys::factsOf(path.constData());
    return facts.error == 0 && facts.isRegular ? static_cast<qint64>(facts.size) : -1;
}
