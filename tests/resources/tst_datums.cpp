// The datum of every entry with a code against the transformations that EPSG publishes.

#include "Catalogue.h"
#include "Published.h"

#include <support/Support.h>

#include <coordsys/MapHeaderCoordsysConverter.h>
#include <coordsys/MapinfoCoordSystem.h>

#include <proj.h>

#include <QRegularExpression>

using namespace nivora::cs;
using catalogue::Definition;
using catalogue::Distances;
using catalogue::Item;
using catalogue::Published;
using catalogue::Seven;
using catalogue::summary;

namespace {

constexpr double farOff = 100.0; // metres: beyond that a datum number stands for another datum
// metres: seven published figures give the place itself; ten-parameter transformations are rewritten with
// seven, which costs 0.18 mm at most (NGO 1948).
constexpr double samePlace = 0.0002;

/// Systems for which the database has no transformation to WGS 84 that needs no grid file.
bool mayBeUnpublished(const QString &name, const TABProjInfo_t &info)
{
    // Their makers tie these to ITRS within a metre or two, and PROJ takes them for WGS 84 as well.
    static const QRegularExpression modernFrames(
        "NAD83\\(|CGCS2000|China Geodetic Coordinate System 2000|GDM2000|REDGEOMIN|SIRGAS|"
        "\\(IG[Sb]|ATRF2014"_s);
    const bool isZero = info.dDatumShiftX == 0.0 && info.dDatumShiftY == 0.0 && info.dDatumShiftZ == 0.0;
    if ((info.nDatumId == 33 || info.nDatumId == 74) && modernFrames.match(name).hasMatch())
        return isZero;
    // Nothing at all is published for Xian 1980. WGS 66 and ATS77 are MapInfo's own numbers.
    return (name.contains("Xian 1980"_s) && isUserDatum(info.nDatumId) && isZero) ||
           (name.contains("WGS 66"_s) && info.nDatumId == 102) ||
           (name.contains("ATS77"_s) && info.nDatumId == 151);
}

} // namespace

class TestDatums : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void standardIsNearAndUserIsExact_data() { catalogue::addParts(); }
    void standardIsNearAndUserIsExact()
    {
        proj_log_level(nullptr, PJ_LOG_NONE); // grid files that are not installed are no news here
        const auto factory = support::shippedFactory();
        QVERIFY(factory);
        const MapHeaderCoordsysConverter converter;
        QStringList faults;
        int standards = 0, users = 0, unpublished = 0;
        for (const Item &item : catalogue::itemsOfPart()) {
            if (item.entry.epsg() <= 0)
                continue;
            const QString &name = item.entry.name();
            const TABProjInfo_t info = converter.prjStrToTABProjInfo(item.entry.asPrjString());
            const Definition definition(item.entry.epsg());
            const std::vector<catalogue::Operation> &operations = m_published.of(definition.base.get());
            const bool isUser = isUserDatum(info.nDatumId);
            const Seven seven = catalogue::figuresOf(info);
            const CoordSystemPtr cs = factory->mapinfoCoordSystem()->getProj(item.category, item.index);
            const Distances off = catalogue::distances(cs, definition, operations);

            // Only the figures to ITRF2008 are published, and those move it by 3 mm.
            const bool isPz9011 = item.entry.epsg() == 9475 && seven == Seven{};
            if (isUser && (off.nearest <= samePlace || isPz9011 ||
                           m_published.hasFigures(definition.base.get(), seven)))
                ++users;
            else if (!isUser && off.best <= farOff)
                ++standards;
            else if (operations.empty() && mayBeUnpublished(name, info))
                ++unpublished;
            else
                faults << "%1: datum %2, %3 m from the nearest, %4 m from the best"_s.arg(
                    name, QString::number(info.nDatumId), QString::number(off.nearest),
                    QString::number(off.best));
        }
        QVERIFY2(faults.isEmpty(), qPrintable(summary(faults)));
        QVERIFY(standards + users > unpublished);
    }

private:
    Published m_published;
};

NIVORA_TEST(TestDatums)
#include "tst_datums.moc"
