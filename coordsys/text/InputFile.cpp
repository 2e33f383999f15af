#include "InputFile_p.h"

#include "CoordSysTexts_p.h"

#include <QFile>
#include <QFileInfo>
#include <QXmlStreamReader>

namespace nivora::cs {
namespace {

constexpr qint64 largestInput = 64 * 1024 * 1024;
void refuseDoctype(QXmlStreamReader &xml)
{
    xml.raiseError(CoordSysTexts::tr("Объявление DOCTYPE не допускается"));
}

} // namespace

QString openInput(QFile &file)
{
    const QFileInfo info(file.fileName());
    if (info.exists() && !info.isFile())
        return CoordSysTexts::tr("Это не файл");
    if (info.size() > largestInput)
        return CoordSysTexts::tr("Файл слишком велик");
    return file.open(QIODevice::ReadOnly) ? QString() : file.errorString();
}

bool readRoot(QXmlStreamReader &xml)
{
    while (!xml.atEnd()) {
        const QXmlStreamReader::TokenType token = xml.readNext();
        if (token == QXmlStreamReader::StartElement)
            return true;
        if (token == QXmlStreamReader::DTD)
            refuseDoctype(xml);
    }
    return false;
}

} // namespace nivora::cs
