#pragma once

#include <support/Support.h>

/// What is found out about a system on the first call, or leads to such a thing.
namespace firstcalls {

using Cs = const nivora::cs::CoordSystem &;
using Twin = const nivora::cs::CoordSystemPtr &; // an equal system

inline QString text(const QRectF &r)
{
    return "%1 %2 %3 %4"_s.arg(r.x(), 0, 'g', 12).arg(r.y(), 0, 'g', 12).arg(r.width()).arg(r.height());
}

struct Question
{
    const char *name;
    QString (*ask)(Cs cs, Twin twin);
};

inline const Question questions[] = {
    {"unit", [](Cs cs, Twin) { return cs.unit().name(); }},
    {"rectNumericCoordSys", [](Cs cs, Twin) { return text(cs.rectNumericCoordSys()); }},
    {"rectInternal", [](Cs cs, Twin) { return text(cs.rectInternal()); }},
    {"needCropCoords", [](Cs cs, Twin) { return QString::number(cs.needCropCoords()); }},
    {"epsg", [](Cs cs, Twin) { return QString::number(cs.epsg()); }},
    {"matchedEpsg", [](Cs cs, Twin) { return QString::number(cs.matchedEpsg()); }},
    {"isLatLong", [](Cs cs, Twin) { return QString::number(cs.isLatLong()); }},
    {"prjStr", [](Cs cs, Twin) { return cs.prjStr(); }},
    {"projStr", [](Cs cs, Twin) { return cs.projStr(); }},
    {"taggedString", [](Cs cs, Twin) { return cs.taggedString(); }},
    {"exportToWkt2", [](Cs cs, Twin) { return cs.exportToWkt2(); }},
    {"isEqual", [](Cs cs, Twin twin) { return QString::number(cs.isEqual(twin, false)); }},
    {"isEqual of the other", [](Cs cs, Twin twin) { return QString::number(twin->isEqual(cs, false)); }},
    {"clone", [](Cs cs, Twin) { return text(cs.clone()->rectNumericCoordSys()); }},
    {"description", [](Cs cs, Twin) { return cs.description(); }},
    {"forward",
     [](Cs cs, Twin) {
         QRectF r;
         cs.forward(QRectF(40, 50, 1, 1), r);
         return text(r);
     }},
};

} // namespace firstcalls
