#include <platform/logger/CuteLogger.h>

#include <QLoggingCategory>

namespace {
// Never destroyed: systems in a host's statics, and threads at work as the process ends, still ask for them.
const QLoggingCategory &lines()
{
    static const QLoggingCategory &category = *new QLoggingCategory("nivora.cs", QtWarningMsg);
    return category;
}
const QLoggingCategory &traceLines()
{
    static const QLoggingCategory &category = *new QLoggingCategory("nivora.cs.trace", QtWarningMsg);
    return category;
}
} // namespace

bool Logger::isEnabled(LogLevel level) const
{
    switch (level) {
    case Trace:
        return traceLines().isDebugEnabled();
    case Debug:
        return lines().isDebugEnabled();
    case Info:
        return lines().isInfoEnabled();
    case Error:
        return lines().isCriticalEnabled();
    }
    return false;
}

void Logger::write(LogLevel level, const char *file, int line, const char *function,
                   const QString &message) const
{
    const char *category = level == Trace ? traceLines().categoryName() : lines().categoryName();
    const QMessageLogger out(file, line, function, category);
    const QByteArray utf8 = message.toUtf8();
    switch (level) {
    case Trace:
    case Debug:
        out.debug("%s", utf8.constData());
        break;
    case Info:
        out.info("%s", utf8.constData());
        break;
    case Error:
        out.critical("%s", utf8.constData());
        break;
    }
}

Logger *cuteLoggerInstance()
{
    static Logger *const logger = new Logger;
    return logger;
}
