#include "Tests.h"

#include <coordsys/CalibrationStore.h>
#include <coordsys/CoordSystem.h>
#include <coordsys/CoordTransform.h>
#include <coordsys/UserCoordSystem.h>
#include <support/Support.h>
#include <widgets/CalibrationDialog.h>

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTimer>

#include <cmath>

using namespace nivora::cs;

namespace {

/// Rows as a spreadsheet has them in a country with decimal commas, a heading first; P4 is spoilt.
QString rows(double turn)
{
    QString text = "Точка\tx\ty\tE\tN\r\n"_s;
    for (int i = 0; i < 9; ++i) {
        const double x = 100.0 * (i % 3) + 7.0 * i, y = 120.0 * (i / 3) + 3.0 * i;
        const double noise = 0.01 * std::sin(37.0 * i * i),
                     east = 500100.0 + std::cos(turn) * x - std::sin(turn) * y;
        const double north = 6200200.0 + std::sin(turn) * x + std::cos(turn) * y;
        const double values[] = {x, y, east + noise + (i == 3 ? 0.9 : 0.0), north - noise};
        text += "P%1"_s.arg(i + 1);
        for (const double value : values)
            text += QLatin1Char('\t') +
                    QString::number(value, 'f', 3).replace(QLatin1Char('.'), QLatin1Char(','));
        text += "\r\n"_s;
    }
    return text;
}

struct Shown
{
    explicit Shown(double turn = 0.2,
                   const std::shared_ptr<CoordSysFactory> &factory = support::shippedFactory())
        : dialog(factory)
    {
        dialog.setKnownSystem(support::made("EPSG:32637"));
        taken = dialog.paste(rows(turn));
        dialog.show();
        const auto tables = dialog.findChildren<QTableWidget *>();
        points = tables.first()->columnCount() == 10 ? tables.first() : tables.last();
        models = tables.first() == points ? tables.last() : tables.first();
    }
    double rmsOf(int model) const { return models->item(model, 1)->text().toDouble(); }
    QPushButton *button(const QString &text) const
    {
        for (QPushButton *button : dialog.findChildren<QPushButton *>())
            if (button->text() == text)
                return button;
        return nullptr;
    }

    CalibrationDialog dialog;
    int taken = 0;
    QTableWidget *points;
    QTableWidget *models;
};

} // namespace

class TestCalibrationDialog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(support::shippedFactory()); }

    void switchesPoints()
    {
        Shown s;
        QCOMPARE(s.taken, 9);
        QCOMPARE(s.dialog.model(), CalibrationModel::Similarity);
        QVERIFY(s.rmsOf(1) > 0.1 && s.points->item(3, 9)->text() == "ошибка?"_s);
        s.points->item(3, 0)->setCheckState(Qt::Unchecked);
        QVERIFY2(s.rmsOf(1) < 0.02 && s.points->item(3, 9)->text().isEmpty(),
                 qPrintable(s.models->item(1, 1)->text()));
        QVERIFY(s.points->item(3, 8)->text().toDouble() > 0.8);
        s.points->item(3, 0)->setCheckState(Qt::Checked);
        QVERIFY(s.rmsOf(1) > 0.1);
    }

    // A cell that is no number takes its point away and says so; nothing else is lost.
    void halfTypedRows()
    {
        Shown s;
        s.points->item(5, 2)->setText("12a"_s);
        QCOMPARE(s.dialog.pairs().size(), 8);
        QCOMPARE(s.points->item(5, 9)->text(), "не число"_s);
        s.points->item(5, 2)->setText("135,000"_s);
        QCOMPARE(s.dialog.pairs().size(), 9);
        QVERIFY(s.points->item(5, 9)->text().isEmpty());
        s.dialog.setPairs({});
        QVERIFY(!s.button("&Сохранить…"_s)->isEnabled());
        QCOMPARE(s.dialog.paste("no\tnumbers\there\tat\tall\n1;2\n"_s), 0);
    }

    // What makes no system cannot be saved, and says why.
    void refusedModels()
    {
        Shown s(1.4);
        s.dialog.setModel(CalibrationModel::TransverseMercator);
        QVERIFY(!s.button("&Сохранить…"_s)->isEnabled());
        s.dialog.setModel(CalibrationModel::Polynomial);
        QVERIFY(!s.button("&Сохранить…"_s)->isEnabled());
        s.dialog.setModel(CalibrationModel::Affine);
        QVERIFY(s.button("&Сохранить…"_s)->isEnabled());
    }

    // Weights, heights and what the seven-parameter shift needs are typed, kept and brought back.
    void shiftOfDatum()
    {
        Shown s;
        s.dialog.setPairs({});
        s.dialog.setKnownSystem(support::made("EPSG:4326"));
        s.dialog.setModel(CalibrationModel::DatumShift);
        QVERIFY(!s.button("&Сохранить…"_s)->isEnabled() && s.points->isColumnHidden(6));
        s.dialog.setLocalSystem(support::made("proj:+proj=longlat +ellps=krass +no_defs"));
        QVERIFY(!s.points->isColumnHidden(6));
        const CoordTransform shift(
            support::made("proj:+proj=longlat +ellps=krass +towgs84=25,-141,-78.5,0,0.35,0.736,0 +no_defs"),
            support::made("EPSG:4326"));
        for (int i = 0; i < 6; ++i) {
            const QPointF place(30.0 + i, 50.0 + (i * i) % 5);
            QPointF known;
            QVERIFY(shift.forward(place, known));
            QCOMPARE(s.dialog.paste("P;%1;%2;%3;%4;2"_s.arg(place.x(), 0, 'g', 15)
                                        .arg(place.y(), 0, 'g', 15)
                                        .arg(known.x(), 0, 'g', 15)
                                        .arg(known.y(), 0, 'g', 15)),
                     1);
        }
        QCOMPARE(s.dialog.pairs().at(3).weight, 2.0);
        QVERIFY(std::isnan(s.dialog.pairs().at(3).localHeightM));
        QVERIFY(s.button("&Сохранить…"_s)->isEnabled());
        QVERIFY(s.rmsOf(4) < 0.01);
        s.points->item(3, 5)->setText("-1"_s);
        QCOMPARE(s.dialog.pairs().size(), 5);
    }

    void savesWithThePoints()
    {
        const QTemporaryDir dir;
        const auto factory =
            std::make_shared<CoordSysFactory>(support::resources(), QDir(dir.path()), "ru"_s);
        QVERIFY(factory->initCoordSystemEnvironment());
        Shown s(0.2, factory);
        s.points->item(3, 0)->setCheckState(Qt::Unchecked);
        auto *units = s.dialog.findChild<QComboBox *>();
        QVERIFY(units && units->currentData().toInt() == LinearUnit::Meter);
        units->setCurrentIndex(units->findData(LinearUnit::SurveyFoot));
        Q_EMIT units->activated(units->currentIndex());
        QTimer::singleShot(0, this, [] {
            QApplication::activeModalWidget()->findChild<QLineEdit *>()->setText("Площадка"_s);
            static_cast<QDialog *>(QApplication::activeModalWidget())->accept();
        });
        s.button("&Сохранить…"_s)->click();
        QVERIFY(s.dialog.savedSystem());
        const auto record =
            CalibrationStore(factory->userCoordSystem()->fileInfo()).find(*s.dialog.savedSystem());
        QVERIFY(record && record->name == "Площадка"_s && record->pairs.size() == 9 &&
                !record->pairs.at(3).isUsed);
        QCOMPARE(record->unitCode, int(LinearUnit::SurveyFoot));
        QVERIFY(record->system.string.contains("\"survey ft\""_s));
        QVERIFY(record->calibration().fit(record->model).rmsM() < 0.02);
    }
};

std::unique_ptr<QObject> makeTestCalibrationDialog() { return std::make_unique<TestCalibrationDialog>(); }

#include "tst_calibration.moc"
