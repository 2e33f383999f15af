#include "writing/Output.h"

#include "reading/Table.h"

#include <platform/files/Publication.h>

#include <QDir>
#include <QFile>
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
    m_files.insert(name, content);
}

void Output::publish() const
{
    if (m_dryRun || m_files.isEmpty())
        return;
    try {
        nivora::files::Publication publication(QDir(m_directory).filePath(m_files.firstKey()));
        for (auto file = m_files.begin(); file != m_files.end(); ++file) {
            QFile fresh(publication.path(file.key()));
            if (!fresh.open(QIODevice::WriteOnly) || fresh.write(*file) != file->size() || !fresh.flush())
                throw Failure(QStringLiteral("%1: %2").arg(file.key(), fresh.errorString()));
        }
        publication.publish(m_files.keys(), {});
    } catch (const nivora::files::PublishError &e) {
        throw Failure(QString::fromLocal8Bit(e.what()));
    }
}

} // namespace catalogue
