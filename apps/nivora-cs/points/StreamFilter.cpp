#include "StreamFilter.h"

#include "CommandLine.h"

#include <coordsys/BulkTransform.h>

#include <QObject>
#include <QThread>

#include <algorithm>
#include <cmath>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>

using namespace nivora::cs;

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

/// Fewer than asked for, when the system has no more: the calling thread can do all the work.
template <typename Run> std::vector<std::thread> startThreads(int count, const Run &run)
{
    std::vector<std::thread> threads;
    try {
        for (int i = 0; i < count; ++i)
            threads.emplace_back(run);
    } catch (const std::system_error &) {
        return threads;
    }
    return threads;
}

} // namespace

PointTransform pointTransform(const CoordTransform &transform, const PointOptions &wanted)
{
    BulkOptions options;
    options.threads = 1; // the blocks have threads of their own
    options.epoch = wanted.epoch;
    options.tally = wanted.tally;
    options.refusesBallpark = wanted.isStrict;
    return [bulk = BulkTransform(transform), options, inverse = wanted.inverse](QVector<QPointF> &points,
                                                                                std::vector<char> &failed) {
        const QVector<QPointF> original = options.refusesBallpark ? points : QVector<QPointF>();
        const BulkResult result =
            inverse ? bulk.inverse(points, points, options) : bulk.forward(points, points, options);
        failed.assign(static_cast<std::size_t>(points.size()), Transformed);
        for (const std::size_t position : result.failed) {
            QPointF loose;
            const QPointF from = original.value(static_cast<int>(position), QPointF(NAN, NAN));
            const bool goes = options.refusesBallpark && (inverse ? bulk.inverse(from, loose, options.epoch)
                                                                  : bulk.forward(from, loose, options.epoch));
            failed[position] = goes ? OnlyBallpark : Untransformable;
        }
    };
}

StreamOptions streamOptions(const CommandLine &line)
{
    constexpr int mostJobs = 256;
    constexpr int mostSkipped = 1000000;
    const int cores = qBound(1, QThread::idealThreadCount(), mostJobs);
    return {line.number("skip", 0, mostSkipped, 0), line.number("jobs", 1, mostJobs, cores),
            line.isSet("progress"), TextCoding(line.value("encoding"))};
}

/// A thread's lists, kept from block to block.
struct StreamFilter::Work
{
    std::vector<Line> lines;
    std::vector<Reason> reasons;
    QVector<QPointF> points;
    std::vector<char> failed;
};

/// A thread's place among those that write.
struct StreamFilter::Turn
{
    qint64 ticket = 0;
    bool hasBlock = false; ///< false at the end of the input
    std::exception_ptr failure;
};

/// Who reads next, and whose turn it is to write.
struct StreamFilter::Queue
{
    BlockSource &source;
    const TextCoding &coding;
    Progress &progress;
    std::mutex input; ///< guards the source and the next ticket
    qint64 nextTicket = 0;
    std::mutex output; ///< guards what follows, and what deliver() writes
    std::condition_variable turnChanged;
    qint64 turn = 0;
    bool done = false;
    std::exception_ptr failure;
};

StreamFilter::StreamFilter(const FileFormat &format, const PointWriter &writer, PointTransform transform,
                           int descriptor)
    : m_format(format)
    , m_writer(writer)
    , m_transform(std::move(transform))
    , m_out(descriptor)
{}

ExitStatus StreamFilter::run(const QStringList &fileNames, const StreamOptions &options)
{
    BlockSource source(m_format, fileNames, options.skip, options.coding);
    Progress progress(options.showProgress, totalSize(source.fileNames()));
    Queue queue{source, options.coding, progress, {}, 0, {}, {}, 0, false, nullptr};
    std::vector<std::thread> threads = startThreads(options.jobs - 1, [this, &queue] { workThrough(queue); });
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
    for (bool done = false; !done;) {
        Turn turn;
        try {
            takeBlock(block, queue, turn);
            if (turn.hasBlock)
                convert(block, work, queue.coding);
        } catch (...) {
            turn.failure = std::current_exception();
        }
        done = finishTurn(block, queue, turn);
    }
}

void StreamFilter::takeBlock(Block &block, Queue &queue, Turn &turn)
{
    const std::lock_guard<std::mutex> lock(queue.input);
    turn.ticket = queue.nextTicket++;
    turn.hasBlock = queue.source.next(block);
}

/// Writes the block when those before it are written. True when there is nothing more to do.
bool StreamFilter::finishTurn(const Block &block, Queue &queue, Turn &turn)
{
    std::unique_lock<std::mutex> lock(queue.output);
    queue.turnChanged.wait(lock, [&] { return queue.done || queue.turn == turn.ticket; });
    if (queue.done)
        return true;
    try {
        if (turn.hasBlock && !turn.failure)
            deliver(block, queue);
    } catch (...) {
        turn.failure = std::current_exception();
    }
    ++queue.turn;
    queue.done = !turn.hasBlock || turn.failure;
    queue.failure = turn.failure;
    queue.turnChanged.notify_all();
    if (queue.done)
        queue.source.interrupt(); // another thread may wait for input
    return queue.done;
}

void StreamFilter::convert(Block &block, Work &work, const TextCoding &coding) const
{
    fill(block, work);
    if (!coding.isNeeded())
        return;
    const std::string encoded = coding.encoded(block.out.view());
    block.out.clear();
    block.out.write(encoded);
}

void StreamFilter::fill(Block &block, Work &work) const
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
    if (block.chunk.oversized)
        return markBad(line, Line::Bad, QT_TRANSLATE_NOOP("QObject", "longer than 16 MiB"), work);
    if (m_format.passesOn(line.text))
        return;
    QPointF point;
    Reason why;
    if (block.reader->read(line.text, point, line.columns, why)) {
        line.kind = Line::Point;
        line.index = work.points.size();
        work.points << point;
        return;
    }
    if (block.kind == Block::FirstLine && !line.columns.located && looksLikeHeader(line.text))
        return markBad(line, Line::Header, Reason(QObject::tr("%1; passed on as a header").arg(why.text())),
                       work);
    if (!isUtf8(line.text))
        why = Reason(QObject::tr("%1 (the line is not UTF-8: see --encoding)").arg(why.text()));
    markBad(line, Line::Bad, std::move(why), work);
}

void StreamFilter::markBad(Line &line, Line::Kind kind, Reason why, Work &work)
{
    line.kind = kind;
    line.index = static_cast<int>(work.reasons.size());
    work.reasons.push_back(std::move(why));
}

void StreamFilter::writeBlock(Block &block, Work &work) const
{
    const std::string_view text = block.chunk.text;
    const auto lineNumber = [&text](const char *at) { return 1 + std::count(text.data(), at, '\n'); };
    block.lineCount = std::count(text.begin(), text.end(), '\n');
    Reason why;
    for (const Line &line : work.lines) {
        if (!writeLine(line, work, block.out, why)) {
            ++block.badLines;
            if (block.reports.size() < reportedLines)
                block.reports.emplace_back(lineNumber(line.text.data()), std::move(why));
        }
        block.out.write(line.end.empty() && !m_format.keepsBytes() ? std::string_view("\n") : line.end);
    }
}

bool StreamFilter::writeLine(const Line &line, const Work &work, TextBuffer &out, Reason &why) const
{
    const auto index = static_cast<std::size_t>(line.index);
    if (line.kind == Line::Verbatim || line.kind == Line::Header)
        out.write(line.text);
    if (line.kind == Line::Verbatim)
        return true;
    if (line.kind != Line::Point) {
        why = work.reasons[index];
        if (line.kind == Line::Bad)
            writeFailed(line.text, columnsOf(line), out);
        return false;
    }
    if (work.failed[index] == OnlyBallpark)
        why = QT_TRANSLATE_NOOP("QObject", "the difference of the datums would be left out there");
    else if (work.failed[index])
        why = QT_TRANSLATE_NOOP("QObject", "the point cannot be transformed");
    else if (m_writer.write(work.points.at(line.index), line.columns, out, why))
        return true;
    writeFailed(line.text, columnsOf(line), out);
    return false;
}

/// What is written in one column leaves one behind when it fails.
Columns StreamFilter::columnsOf(const Line &line) const
{
    Columns columns = line.columns;
    columns.single = columns.single || m_writer.isSingle();
    return columns;
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
        report(QObject::tr("%1line %2: %3").arg(prefix, QString::number(m_lineNumber + line), why.text()));
    }
    m_badLines += block.badLines;
    m_lineNumber += block.lineCount;
    queue.progress.update(block.bytesRead, m_lineNumber);
}
