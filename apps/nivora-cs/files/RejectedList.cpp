#include "RejectedList.h"

#include "Output.h"

#include <QFileInfo>
#include <QObject>

#include <cmath>

namespace {

// By Rejection::Reason. English whatever the language: the table is for programs too.
constexpr const char *reasons[] = {"cannot be transformed",
                                   "outside the bounds of the output",
                                   "cannot be held by the format",
                                   "the columns hold no coordinates",
                                   "torn at the edge of the output's map",
                                   "reaches where the output's map has no end",
                                   "an edge over more than 180 degrees of longitude may run either way",
                                   "crosses itself, and the edge of the output's map"};

constexpr char header[] = "layer,fid,x,y,reason\n";

QString csvField(QString text)
{
    return QLatin1Char('"') + text.replace(QLatin1Char('"'), QLatin1String("\"\"")) + QLatin1Char('"');
}

/// Nothing for a feature without a vertex.
QString number(double value) { return std::isnan(value) ? QString() : QString::number(value, 'g', 17); }

[[noreturn]] void throwUnwritable(const QFile &file)
{
    throw Failure(QObject::tr("cannot write %1: %2").arg(file.fileName(), file.errorString()));
}

} // namespace

QString RejectedList::nameFor(const QString &out)
{
    return QFileInfo(out).completeBaseName() + QStringLiteral(".rejected.csv");
}

bool RejectedList::isOne(const QString &path)
{
    QFile file(path);
    return QFileInfo(path).isFile() && file.open(QIODevice::ReadOnly) &&
           file.read(sizeof(header) - 1) == header;
}

void RejectedList::add(const QString &layer, const Rejection &rejection)
{
    if (m_count++ == 0) {
        if (!m_file.open(QIODevice::WriteOnly))
            throwUnwritable(m_file);
        m_file.write(header);
    }
    const QString line =
        QStringLiteral("%1,%2,%3,%4,%5\n")
            .arg(csvField(layer), QString::number(rejection.fid), number(rejection.vertex.x()),
                 number(rejection.vertex.y()), QLatin1String(reasons[rejection.reason]));
    m_file.write(line.toUtf8());
}

void RejectedList::close()
{
    m_file.close();
    if (m_file.error() != QFileDevice::NoError)
        throwUnwritable(m_file);
}
