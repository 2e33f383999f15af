#include "Support.h"

#include <QLoggingCategory>
#include <QMutex>

#include <cmath>

using nivora::cs::CoordSysFactory;

namespace support {
namespace {

QMutex captureMutex;
QStringList captured;
QtMessageHandler previousHandler = nullptr;

void capture(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    const QLatin1String category(context.category);
    const bool trace = category == QLatin1String("nivora.cs.trace");
    if (!trace && category != QLatin1String("nivora.cs")) {
        if (previousHandler)
            previousHandler(type, context, text);
        return;
    }
    const char *level = trace ? "trace" : type == QtDebugMsg ? "debug" : type == QtInfoMsg ? "info" : "error";
    const QMutexLocker lock(&captureMutex);
    captured << QLatin1String(level) + QStringLiteral(": ") + text;
}

} // namespace

QDir resources() { return QDir(QStringLiteral(NIVORA_TEST_RESOURCES)); }
QDir data() { return QDir(QStringLiteral(NIVORA_TEST_DATA)); }

std::shared_ptr<CoordSysFactory> shippedFactory()
{
    static const std::shared_ptr<CoordSysFactory> factory = [] {
        static const QTemporaryDir userDir;
        auto made =
            std::make_shared<CoordSysFactory>(resources(), QDir(userDir.path()), QStringLiteral("ru"));
        return made->initCoordSystemEnvironment() ? made : nullptr;
    }();
    CoordSysFactory::setDefaultCoordSysFactory(factory);
    return factory;
}

nivora::cs::CoordSystemPtr made(const Text &tagged)
{
    return shippedFactory()->createFromTaggedString(tagged);
}

void writeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(path));
}

LogCapture::LogCapture()
{
    {
        const QMutexLocker lock(&captureMutex);
        captured.clear();
    }
    QLoggingCategory::setFilterRules(QStringLiteral("nivora.cs*=true"));
    previousHandler = qInstallMessageHandler(capture);
}

LogCapture::~LogCapture()
{
    qInstallMessageHandler(previousHandler);
    previousHandler = nullptr;
    QLoggingCategory::setFilterRules(QString());
}

QStringList LogCapture::lines()
{
    const QMutexLocker lock(&captureMutex);
    return captured;
}

QStringList LogCapture::lines(const QString &level)
{
    QStringList result;
    const QString prefix = level + QStringLiteral(": ");
    for (const QString &line : lines())
        if (line.startsWith(prefix))
            result << line.mid(prefix.size());
    return result;
}

ResourceCopy::ResourceCopy()
{
    const QStringList files =
        resources().entryList({QStringLiteral("*.xml"), QStringLiteral("*.prj")}, QDir::Files);
    for (const QString &file : files)
        QFile::copy(resources().filePath(file), dir().filePath(file));
}

void ResourceCopy::write(const QString &file, const QByteArray &content) const
{
    writeFile(dir().filePath(file), content);
}

void ResourceCopy::remove(const QString &file) const { QFile::remove(dir().filePath(file)); }

bool near(const QPointF &a, const QPointF &b, double tolerance)
{
    return std::fabs(a.x() - b.x()) <= tolerance && std::fabs(a.y() - b.y()) <= tolerance;
}

bool near(const QRectF &a, const QRectF &b, double tolerance)
{
    return near(a.topLeft(), b.topLeft(), tolerance) &&
           near(QPointF(a.width(), a.height()), QPointF(b.width(), b.height()), tolerance);
}

} // namespace support
