#include "Messages.h"

#include <coordsys/Translations.h>

#include <QCoreApplication>
#include <QRegularExpression>
#include <QTranslator>

namespace {

const QString russian = QStringLiteral("ru");

/// "ru_RU.UTF-8", "ru"; "russian" is an alias that systems know. "run_BI" is another language.
bool isRussian(const QString &locale)
{
    static const QRegularExpression form(QStringLiteral("^(ru|russian)([_.@]|$)"));
    return form.match(locale).hasMatch();
}

} // namespace

QString localeLanguage()
{
    for (const char *variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const QString locale = qEnvironmentVariable(variable);
        if (!locale.isEmpty())
            return isRussian(locale) ? russian : QStringLiteral("en");
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

QString translated(const char *text)
{
    const QString own = QCoreApplication::translate("QObject", text);
    return own == QString::fromUtf8(text) ? QCoreApplication::translate("CoordSysTexts", text) : own;
}
