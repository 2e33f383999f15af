#pragma once

#include <QString>
#include <QXmlStreamAttributes>

#include <vector>

class QFile;

namespace nivora::cs {

/// An element of a small file, such as the user's own. Copies are deep.
struct XmlElement
{
    QString name; ///< empty for what stands between elements and is not blank: a comment, a text
    qint64 line = 0;
    qint64 column = 0;
    QXmlStreamAttributes attributes;
    std::vector<XmlElement> children;

    QString attribute(QLatin1String wanted, const QString &otherwise = {}) const
    {
        return attributes.hasAttribute(wanted) ? attributes.value(wanted).toString() : otherwise;
    }
    bool hasChild(const QString &wanted) const;
};

/// Reads an open file as XML. \return empty when it is well-formed, without a document type and not nested
/// deeper than 64 elements, else "line:column: reason"; \p root is of no use then.
QString readXml(QFile &file, XmlElement &root);

} // namespace nivora::cs
