#pragma once

#include "BlockSource.h"
#include "Output.h"
#include "PointText.h"
#include "Progress.h"

#include <coordsys/CoordTransform.h>
#include <coordsys/OperationTally.h>
#include <platform/system/Descriptors.h>

#include <QPointF>
#include <QStringList>
#include <QVector>

#include <functional>
#include <optional>
#include <string_view>
#include <vector>

class CommandLine;

/// Transforms points in place. \p failed has one PointFate a point; what is left of a failed one means
/// nothing. Called by several threads at once.
enum PointFate : char { Transformed = 0, Untransformable = 1, OnlyBallpark = 2 };
using PointTransform = std::function<void(QVector<QPointF> &points, std::vector<char> &failed)>;

/// How points are transformed.
struct PointOptions
{
    bool inverse = false;                        ///< the way back
    std::optional<double> epoch;                 ///< when the coordinates hold, in decimal years
    bool isStrict = false;                       ///< what leaves the datums' difference out fails
    nivora::cs::OperationTally *tally = nullptr; ///< borrowed for as long as points are transformed
};

/// The steps of a transformation.
PointTransform pointTransform(const nivora::cs::CoordTransform &transform, const PointOptions &wanted);

struct StreamOptions
{
    int skip = 0; ///< lines at the beginning of each file that are passed on
    int jobs = 1; ///< threads that work
    bool showProgress = false;
    TextCoding coding;
};
/// The options that all commands with points have. Throws Failure.
StreamOptions streamOptions(const CommandLine &line);

/// Passes files of points, a line each, through a transformation to standard output. The unit of work is what
/// one read brings; each thread reads, converts and writes such blocks in turn, so that memory does not grow
/// with the input and the order stays. A line that cannot be used keeps its place as "*", "*" and its text,
/// and is reported on stderr.
class StreamFilter
{
public:
    /// \p descriptor: where the output goes.
    StreamFilter(const FileFormat &format, const PointWriter &writer, PointTransform transform,
                 int descriptor = nivora::system::standardOutput);

    /// No names: standard input. Throws Failure for a file that cannot be read and for output that cannot be
    /// written; what was read before has been written then.
    ExitStatus run(const QStringList &fileNames, const StreamOptions &options);

private:
    /// What a line is. Its views are of the block's chunk.
    struct Line
    {
        enum Kind { Verbatim, Point, Bad, Header };
        Kind kind = Verbatim;
        int index = 0;         ///< of the point, or of the reason why it is bad
        std::string_view text; ///< without its end
        std::string_view end;
        Columns columns;
    };
    struct Work;
    struct Queue;
    struct Turn;

    void workThrough(Queue &queue);
    static void takeBlock(Block &block, Queue &queue, Turn &turn);
    bool finishTurn(const Block &block, Queue &queue, Turn &turn);
    void convert(Block &block, Work &work, const TextCoding &coding) const;
    void fill(Block &block, Work &work) const;
    void readBlock(const Block &block, Work &work) const;
    void readLine(const Block &block, Line &line, Work &work) const;
    static void markBad(Line &line, Line::Kind kind, Reason why, Work &work);
    void writeBlock(Block &block, Work &work) const;
    Columns columnsOf(const Line &line) const;
    bool writeLine(const Line &line, const Work &work, TextBuffer &out, Reason &why) const;
    void deliver(const Block &block, Queue &queue);

    const FileFormat &m_format;
    const PointWriter &m_writer;
    PointTransform m_transform;
    Output m_out;
    qint64 m_lineNumber = 0; ///< in the file, of the last line written
    qint64 m_badLines = 0;
    std::size_t m_reported = 0;
    bool m_lacksLineEnd = false; ///< the last line written
};
