#include "CliRun.h"

#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

namespace {

constexpr int timeoutMs = 1000000; // a sanitizer on a slow machine

CliRun runProcess(const QString &program, const QStringList &arguments, const QString &directory,
                  const QByteArray &input)
{
    static const QTemporaryDir dataHome;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C"));
    environment.insert(QStringLiteral("XDG_DATA_HOME"), dataHome.path());
    environment.insert(QStringLiteral("PATH"), QFileInfo(QStringLiteral(NIVORA_CS_PROGRAM)).path() +
                                                   QLatin1Char(':') +
                                                   environment.value(QStringLiteral("PATH")));
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(directory);
    process.start(program, arguments);
    process.write(input);
    process.closeWriteChannel();
    CliRun result;
    if (process.waitForFinished(timeoutMs) && process.exitStatus() == QProcess::NormalExit)
        result.status = process.exitCode();
    result.out = process.readAllStandardOutput();
    result.err = process.readAllStandardError();
    result.takeClosingLine();
    return result;
}

} // namespace

void CliRun::takeClosingLine()
{
    // 5 points by "OSGB36 to WGS 84 (6)", 2 m; 3 ballpark (without …)
    static const QRegularExpression form(QStringLiteral(
        "(?:^|\\n)((?:\\d+ (?:points? by|by other|ballpark) [^\\n]*|no points[^\\n]*|the systems are "
        "equal[^\\n]*)\\n)$"));
    const QRegularExpressionMatch match = form.match(QString::fromUtf8(err));
    if (!match.hasMatch())
        return;
    closing = match.captured(1).toUtf8();
    err.chop(closing.size());
}

QList<QByteArray> CliRun::lines(const QByteArray &text)
{
    QList<QByteArray> result = text.split('\n');
    if (result.last().isEmpty())
        result.removeLast();
    return result;
}

bool CliRun::isRefusal(const QString &part) const
{
    return status == 2 && out.isEmpty() && err.startsWith("nivora-cs: ") && err.count('\n') == 1 &&
           err.endsWith('\n') && QString::fromUtf8(err).contains(part);
}

QByteArray CliRun::describe() const
{
    return "status " + QByteArray::number(status) + "\nstdout: " + out.left(2000) +
           "\nstderr: " + err.left(2000);
}

CliRun run(const QStringList &arguments, const QByteArray &input)
{
    return runProcess(QStringLiteral(NIVORA_CS_PROGRAM), arguments, QString(), input);
}

QStringList words(const QByteArray &line)
{
    return QString::fromUtf8(line).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

CliRun runShell(const QString &line, const QString &directory, const QByteArray &input)
{
    return runProcess(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), line}, directory, input);
}
