#include <coordsys/MapHeaderRecord.h>

#include <support/Support.h>
#include <support/TestRunner.h>

#include <QBuffer>

#include <cmath>
#include <cstring>

using namespace nivora::cs;

namespace {

/// The published layout, byte by byte; every machine that builds this is little-endian.
class HeaderBytes
{
public:
    explicit HeaderBytes(int version, int size = 512)
        : m_bytes(size, '\0')
    {
        put(0x100, std::int32_t(42424242));
        put(0x104, std::int16_t(version));
        put(0x106, std::int16_t(size));
        put(0x161, std::uint8_t(1)); // quadrant
        put(0x16d, std::uint8_t(8));
        put(0x16e, std::uint8_t(3));
        put(0x16f, std::uint8_t(7));
        putAll(0x170, {1000, 1000, 7.5e9, 6e9});
        putAll(0x190, {39, 0, 1, 7500000, 0});
        putAll(0x1c0, {24, -123, -94, -0.02, 0.25, 0.13, 1.1, 0});
    }
    template <typename T> HeaderBytes &put(int offset, T value)
    {
        std::memcpy(m_bytes.data() + offset, &value, sizeof value);
        return *this;
    }
    HeaderBytes &putAll(int offset, std::initializer_list<double> values)
    {
        for (const double value : values) {
            put(offset, value);
            offset += 8;
        }
        return *this;
    }
    QByteArray bytes() const { return m_bytes; }

private:
    QByteArray m_bytes;
};

const QString gauss = QStringLiteral("\"m\", 39, 0, 1, 7500000, 0");
const QString bounds = QStringLiteral(" Bounds (-8500000, -7000000) (-6500000, -5000000)");

} // namespace

class TestMapHeaderRecord : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(support::shippedFactory()); }

    void reads_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("text");
        const auto row = [](const char *name, const HeaderBytes &header, const QString &text) {
            QTest::newRow(name) << header.bytes() << text;
        };
        const QString known = QStringLiteral("Earth Projection 8, 1001, ") + gauss;
        const QString figures = QStringLiteral("3, 24, -123, -94, -0.02, 0.25, 0.13, 1.1, 0, ") + gauss;
        row("500: datum by number", HeaderBytes(500).put(0x16a, std::int16_t(1001)), known + bounds);
        row("500: figures of one's own", HeaderBytes(500).put(0x16a, std::int16_t(9999)),
            QStringLiteral("Earth Projection 8, 9999, ") + figures + bounds);
        row("300: the number is junk", HeaderBytes(300).put(0x16a, std::int16_t(104)), known + bounds);
        row("200: so is what is behind the shift", HeaderBytes(200).put(0x1c0, 25.0).put(0x1f0, std::nan("")),
            QStringLiteral("Earth Projection 8, 999, 3, 25, -123, -94, ") + gauss + bounds);
        row("100: scale by the precision", HeaderBytes(100).put(0x160, std::uint8_t(2)).put(0x1c0, 25.0),
            QStringLiteral("Earth Projection 8, 999, 3, 25, -123, -94, ") + gauss +
                QStringLiteral(" Bounds (-10000000, -10000000) (10000000, 10000000)"));
        row("both axes reflected",
            HeaderBytes(500).put(0x16a, std::int16_t(1001)).put(0x161, std::uint8_t(3)), known + bounds);
        row("one axis reflected",
            HeaderBytes(500).put(0x16a, std::int16_t(1001)).put(0x161, std::uint8_t(2)).putAll(0x180, {0, 0}),
            known + QStringLiteral(" Bounds (-1000000, -1000000) (1000000, 1000000)"));
        row("affine",
            HeaderBytes(500, 1024)
                .put(0x16a, std::int16_t(1001))
                .put(0x200, std::uint8_t(1))
                .put(0x201, std::uint8_t(1))
                .putAll(0x208, {1, 2, 3, 4, 5, 6}),
            known + QStringLiteral(" Affine Units \"km\", 1, 2, 3, 4, 5, 6") + bounds);
        row("a plan", HeaderBytes(500).put(0x16d, std::uint8_t(0)).put(0x16f, std::uint8_t(3)),
            QStringLiteral("NonEarth Units \"ft\"") + bounds);
        row("seven parameters",
            HeaderBytes(500, 1024).put(0x16a, std::int16_t(104)).put(0x16d, std::uint8_t(35)).put(0x268, 0.5),
            QStringLiteral("Earth Projection 35, 104, \"m\", 39, 0, 1, 7500000, 0, 0, 0.5") + bounds);
    }

    void reads()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, text);
        QBuffer device(&bytes);
        QVERIFY(device.open(QIODevice::ReadOnly));
        QCOMPARE(coordSysText(readMapHeader(device)), text);
    }

    void refuses_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        const HeaderBytes good(500);
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("cut off") << good.bytes().left(511);
        QTest::newRow("another cookie") << HeaderBytes(500).put(0x100, std::int32_t(42424241)).bytes();
        QTest::newRow("block") << HeaderBytes(500).put(0x106, std::int16_t(511)).bytes();
        QTest::newRow("scale 0") << HeaderBytes(500).put(0x178, 0.0).bytes();
        QTest::newRow("scale no number") << HeaderBytes(500).put(0x170, std::nan("")).bytes();
        QTest::newRow("parameter infinite") << HeaderBytes(500).put(0x1b8, HUGE_VAL).bytes();
        QTest::newRow("projection") << HeaderBytes(500).put(0x16d, std::uint8_t(36)).bytes();
    }

    void refuses()
    {
        QFETCH(QByteArray, bytes);
        QBuffer device(&bytes);
        QVERIFY(device.open(QIODevice::ReadOnly));
        const QString instead = support::thrownInstead<std::runtime_error>(
            [&] { readMapHeader(device); }, QStringLiteral("Повреждён заголовок файла карты: "), true);
        QVERIFY2(instead.isEmpty(), qPrintable(instead));
    }

    // What is written reads back; what has no room leaves the file alone.
    void replaces()
    {
        const QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("a.map"));
        const auto content = [&path](const QByteArray *replace = nullptr) {
            QFile file(path);
            return file.open(QIODevice::ReadWrite) && replace ? (file.write(*replace), *replace)
                                                              : file.readAll();
        };
        const QByteArray before = HeaderBytes(500).bytes() + QByteArray(600, 'x');
        content(&before);
        MapHeaderRecord record = readMapHeader(path);
        record.projection.nDatumId = 104;
        record.projection.adProjParams[0] = 45.0;
        replaceMapHeader(path, record);
        QCOMPARE(coordSysText(readMapHeader(path)), coordSysText(record));
        const QByteArray after = content();
        QCOMPARE(after.mid(512), before.mid(512));
        record.projection.nAffineFlag = 1;
        QVERIFY_EXCEPTION_THROWN(replaceMapHeader(path, record), std::runtime_error);
        QCOMPARE(content(), after);
    }
};

NIVORA_TEST(TestMapHeaderRecord)
#include "tst_mapheaderrecord.moc"
