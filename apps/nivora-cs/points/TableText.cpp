#include "TableText.h"

#include "CommandLine.h"
#include "CsvFormat.h"
#include "FileNames.h"
#include "LineReader.h"
#include "Output.h"
#include "PeopleText.h"

#include <QFile>
#include <QObject>

#include <algorithm>

std::string tableText(const CommandLine &line)
{
    const QString name = line.arguments().value(0, QStringLiteral("-"));
    QFile file(localPath(name));
    const bool isOpen =
        name == QLatin1String("-") ? file.open(stdin, QIODevice::ReadOnly) : file.open(QIODevice::ReadOnly);
    if (!isOpen)
        throw Failure(QObject::tr("cannot read %1: %2").arg(name, file.errorString()));
    std::string bytes = file.readAll().toStdString();
    if (looksLikeUtf16(bytes))
        throw Failure(QObject::tr("%1 is UTF-16: convert it to UTF-8 first").arg(name));
    const TextCoding coding(line.value("encoding"));
    if (coding.isNeeded())
        bytes = coding.decoded(bytes);
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    return bytes.compare(0, mark.size(), mark) == 0 ? bytes.substr(mark.size()) : bytes;
}

void forEachTableLine(const CommandLine &options, std::string_view text,
                      const std::function<void(std::string_view)> &take)
{
    const int skip = options.number("skip", 0, 1000000, 0);
    for (int number = 1; !text.empty(); ++number) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        const auto first = line.find_first_not_of(" \t");
        if (number <= skip || first == std::string_view::npos || line[first] == '#')
            continue;
        try {
            take(line);
        } catch (const Failure &e) {
            throw Failure(QObject::tr("%1, line %2: %3")
                              .arg(options.arguments().value(0, QStringLiteral("-")), QString::number(number),
                                   QString::fromUtf8(e.what())));
        }
    }
}
