#include <coordsys/CoordSystemTypes.h>

namespace nivora::cs {
namespace {

QString searchKey(const CoordSystemTypes::SourceData &source)
{
    const QString word = QStringLiteral("CoordSys");
    const QString text = source.string.simplified();
    const bool led = source.type == CoordSystemTypes::Prj && text.startsWith(word, Qt::CaseInsensitive);
    return led ? text.mid(word.size() + 1) : text;
}

} // namespace

bool operator==(const CoordSystemTypes::SourceData &a, const CoordSystemTypes::SourceData &b)
{
    return a.type == b.type && searchKey(a) == searchKey(b);
}

} // namespace nivora::cs
