#pragma once

#include "Output.h"
#include "PointText.h"
#include "Progress.h"

#include <coordsys/CoordTransform.h>

#include <QPointF>
#include <QStringList>
#include <QVector>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

/// Transforms a list. False when a point fails; the output is then not used.
using ListTransform = std::function<bool(const QVector<QPointF> &in, QVector<QPointF> &out)>;

/// Transforms a list of which some points may fail, with few calls: a part that fails is halved, one that
/// succeeds is followed by one of twice its size, so that neither a lone bad point nor a list of nothing but
/// bad points costs more than a few times the work of a good one. \p failed has one flag a point; what \p out
/// holds for a failed one means nothing.
void transformAll(const ListTransform &transform, const QVector<QPointF> &in, QVector<QPointF> &out,
                  std::vector<char> &failed);

/// Passes files of points, a line each, through a transformation to standard output. Memory does not grow
/// with the input: the unit of work is what one read brings. A line that cannot be used keeps its place as "*
/// *" and is reported on stderr. Blank lines and lines that begin with '#' are passed on as they are.
class StreamFilter
{
public:
    StreamFilter(const PointReader &reader, const PointWriter &writer, ListTransform transform);

    /// No names: standard input. Throws Failure for a file that cannot be read and for output that cannot be
    /// written; what was read before has been written then.
    ExitStatus run(const QStringList &fileNames, bool showProgress);

private:
    struct Line
    {
        enum Kind { Verbatim, Point, Bad };
        Kind kind = Verbatim;
        int index = 0; ///< of the point, or of the reason why it is bad, in the block
        bool carriageReturn = false;
        std::string_view text; ///< without its end
        Columns columns;
    };

    void filterFile(const QString &fileName, Progress &progress);
    void readBlock(std::string_view text, bool oversized);
    void readLine(Line &line);
    void markBad(Line &line, std::string why);
    void writeBlock(Progress &progress);
    void writeBad(const Line &line, const std::string &why, Progress &progress);

    const PointReader &m_reader;
    const PointWriter &m_writer;
    ListTransform m_transform;
    Output m_out;
    std::vector<Line> m_lines; ///< of the block, like the next two
    std::vector<std::string> m_reasons;
    QVector<QPointF> m_points;
    QVector<QPointF> m_transformed;
    std::vector<char> m_failed;
    QString m_filePrefix;     ///< of messages, when there are several files
    qint64 m_bytesBefore = 0; ///< of the files done
    qint64 m_lineNumber = 0;  ///< in the file, of the last line written
    qint64 m_badLines = 0;
};
