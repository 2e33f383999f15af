#include "Soak.h"

#include <coordsys/UserCoordSystem.h>

#include <QTemporaryDir>

#include <csignal>
#include <cstdio>
#include <random>
#include <sys/wait.h>
#include <unistd.h>

using namespace nivora::cs;

namespace {

constexpr int sizes[] = {1, 300}; // entries of the two stores that are saved in turn

QList<UserCoordSystem::CsDataType> branchOf(int entries)
{
    UserCoordSystem::CsDataType branch{QStringLiteral("B"), {}};
    for (int i = 0; i < entries; ++i)
        branch.entries.append({{CoordSystemTypes::Wkt, QString::number(i)}, QStringLiteral("D"), nullptr});
    return {branch};
}

[[noreturn]] void saveForEver(const QFileInfo &file)
{
    const QList<UserCoordSystem::CsDataType> contents[] = {branchOf(sizes[0]), branchOf(sizes[1])};
    for (int i = 0;; ++i)
        UserCoordSystem::saveToFile(file, contents[i % 2], true);
}

/// Lets a process save for some microseconds after its start and kills it.
void killOne(const QFileInfo &file, unsigned microseconds)
{
    const pid_t child = fork();
    if (child == 0)
        saveForEver(file);
    usleep(microseconds);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
}

bool isWhole(const QDir &dir)
{
    UserCoordSystem store(dir);
    store.loadFromFile(false);
    const int entries = store.data().size() == 1 ? store.data().front().entries.size() : 0;
    return entries == sizes[0] || entries == sizes[1];
}

} // namespace

int soakKills(int rounds)
{
    const QTemporaryDir temporary;
    const QDir dir(temporary.path());
    const QFileInfo file(dir, QStringLiteral("UserCoordSystem.xml"));
    UserCoordSystem::saveToFile(file, branchOf(sizes[0]), false);
    std::mt19937 random(1);
    int broken = 0;
    for (int round = 0; round < rounds; ++round) {
        killOne(file, 500U + static_cast<unsigned>(random() % 20000U));
        broken += isWhole(dir) ? 0 : 1;
    }
    UserCoordSystem::saveToFile(file, branchOf(sizes[0]), true);
    const int left = dir.entryList(QDir::Files).size();
    std::printf("%d kills, %d damaged files, %d files in the end\n", rounds, broken, left);
    return broken == 0 && left == 1 ? Right : Wrong;
}
