#include <widgets/WidgetTranslations.h>

#include <coordsys/Translations.h>

#include <QCoreApplication>
#include <QPointer>
#include <QTranslator>

/// Of a static library; in no namespace, as Q_INIT_RESOURCE wants it.
static void initResources()
{
#ifdef NIVORA_CS_WIDGETS_STATIC_DEFINE
    Q_INIT_RESOURCE(nivora_cs_widgets_en);
#endif
}

namespace nivora::cs {

bool installWidgetTranslations(const QString &language)
{
    static QPointer<QTranslator> installed; // the application owns it
    if (!installTranslations(language))
        return false;
    delete installed.data();
    if (language.startsWith(QLatin1String("ru"), Qt::CaseInsensitive))
        return true;
    initResources();
    installed = new QTranslator(QCoreApplication::instance());
    return installed->load(QStringLiteral(":/translations/nivora-cs-widgets_en.qm")) &&
           QCoreApplication::installTranslator(installed);
}

} // namespace nivora::cs
