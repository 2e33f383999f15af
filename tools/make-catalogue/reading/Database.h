#pragma once

#include <QString>

#include <functional>
#include <memory>

struct sqlite3;
struct sqlite3_stmt;

namespace catalogue {

/// PROJ's database, read-only.
class Database
{
public:
    /// One row of a query; columns count from 0.
    class Row
    {
    public:
        explicit Row(sqlite3_stmt *statement)
            : m_statement(statement)
        {}
        bool isNull(int column) const;
        int integer(int column) const;
        double real(int column) const;
        QString text(int column) const;

    private:
        sqlite3_stmt *m_statement;
    };

    /// Opens the database that PROJ itself uses. Throws Failure, also for a layout that the queries do not
    /// know.
    Database();

    /// Calls \p take for each row of a query without parameters. Throws Failure for bad SQL.
    void each(const char *sql, const std::function<void(const Row &)> &take) const;
    /// A value of the table "metadata".
    QString metadata(const char *key) const;

private:
    void checkLayout() const;

    std::unique_ptr<sqlite3, int (*)(sqlite3 *)> m_handle;
};

} // namespace catalogue
