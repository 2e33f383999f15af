#include "StreamFilter.h"

#include "LineReader.h"

#include <algorithm>
#include <unistd.h>

namespace {

constexpr qint64 reportedLines = 20;
constexpr std::string_view badPlace = "* *";

bool passesThrough(std::string_view line)
{
    const auto first = std::find_if_not(line.begin(), line.end(), isBlank);
    return first == line.end() || *first == '#';
}

qint64 totalSize(const QStringList &fileNames)
{
    qint64 total = 0;
    for (const QString &fileName : fileNames) {
        const qint64 size = fileSize(fileName);
        if (size < 0)
            return -1;
        total += size;
    }
    return total;
}

} // namespace

void transformAll(const ListTransform &transform, const QVector<QPointF> &in, QVector<QPointF> &out,
                  std::vector<char> &failed)
{
    failed.assign(static_cast<std::size_t>(in.size()), 0);
    if (in.isEmpty() || transform(in, out))
        return;

    out = in;
    QVector<QPointF> partOut;
    int step = qMax(1, in.size() / 2);
    for (int at = 0; at < in.size();) {
        step = qMin(step, in.size() - at);
        if (transform(in.mid(at, step), partOut)) {
            std::copy(partOut.cbegin(), partOut.cend(), out.begin() + at);
            at += step;
            step *= 2;
        } else if (step > 1) {
            step /= 2;
        } else {
            failed[static_cast<std::size_t>(at++)] = 1;
        }
    }
}

StreamFilter::StreamFilter(const PointReader &reader, const PointWriter &writer, ListTransform transform)
    : m_reader(reader)
    , m_writer(writer)
    , m_transform(std::move(transform))
    , m_out(STDOUT_FILENO)
{}

ExitStatus StreamFilter::run(const QStringList &fileNames, bool showProgress)
{
    const QStringList inputs = fileNames.isEmpty() ? QStringList(QStringLiteral("-")) : fileNames;
    for (const QString &fileName : inputs)
        checkReadable(fileName);

    Progress progress(showProgress, totalSize(inputs));
    for (const QString &fileName : inputs) {
        m_filePrefix = inputs.size() > 1 ? fileName + QStringLiteral(": ") : QString();
        filterFile(fileName, progress);
    }
    progress.clear();
    if (m_badLines > reportedLines)
        complain(QStringLiteral("%1 more lines failed, %2 in all")
                     .arg(QString::number(m_badLines - reportedLines), QString::number(m_badLines)));
    return m_badLines > 0 ? SomeFailed : Success;
}

void StreamFilter::filterFile(const QString &fileName, Progress &progress)
{
    LineReader reader(fileName);
    m_lineNumber = 0;
    while (!reader.atEnd()) {
        const LineReader::Chunk chunk = reader.next();
        readBlock(chunk.text, chunk.oversized);
        transformAll(m_transform, m_points, m_transformed, m_failed);
        writeBlock(progress);
        m_out.flush();
        progress.update(m_bytesBefore + reader.bytesRead(), m_lineNumber);
    }
    m_bytesBefore += reader.bytesRead();
}

void StreamFilter::readBlock(std::string_view text, bool oversized)
{
    m_lines.clear();
    m_reasons.clear();
    m_points.clear();
    while (!text.empty()) {
        const std::size_t length = std::min(text.find('\n'), text.size());
        const bool carriageReturn = length > 0 && text[length - 1] == '\r';
        Line &line = m_lines.emplace_back();
        line.text = text.substr(0, carriageReturn ? length - 1 : length);
        line.carriageReturn = carriageReturn;
        if (oversized)
            markBad(line, "longer than 16 MiB");
        else
            readLine(line);
        text.remove_prefix(std::min(length + 1, text.size()));
    }
}

void StreamFilter::readLine(Line &line)
{
    if (passesThrough(line.text))
        return;
    QPointF point;
    std::string why;
    if (!m_reader.read(line.text, point, line.columns, why)) {
        markBad(line, std::move(why));
        return;
    }
    line.kind = Line::Point;
    line.index = m_points.size();
    m_points << point;
}

void StreamFilter::markBad(Line &line, std::string why)
{
    line.kind = Line::Bad;
    line.index = static_cast<int>(m_reasons.size());
    m_reasons.push_back(std::move(why));
}

void StreamFilter::writeBlock(Progress &progress)
{
    std::string why;
    for (const Line &line : m_lines) {
        ++m_lineNumber;
        if (line.kind == Line::Verbatim)
            m_out.write(line.text);
        else if (line.kind == Line::Bad)
            writeBad(line, m_reasons[static_cast<std::size_t>(line.index)], progress);
        else if (m_failed[static_cast<std::size_t>(line.index)])
            writeBad(line, "the point cannot be transformed", progress);
        else if (!m_writer.write(m_transformed.at(line.index), line.columns, m_out, why))
            writeBad(line, why, progress);
        m_out.write(line.carriageReturn ? std::string_view("\r\n") : std::string_view("\n"));
    }
}

void StreamFilter::writeBad(const Line &line, const std::string &why, Progress &progress)
{
    m_out.write(badPlace);
    m_out.write(line.columns.rest);
    if (++m_badLines > reportedLines)
        return;
    progress.clear();
    report(QStringLiteral("%1line %2: %3")
               .arg(m_filePrefix, QString::number(m_lineNumber), QString::fromStdString(why)));
}
