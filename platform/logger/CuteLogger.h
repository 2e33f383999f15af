#pragma once

#include <QString>

/// Stand-in for the logging library of the host application. Lines go to Qt's logging, to the category
/// "nivora.cs" (info and error are on, debug by rule) and, for trace lines, to "nivora.cs.trace" (off unless
/// a rule switches it on). Thread-safe, like Qt's logging itself. Nothing is written but through Qt's
/// handler.
class Logger
{
public:
    enum LogLevel { Trace, Debug, Info, Error };

    /// True when a line of this level would reach the message handler; asked before a line is put together.
    bool isEnabled(LogLevel level) const;
    void write(LogLevel level, const char *file, int line, const char *function,
               const QString &message) const;
};

/// The process's logger, never null.
Logger *cuteLoggerInstance();

/// One log statement: the place it stands at and the logger it writes to.
class CuteMessageLogger
{
public:
    CuteMessageLogger(Logger *logger, Logger::LogLevel level, const char *file, int line,
                      const char *function)
        : m_logger(logger)
        , m_level(level)
        , m_file(file)
        , m_line(line)
        , m_function(function)
    {}
    void write(const QString &message) const
    {
        m_logger->write(m_level, m_file, m_line, m_function, message);
    }

private:
    Logger *m_logger;
    Logger::LogLevel m_level;
    const char *m_file;
    int m_line;
    const char *m_function;
};

// The message expression is evaluated only when the level is on.
#define NIVORA_LOG_AT(level, message)                                                                        \
    do {                                                                                                     \
        if (cuteLoggerInstance()->isEnabled(level))                                                          \
            CuteMessageLogger(cuteLoggerInstance(), level, __FILE__, __LINE__, Q_FUNC_INFO).write(message);  \
    } while (false)

#define LOG_TRACE(message) NIVORA_LOG_AT(Logger::Trace, message)
#define LOG_DEBUG(message) NIVORA_LOG_AT(Logger::Debug, message)
#define LOG_INFO(message) NIVORA_LOG_AT(Logger::Info, message)
#define LOG_ERROR(message) NIVORA_LOG_AT(Logger::Error, message)
