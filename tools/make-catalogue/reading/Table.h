#pragma once

#include <QString>
#include <QStringList>

#include <stdexcept>
#include <vector>

namespace catalogue {

/// What stops the generator; the text names the file and the line where there is one.
class Failure : public std::runtime_error
{
public:
    explicit Failure(const QString &text)
        : std::runtime_error(text.toStdString())
    {}
};

/// A text table a person can read: UTF-8, one row a line, cells separated by tabs. The first line names the
/// columns; empty lines and lines that begin with '#' are passed over.
class Table
{
public:
    class Row
    {
    public:
        /// The cell of a column; a column the table does not have is a Failure.
        const QString &text(const char *column) const;
        /// The cell as a number; an empty cell is \p empty, anything else that is no number a Failure.
        int integer(const char *column, int empty = 0) const;
        double real(const char *column) const;

    private:
        friend class Table;
        const Table *m_table = nullptr;
        QStringList m_cells;
        int m_line = 0;
    };

    /// Throws Failure when the file cannot be read or a row has too many or too few cells.
    explicit Table(const QString &path);
    Table(const Table &) = delete;
    Table &operator=(const Table &) = delete;

    std::vector<Row>::const_iterator begin() const { return m_rows.begin(); }
    std::vector<Row>::const_iterator end() const { return m_rows.end(); }

private:
    QString m_path;
    QStringList m_columns;
    std::vector<Row> m_rows;
};

} // namespace catalogue
