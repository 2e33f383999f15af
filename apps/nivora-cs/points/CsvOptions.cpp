#include "CsvOptions.h"

#include "CommandLine.h"
#include "Output.h"

#include <QObject>

namespace {

/// Bytes that are part of numbers or of the notation itself delimit nothing.
std::string delimiterOf(const CommandLine &line)
{
    const QString text = line.value("delimiter");
    if (text.isEmpty() && !line.isSet("delimiter"))
        return {};
    const QString character =
        text == QLatin1String("tab") || text == QLatin1String("\\t") ? QStringLiteral("\t") : text;
    const char c = character.size() == 1 ? character.at(0).toLatin1() : '\0';
    if (c <= 0 || isDigit(c) || std::string_view("\"\r\n.+-*").find(c) != std::string_view::npos)
        throw Failure(QObject::tr("--delimiter takes one character, or \"tab\", not \"%1\"").arg(text));
    return {c};
}

} // namespace

CsvOptions csvOptions(const CommandLine &line, const CoordinateNotation &notation)
{
    CsvOptions options;
    options.delimiter = delimiterOf(line);
    options.notation = notation;
    options.x = line.value("x");
    options.y = line.value("y");
    options.outX = line.value("out-x");
    options.outY = line.value("out-y");
    return options;
}

void checkCsvOptions(const CommandLine &line, std::initializer_list<const char *> options)
{
    for (const char *option : options)
        if (line.isSet(option) && !line.isSet("csv"))
            throw Failure(QObject::tr("--%1 needs --csv").arg(QLatin1String(option)));
}
