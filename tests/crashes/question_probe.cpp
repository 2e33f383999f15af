// Asks everything that can be asked of a system. Definitions come from standard input, one a line, as people
// type them; before each question its number and name go to standard output, so that whoever started this
// process knows which one ended it.

#include <coordsys/CoordSysFactory.h>
#include <coordsys/CoordSystem.h>
#include <coordsys/CoordTransform.h>
#include <coordsys/EpsgCandidates.h>
#include <coordsys/Measures.h>
#include <coordsys/Mgrs.h>
#include <coordsys/ProjLibMetadata.h>
#include <coordsys/ShiftQuality.h>
#include <coordsys/SystemInfo.h>
#include <coordsys/UserInput.h>

#include <QCoreApplication>
#include <QTemporaryDir>

#include <cstdio>
#include <functional>
#include <iostream>
#include <string>

using namespace nivora::cs;

namespace {

struct Question
{
    const char *name;
    std::function<void(const CoordSystemPtr &)> ask;
};

CoordSystemPtr systemOf(const QString &text)
{
    return CoordSysFactory::defaultCoordSysFactory()->createFromUserInput(text);
}

void convertBothWays(const CoordSystemPtr &from, const CoordSystemPtr &to)
{
    const CoordTransform transform(from, to);
    const SystemInfo info = systemInfo(*from);
    QPointF there;
    QPointF back;
    if (transform.inverse(info.areaCentre(), there))
        transform.forward(there, back);
    transform.operations();
}

/// What is written is read again: another system, with questions of its own.
Question rereadingOf(const char *name, SystemFormat format)
{
    return {name, [format](const CoordSystemPtr &cs) {
                const CoordSystemPtr read = systemOf(exportSystem(*cs, format));
                read->epsg();
                read->description();
                read->prjStr();
                cs->isEqual(read, true);
                convertBothWays(read, cs);
            }};
}

const std::vector<Question> &questions()
{
    static const std::vector<Question> all = {
        {"info", [](const CoordSystemPtr &cs) { systemInfo(*cs); }},
        {"epsg", [](const CoordSystemPtr &cs) { cs->epsg(); }},
        {"description", [](const CoordSystemPtr &cs) { cs->description(); }},
        {"unit", [](const CoordSystemPtr &cs) { cs->unit(); }},
        {"projStr", [](const CoordSystemPtr &cs) { cs->projStr(); }},
        {"search by text",
         [](const CoordSystemPtr &cs) { ProjLibMetadata().epsgForProjString(cs->projStr()); }},
        {"prjStr", [](const CoordSystemPtr &cs) { cs->prjStr(); }},
        {"exportToWkt2", [](const CoordSystemPtr &cs) { cs->exportToWkt2(); }},
        {"taggedString", [](const CoordSystemPtr &cs) { cs->taggedString(); }},
        {"bounds", [](const CoordSystemPtr &cs) { cs->rectNumericCoordSys(); }},
        {"candidates", [](const CoordSystemPtr &cs) { epsgCandidates(*cs); }},
        {"shift quality", [](const CoordSystemPtr &cs) { shiftQuality(*cs); }},
        {"clone", [](const CoordSystemPtr &cs) { cs->isEqual(cs->clone(), false); }},
        {"grid reference", [](const CoordSystemPtr &cs) { Mgrs(cs).getMGRSString(5e5, 5e6); }},
        {"transformation",
         [](const CoordSystemPtr &cs) {
             const auto factory = CoordSysFactory::defaultCoordSysFactory();
             convertBothWays(cs, factory->latLongWgs84CoordSystem());
         }},
        rereadingOf("as WKT 1", SystemFormat::Wkt1),
        rereadingOf("as WKT 2", SystemFormat::Wkt2),
        rereadingOf("as WKT of Esri", SystemFormat::Esri),
        rereadingOf("as PROJJSON", SystemFormat::ProjJson),
        rereadingOf("as PROJ text", SystemFormat::Proj),
        rereadingOf("as CoordSys text", SystemFormat::Mapinfo),
    };
    return all;
}

void tell(const QByteArray &line)
{
    std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stdout);
    std::fflush(stdout); // what is in a buffer dies with the process
}

/// What cannot be answered is told by an exception, which is an answer.
template <typename Call> void survive(const QByteArray &name, Call &&call)
{
    tell("? " + name + '\n');
    try {
        call();
    } catch (const std::exception &) {
    }
}

void askAll(const QString &definition)
{
    CoordSystemPtr cs;
    survive("reading", [&] { cs = systemOf(definition); });
    if (!cs)
        return;
    for (const Question &question : questions())
        survive(question.name, [&] { question.ask(cs); });
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication app(argc, argv);
    const QTemporaryDir userDir;
    const auto factory = std::make_shared<CoordSysFactory>(QStringLiteral(NIVORA_TEST_RESOURCES),
                                                           userDir.path(), QStringLiteral("en"));
    if (!factory->initCoordSystemEnvironment())
        return 2;
    CoordSysFactory::setDefaultCoordSysFactory(factory);
    for (std::string line; std::getline(std::cin, line);) {
        tell("= " + QByteArray::fromStdString(line) + '\n');
        askAll(QString::fromStdString(line));
    }
    tell(".\n");
    return 0;
}
