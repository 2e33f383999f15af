#include "XmlElement_p.h"

#include "CoordSysTexts_p.h"
#include "InputFile_p.h"

#include <QFile>
#include <QXmlStreamReader>

#include <algorithm>

namespace nivora::cs {
namespace {

constexpr int deepestNesting = 64;

XmlElement elementAt(const QXmlStreamReader &xml)
{
    return {xml.qualifiedName().toString(), xml.lineNumber(), xml.columnNumber(), xml.attributes(), {}};
}

bool isBlank(const QXmlStreamReader &xml) { return xml.isWhitespace() && !xml.isCDATA(); }

/// What stands behind the start of \p root. The elements that are open keep their places: only the last of
/// them gets children.
void readChildren(QXmlStreamReader &xml, XmlElement &root)
{
    std::vector<XmlElement *> open{&root};
    while (!xml.atEnd() && !open.empty()) {
        const QXmlStreamReader::TokenType token = xml.readNext();
        if (token == QXmlStreamReader::EndElement) {
            open.pop_back();
        } else if (token == QXmlStreamReader::StartElement) {
            open.back()->children.push_back(elementAt(xml));
            open.push_back(&open.back()->children.back());
            if (open.size() > deepestNesting)
                xml.raiseError(CoordSysTexts::tr("Слишком глубокая вложенность элементов"));
        } else if (!isBlank(xml)) {
            open.back()->children.emplace_back();
        }
    }
}

} // namespace

bool XmlElement::hasChild(const QString &wanted) const
{
    return std::any_of(children.begin(), children.end(),
                       [&](const XmlElement &child) { return child.name == wanted; });
}

QString readXml(QFile &file, XmlElement &root)
{
    QXmlStreamReader xml(&file);
    xml.setNamespaceProcessing(false);
    if (readRoot(xml)) {
        root = elementAt(xml);
        readChildren(xml, root);
    }
    while (!xml.atEnd()) // nothing but comments may follow
        xml.readNext();
    return xml.hasError() ? QStringLiteral("%1:%2: %3")
                                .arg(QString::number(xml.lineNumber()), QString::number(xml.columnNumber()),
                                     xml.errorString())
                          : QString();
}

} // namespace nivora::cs
