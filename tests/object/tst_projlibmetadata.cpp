#include <support/Support.h>

#include <coordsys/ProjEngine.h>
#include <coordsys/ProjLibMetadata.h>

using namespace nivora::cs;

class TestProjLibMetadata : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void database()
    {
        const ProjLibMetadata metadata;
        const QString epsg = ProjLibMetadata::EPSG;
        QCOMPARE(metadata.nameCrs(4326, epsg), "WGS 84"_s);
        QVERIFY(metadata.projStringForCrs(4326, epsg).contains("+type=crs"_s));
        const QString utm = metadata.projStringForCrs(32637, epsg);
        QVERIFY2(utm.startsWith("+proj=utm +zone=37"_s) && !utm.contains("type"_s), qPrintable(utm));
        QVERIFY(metadata.wktStringForCrs(32637, epsg).startsWith("PROJCRS["_s));
        VERIFY_NEAR(metadata.rectWgs84ForCrs(32637, epsg), QRectF(36, 0, 6, 84), 1e-9); // the zone
        QVERIFY(metadata.rectWgs84ForCrs(3460, epsg).width() < 0.0); // Fiji, across 180 degrees
        QVERIFY(metadata.authNames().contains(epsg) && metadata.authNames().contains("ESRI"_s));

        int geographic = 0, projected = 0;
        const ProjLibMetadata::ProjectionCatalog all = metadata.listProjections(epsg);
        for (const auto &list : all)
            for (const auto &info : list)
                ++(info.kind == ProjLibMetadata::Kind::Geographic ? geographic : projected);
        QVERIFY(geographic > 500 && projected > 4000); // of the EPSG registry's thousands
        const auto &world = all.value("World."_s);
        QVERIFY(std::any_of(world.cbegin(), world.cend(), [](const auto &info) {
            return info.id == "EPSG:4326"_s && info.name == "WGS 84"_s && info.rect == CoordSystem::RectEarth;
        }));
        QVERIFY(metadata.listProjections("no such %1"_s).isEmpty());
    }

    void unknownCode()
    {
        const ProjLibMetadata m;
        const QString auth = "A%2B"_s; // a percent sign in a value stays a percent sign
        VERIFY_THROWS_LIKE(ProjException, m.nameCrs(7, auth), "Запрос имени для A%2B=7:");
        VERIFY_THROWS_LIKE(ProjException, m.projStringForCrs(7, auth), "Запрос proj строки для A%2B=7:");
        VERIFY_THROWS_LIKE(ProjException, m.wktStringForCrs(7, auth), "Запрос wkt строки для A%2B=7:");
        VERIFY_THROWS_LIKE(ProjException, m.rectWgs84ForCrs(7, auth),
                           "Запрос ограничивающего прямоугольника для A%2B=7:");
        VERIFY_THROWS_LIKE(ProjException, m.epsgForProjString("a%1b"_s),
                           "Ошибка при инициализации проекции a%1b:");
    }

    void identify()
    {
        const int none = CoordSystem::EPSG_UNDEFINDED;
        const std::pair<const char *, int> codes[] = {
            {"+proj=utm +zone=37 +datum=WGS84 +units=m +no_defs", 32637},
            {"+proj=tmerc +lat_0=0 +lon_0=39 +k=1 +x_0=7500000 +y_0=0 +ellps=krass +units=m", none},
            {"+proj=longlat +datum=OSGB36", 4277},
            {"+proj=longlat +ellps=WGS84 +towgs84=0,0,0 +no_defs", none},
            {"+proj=tmerc +lon_0=39.5 +x_0=1250000 +ellps=krass", none}}; // like registered ones only
        for (const auto &[text, code] : codes)
            QCOMPARE(ProjLibMetadata().epsgForProjString(QString::fromUtf8(text)), code);
    }

    void cancelled()
    {
        const auto handler = std::make_shared<nivora::concurrent::ProgressHandler>();
        handler->cancel();
        // Before any work: not even the text is read.
        QCOMPARE(ProjLibMetadata().epsgForProjString(handler, "rubbish"_s),
                 int(CoordSystem::EPSG_UNDEFINDED));
        QCOMPARE(ProjLibMetadata().epsgForProjString(nullptr, "EPSG:2154"_s), 2154);
    }
};

NIVORA_TEST(TestProjLibMetadata)
#include "tst_projlibmetadata.moc"
