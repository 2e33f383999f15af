#include "reading/Database.h"

#include "reading/Table.h"

#include <proj.h>
#include <sqlite3.h>

namespace catalogue {

bool Database::Row::isNull(int column) const
{
    return sqlite3_column_type(m_statement, column) == SQLITE_NULL;
}
int Database::Row::integer(int column) const { return sqlite3_column_int(m_statement, column); }
double Database::Row::real(int column) const { return sqlite3_column_double(m_statement, column); }
QString Database::Row::text(int column) const
{
    return QString::fromUtf8(reinterpret_cast<const char *>(sqlite3_column_text(m_statement, column)));
}

Database::Database()
    : m_handle(nullptr, sqlite3_close)
{
    const std::unique_ptr<PJ_CONTEXT, PJ_CONTEXT *(*)(PJ_CONTEXT *)> context(proj_context_create(),
                                                                             proj_context_destroy);
    const char *path = proj_context_get_database_path(context.get());
    if (!path)
        throw Failure(QStringLiteral("PROJ finds no database"));
    sqlite3 *raw = nullptr;
    const int code = sqlite3_open_v2(path, &raw, SQLITE_OPEN_READONLY, nullptr);
    m_handle.reset(raw);
    if (code != SQLITE_OK)
        throw Failure(
            QStringLiteral("%1: %2").arg(QString::fromUtf8(path), QString::fromUtf8(sqlite3_errmsg(raw))));
    checkLayout();
}

/// The queries name tables and columns. PROJ raises the first number when one of those goes or changes its
/// meaning, the second when one is added.
void Database::checkLayout() const
{
    constexpr int knownMajor = 1;
    constexpr int leastMinor = 2; // of PROJ 9.1, which the queries were written against
    const int major = metadata("DATABASE.LAYOUT.VERSION.MAJOR").toInt();
    const int minor = metadata("DATABASE.LAYOUT.VERSION.MINOR").toInt();
    if (major != knownMajor || minor < leastMinor)
        throw Failure(QStringLiteral("the layout of proj.db is %1.%2, known is %3 from %3.%4 on")
                          .arg(major)
                          .arg(minor)
                          .arg(knownMajor)
                          .arg(leastMinor));
}

void Database::each(const char *sql, const std::function<void(const Row &)> &take) const
{
    sqlite3_stmt *raw = nullptr;
    const int prepared = sqlite3_prepare_v2(m_handle.get(), sql, -1, &raw, nullptr);
    const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt *)> statement(raw, sqlite3_finalize);
    int step = prepared;
    while (prepared == SQLITE_OK && (step = sqlite3_step(raw)) == SQLITE_ROW)
        take(Row(raw));
    if (step != SQLITE_DONE)
        throw Failure(QStringLiteral("%1: %2").arg(QString::fromUtf8(sql),
                                                   QString::fromUtf8(sqlite3_errmsg(m_handle.get()))));
}

QString Database::metadata(const char *key) const
{
    QString value;
    each("SELECT key, value FROM metadata", [&](const Row &row) {
        if (row.text(0) == QLatin1String(key))
            value = row.text(1);
    });
    return value;
}

} // namespace catalogue
