// nivora-soak threads SECONDS | kills ROUNDS | start [RESOURCES] | bare [RESOURCES] | plugin
// What each does stands in Soak.h; "bare" starts without a QCoreApplication, "plugin" loads and unloads the
// library.

#include "Soak.h"

#include <QCoreApplication>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>

namespace {

int loadAndUnload()
{
    for (int round = 0; round < 3; ++round) {
        void *plugin = dlopen(SOAK_PLUGIN, RTLD_NOW | RTLD_LOCAL);
        if (!plugin) {
            std::fprintf(stderr, "%s\n", dlerror());
            return Refused;
        }
        const auto start = reinterpret_cast<int (*)(const char *)>(dlsym(plugin, "soakStartUp"));
        const int status = start(nullptr);
        dlclose(plugin);
        if (status != Right)
            return status;
    }
    return Right;
}

} // namespace

int main(int argc, char **argv)
{
    const char *what = argc > 1 ? argv[1] : "";
    const char *argument = argc > 2 ? argv[2] : nullptr;
    const auto is = [what](const char *name) { return std::strcmp(what, name) == 0; };
    if (is("bare"))
        return soakStartUp(argument);
    const QCoreApplication app(argc, argv);
    if (is("plugin"))
        return loadAndUnload();
    if (is("start"))
        return soakStartUp(argument);
    if (is("threads") && argument)
        return soakThreads(std::atoi(argument));
    if (is("kills") && argument)
        return soakKills(std::atoi(argument));
    std::fputs("nivora-soak threads SECONDS | kills ROUNDS | start [RESOURCES] | bare [RESOURCES] | plugin\n",
               stderr);
    return 2;
}
