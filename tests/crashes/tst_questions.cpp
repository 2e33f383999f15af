#include <support/SampleStep.h>
#include <support/Support.h>
#include <support/TestRunner.h>

#include <coordsys/ProjEngine.h>

#include <proj.h>

#include <QProcess>

namespace {

/// Every n-th code of every authority of PROJ's database, heights and geocentric systems too: at the least
/// some of each.
QStringList registeredCodes(int step)
{
    const PJ_TYPE types[] = {
        PJ_TYPE_GEOGRAPHIC_2D_CRS, PJ_TYPE_PROJECTED_CRS, PJ_TYPE_COMPOUND_CRS, PJ_TYPE_GEOGRAPHIC_3D_CRS,
        PJ_TYPE_GEOCENTRIC_CRS,    PJ_TYPE_VERTICAL_CRS,  PJ_TYPE_CRS};
    QStringList codes;
    PJ_CONTEXT *const context = nivora::cs::globalProjContext();
    PROJ_STRING_LIST authorities = proj_get_authorities_from_database(context);
    for (PROJ_STRING_LIST authority = authorities; authority && *authority; ++authority)
        for (const PJ_TYPE type : types) {
            PROJ_STRING_LIST list = proj_get_codes_from_database(context, *authority, type, 1);
            int i = 0;
            for (PROJ_STRING_LIST code = list; code && *code; ++code)
                if (i++ % step == step / 2)
                    codes << "%1:%2"_s.arg(QString::fromLatin1(*authority), QString::fromLatin1(*code));
            proj_string_list_destroy(list);
        }
    proj_string_list_destroy(authorities);
    codes.removeDuplicates();
    return codes;
}

/// What an engine has ended the process for, in the form that people type it.
const char *const texts[] = {
    "IAU_2015:49912",
    "IAU_2015:49902",
    "+proj=eqc +geoc",
    "+proj=utm +zone=33 +geoc +datum=WGS84",
    "+proj=ob_tran +o_proj=longlat +o_lon_p=-162 +o_lat_p=39.25 +lon_0=180 +ellps=bessel +towgs84=1,2,3",
    "+proj=ob_tran +o_proj=utm +o_zone=33 +o_lon_p=-162 +o_lat_p=39.25 +ellps=bessel +towgs84=1,2,3",
    "+proj=col_urban +ellps=GRS80 +towgs84=1,2,3",
    "+proj=col_urban +ellps=GRS80 +h_0=100",
    "+proj=healpix +R=1",
    "+proj=longlat +R=1737400",
    "+proj=longlat +ellps=intl +nadgrids=absent.gsb",
    "+proj=tmerc +lon_0=2 +ellps=intl +pm=paris +nadgrids=absent.gsb",
};

/// A datum's shift to another hub than WGS 84, for the system of a code.
QString boundTo(const char *code, const char *hub)
{
    const auto wkt = [](const char *of) {
        PJ_CONTEXT *const context = nivora::cs::globalProjContext();
        const auto crs = nivora::cs::ownPj(proj_create(context, of));
        const char *const options[] = {"MULTILINE=NO", nullptr};
        return QString::fromUtf8(proj_as_wkt(context, crs.get(), PJ_WKT2_2019, options));
    };
    return "BOUNDCRS[SOURCECRS[%1],TARGETCRS[%2],ABRIDGEDTRANSFORMATION[\"x\",METHOD[\"Geocentric "
           "translations "
           "(geog2D domain)\",ID[\"EPSG\",9603]],PARAMETER[\"X-axis translation\",1,ID[\"EPSG\",8605]],"
           "PARAMETER[\"Y-axis translation\",2,ID[\"EPSG\",8606]],PARAMETER[\"Z-axis translation\",3,"
           "ID[\"EPSG\",8607]]]]"_s.arg(wkt(code), wkt(hub));
}

/// Runs the probe, anew behind each question that ended it. What did, "definition: question".
QStringList deathsFor(const QStringList &definitions)
{
    QStringList deaths;
    for (int next = 0; next < definitions.size();) {
        QProcess probe;
        probe.setStandardErrorFile(QProcess::nullDevice());
        probe.start(QStringLiteral(NIVORA_QUESTION_PROBE), QStringList());
        probe.write(QStringList(definitions.mid(next)).join(QLatin1Char('\n')).toUtf8() + '\n');
        probe.closeWriteChannel();
        if (!probe.waitForFinished(-1) || probe.exitCode() == 2)
            return {"the probe does not start"_s};
        const QList<QByteArray> lines = probe.readAllStandardOutput().split('\n');
        int begun = 0;
        for (const QByteArray &line : lines)
            begun += line.startsWith("= ");
        next += begun;
        if (!lines.contains("."))
            deaths << definitions.value(next - 1) + ": "_s + QString::fromUtf8(lines.value(lines.size() - 2));
    }
    return deaths;
}

} // namespace

/// Nothing that people type, and no code of the database, may end the process, whatever is asked.
class TestQuestions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void textsThatEndedTheProcess()
    {
        QStringList definitions;
        for (const char *text : texts)
            definitions << QString::fromUtf8(text);
        for (const char *code : {"EPSG:28355", "EPSG:4283", "EPSG:4326"})
            for (const char *hub : {"EPSG:7844", "EPSG:4258", "EPSG:4979"})
                definitions << boundTo(code, hub);
        QCOMPARE(deathsFor(definitions), QStringList());
    }

    /// NIVORA_TEST_STEP=1 takes all 13,000 codes.
    void codes()
    {
        const int step = support::sampleStep();
        const QStringList codes = registeredCodes(step == 1 ? 1 : support::sampleStep(600));
        QVERIFY(codes.size() > 600 / step);
        QCOMPARE(deathsFor(codes), QStringList());
    }
};

NIVORA_TEST(TestQuestions)
#include "tst_questions.moc"
