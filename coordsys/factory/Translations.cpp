#include <coordsys/Translations.h>

#include "CoordSysTexts_p.h"

#include <QCoreApplication>
#include <QPointer>
#include <QTranslator>

/// Those of a static library are not there by themselves: nothing refers to them. In no namespace, as
/// Q_INIT_RESOURCE wants it.
static void initResources()
{
#ifdef NIVORA_CS_STATIC_DEFINE
    Q_INIT_RESOURCE(nivora_cs_en);
#endif
}

namespace nivora::cs {
namespace {

constexpr const char *englishTexts = ":/translations/nivora-cs_en.qm";

/// Whether there are any.
bool setTextsWithoutApplication(bool isRussian)
{
    static const QTranslator *const english = [] {
        initResources();
        auto *made = new QTranslator;
        return made->load(QLatin1String(englishTexts)) ? made : nullptr;
    }();
    CoordSysTexts::setWithoutApplication(isRussian ? nullptr : english);
    return isRussian || english;
}

/// Owned by the application, so that it dies before a host's statics.
QPointer<QTranslator> &installed()
{
    static QPointer<QTranslator> translator;
    return translator;
}

} // namespace

bool installTranslations(const QString &language)
{
    const bool isRussian = language.startsWith(QLatin1String("ru"), Qt::CaseInsensitive);
    QCoreApplication *const app = QCoreApplication::instance();
    if (!app)
        return setTextsWithoutApplication(isRussian);
    delete installed().data(); // takes itself out of the application
    if (isRussian)
        return true;
    initResources();
    installed() = new QTranslator(app);
    return installed()->load(QLatin1String(englishTexts)) && QCoreApplication::installTranslator(installed());
}

} // namespace nivora::cs
