#include "CliRun.h"

#include <support/Support.h>

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

namespace {

/// What of a JSON schema the answers' own uses.
class Schema
{
public:
    explicit Schema(const QJsonObject &root)
        : m_root(root)
    {}
    /// Empty when the value is as the schema says, else where it is not.
    QString fault(const QJsonValue &value) const { return fault(value, m_root, "$"_s); }

private:
    static QString typeOf(const QJsonValue &value, bool whole)
    {
        switch (value.type()) {
        case QJsonValue::Null:
            return "null"_s;
        case QJsonValue::Bool:
            return "boolean"_s;
        case QJsonValue::Double:
            return whole && value.toDouble() == std::floor(value.toDouble()) ? "integer"_s : "number"_s;
        case QJsonValue::String:
            return "string"_s;
        case QJsonValue::Array:
            return "array"_s;
        default:
            return "object"_s;
        }
    }
    QJsonObject resolved(const QJsonObject &rule) const
    {
        const QString name = rule.value("$ref"_s).toString().section(QLatin1Char('/'), -1);
        return name.isEmpty() ? rule : m_root.value("$defs"_s).toObject().value(name).toObject();
    }
    QString fault(const QJsonValue &value, const QJsonObject &reference, const QString &at) const
    {
        const QJsonObject rule = resolved(reference);
        if (rule.contains("anyOf"_s)) {
            QStringList faults;
            for (const QJsonValue &one : rule.value("anyOf"_s).toArray())
                faults << fault(value, one.toObject(), at);
            return faults.contains(QString()) ? QString() : faults.join(" or "_s);
        }
        const QJsonValue type = rule.value("type"_s);
        const QJsonArray types = type.isArray() ? type.toArray() : QJsonArray{type};
        if (!types.contains(typeOf(value, false)) && !types.contains(typeOf(value, true)))
            return at + " is a "_s + typeOf(value, false);
        return value.isArray()    ? faultOfArray(value.toArray(), rule, at)
               : value.isObject() ? faultOfObject(value.toObject(), rule, at)
                                  : QString();
    }
    QString faultOfArray(const QJsonArray &array, const QJsonObject &rule, const QString &at) const
    {
        if (rule.contains("minItems"_s) && array.size() != rule.value("minItems"_s).toInt())
            return at + " has another length"_s;
        for (int i = 0; i < array.size(); ++i)
            if (const QString wrong = fault(array.at(i), rule.value("items"_s).toObject(), at + "[]"_s);
                !wrong.isEmpty())
                return wrong;
        return {};
    }
    QString faultOfObject(const QJsonObject &object, const QJsonObject &rule, const QString &at) const
    {
        for (const QJsonValue &key : rule.value("required"_s).toArray())
            if (!object.contains(key.toString()))
                return at + " lacks "_s + key.toString();
        const QJsonObject properties = rule.value("properties"_s).toObject();
        for (auto member = object.begin(); member != object.end(); ++member) {
            const bool isKnown = properties.contains(member.key());
            if (!isKnown && rule.value("additionalProperties"_s) == QJsonValue(false))
                return at + " has "_s + member.key();
            const QString wrong = isKnown ? fault(member.value(), properties.value(member.key()).toObject(),
                                                  at + QLatin1Char('.') + member.key())
                                          : QString();
            if (!wrong.isEmpty())
                return wrong;
        }
        return {};
    }

    QJsonObject m_root;
};

} // namespace

/// What the program tells of operations, and every answer as JSON.
class TestCliAnswers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void json_data()
    {
        const support::Columns<QString, QString, QString> row; // arguments, input, a key of the answer
        row.named("info 32637 --json", "", "wkt2");
        row.named("info 4978 --json", "", "heights");
        row.named("info EPSG:25832+7837 --json", "", "heights");
        row.named("info 27700 --to 4258 --json", "", "operations");
        row.named("info 32637 --to 32637 --json --at 500000,6000000 --candidates", "", "place");
        row.named("info 9000 --to 7844 --json --at 134,-25", "", "operations");
        row.named("info 4326 --at 10,20 --candidates --json", "", "candidates");
        row.named("transform --from 4284 --to 32637 --explain --json", "", "operations");
        row.named("transform --from 27700 --to 4326 --explain=all --json --at 400000,300000", "",
                  "operations");
        row.named("measure --cs 2263 --json", "0 0\n1 0\n1 1\n\n0 0\n5 5", "measures");
        row.named("measure --cs 4326 --json", "0 90\n1 0\n", "measures");
        row.named("rect --from 4326 --to 32637 36 55 3 1 --json", "", "rect");
        row.named("grids --from 27700 --to 4258 --json --area -3,50,-2,51", "", "grids");
        row.named("guess - --json --near 37.6,55.7 --limit 3", "7415000 6181000\n7417000 6183000\n", "guess");
        row.named("list --json", "", "categories");
        row.named("list --json --category Benelux", "", "systems");
    }

    void json()
    {
        const auto [arguments, input, key] = support::row<QString, QString, QString>();
        QFile file(QStringLiteral(NIVORA_ANSWERS_SCHEMA));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const Schema schema(QJsonDocument::fromJson(file.readAll()).object());
        const CliRun done = run(words(arguments.toUtf8()), input.toUtf8());
        const QJsonObject answer = QJsonDocument::fromJson(done.out).object();
        QVERIFY2(done.status == 0 && answer.contains(key), done.describe());
        QCOMPARE(schema.fault(answer), QString());
    }

    void closing_data()
    {
        // Arguments, input, exit status, the line behind everything else.
        const support::Columns<QString, QString, int, QString> row;
        const QString two = "37.6 55.7\n10 80\n"_s;
        const QString left = "1 ballpark (without Pulkovo 1942 → World Geodetic System 1984)\n"_s;
        row.named("--from 4284 --to 32637", two, 0,
                  "1 point by \"Pulkovo 1942 to WGS 84 (20)\", 3 m; "_s + left);
        row.named("--from 4284 --to 32637 --strict", two, 1,
                  "1 point by \"Pulkovo 1942 to WGS 84 (20)\", 3 m\n");
        row.named("--from 4284 --to 32637 --no-ballpark", two, 0,
                  "1 point by \"Pulkovo 1942 to WGS 84 (16)\", 4.5 m; 1 point by");
        row.named("--from 32637 --to 4284 --inverse", two, 0, "1 point by \"Inverse of Pulkovo 1942 to");
        row.named("--from 4277 --to 4326 --operation EPSG:1196", "-3 55\n", 0,
                  "1 point by \"OSGB36 to WGS 84 (2)\", 10 m\n");
        row.named("--from 4258 --to 4326", "10 50\n", 0, "1 point by \"ETRS89 to WGS 84 (1)\", 2 m\n");
        row.named("--from 9000 --to 7844", "134 -25\n", 0,
                  "1 point by \"ITRF2014 to GDA2020 (1)\", 0.03 m (no epoch given)\n");
        row.named("--from 9000 --to 7844 --epoch 2020", "134 -25\n", 0,
                  "1 point by \"ITRF2014 to GDA2020 (1)\", 0.03 m\n");
        row.named("--from 4326 --to 4326", "1 2\n", 0, "the systems are equal");
        row.named("--from 4326 --to 32637", "x\n", 1, "no points\n");
        row.named("--from +proj=longlat~+ellps=krass~+nadgrids=absent.gsb --to 4326", "37 55\n", 1,
                  "no points: absent.gsb is missing, without which nothing is transformed\n");
    }

    void closing()
    {
        const auto [arguments, input, status, line] = support::row<QString, QString, int, QString>();
        QStringList options = words(arguments.toUtf8());
        options.replaceInStrings("~"_s, " "_s);
        const CliRun done = run(words("transform") + options, input.toUtf8());
        QVERIFY2(done.status == status && done.closing.startsWith(line.toUtf8()),
                 done.describe() + done.closing);
    }

    void explained_data()
    {
        const support::Columns<QString, QString> row;
        row.named("--from 4284 --to 32637 --explain", "Used in the middle of the common area (39, 58.5");
        row.named("--from 27700 --to 4258 --explain", "(0.03 m instead of 3 m); see nivora-cs grids\n");
        row.named("--from 4258 --to 4326 --explain",
                  "good to 1 m, World Geodetic System 1984 itself to 2 m\n");
        row.named("--from 9000 --to 7844 --explain", "at the right epoch only: give --epoch\n");
        row.named("--from 4284 --to 32637 --explain --at 10,80", "Used at 10, 80:\n    Ballpark");
        row.named("--from 4326 --to 4326 --explain", "Nothing to do");
    }

    void explained()
    {
        const auto [arguments, part] = support::row<QString, QString>();
        const CliRun done = run(words("transform") + words(arguments.toUtf8()));
        QVERIFY2(done.status == 0 && done.err.isEmpty() && done.out.contains(part.toUtf8()) &&
                     done.out.count('\n') < 20,
                 done.describe());
        const CliRun all = run(words("transform") +
                               words(QString(arguments).replace("explain"_s, "explain=all"_s).toUtf8()));
        QVERIFY(all.out.size() >= done.out.size());
    }

    void refused_data()
    {
        const support::Columns<QString, QString> row;
        row.named("transform --from 4277 --to 4326 --operation EPSG:1623", "joins S-JTSK");
        row.named("transform --from 4277 --to 4326 --max-error 1", "\"OSGB36 to WGS 84 (6)\", 2 m");
        row.named("rect --from 4277 --to 4326 --max-error 1 1 2 3 4", "No operation fits");
        row.named("transform --from 4277 --to 4326 --max-error 0", "greater than 0");
        row.named("transform --from 4277 --to 4326 --area 1,2,3", "no W,S,E,N");
        row.named("transform --from 4277 --to 4326 --at 1,2", "needs --explain");
        row.named("transform --from 4277 --to 4326 --explain=some", "--explain takes all");
    }

    void refused()
    {
        const auto [arguments, why] = support::row<QString, QString>();
        QVERIFY(run(words(arguments.toUtf8())).isRefusal(why));
    }
};

NIVORA_TEST(TestCliAnswers)
#include "tst_answers.moc"
