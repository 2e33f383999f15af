#include "Fuzz.h"

#include "Workshop.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>

namespace {

constexpr FuzzTarget targets[] = {
    {"coordsys", fuzzCoordSys},
    {"proj", fuzzProj},
    {"wkt", fuzzWkt},
    {"tagged", fuzzTagged},
    {"clauses", fuzzClauses},
    {"userinput", fuzzUserInput},
    {"systemfile", fuzzSystemFile},
    {"catalogue", fuzzCatalogue},
    {"parameters", fuzzParameters},
    {"bounds", fuzzBounds},
    {"oracle", fuzzOracle},
    {"user", fuzzUser},
    {"places", fuzzPlaces},
    {"record", fuzzRecord},
    {"mapheader", fuzzMapHeader},
    {"mif", fuzzMif},
    {"mapfile", fuzzMapFile},
    {"mgrs", fuzzMgrs},
    {"pointline", fuzzPointLine},
    {"csv", fuzzCsv},
    {"csvoptions", fuzzCsvOptions},
    {"lines", fuzzLines},
};

const FuzzTarget *chosen = nullptr;

const FuzzTarget *targetNamed(const char *name)
{
    for (const FuzzTarget &target : targets) {
        if (std::strcmp(target.name, name) == 0)
            return &target;
    }
    return nullptr;
}

void listTargets()
{
    for (const FuzzTarget &target : targets)
        std::puts(target.name);
}

} // namespace

void require(bool holds, const char *promise)
{
    if (holds)
        return;
    std::fprintf(stderr, "broken promise: %s\n", promise);
    std::abort();
}

/// libFuzzer passes over flags with two dashes: "--target=NAME" is ours, "--list" prints the names.
extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    constexpr char flag[] = "--target=";
    for (int i = 1; i < *argc; ++i) {
        const char *argument = (*argv)[i];
        if (std::strcmp(argument, "--list") == 0) {
            listTargets();
            std::exit(0);
        }
        if (std::strncmp(argument, flag, sizeof flag - 1) == 0)
            chosen = targetNamed(argument + sizeof flag - 1);
    }
    if (chosen == nullptr) {
        std::fputs("--target=NAME is missing or unknown; --list tells the names\n", stderr);
        std::exit(2);
    }
    Workshop::open();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size)
{
    const QByteArray input(reinterpret_cast<const char *>(data), static_cast<int>(size));
    try {
        chosen->run(input);
    } catch (const std::exception &) { // a refusal; whatever else is thrown ends the run
    }
    return 0;
}
