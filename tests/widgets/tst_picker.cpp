#include "Tests.h"

#include <coordsys/CalibrationStore.h>
#include <coordsys/CoordSysFactory.h>
#include <coordsys/CoordSystem.h>
#include <coordsys/CoordSystemFilterModel.h>
#include <coordsys/CoordTransform.h>
#include <coordsys/MapinfoSearch.h>
#include <coordsys/SystemSearch.h>
#include <coordsys/UserCoordSystem.h>
#include <support/Support.h>
#include <widgets/CoordSystemDialog.h>
#include <widgets/OperationPicker.h>
#include <widgets/WidgetTranslations.h>

#include <QAccessible>
#include <QAccessibleInterface>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScopeGuard>
#include <QSettings>
#include <QSignalSpy>
#include <QTreeView>

#include <algorithm>

#include <time.h>

using namespace nivora::cs;

namespace {

constexpr int settled = 300000; // milliseconds: a busy machine, sanitizers, the database to be read

struct Dialog
{
    Dialog()
        : dialog(support::shippedFactory())
    {
        dialog.show();
        search = dialog.findChild<QLineEdit *>();
        ok = dialog.findChild<QPushButton *>();
        for (QPushButton *button : dialog.findChildren<QPushButton *>())
            if (button->isDefault())
                ok = button;
    }
    /// The list in front, null behind a message.
    QTreeView *list() const
    {
        for (QTreeView *view : dialog.findChildren<QTreeView *>())
            if (view->isVisible())
                return view;
        return nullptr;
    }
    bool hasFound(const QString &text)
    {
        QTest::keyClicks(search, text);
        return QTest::qWaitFor([this] { return isAnswered(); }, settled);
    }
    bool isAnswered() const
    {
        const auto *found = list() ? qobject_cast<CoordSystemFilterModel *>(list()->model()) : nullptr;
        return found && !found->isPending() && found->text() == search->text();
    }
    QString shownText() const
    {
        QStringList texts;
        for (const QLabel *label : dialog.findChildren<QLabel *>())
            if (label->isVisible())
                texts << label->text();
        return texts.join(QLatin1Char('\n'));
    }

    CoordSystemDialog dialog;
    QLineEdit *search;
    QPushButton *ok;
};

/// Milliseconds of the processor that this thread has used: other programs run, too.
double threadTime()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return double(time.tv_sec) * 1e3 + double(time.tv_nsec) / 1e6;
}

int codeIn(const QTreeView &list, int row) { return list.model()->index(row, 1).data().toInt(); }

} // namespace

class TestPicker : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { QSettings().clear(); }
    void cleanup() { installWidgetTranslations(QStringLiteral("ru")); }

    void languages_data()
    {
        QTest::addColumn<QString>("language");
        QTest::newRow("ru") << "ru";
        QTest::newRow("en") << "en";
    }

    /// Search, arrow, Enter; and the choice is the first of the recent ones the next time, reached by keys,
    /// too.
    void byKeyboard_data() { languages_data(); }
    void byKeyboard()
    {
        QFETCH(QString, language);
        QVERIFY(installWidgetTranslations(language));
        Dialog d;
        QVERIFY(d.hasFound(QStringLiteral("utm 37")));
        const int second = codeIn(*d.list(), 1);
        QVERIFY(second > 0 && second != codeIn(*d.list(), 0));
        QTest::keyClick(d.search, Qt::Key_Down);
        QTest::keyClick(d.search, Qt::Key_Return);
        QCOMPARE(d.dialog.result(), int(QDialog::Accepted));
        QCOMPARE(d.dialog.coordSystem()->epsg(), second);

        Dialog again; // my systems with their branches, recently used, the first of them
        for (int i = 0;
             i < 6 && again.list()->currentIndex().data().toString() != d.dialog.coordSystem()->description();
             ++i)
            QTest::keyClick(again.search, Qt::Key_Down);
        QTest::keyClick(again.search, Qt::Key_Return);
        QVERIFY2(again.dialog.coordSystem(), qPrintable(again.shownText()));
        QCOMPARE(again.dialog.coordSystem()->epsg(), second);
    }

    void byMouse_data() { languages_data(); }
    void byMouse()
    {
        QFETCH(QString, language);
        QVERIFY(installWidgetTranslations(language));
        Dialog d;
        QVERIFY(!d.ok->isEnabled());
        QVERIFY(d.hasFound(QStringLiteral("amersfoort")));
        const QRect row = d.list()->visualRect(d.list()->model()->index(2, 0));
        const int third = codeIn(*d.list(), 2);
        QTest::mouseClick(d.list()->viewport(), Qt::LeftButton, {}, row.center());
        QTest::mouseClick(d.ok, Qt::LeftButton);
        QVERIFY(d.dialog.coordSystem());
        QCOMPARE(d.dialog.coordSystem()->epsg(), third);
    }

    /// The neighbour under the pointer becomes the choice; the other button asks what is used there.
    void byMap()
    {
        Dialog d;
        QWidget *map = nullptr;
        for (QWidget *widget : d.dialog.findChildren<QWidget *>())
            if (widget->accessibleName() == QStringLiteral("Карта мира"))
                map = widget;
        QVERIFY(d.hasFound(QStringLiteral("32637")));
        QTRY_VERIFY_WITH_TIMEOUT(d.shownText().contains(QLatin1String("EPSG:32637")), settled);
        // A zone from the equator to 84 degrees is shown on the whole world.
        const QPoint at45E50N((45 + 180) * map->width() / 360, (90 - 50) * map->height() / 180);
        QTest::mouseClick(map, Qt::LeftButton, {}, at45E50N);
        QVERIFY(d.dialog.picker()->coordSystem());
        QCOMPARE(d.dialog.picker()->coordSystem()->epsg(), 32638);
        QTest::mouseClick(map, Qt::RightButton, {}, at45E50N);
        QTRY_VERIFY_WITH_TIMEOUT(d.list() && d.list()->model()->rowCount() > 20, settled);
    }

    void texts_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("code"); // 0: cannot be chosen
        QTest::addColumn<QString>("says");
        QTest::newRow("CoordSys text")
            << R"(CoordSys Earth Projection 8, 1001, "m", 39, 0, 1, 7500000, 0)" << 28407 << "28407";
        QTest::newRow("text that cannot be read")
            << "CoordSys Earth Projection 99, 104" << 0 << QStringLiteral("Систему нельзя создать");
        QTest::newRow("own system that cannot be made")
            << "hopeless" << 0 << QStringLiteral("Систему нельзя создать");
        QTest::newRow("code of a geocentric system")
            << "EPSG:4978" << 0 << QStringLiteral("КС не имеет плановой части");
        QTest::newRow("one word too many")
            << "32637 qwertyq" << 32637 << QStringLiteral("без слова «qwertyq»");
    }
    void texts()
    {
        QFETCH(QString, text);
        QFETCH(int, code);
        QFETCH(QString, says);
        const auto store = support::shippedFactory()->userCoordSystem();
        const CoordSystem::SourceData hopeless{CoordSystem::Epsg, QStringLiteral("1")};
        store->setCoordSystem(QStringLiteral("branch"), hopeless, QStringLiteral("hopeless"));
        Dialog d;
        d.search->setText(text);
        QTRY_VERIFY_WITH_TIMEOUT(d.shownText().contains(says), settled);
        QCOMPARE(d.ok->isEnabled(), code > 0);
        QTest::keyClick(d.search, Qt::Key_Return);
        QCOMPARE(d.dialog.isVisible(), code == 0);
        const CoordSystemPtr chosen = d.dialog.coordSystem();
        QCOMPARE(chosen ? chosen->epsg() : 0, code);
        store->removeCoordSystem(QStringLiteral("branch"), hopeless);
    }

    /// Where no authority tells the area: around the control points, else by the system's own bounds.
    void statedArea()
    {
        const QString text = QStringLiteral("Earth Projection 8, 1001, \"m\", 42.1, 0, 1, 250000, 0 "
                                            "Bounds (200000, 6200000) (300000, 6300000)");
        const auto isShown = [&text](const QString &says) {
            Dialog d;
            d.search->setText(QStringLiteral("CoordSys ") + text);
            return QTest::qWaitFor([&] { return d.shownText().contains(says); }, settled);
        };
        QVERIFY(isShown(QStringLiteral("по границам")));
        CalibrationRecord record;
        record.system = {CoordSystem::Prj, text};
        record.name = QStringLiteral("site");
        record.known = {CoordSystem::Epsg, QStringLiteral("4326")};
        record.pairs = {{QStringLiteral("A"), {251000.0, 6240000.0}, {42.1, 56.3}},
                        {QStringLiteral("B"), {252000.0, 6242000.0}, {42.2, 56.4}}};
        const CalibrationStore store(support::shippedFactory()->userCoordSystem()->fileInfo());
        store.save(record);
        const auto removed = qScopeGuard([&] { store.remove(record.system); });
        QVERIFY(isShown(QStringLiteral("вокруг контрольных точек")));
    }

    /// What was given comes back until another system is chosen: its own object, shown where its like stands.
    void given_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("code"); // in the details
        QTest::newRow("by code") << "EPSG:28407"
                                 << "EPSG:28407";
        QTest::newRow("CoordSys text") << R"(CoordSys Earth Projection 8, 104, "m", 39, 0, 0.9996, 500000, 0)"
                                       << "EPSG:32637";
        QTest::newRow("affine")
            << R"(CoordSys Earth Projection 8, 1001, "m", 39, 0, 1, 7500000, 0 Affine Units "m", 1, 0, 5, 0, 1, 6)"
            << "EPSG:28407";
        QTest::newRow("in no list") << "+proj=tmerc +lat_0=0 +lon_0=38.123 +k=1 +x_0=1 +y_0=2 +ellps=krass"
                                    << "";
    }
    void given()
    {
        QFETCH(QString, text);
        QFETCH(QString, code);
        const CoordSystemPtr system = support::shippedFactory()->createFromUserInput(text);
        system->setDescription(QStringLiteral("a name of its own"));
        Dialog d;
        d.dialog.picker()->setCoordSystem(system);
        QCOMPARE(d.dialog.picker()->coordSystem(), system);
        QTRY_VERIFY_WITH_TIMEOUT(d.shownText().contains(QStringLiteral("a name of its own")), settled);
        QVERIFY2(d.shownText().contains(code), qPrintable(d.shownText()));
        QCOMPARE(d.list()->currentIndex().isValid(), !code.isEmpty());
        QVERIFY(d.hasFound(QStringLiteral("utm 37"))); // a search that is given up changes nothing
        d.search->clear();
        QTest::mouseClick(d.ok, Qt::LeftButton);
        QCOMPARE(d.dialog.coordSystem(), system);
        QCOMPARE(d.dialog.coordSystem()->description(), QStringLiteral("a name of its own"));
    }

    /// Enter in the field of the place takes the place and leaves the window open; coordinates in the search
    /// are a place, too.
    void places()
    {
        Dialog d;
        d.dialog.picker()->setCoordSystem(support::shippedFactory()->createFromEpsg(4326));
        d.dialog.picker()->filterByPoint({37.6, 55.7});
        for (QLineEdit *field : d.dialog.findChildren<QLineEdit *>())
            if (field != d.search && field->isVisible())
                QTest::keyClick(field, Qt::Key_Return);
        QVERIFY(d.dialog.isVisible());
        d.dialog.picker()->clearPlaceFilter();
        d.search->setText(QStringLiteral("37.6, 55.7"));
        QTRY_VERIFY_WITH_TIMEOUT(d.list() && d.list()->model()->rowCount() > 20, settled);
        d.search->clear();
        QVERIFY(!qobject_cast<CoordSystemFilterModel *>(d.list()->model()));
    }

    /// What the host does not take is no choice; none at all is one where it is allowed.
    void kinds()
    {
        Dialog d;
        d.dialog.picker()->setKinds(CoordSystemPicker::ProjectedKind);
        d.dialog.picker()->setCoordSystem(support::shippedFactory()->createFromEpsg(4326));
        QVERIFY(!d.dialog.picker()->coordSystem());
        d.dialog.picker()->setCoordSystem(support::shippedFactory()->createFromEpsg(32637));
        QVERIFY(d.dialog.picker()->coordSystem());
        int told = 0;
        connect(&d.dialog, &CoordSystemDialog::chosen, this, [&](const CoordSystemPtr &cs) { told += !cs; });
        d.dialog.setNoSystemAllowed(true);
        for (QPushButton *button : d.dialog.findChildren<QPushButton *>())
            if (button->text() == QStringLiteral("Без системы"))
                button->click();
        QVERIFY(d.dialog.isNoSystem() && !d.dialog.coordSystem());
        QCOMPARE(told, 1);
    }

    /// The program's search, the list, and what typed text is told to be nearest give the same first system.
    void sameAnswers_data()
    {
        QTest::addColumn<QString>("text");
        for (const char *text : {"Tokyo UTM", "Prague Krovak", "utm 22s", "romania national grid",
                                 "google web", "берлин зона utm", "чехия кровак", "texas feet south",
                                 "lambert paris 93", "гаусс крюгер самара", "квартал южный Вязники"})
            QTest::newRow(text) << QString::fromUtf8(text);
    }
    void sameAnswers()
    {
        QFETCH(QString, text);
        const auto factory = support::shippedFactory();
        const QString branch = QStringLiteral("Места");
        const CoordSystem::SourceData own{
            CoordSystem::Prj, QStringLiteral("Earth Projection 8, 1001, 7, 42.1, 0, 1, 250000, 0")};
        UserCoordSystem &store = *factory->userCoordSystem();
        store.setCoordSystem(branch, own, QStringLiteral("Квартал Южный, Вязники"));
        const auto removed = qScopeGuard([&] { store.removeCoordSystem(branch, own); });
        const QVector<MapinfoSearch::Hit> hits = systemSearch(*factory)->find(text, 1);
        QVERIFY(!hits.isEmpty());
        Dialog d;
        d.search->setText(text);
        QVERIFY(QTest::qWaitFor([&] { return d.isAnswered(); }, settled));
        QCOMPARE(codeIn(*d.list(), 0), std::max(0, hits.first().epsg));
        QCOMPARE(d.list()->model()->index(0, 0).data().toString(), hits.first().name);
        try {
            QCOMPARE(factory->createFromUserInput(text)->epsg(), hits.first().epsg);
        } catch (const std::runtime_error &e) {
            const QString told = QString::fromUtf8(e.what()).section(QStringLiteral("Ближайшее: "), 1);
            const MapinfoSearch::Hit &hit = hits.first();
            const QString code = hit.isOwn() ? QString() : QStringLiteral(" (%1)").arg(hit.code);
            QVERIFY2(told.startsWith(hit.name + code), e.what());
        }
    }

    /// Every operation that works can be chosen, and the choice kept as text; what does not fit is not taken.
    void operations()
    {
        const auto factory = support::shippedFactory();
        const CoordSystemPtr target = factory->createFromEpsg(4326);
        for (const char *code : {"27700", "28407", "4267", "2056", "32637"}) {
            OperationPicker picker;
            int told = 0;
            connect(&picker, &OperationPicker::choiceChanged, this, [&told] { ++told; });
            const QString system = QString::fromLatin1(code);
            picker.setSystems(factory->createFromUserInput(system), target);
            auto *list = picker.findChild<QComboBox *>();
            QVERIFY(picker.choice().isDefault() && list->count() > 1);
            for (int i = 1; i < list->count(); ++i) {
                list->setCurrentIndex(i);
                Q_EMIT list->activated(i);
                QCOMPARE(told, i);
                QVERIFY(list->itemText(i).startsWith(
                    CoordTransform(factory->createFromUserInput(system), target, picker.choice())
                        .operations()
                        .at(i - 1)
                        .shortName));
                QCOMPARE(OperationChoice::fromText(picker.choice().toText()), picker.choice());
            }
        }
    }

    /// The chosen operation goes with the system that it fits.
    void operationOfChoice()
    {
        const auto factory = support::shippedFactory();
        CoordSystemPicker picker(factory);
        QComboBox *list = picker.findChild<OperationPicker *>()->findChild<QComboBox *>();
        const auto one = OperationChoice().withOperation(QStringLiteral("EPSG:1314"));
        picker.setCoordSystem(factory->createFromEpsg(27700));
        picker.setOperationChoice(one);
        QVERIFY(list->isHidden() || !picker.isVisible());
        QVERIFY(picker.operationChoice().isDefault()); // nobody goes anywhere
        picker.setTarget(factory->createFromEpsg(4326));
        QCOMPARE(picker.operationChoice(), one);
        QSignalSpy told(&picker, &CoordSystemPicker::operationChanged);
        picker.setOperationChoice(OperationChoice().withOperation(QStringLiteral("EPSG:1311")));
        QCOMPARE(picker.operationChoice(), one); // of another pair
        picker.setCoordSystem(factory->createFromEpsg(28407));
        QVERIFY(picker.operationChoice().isDefault());
        QCOMPARE(told.size(), 1);
        picker.setCoordSystem(nullptr);
        QVERIFY(picker.operationChoice().isDefault());
        QCOMPARE(list->count(), 1);
    }

    /// A screen reader has a name for whatever gets the focus, and no text is left in the wrong language.
    void words()
    {
        QVERIFY(installWidgetTranslations(QStringLiteral("en")));
        Dialog d;
        static const QRegularExpression russian(QStringLiteral("[А-Яа-я]"));
        for (QWidget *widget : d.dialog.findChildren<QWidget *>()) {
            if (widget->focusPolicy() == Qt::NoFocus || qobject_cast<QLabel *>(widget) ||
                widget->objectName().startsWith(QLatin1String("qt_")))
                continue;
            QAccessibleInterface *face = QAccessible::queryAccessibleInterface(widget);
            const QString name = face ? face->text(QAccessible::Name) : QString();
            QVERIFY2(!name.isEmpty(), widget->metaObject()->className());
            QVERIFY2(!russian.match(name).hasMatch(), qPrintable(name));
        }
        QVERIFY2(!russian.match(d.shownText()).hasMatch(), qPrintable(d.shownText()));
    }

    /// Every keystroke is answered. What one costs the thread of the windows, the list laid out and painted,
    /// is told, not judged: machines differ, and the sanitizers change it.
    void keystrokes()
    {
        Dialog d;
        QVERIFY(d.hasFound(QStringLiteral("u")));
        QVector<double> handled;
        QVector<double> painted;
        for (const char *text : {"tm 37", "wgs 84 utm zone", "гаусса крюгера зона 7", "32637", "germany",
                                 "moscow utm", "a", "nad83 / california zone 3"}) {
            d.search->clear();
            for (const QChar c : QString::fromUtf8(text)) {
                const double start = threadTime();
                QTest::sendKeyEvent(QTest::Click, d.search, Qt::Key_unknown, QString(c), Qt::NoModifier);
                handled << threadTime() - start;
                QVERIFY(QTest::qWaitFor([&] { return d.isAnswered() || !d.list(); }, settled));
                QCoreApplication::processEvents();
                painted << threadTime() - start;
            }
        }
        std::sort(handled.begin(), handled.end());
        std::sort(painted.begin(), painted.end());
        const int last = handled.size() - 1;
        qInfo("%d keystrokes, ms: handled %.2f (median) %.2f (most), answered and painted %.2f %.2f",
              last + 1, handled.at(last / 2), handled.at(last), painted.at(last / 2), painted.at(last));
    }
};

std::unique_ptr<QObject> makeTestPicker() { return std::make_unique<TestPicker>(); }

#include "tst_picker.moc"
