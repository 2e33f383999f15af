#include "StreamFilter.h"

#include "CommandLine.h"

#include <QObject>
#include <QThread>

#include <algorithm>
#include <thread>
#include <unistd.h>

using nivora::cs::CoordTransform;

namespace {

constexpr std::size_t reportedLines = 20;
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

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

/// Transforms a list of which some points may fail, with few calls: a part that fails is halved, one that
/// succeeds is followed by one of twice its size, so that neither a lone bad point nor a list of nothing but
/// bad points costs more than a few times the work of a good one.
template <typename ListTransform>
void transformAll(const ListTransform &transform, QVector<QPointF> &points, std::vector<char> &failed)
{
    failed.assign(static_cast<std::size_t>(points.size()), 0);
    QVector<QPointF> out;
    for (int at = 0, step = points.size(); at < points.size();) {
        step = qMin(step, points.size() - at);
        if (transform(points.mid(at, step), out)) {
            std::copy(out.cbegin(), out.cend(), points.begin() + at);
            at += step;
            step *= 2;
        } else if (step > 1) {
            step /= 2;
        } else {
            failed[static_cast<std::size_t>(at++)] = 1;
        }
    }
}

} // namespace

PointTransform pointTransform(const CoordTransform &transform, bool inverse)
{
    return [&transform, inverse](QVector<QPointF> &points, std::vector<char> &failed) {
        const auto step = [&transform, inverse](const QVector<QPointF> &in, QVector<QPointF> &out) {
            return inverse ? transform.inverse(in, out) : transform.forward(in, out);
        };
        transformAll(step, points, failed);
    };
}

StreamOptions streamOptions(const CommandLine &line)
{
    constexpr int mostJobs = 256;
    constexpr int mostSkipped = 1000000;
    const int cores = qBound(1, QThread::idealThreadCount(), mostJobs);
    return {line.number("skip", 0, mostSkipped, 0), line.number("jobs", 1, mostJobs, cores),
            line.isSet("progress")};
}

/// What a line is. Its views are of the block's chunk.
struct StreamFilter::Line
{
    enum Kind { Verbatim, Point, Bad, Header };
    Kind kind = Verbatim;
    int index = 0;         ///< of the point, or of the reason why it is bad
    std::string_view text; ///< without its end
    std::string_view end;
    Columns columns;
};

/// A thread's lists, kept from block to block.
struct StreamFilter::Work
{
    std::vector<Line> lines;
    std::vector<std::string> reasons;
    QVector<QPointF> points;
    std::vector<char> failed;
};

/// Who reads next, and whose turn it is to write.
struct StreamFilter::Queue
{
    BlockSource &source;
    Progress &progress;
    std::mutex input; ///< guards the source and the next ticket
    qint64 nextTicket = 0;
    std::mutex output; ///< guards what follows, and what deliver() writes
    std::condition_variable turnChanged;
    qint64 turn = 0;
    bool done = false;
    std::exception_ptr failure;
};

StreamFilter::StreamFilter(const FileFormat &format, const PointWriter &writer, PointTransform transform)
    : m_format(format)
    , m_writer(writer)
    , m_transform(std::move(transform))
    , m_out(STDOUT_FILENO)
{}

ExitStatus StreamFilter::run(const QStringList &fileNames, const StreamOptions &options)
{
    BlockSource source(m_format, fileNames, options.skip);
    Progress progress(options.showProgress, totalSize(source.fileNames()));
    Queue queue{source, progress, {}, 0, {}, {}, 0, false, nullptr};
    std::vector<std::thread> threads;
    for (int i = 1; i < options.jobs; ++i)
        threads.emplace_back([this, &queue] { workThrough(queue); });
    workThrough(queue);
    for (std::thread &thread : threads)
        thread.join();
    if (queue.failure)
        std::rethrow_exception(queue.failure);
    progress.clear();
    const auto unreported = m_badLines - static_cast<qint64>(reportedLines);
    if (unreported > 0)
        complain(QObject::tr("%1 more lines failed, %2 in all")
                     .arg(QString::number(unreported), QString::number(m_badLines)));
    return m_badLines > 0 ? SomeFailed : Success;
}

void StreamFilter::workThrough(Queue &queue)
{
    Block block;
    Work work;
    for (;;) {
        qint64 ticket = 0;
        bool more = false;
        std::exception_ptr failure;
        try {
            {
                const std::lock_guard<std::mutex> lock(queue.input);
                ticket = queue.nextTicket++;
                more = queue.source.next(block);
            }
            if (more)
                convert(block, work);
        } catch (...) {
            failure = std::current_exception();
        }
        std::unique_lock<std::mutex> lock(queue.output);
        queue.turnChanged.wait(lock, [&] { return queue.done || queue.turn == ticket; });
        if (queue.done)
            return;
        try {
            if (more && !failure)
                deliver(block, queue);
        } catch (...) {
            failure = std::current_exception();
        }
        ++queue.turn;
        queue.done = !more || failure;
        queue.failure = failure;
        queue.turnChanged.notify_all();
        if (!queue.done)
            continue;
        queue.source.interrupt();
        return;
    }
}

void StreamFilter::convert(Block &block, Work &work) const
{
    block.out.clear();
    block.lineCount = 0;
    block.badLines = 0;
    block.reports.clear();
    if (block.kind == Block::Verbatim) {
        const std::string_view text = block.chunk.text;
        block.lineCount = std::count(text.begin(), text.end(), '\n');
        block.out.write(block.replacement.empty() ? text : std::string_view(block.replacement));
        return;
    }
    readBlock(block, work);
    m_transform(work.points, work.failed);
    writeBlock(block, work);
}

void StreamFilter::readBlock(const Block &block, Work &work) const
{
    work.lines.clear();
    work.reasons.clear();
    work.points.clear();
    for (std::string_view text = block.chunk.text; !text.empty();) {
        const std::size_t length = block.reader->lineLength(text);
        const std::size_t behind = std::min(length + 1, text.size());
        const std::size_t bare = length > 0 && text[length - 1] == '\r' ? length - 1 : length;
        Line &line = work.lines.emplace_back();
        line.text = text.substr(0, bare);
        line.end = text.substr(bare, behind - bare);
        readLine(block, line, work);
        text.remove_prefix(behind);
    }
}

void StreamFilter::readLine(const Block &block, Line &line, Work &work) const
{
    std::string why = "longer than 16 MiB";
    QPointF point;
    if (!block.chunk.oversized) {
        if (m_format.passesOn(line.text))
            return;
        why.clear();
        if (block.reader->read(line.text, point, line.columns, why)) {
            line.kind = Line::Point;
            line.index = work.points.size();
            work.points << point;
            return;
        }
    }
    const bool header = block.kind == Block::FirstLine && !line.columns.located && looksLikeHeader(line.text);
    line.kind = header ? Line::Header : Line::Bad;
    line.index = static_cast<int>(work.reasons.size());
    work.reasons.push_back(header ? why + "; passed on as a header" : std::move(why));
}

void StreamFilter::writeBlock(Block &block, Work &work) const
{
    for (const Line &line : work.lines) {
        std::string why;
        if (!writeLine(line, work, block.out, why)) {
            ++block.badLines;
            if (block.reports.size() < reportedLines)
                block.reports.emplace_back(block.lineCount + 1, std::move(why));
        }
        block.out.write(line.end.empty() && !m_format.keepsBytes() ? std::string_view("\n") : line.end);
        block.lineCount += 1 + std::count(line.text.begin(), line.text.end(), '\n');
    }
}

bool StreamFilter::writeLine(const Line &line, const Work &work, TextBuffer &out, std::string &why) const
{
    const auto index = static_cast<std::size_t>(line.index);
    if (line.kind == Line::Verbatim || line.kind == Line::Header)
        out.write(line.text);
    if (line.kind == Line::Verbatim)
        return true;
    if (line.kind != Line::Point) {
        why = work.reasons[index];
        if (line.kind == Line::Bad)
            writeFailed(line.text, line.columns, out);
        return false;
    }
    why = "the point cannot be transformed";
    if (!work.failed[index] && m_writer.write(work.points.at(line.index), line.columns, out, why))
        return true;
    writeFailed(line.text, line.columns, out);
    return false;
}

/// Writes a block when it is its turn.
void StreamFilter::deliver(const Block &block, Queue &queue)
{
    const QStringList &names = queue.source.fileNames();
    if (block.startsFile) {
        m_lineNumber = 0;
        if (m_lacksLineEnd)
            m_out.write(std::string_view("\n"));
    }
    if (block.keepsMark && block.file == 0)
        m_out.write(byteOrderMark);
    const std::string_view text = block.out.view();
    m_out.write(text);
    m_out.flush();
    m_lacksLineEnd = !text.empty() && text.back() != '\n';
    const QString prefix = names.size() > 1 ? names.at(block.file) + QStringLiteral(": ") : QString();
    for (const auto &[line, why] : block.reports) {
        if (m_reported++ >= reportedLines)
            break;
        queue.progress.clear();
        report(QObject::tr("%1line %2: %3")
                   .arg(prefix, QString::number(m_lineNumber + line), QString::fromStdString(why)));
    }
    m_badLines += block.badLines;
    m_lineNumber += block.lineCount;
    queue.progress.update(block.bytesRead, m_lineNumber);
}
