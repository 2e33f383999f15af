#include <coordsys/ExportCoordSystemParamsToMitabInternal.h>
#include <coordsys/ProjectionParamsManager.h>

#include <support/Support.h>

#include <cstring>

using namespace nivora::cs;

namespace {

// What a driver sees: bytes at fixed offsets.
struct Received
{
    int calls = 0;
    std::size_t bytes = 0;
    const char *begin = nullptr;

    template <typename T> T at(std::size_t offset) const
    {
        T value;
        std::memcpy(&value, begin + offset, sizeof value);
        return value;
    }
    QString textAt(std::size_t offset) const
    {
        return QString::fromStdString(*reinterpret_cast<const std::string *>(begin + offset));
    }
};
Received ellipsoids;
Received datums;

template <typename Record> void receive(Received &received, const std::vector<Record> *records)
{
    ++received.calls;
    received.bytes = records->size() * sizeof(Record);
    received.begin = reinterpret_cast<const char *>(records->data());
}

#ifdef NIVORA_NO_PATCHED_ENGINES
constexpr int expectedCalls = 0;
#else
constexpr int expectedCalls = 1;
#endif

} // namespace

// Stand in for the functions of a patched GDAL; the library's weak references bind to them.
extern "C" {
Q_DECL_EXPORT void OGR_MITABReplaceEllipsoidParameters(const std::vector<MitabEllipsoid> *records)
{
    receive(ellipsoids, records);
}
Q_DECL_EXPORT void OGR_MITABReplaceDatumParameters(const std::vector<MitabDatum> *records)
{
    receive(datums, records);
}
}

class TestDriverExport : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void records()
    {
        const support::LogCapture quiet;
        const QTemporaryDir dir;
        support::writeFile(dir.filePath("projection_en.xml"_s), R"xml(<r><ellipsoids>
<e id="3" name_mitab="Красовский (1940)" semi_major="6378245" inv_flatenning="298.3"/>
<e id="0" name_mitab="GRS 80"/></ellipsoids>
<datums><d id="1001" name_mitab="Пулково &quot;1942&quot; (СК-42.)" epsg_mitab="6284" ellipsoid="3"
 dx="24" dy="-123" dz="-94" rx="-0.02" ry="0.25" rz="0.13" sa="1.1" pm="30.5"/></datums></r>)xml");
        QVERIFY(ProjectionParamsManager().initFromXML(QDir(dir.path()), "en"_s)); // hands over
        QCOMPARE(ellipsoids.calls, expectedCalls);
        QCOMPARE(datums.calls, expectedCalls);
        receive(ellipsoids, &ExportCoordSystemParamsToMitabInternal::lastEllipsoids());
        receive(datums, &ExportCoordSystemParamsToMitabInternal::lastDatums());

        QCOMPARE(ellipsoids.bytes, std::size_t(2 * 56));
        QCOMPARE(ellipsoids.at<std::int32_t>(0), 3);
        QCOMPARE(ellipsoids.textAt(8), "Красовский (1940)"_s); // names of ellipsoids stay
        QCOMPARE(ellipsoids.at<double>(40), 6378245.0);
        QCOMPARE(ellipsoids.at<double>(48), 298.3);
        QCOMPARE(ellipsoids.textAt(56 + 8), "GRS 80"_s);

        QCOMPARE(datums.bytes, std::size_t(112));
        QCOMPARE(datums.at<std::int32_t>(0), 6284);
        QCOMPARE(datums.at<std::int32_t>(4), 1001);
        QCOMPARE(datums.textAt(8), "Pulkovo__1942___SK-42__"_s);
        QCOMPARE(datums.at<std::int32_t>(40), 3);
        const double figures[] = {24, -123, -94, -0.02, 0.25, 0.13, 1.1, 30.5};
        for (std::size_t i = 0; i < 8; ++i)
            QCOMPARE(datums.at<double>(48 + 8 * i), figures[i]);
    }

    void emptyLists()
    {
        const support::LogCapture log;
        ellipsoids = datums = Received();
        ExportCoordSystemParamsToMitabInternal::replaceEllipsoidParameters({});
        ExportCoordSystemParamsToMitabInternal::replaceDatumParameters({});
        QCOMPARE(log.lines(),
                 QStringList({"error: List of ellipsoids is empty"_s, "error: List of datumss is empty"_s}));
        QCOMPARE(ellipsoids.calls + datums.calls, 0);
    }
};

NIVORA_TEST(TestDriverExport)
#include "tst_driverexport.moc"
