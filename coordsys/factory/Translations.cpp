#include <coordsys/Translations.h>

#include <QCoreApplication>
#include <QPointer>
#include <QTranslator>

namespace nivora::cs {
namespace {

/// Owned by the application, so that it dies before a host's statics.
QPointer<QTranslator> &installed()
{
    static QPointer<QTranslator> translator;
    return translator;
}

} // namespace

bool installTranslations(const QString &language)
{
    QCoreApplication *const app = QCoreApplication::instance();
    if (!app)
        return false;
    delete installed().data(); // takes itself out of the application
    if (language.startsWith(QLatin1String("ru"), Qt::CaseInsensitive))
        return true;
    installed() = new QTranslator(app);
    return installed()->load(QStringLiteral(":/translations/nivora-cs_en.qm")) &&
           QCoreApplication::installTranslator(installed());
}

} // namespace nivora::cs
