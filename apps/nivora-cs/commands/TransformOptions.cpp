#include "TransformOptions.h"

#include "AnswerJson.h"
#include "OperationText.h"
#include "Output.h"

#include <QObject>

Letters lettersOf(const CommandLine &line)
{
    const QString language = line.value("letters");
    if (language == QLatin1String("ru"))
        return Letters::Cyrillic;
    if (line.isSet("letters") && language != QLatin1String("en"))
        throw Failure(QObject::tr("--letters takes ru or en, not \"%1\"").arg(language));
    return Letters::Latin;
}

int secondDecimals(const CommandLine &line, bool hasDegrees)
{
    constexpr int fitting = 5; // a third of a millimetre
    if (line.isSet("precision"))
        throw Failure(QObject::tr("--dms has its own count of decimals: --dms=N in place of --precision"));
    if (!hasDegrees)
        throw Failure(QObject::tr("--dms: the system of the output has no degrees"));
    return line.number("dms", 0, mostSecondDecimals, fitting);
}

void printExplanation(const CommandLine &line, const Explanation &explanation)
{
    const QString amount = line.value("explain");
    if (amount != QLatin1String("short") && amount != QLatin1String("all"))
        throw Failure(QObject::tr("--explain takes all or nothing, not \"%1\"").arg(amount));
    if (line.isSet("json"))
        printJson({{QStringLiteral("operations"), explanationJson(explanation)}});
    else
        print(explanationText(explanation, amount == QLatin1String("all") ? Detail::All : Detail::Short));
}
