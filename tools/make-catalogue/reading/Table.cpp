#include "reading/Table.h"

#include <QFile>

namespace catalogue {

Table::Table(const QString &path)
    : m_path(path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw Failure(QStringLiteral("%1: %2").arg(path, file.errorString()));
    const QStringList lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    for (int i = 0; i < lines.size(); ++i) {
        if (lines[i].isEmpty() || lines[i].startsWith(QLatin1Char('#')))
            continue;
        const QStringList cells = lines[i].split(QLatin1Char('\t'));
        if (m_columns.isEmpty()) {
            m_columns = cells;
            continue;
        }
        if (cells.size() != m_columns.size())
            throw Failure(QStringLiteral("%1:%2: %3 cells in place of %4")
                              .arg(path)
                              .arg(i + 1)
                              .arg(cells.size())
                              .arg(m_columns.size()));
        Row row;
        row.m_table = this;
        row.m_cells = cells;
        row.m_line = i + 1;
        m_rows.push_back(row);
    }
}

const QString &Table::Row::text(const char *column) const
{
    const int index = m_table->m_columns.indexOf(QLatin1String(column));
    if (index < 0)
        throw Failure(QStringLiteral("%1: no column %2").arg(m_table->m_path, QLatin1String(column)));
    return m_cells[index];
}

int Table::Row::integer(const char *column, int empty) const
{
    const QString &cell = text(column);
    bool ok = false;
    const int value = cell.isEmpty() ? (ok = true, empty) : cell.toInt(&ok);
    if (!ok)
        throw Failure(QStringLiteral("%1:%2: no integer: %3").arg(m_table->m_path).arg(m_line).arg(cell));
    return value;
}

double Table::Row::real(const char *column) const
{
    const QString &cell = text(column);
    bool ok = false;
    const double value = cell.toDouble(&ok);
    if (!ok)
        throw Failure(QStringLiteral("%1:%2: no number: %3").arg(m_table->m_path).arg(m_line).arg(cell));
    return value;
}

} // namespace catalogue
