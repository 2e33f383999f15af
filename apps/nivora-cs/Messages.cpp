#include "Messages.h"

#include <coordsys/Translations.h>

#include <QCoreApplication>
#include <QTranslator>

namespace {

const QString russian = QStringLiteral("ru");

} // namespace

QString localeLanguage()
{
    for (const char *variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const QString locale = qEnvironmentVariable(variable);
        if (!locale.isEmpty())
            return locale.startsWith(russian) ? russian : QStringLiteral("en");
    }
    return QStringLiteral("en");
}

void setMessageLanguage(const QString &language)
{
    nivora::cs::installTranslations(language);
    if (language != russian)
        return; // what stands in the program's sources is English
    auto *const texts = new QTranslator(QCoreApplication::instance());
    if (texts->load(QStringLiteral(":/translations/nivora-cs-program_ru.qm")))
        QCoreApplication::installTranslator(texts);
}

QString translated(const char *text) { return QCoreApplication::translate("QObject", text); }
