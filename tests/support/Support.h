#pragma once

#include "TestRunner.h"

#include <coordsys/CoordSysFactory.h>
#include <coordsys/CoordSystem.h>

#include <QByteArray>
#include <QDir>
#include <QPointF>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QTextStream>
#include <QtTest>

#include <cstring>
#include <memory>
#include <tuple>
#include <type_traits>
#include <typeinfo>
#include <utility>

/// Texts of the tests are UTF-8.
inline QString operator""_s(const char *text, std::size_t size)
{
    return QString::fromUtf8(text, static_cast<int>(size));
}

namespace support {

/// A text that may be given as a literal in UTF-8.
struct Text : QString
{
    Text(const char *utf8) // NOLINT: nullptr is the null text
        : QString(QString::fromUtf8(utf8))
    {}
    Text(const QByteArray &utf8)
        : QString(QString::fromUtf8(utf8))
    {}
    Text(const QString &text)
        : QString(text)
    {}
};

/// Up to eight columns of a _data() function. A call adds a row: its name, then a value for each column;
/// named() takes the first text for the name.
template <typename... T> class Columns
{
    template <typename V> using Cell = std::conditional_t<std::is_same_v<V, QString>, Text, V>;

public:
    Columns() { addColumns(std::index_sequence_for<T...>()); }
    void operator()(const Text &name, const Cell<T> &...cells) const { add(name, cells...); }
    void named(const Cell<T> &...cells) const { add(std::get<0>(std::tie(cells...)), cells...); }

    static constexpr const char *names[] = {"0", "1", "2", "3", "4", "5", "6", "7"};

private:
    template <std::size_t... i> static void addColumns(std::index_sequence<i...>)
    {
        (QTest::addColumn<T>(names[i]), ...);
    }
    static void add(const Text &name, const T &...cells)
    {
        (QTest::newRow(name.toUtf8().constData()) << ... << cells);
    }
};

/// The values of the current row.
template <typename... T> std::tuple<T...> row()
{
    int i = 0;
    const auto value = [&i](auto type) { // a braced list is evaluated from left to right
        const int id = qMetaTypeId<typename decltype(type)::type>();
        return *static_cast<typename decltype(type)::type *>(QTest::qData(Columns<>::names[i++], id));
    };
    return std::tuple<T...>{value(std::common_type<T>())...};
}

/// The shipped catalogues, and the small inputs of the tests.
QDir resources();
QDir data();

/// A factory over the shipped catalogues, initialised once per process and installed as default on each call.
std::shared_ptr<nivora::cs::CoordSysFactory> shippedFactory();

/// A system of that factory from a tagged string.
nivora::cs::CoordSystemPtr made(const Text &tagged);

/// Ends the test when the file cannot be written.
void writeFile(const QString &path, const QByteArray &content);

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
template <typename E, typename F> QString thrownInstead(F &&call, const Text &text, bool prefix = false)
{
    try {
        call();
    } catch (const E &e) {
        const QString got = QString::fromUtf8(e.what());
        const bool isCoded = std::strstr(typeid(e).name(), "CodedError"); // the same with a code
        if (typeid(e) != typeid(E) && !isCoded)
            return QStringLiteral("a derived type was thrown: %1").arg(QString::fromLatin1(typeid(e).name()));
        const bool same = prefix ? got.startsWith(text) : got == text;
        return same ? QString() : QStringLiteral("text was: ") + got;
    } catch (const std::exception &e) {
        return QStringLiteral("other exception: %1 %2")
            .arg(QString::fromLatin1(typeid(e).name()), QString::fromUtf8(e.what()));
    }
    return QStringLiteral("nothing was thrown");
}

/// Numbers, points and rectangles within a tolerance (the unit is the caller's).
inline bool near(double a, double b, double tolerance) { return qAbs(a - b) <= tolerance; }
bool near(const QPointF &a, const QPointF &b, double tolerance);
bool near(const QRectF &a, const QRectF &b, double tolerance);

} // namespace support

/// Fails the test with what happened instead of the exception. No lambda around the call: clang lets none
/// capture the parts of a row.
#define VERIFY_THROWS_AS(Type, call, text, prefix)                                                           \
    do {                                                                                                     \
        QString instead_ = QStringLiteral("nothing was thrown");                                             \
        try {                                                                                                \
            (void)(call);                                                                                    \
        } catch (...) {                                                                                      \
            instead_ = support::thrownInstead<Type>([] { throw; }, text, prefix);                            \
        }                                                                                                    \
        QCOMPARE(instead_, QString());                                                                       \
    } while (false)
#define VERIFY_THROWS(Type, call, text) VERIFY_THROWS_AS(Type, call, text, false)
/// The same for the beginning of the text.
#define VERIFY_THROWS_LIKE(Type, call, text) VERIFY_THROWS_AS(Type, call, text, true)

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
