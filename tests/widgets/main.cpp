#include "Tests.h"

#include <QApplication>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

/// The first argument names a class, none both.
int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    const QTemporaryDir settings; // not the user's
    QSettings::setDefaultFormat(QSettings::IniFormat);
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settings.path());
    QCoreApplication::setOrganizationName(QStringLiteral("nivora-cs-tests"));
    QStringList arguments = QCoreApplication::arguments();
    const QString wanted = arguments.value(1);
    int failures = 0;
    for (const auto &make :
         {makeTestCalibrationDialog, makeTestCatalogModel, makeTestPicker, makeTestPickerActions}) {
        const std::unique_ptr<QObject> test = make();
        const QString name = QString::fromLatin1(test->metaObject()->className());
        if (wanted.startsWith(QLatin1String("Test")) && wanted != name)
            continue;
        arguments.removeAll(name);
        failures += QTest::qExec(test.get(), arguments);
    }
    return failures == 0 ? 0 : 1;
}
