#include "StoreCheck.h"

#include <QFile>
#include <QObject>
#include <QXmlStreamReader>

namespace {

/// What is read of an element at a depth: its name (empty: any) and its attributes.
struct Known
{
    const char *element;
    const char *attributes;
};
constexpr Known levels[] = {{"", ""}, {"branch", "name"}, {"", "type str desc"}};
constexpr int deepest = 3;

class Walk
{
public:
    explicit Walk(QIODevice *file)
        : m_xml(file)
    {
        m_xml.setNamespaceProcessing(false);
    }

    QStringList run()
    {
        while (!m_xml.atEnd())
            step(m_xml.readNext());
        return m_lost;
    }

private:
    void step(QXmlStreamReader::TokenType token)
    {
        switch (token) {
        case QXmlStreamReader::StartElement:
            element();
            break;
        case QXmlStreamReader::EndElement:
            --m_depth;
            break;
        case QXmlStreamReader::Comment:
            lost(QObject::tr("a comment"));
            break;
        case QXmlStreamReader::ProcessingInstruction:
            lost(QObject::tr("a processing instruction"));
            break;
        case QXmlStreamReader::DTD:
            lost(QObject::tr("a document type"));
            break;
        case QXmlStreamReader::Characters:
            if (!m_xml.isWhitespace())
                lost(QObject::tr("the text \"%1\"").arg(m_xml.text().toString().simplified().left(40)));
            break;
        default:
            break;
        }
    }

    void element()
    {
        const QString name = m_xml.name().toString();
        const bool isRead = m_depth < deepest && (*levels[m_depth].element == '\0' ||
                                                  name == QLatin1String(levels[m_depth].element));
        if (!isRead) {
            lost(QObject::tr("the element <%1>").arg(name));
            m_xml.skipCurrentElement();
            return;
        }
        const QStringList known = QString::fromLatin1(levels[m_depth].attributes).split(QLatin1Char(' '));
        for (const QXmlStreamAttribute &attribute : m_xml.attributes())
            if (!known.contains(attribute.name().toString()))
                lost(QObject::tr("the attribute \"%1\"").arg(attribute.name().toString()));
        ++m_depth;
    }

    void lost(const QString &what)
    {
        m_lost << QStringLiteral("%1:%2: %3")
                      .arg(QString::number(m_xml.lineNumber()), QString::number(m_xml.columnNumber()), what);
    }

    QXmlStreamReader m_xml;
    QStringList m_lost;
    int m_depth = 0;
};

} // namespace

QStringList lostBySave(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? Walk(&file).run() : QStringList();
}
