#include <coordsys/DefaultRects.h>

#include <platform/Utils.h>

namespace nivora::cs {

using nivora::utils::fuzzyCompareRects;

bool isDefaultRectLatLong(const QRectF &rect)
{
    return fuzzyCompareRects(rect, DefaultRectLatLon) || fuzzyCompareRects(rect, DefaultRectLatLonMapinfo);
}

bool isDefaultRectNonEarth(const QRectF &rect) { return fuzzyCompareRects(rect, DefaultRectNonEarth); }

} // namespace nivora::cs
