#include <support/Support.h>
#include <support/TestRunner.h>

#include <coordsys/SystemGuess.h>
#include <coordsys/Translations.h>

#include <QDir>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QXmlStreamReader>

namespace {

QStringList placeholders(const QString &text)
{
    static const QRegularExpression number(QStringLiteral("%\\d")); // "%1"
    QStringList found;
    for (auto i = number.globalMatch(text); i.hasNext();)
        found << i.next().captured();
    found.sort();
    found.removeDuplicates();
    return found;
}

} // namespace

class TestTranslations : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void everyTextIsTranslated_data()
    {
        QTest::addColumn<QString>("sources");
        QTest::addColumn<QString>("file");
        QTest::newRow("library") << "coordsys"
                                 << "nivora-cs_en.ts";
        QTest::newRow("program") << "apps"
                                 << "nivora-cs-program_ru.ts";
    }

    /// The file is brought to the state of the sources first: a text that is new there is not translated.
    void everyTextIsTranslated()
    {
        QFETCH(QString, sources);
        QFETCH(QString, file);
        const QDir root(QStringLiteral(NIVORA_SOURCE_DIR));
        const QTemporaryDir dir;
        const QString copy = dir.filePath(file);
        QVERIFY(QFile::copy(root.filePath(QStringLiteral("translations/") + file), copy));
        QProcess lupdate;
        lupdate.start(QStringLiteral(NIVORA_LUPDATE),
                      {QStringLiteral("-silent"), QStringLiteral("-no-obsolete"), root.filePath(sources),
                       QStringLiteral("-ts"), copy});
        QVERIFY(lupdate.waitForFinished(60000) && lupdate.exitCode() == 0);

        QFile texts(copy);
        QVERIFY(texts.open(QIODevice::ReadOnly));
        QXmlStreamReader xml(&texts);
        QString source;
        int count = 0;
        while (!xml.atEnd()) {
            if (xml.readNext() != QXmlStreamReader::StartElement)
                continue;
            if (xml.name() == QLatin1String("source"))
                source = xml.readElementText();
            if (xml.name() != QLatin1String("translation"))
                continue;
            const bool isFinished = !xml.attributes().hasAttribute(QLatin1String("type"));
            const QString translation = xml.readElementText();
            QVERIFY2(isFinished && !translation.isEmpty(), qPrintable(source));
            QVERIFY2(placeholders(source) == placeholders(translation), qPrintable(translation));
            ++count;
        }
        QVERIFY(!xml.hasError() && count > 100);
    }

    void installed()
    {
        const auto text = [] { return nivora::cs::assumptionText(nivora::cs::GuessAssumption::Feet); };
        const QString russian = text();
        QVERIFY(nivora::cs::installTranslations(QStringLiteral("en_GB.UTF-8")));
        QCOMPARE(text(), QStringLiteral("coordinates in feet"));
        QVERIFY(nivora::cs::installTranslations(QStringLiteral("ru")));
        QCOMPARE(text(), russian);
    }
};

NIVORA_TEST(TestTranslations)
#include "tst_translations.moc"
