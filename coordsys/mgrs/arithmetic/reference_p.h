#pragma once

namespace mgrs {

constexpr int MAX_PRECISION = 5;
constexpr int powersOfTen[MAX_PRECISION + 1] = {1, 10, 100, 1000, 10000, 100000};

/// The parts of a reference. Letters are upper case.
struct Reference
{
    int zone = 0; ///< 0 for UPS
    char band = 0;
    char column = 0;
    char row = 0;
    int eastM = 0; ///< within the square
    int northM = 0;
    int size = 0;
};

/// Takes a text apart: blanks may stand between the parts, letters may be small. False for anything else.
bool readReference(const char *text, Reference &out);

} // namespace mgrs
