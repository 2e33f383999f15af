#include "CoordSysTexts_p.h"

#include <QCoreApplication>
#include <QTranslator>

#include <atomic>

namespace nivora::cs {
namespace {

constexpr const char *context = "CoordSysTexts";

std::atomic<const QTranslator *> textsWithoutApplication{nullptr};

} // namespace

QString CoordSysTexts::tr(const char *text)
{
    const QTranslator *const own = QCoreApplication::instance() ? nullptr : textsWithoutApplication.load();
    const QString translated = own ? own->translate(context, text) : QString();
    return translated.isEmpty() ? QCoreApplication::translate(context, text) : translated;
}

void CoordSysTexts::setWithoutApplication(const QTranslator *texts) { textsWithoutApplication = texts; }

} // namespace nivora::cs
