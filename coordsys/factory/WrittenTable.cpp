#include "WrittenTable_p.h"

#include "InputFile_p.h"
#include <platform/Logger.h>

#include <QFile>

namespace nivora::cs {
namespace {

enum Column { Code, First, Second, Text, Columns };

/// False for a line of another form.
bool parse(const QStringList &cells, int &code, PrjText &text)
{
    bool isCode = false, isFirst = false, isSecond = false;
    code = cells.value(Code).toInt(&isCode);
    const double first = cells.value(First).toDouble(&isFirst);
    const double second = cells.value(Second).toDouble(&isSecond);
    if (cells.size() != Columns || !isCode || !isFirst || !isSecond)
        return false;
    text.text = cells.at(Text);
    if (!text.isRefused()) {
        text.planeErrorM = first;
        text.withoutAffineM = second;
        return true;
    }
    text.lack = static_cast<PrjText::Lack>(static_cast<int>(first));
    text.lackM = second;
    return text.lack > PrjText::Lack::Nothing && text.lack <= PrjText::Lack::Places;
}

} // namespace

WrittenTable::WrittenTable(const QDir &directory)
    : m_path(directory.absoluteFilePath(QStringLiteral("coordsys-texts.tsv")))
{}

void WrittenTable::read() const
{
    QFile file(m_path);
    if (!file.exists())
        return;
    const QString problem = openInput(file);
    if (!problem.isEmpty())
        LOG_ERROR(QStringLiteral("%1: %2").arg(m_path, problem));
    for (int number = 1; file.isOpen() && !file.atEnd(); ++number) {
        const QString line = QString::fromUtf8(file.readLine()).remove(QLatin1Char('\n'));
        int code = 0;
        PrjText text;
        if (line.startsWith(QLatin1Char('#')))
            continue;
        if (parse(line.split(QLatin1Char('\t')), code, text))
            m_texts.insert(code, text);
        else
            LOG_ERROR(QStringLiteral("%1:%2: %3").arg(m_path, QString::number(number), line));
    }
}

std::optional<PrjText> WrittenTable::text(int epsg) const
{
    std::call_once(m_once, [this] { read(); });
    const auto found = m_texts.constFind(epsg);
    return found == m_texts.constEnd() ? std::nullopt : std::make_optional(*found);
}

} // namespace nivora::cs
