#include "planes/Forms.h"

#include "ProjectionTable_p.h"
#include "reading/Numbers.h"

#include <cmath>
#include <map>
#include <set>

namespace catalogue {
namespace {

/// Null for Denmark's polynomials, which no code of EPSG has, and for projections that the driver misreads.
const nivora::cs::Projection *usableProjection(int number)
{
    static const std::set<int> left = {0, 1, 21, 22, 23, 32, 34, 35};
    return left.count(number) ? nullptr : nivora::cs::projectionByNumber(number);
}

/// Angles to 1e-10 degree (a hundredth of a millimetre), lengths to 1e-6: conversions leave dust behind that.
QString paramText(double value, char letter)
{
    if (letter == 's')
        return QString::number(value, 'g', 15);
    return numberText(value, letter == 'e' || letter == 'n' ? 6 : 10);
}

/// The order of the parallels of projection 3 does not matter to the plane, but the driver puts known pairs
/// into another order when the unit is not the metre, and reads the false origin wrongly when it does.
void orderParallels(Form &form)
{
    constexpr int metre = 7;
    if (form.projection == 3 && form.unit != metre &&
        std::fabs(form.params[2].toDouble()) < std::fabs(form.params[3].toDouble()))
        form.params.swapItemsAt(2, 3);
}

} // namespace

QString Form::withDatum(const QString &datum) const
{
    QStringList parts{QString::number(projection), datum};
    if (projection != 1)
        parts << QString::number(unit) << params;
    return parts.join(QStringLiteral(", "));
}

std::optional<Form> formOf(const QString &coordSys, int unit)
{
    const QString prefix = QStringLiteral("Earth Projection ");
    QStringList tokens = coordSys.mid(prefix.size()).split(QStringLiteral(", "));
    const int projection = tokens.value(0).toInt();
    const int datum = tokens.value(1).toInt();
    tokens = tokens.mid(datum == 999 ? 6 : datum == 9999 ? 11 : 2);
    const nivora::cs::Projection *row = usableProjection(projection);
    if (!coordSys.startsWith(prefix) || !row || tokens.size() != 1 + row->count())
        return std::nullopt;
    Form form{projection, unit, {}};
    for (int i = 1; i < tokens.size(); ++i)
        form.params << paramText(tokens[i].toDouble(), row->parameters[i - 1]);
    orderParallels(form);
    return form;
}

int unitCode(int epsgUnit)
{
    static const std::map<int, int> codes = {{9001, 7},  {9002, 3},  {9003, 8}, {9030, 9},
                                             {9033, 31}, {9034, 30}, {9036, 1}, {9093, 0},
                                             {9096, 4},  {1025, 5},  {1033, 6}};
    const auto found = codes.find(epsgUnit);
    return found == codes.end() ? -1 : found->second;
}

} // namespace catalogue
