#include "InputFile_p.h"

#include <QDomDocument>
#include <QFile>
#include <QFileInfo>
#include <QObject>
#include <QXmlStreamReader>

namespace nivora::cs {
namespace {

constexpr qint64 largestInput = 64 * 1024 * 1024;
constexpr int deepestNesting = 64;

QString at(qint64 line, qint64 column, const QString &reason)
{
    return QStringLiteral("%1:%2: %3").arg(QString::number(line), QString::number(column), reason);
}

void refuseDoctype(QXmlStreamReader &xml)
{
    xml.raiseError(QObject::tr("Объявление DOCTYPE не допускается"));
}

/// The stream reader keeps its own stack, so depth does it no harm.
QString damageOf(const QByteArray &bytes)
{
    QXmlStreamReader xml(bytes);
    xml.setNamespaceProcessing(false);
    for (int depth = 0; !xml.atEnd() && depth <= deepestNesting;) {
        const QXmlStreamReader::TokenType token = xml.readNext();
        depth += token == QXmlStreamReader::StartElement ? 1 : token == QXmlStreamReader::EndElement ? -1 : 0;
        if (token == QXmlStreamReader::DTD)
            refuseDoctype(xml);
        if (depth > deepestNesting)
            xml.raiseError(QObject::tr("Слишком глубокая вложенность элементов"));
    }
    return xml.hasError() ? at(xml.lineNumber(), xml.columnNumber(), xml.errorString()) : QString();
}

} // namespace

QString openInput(QFile &file)
{
    const QFileInfo info(file.fileName());
    if (info.exists() && !info.isFile())
        return QObject::tr("Это не файл");
    if (info.size() > largestInput)
        return QObject::tr("Файл слишком велик");
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

QString readXml(QFile &file, QDomDocument &document)
{
    const QByteArray bytes = file.readAll();
    const QString damage = damageOf(bytes);
    if (!damage.isEmpty())
        return damage;
    QString error;
    int line = 0;
    int column = 0;
    return document.setContent(bytes, &error, &line, &column) ? QString() : at(line, column, error);
}

} // namespace nivora::cs
