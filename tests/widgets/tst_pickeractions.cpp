#include "Tests.h"

#include <coordsys/CalibrationStore.h>
#include <coordsys/CoordSysFactory.h>
#include <coordsys/CoordSystem.h>
#include <coordsys/CoordSystemCatalogModel.h>
#include <coordsys/CoordSystemFilterModel.h>
#include <coordsys/SystemGuess.h>
#include <coordsys/UserCoordSystem.h>
#include <support/Support.h>
#include <widgets/CoordSystemButton.h>
#include <widgets/CoordSystemDialog.h>
#include <widgets/WidgetTranslations.h>

#include <QApplication>
#include <QClipboard>
#include <QDialog>
#include <QFile>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSettings>
#include <QTimer>
#include <QTreeView>
#include <QTreeWidget>
#include <QXmlStreamReader>

#include <algorithm>
#include <cmath>

using namespace nivora::cs;
using Model = CoordSystemCatalogModel;

namespace {

QTreeView *shownList(const QWidget &dialog)
{
    const QList<QTreeView *> views = dialog.findChildren<QTreeView *>();
    const auto shown = std::find_if(views.begin(), views.end(), [](QTreeView *v) { return v->isVisible(); });
    return shown == views.end() ? nullptr : *shown;
}

QPushButton *buttonOf(const QWidget &dialog, const QString &text)
{
    for (QPushButton *button : dialog.findChildren<QPushButton *>())
        if (button->text().remove(QLatin1Char('&')) == text)
            return button;
    return nullptr;
}

QAction *actionOf(const QMenu &menu, const QString &text)
{
    for (QAction *action : menu.actions())
        if (action->text().remove(QLatin1Char('&')) == text)
            return action;
    return nullptr;
}

/// What stands in the sources.
QStringList textsOf(const QString &translation)
{
    QStringList texts;
    QFile file(QStringLiteral(NIVORA_TEST_RESOURCES "/../translations/") + translation);
    QXmlStreamReader xml(&file);
    for (file.open(QIODevice::ReadOnly); !xml.atEnd(); xml.readNext())
        if (xml.isStartElement() && xml.name() == QLatin1String("source"))
            texts << xml.readElementText();
    return texts;
}

bool isSamePlane(const CoordSystem &a, const CoordSystem &b)
{
    const QPointF place(38.5, 55.5);
    const QPointF apart = *a.toPlane(place) - *b.toPlane(place);
    return std::hypot(apart.x(), apart.y()) < 1e-3;
}

/// Opens the menu of the current row; \p use sees it open.
template <typename Use> void withMenu(const QWidget &dialog, Use &&use)
{
    QTreeView *list = shownList(dialog);
    QVERIFY(list && list->currentIndex().isValid());
    list->scrollTo(list->currentIndex());
    bool isSeen = false;
    QTimer::singleShot(0, list, [&] {
        auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        isSeen = menu != nullptr;
        if (menu) {
            use(*menu);
            menu->close();
        }
    });
    Q_EMIT list->customContextMenuRequested(list->visualRect(list->currentIndex()).center());
    QVERIFY(isSeen);
}

/// Answers the next question.
void answer(QMessageBox::StandardButton button)
{
    QTimer::singleShot(0, qApp, [button] {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        QVERIFY(box);
        box->button(button)->click();
    });
}

/// Triggers what the menu calls so; false when it has none of that.
bool trigger(const QWidget &dialog, const QString &text,
             QMessageBox::StandardButton answered = QMessageBox::NoButton)
{
    bool isThere = false;
    withMenu(dialog, [&](const QMenu &menu) {
        if (QAction *action = actionOf(menu, text)) {
            isThere = true;
            if (answered != QMessageBox::NoButton)
                answer(answered);
            action->trigger();
        }
    });
    return isThere;
}

} // namespace

class TestPickerActions : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        QSettings().clear();
        m_factory = support::shippedFactory();
    }

    /// Each notation that is copied is the system when it is read again.
    void copies()
    {
        CoordSystemDialog dialog(m_factory);
        dialog.show();
        const CoordSystemPtr system = m_factory->createFromEpsg(32637);
        dialog.picker()->setCoordSystem(system);
        QStringList texts;
        withMenu(dialog, [&](const QMenu &menu) {
            const QAction *copies = actionOf(menu, QStringLiteral("Копировать как"));
            QVERIFY(copies && copies->menu());
            for (QAction *action : copies->menu()->actions()) {
                action->trigger();
                texts << QApplication::clipboard()->text();
            }
        });
        QCOMPARE(texts.size(), 7);
        QCOMPARE(QStringList(texts).removeDuplicates(), 0);
        QCOMPARE(texts.last(), QStringLiteral("EPSG:32637"));
        for (const QString &text : texts)
            QVERIFY2(isSamePlane(*m_factory->createFromUserInput(text), *system), qPrintable(text));
    }

    void recentAndPinned()
    {
        const auto recent = [](const CoordSystemDialog &dialog) {
            const auto *model = qobject_cast<const Model *>(shownList(dialog)->model());
            return model->rowCount(model->sectionIndex(Model::RecentSystems));
        };
        CoordSystemDialog dialog(m_factory);
        dialog.show();
        dialog.picker()->setCoordSystem(m_factory->createFromEpsg(32637));
        QCOMPARE(recent(dialog), 0);
        QVERIFY(trigger(dialog, QStringLiteral("Закрепить в недавних")));
        QCOMPARE(recent(dialog), 1);
        for (const int code : {3857, 3395}) {
            dialog.picker()->setCoordSystem(m_factory->createFromEpsg(code));
            dialog.picker()->rememberChoice();
        }
        CoordSystemDialog again(m_factory);
        again.show();
        QCOMPARE(recent(again), 3);
        const auto *model = qobject_cast<Model *>(shownList(again)->model());
        const QModelIndex pinned = model->index(0, 0, model->sectionIndex(Model::RecentSystems));
        QCOMPARE(pinned.data(Model::CodeRole).toInt(), 32637);
        shownList(again)->setCurrentIndex(pinned);
        QVERIFY(!trigger(again, QStringLiteral("Закрепить в недавних")));
        QVERIFY(trigger(again, QStringLiteral("Убрать из недавних")));
        QCOMPARE(recent(again), 2);
    }

    /// The control points go with the user's system, and only with the last of its kind.
    void ownSystemRemoved()
    {
        const CoordSystemTypes::SourceData source{
            CoordSystem::Prj, QStringLiteral("Earth Projection 8, 104, \"m\", 38, 0, 1, 250000, 0")};
        const auto store = m_factory->userCoordSystem();
        for (const char *branch : {"first", "second"})
            store->update([&](UserCoordSystem &fresh) {
                fresh.setCoordSystem(QLatin1String(branch), source, QStringLiteral("site"));
                return true;
            });
        CalibrationRecord record;
        record.system = source;
        record.name = QStringLiteral("site");
        const CalibrationStore calibrations(store->fileInfo());
        calibrations.save(record);
        CoordSystemDialog dialog(m_factory);
        dialog.show();
        QTreeView *tree = shownList(dialog);
        const auto count = [&] {
            int systems = 0;
            const QModelIndex own = tree->model()->index(Model::OwnSystems, 0);
            for (int branch = 0; branch < tree->model()->rowCount(own); ++branch) {
                const QModelIndex parent = tree->model()->index(branch, 0, own);
                if (tree->model()->rowCount(parent) > 0)
                    tree->setCurrentIndex(tree->model()->index(0, 0, parent));
                systems += tree->model()->rowCount(parent);
            }
            return systems;
        };
        const auto remove = [&](QMessageBox::StandardButton button) {
            QVERIFY(count() > 0); // one of them is current then
            QVERIFY(trigger(dialog, QStringLiteral("Удалить"), button));
        };
        const int before = count();
        remove(QMessageBox::No);
        QCOMPARE(count(), before);
        remove(QMessageBox::Yes);
        QCOMPARE(calibrations.records().size(), 1);
        remove(QMessageBox::Yes);
        QCOMPARE(calibrations.records().size(), 0);
        QCOMPARE(count(), before - 2);
    }

    void withdrawn()
    {
        CoordSystemDialog dialog(m_factory);
        dialog.show();
        dialog.picker()->setCoordSystem(m_factory->createFromEpsg(31700));
        QVERIFY(dialog.picker()->isWithdrawn());
        answer(QMessageBox::No);
        dialog.accept();
        QVERIFY(dialog.isVisible() && !dialog.coordSystem());
        answer(QMessageBox::Yes);
        dialog.accept();
        QVERIFY(!dialog.isVisible());
        QCOMPARE(dialog.coordSystem()->epsg(), 31700);
    }

    void opened()
    {
        const CoordSystemPtr current = m_factory->createFromEpsg(28407);
        CoordSystemDialog *dialog = CoordSystemDialog::open(nullptr, current);
        QVector<CoordSystemPtr> told;
        connect(dialog, &CoordSystemDialog::chosen, this, [&](const CoordSystemPtr &cs) { told << cs; });
        QVERIFY(dialog->isVisible());
        dialog->accept();
        QCOMPARE(told, QVector<CoordSystemPtr>{current});
    }

    void button()
    {
        CoordSystemButton button(m_factory);
        button.show();
        button.setKinds(CoordSystemPicker::ProjectedKind);
        button.setCoordSystem(m_factory->createFromEpsg(28407));
        const QString text = button.text();
        int told = 0;
        connect(&button, &CoordSystemButton::coordSystemChanged, this, [&] { ++told; });
        button.click();
        auto *dialog = button.findChild<CoordSystemDialog *>();
        QVERIFY(dialog && dialog->isVisible());
        QCOMPARE(dialog->picker()->coordSystem(), button.coordSystem());
        dialog->picker()->setCoordSystem(m_factory->createFromEpsg(32637));
        QCOMPARE(told, 0);
        dialog->accept();
        QCOMPARE(told, 1);
        QCOMPARE(button.coordSystem()->epsg(), 32637);
        QVERIFY(button.text() != text);
    }

    /// Pasted coordinates lead to a system, which becomes the choice.
    void fromMyData()
    {
        CoordSystemDialog dialog(m_factory);
        dialog.show();
        QTimer::singleShot(0, this, [] {
            auto *guess = qobject_cast<QDialog *>(QApplication::activeModalWidget());
            QVERIFY(guess);
            guess->findChild<QPlainTextEdit *>()->setPlainText(
                QStringLiteral("652000 6862500\n653100 6861200\n651200 6863900"));
            guess->findChild<QLineEdit *>()->setText(QStringLiteral("Paris"));
            for (QPushButton *button : guess->findChildren<QPushButton *>())
                if (button->text().remove(QLatin1Char('&')) == QStringLiteral("Найти"))
                    button->click();
            auto *list = guess->findChild<QTreeWidget *>();
            QVERIFY(list->topLevelItemCount() > 0);
            list->setCurrentItem(list->topLevelItem(0));
            guess->accept();
        });
        QPushButton *guess = buttonOf(dialog, QStringLiteral("По моим данным…"));
        QVERIFY(guess);
        guess->click();
        QVERIFY(dialog.picker()->coordSystem());
        QCOMPARE(dialog.picker()->coordSystem()->epsg(), 2154);
    }

    /// A host's own texts are its own, whatever ours are in the same words.
    void hostTexts()
    {
        QVERIFY(installWidgetTranslations(QStringLiteral("en")));
        const QStringList texts =
            textsOf(QStringLiteral("nivora-cs_en.ts")) + textsOf(QStringLiteral("nivora-cs-widgets_en.ts"));
        QVERIFY(texts.size() > 300 && texts.contains(QStringLiteral("Код")));
        for (const QString &text : texts)
            QCOMPARE(QObject::tr(text.toUtf8().constData()), text);
        QCOMPARE(assumptionText(GuessAssumption::Feet), QStringLiteral("coordinates in feet"));
        const Model model(m_factory);
        QCOMPARE(model.headerData(0, Qt::Horizontal).toString(), QStringLiteral("Name"));
        installWidgetTranslations(QStringLiteral("ru"));
    }

private:
    std::shared_ptr<CoordSysFactory> m_factory;
};

std::unique_ptr<QObject> makeTestPickerActions() { return std::make_unique<TestPickerActions>(); }

#include "tst_pickeractions.moc"
