#include "Output.h"

#include "Table.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QSet>
#include <QTextStream>

namespace catalogue {
namespace {

int linesMissing(const QByteArray &from, const QByteArray &in)
{
    const QList<QByteArray> known = in.split('\n');
    const QSet<QByteArray> set(known.begin(), known.end());
    int missing = 0;
    for (const QByteArray &line : from.split('\n'))
        missing += set.contains(line) ? 0 : 1;
    return missing;
}

} // namespace

void Output::put(const QString &name, const QByteArray &content)
{
    const QString path = QDir(m_directory).filePath(name);
    QFile old(path);
    const QByteArray before = old.open(QIODevice::ReadOnly) ? old.readAll() : QByteArray();
    QTextStream out(stdout);
    if (before == content) {
        out << name << ": unchanged, " << content.count('\n') << " lines\n";
        return;
    }
    ++m_changed;
    out << name << ": " << content.count('\n') << " lines, " << linesMissing(content, before) << " new, "
        << linesMissing(before, content) << " gone\n";
    if (m_dryRun)
        return;
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size() || !file.commit())
        throw Failure(QStringLiteral("%1: %2").arg(path, file.errorString()));
}

} // namespace catalogue
