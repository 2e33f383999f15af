#pragma once

#include <coordsys/CoordSysFactory.h>

#include <QByteArray>
#include <QDir>
#include <QPointF>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QTextStream>
#include <QtTest>

#include <memory>
#include <typeinfo>

namespace support {

/// The shipped catalogues, and the small inputs of the tests.
QDir resources();
QDir data();

/// A factory over the shipped catalogues, initialised once per process and installed as default on each call.
std::shared_ptr<nivora::cs::CoordSysFactory> shippedFactory();

/// Puts the default factory back as it was.
class DefaultFactoryKeeper
{
public:
    DefaultFactoryKeeper()
        : m_saved(nivora::cs::CoordSysFactory::defaultCoordSysFactory())
    {}
    ~DefaultFactoryKeeper() { nivora::cs::CoordSysFactory::setDefaultCoordSysFactory(m_saved); }

private:
    std::shared_ptr<nivora::cs::CoordSysFactory> m_saved;
};

/// Collects what is logged while it lives, as "error: text", "info: text", "debug: text", "trace: text", and
/// keeps it off stderr. All levels are on. Not nestable.
class LogCapture
{
public:
    LogCapture();
    ~LogCapture();
    static QStringList lines();
    /// Lines of one level without the prefix.
    static QStringList lines(const QString &level);
};

/// A temporary directory with copies of the shipped catalogues, for tests that break them.
class ResourceCopy
{
public:
    ResourceCopy();
    QDir dir() const { return QDir(m_dir.path()); }
    void write(const QString &file, const QByteArray &content) const;
    void remove(const QString &file) const;

private:
    QTemporaryDir m_dir;
};

/// Empty when \p call throws exactly an E whose text is \p text (or begins with it, when \p prefix is set);
/// else what happened instead.
template <typename E, typename F> QString thrownInstead(F &&call, const QString &text, bool prefix = false)
{
    try {
        call();
    } catch (const E &e) {
        const QString got = QString::fromUtf8(e.what());
        if (typeid(e) != typeid(E))
            return QStringLiteral("a derived type was thrown: %1").arg(QString::fromLatin1(typeid(e).name()));
        const bool same = prefix ? got.startsWith(text) : got == text;
        return same ? QString() : QStringLiteral("text was: ") + got;
    } catch (const std::exception &e) {
        return QStringLiteral("other exception: %1 %2")
            .arg(QString::fromLatin1(typeid(e).name()), QString::fromUtf8(e.what()));
    }
    return QStringLiteral("nothing was thrown");
}

/// Points and rectangles within a tolerance (the unit is the caller's).
bool near(const QPointF &a, const QPointF &b, double tolerance);
bool near(const QRectF &a, const QRectF &b, double tolerance);

} // namespace support

/// Fails the test with what happened instead of the exception.
#define VERIFY_THROWS(Type, call, text)                                                                      \
    do {                                                                                                     \
        const QString instead = support::thrownInstead<Type>([&] { (void)(call); }, text);                   \
        QVERIFY2(instead.isEmpty(), qPrintable(instead));                                                    \
    } while (false)

#define VERIFY_NEAR(actual, expected, tolerance)                                                             \
    do {                                                                                                     \
        const auto a_ = (actual);                                                                            \
        const auto e_ = (expected);                                                                          \
        if (!support::near(a_, e_, tolerance)) {                                                             \
            QString text_;                                                                                   \
            QDebug(&text_) << qSetRealNumberPrecision(15) << a_ << "is not near" << e_;                      \
            QFAIL(qPrintable(text_));                                                                        \
        }                                                                                                    \
    } while (false)
