#include <coordsys/Translations.h>

#include <QCoreApplication>
#include <QPointer>
#include <QTranslator>

#include <atomic>

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

/// Where there is no application: read by all threads, never taken away.
std::atomic<const QTranslator *> textsWithoutApplication{nullptr};

void setTextsWithoutApplication(bool isRussian)
{
    static const QTranslator *const english = [] {
        initResources();
        auto *made = new QTranslator;
        return made->load(QLatin1String(englishTexts)) ? made : nullptr;
    }();
    textsWithoutApplication = isRussian ? nullptr : english;
}

/// Owned by the application, so that it dies before a host's statics.
QPointer<QTranslator> &installed()
{
    static QPointer<QTranslator> translator;
    return translator;
}

} // namespace

/// The linker puts it in the place of QMetaObject::tr() in this library (--wrap), which asks the application
/// alone.
QString ownText(const QMetaObject *type, const char *text, const char *comment,
                int count) __asm__("__wrap__ZNK11QMetaObject2trEPKcS1_i");

QString ownText(const QMetaObject *type, const char *text, const char *comment, int count)
{
    const QTranslator *const own = QCoreApplication::instance() ? nullptr : textsWithoutApplication.load();
    const QString translated = own ? own->translate(type->className(), text, comment, count) : QString();
    return translated.isEmpty() ? QCoreApplication::translate(type->className(), text, comment, count)
                                : translated;
}

bool installTranslations(const QString &language)
{
    const bool isRussian = language.startsWith(QLatin1String("ru"), Qt::CaseInsensitive);
    QCoreApplication *const app = QCoreApplication::instance();
    if (!app) {
        setTextsWithoutApplication(isRussian);
        return isRussian || textsWithoutApplication;
    }
    delete installed().data(); // takes itself out of the application
    if (isRussian)
        return true;
    initResources();
    installed() = new QTranslator(app);
    return installed()->load(QLatin1String(englishTexts)) && QCoreApplication::installTranslator(installed());
}

} // namespace nivora::cs
