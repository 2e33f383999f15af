#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

/// What one run of the program left behind.
struct CliRun
{
    int status = -1; ///< -1 when it crashed or hung
    QByteArray out;
    QByteArray err;     ///< without the next
    QByteArray closing; ///< the last line of transform and convert: by which operations the points went

    QList<QByteArray> outLines() const { return lines(out); }
    QList<QByteArray> errLines() const { return lines(err); }
    /// One line on stderr that begins with the program's name, nothing on stdout, status 2.
    bool isRefusal(const QString &part) const;
    QByteArray describe() const;
    void takeClosingLine();

private:
    static QList<QByteArray> lines(const QByteArray &text);
};

/// Runs the built program under LC_ALL=C, away from the data folder of whoever runs the tests.
CliRun run(const QStringList &arguments, const QByteArray &input = QByteArray());

/// The arguments of a line in which no argument has a blank.
QStringList words(const QByteArray &line);

/// A line of a shell, in a directory, with the program in the path.
CliRun runShell(const QString &line, const QString &directory, const QByteArray &input = QByteArray());
