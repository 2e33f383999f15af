#include <widgets/WidgetTranslations.h>

#include <coordsys/Translations.h>

#include <QCoreApplication>
#include <QPointer>
#include <QTranslator>

namespace nivora::cs {

bool installWidgetTranslations(const QString &language)
{
    static QPointer<QTranslator> installed; // the application owns it
    if (!installTranslations(language))
        return false;
    delete installed.data();
    if (language.startsWith(QLatin1String("ru"), Qt::CaseInsensitive))
        return true;
    installed = new QTranslator(QCoreApplication::instance());
    return installed->load(QStringLiteral(":/translations/nivora-cs-widgets_en.qm")) &&
           QCoreApplication::installTranslator(installed);
}

} // namespace nivora::cs
