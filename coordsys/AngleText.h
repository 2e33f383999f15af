#pragma once

#include <coordsys/coordsys_export.h>

#include <string>
#include <string_view>

// Degrees, minutes and seconds as people write them. Texts are bytes of UTF-8, [p, end) or a view of them.
// Reasons are texts of the context "CoordSysTexts". All functions are thread-safe and throw nothing.
namespace nivora::cs {

/// What a hemisphere letter says about a coordinate.
enum class Axis { Unknown, Longitude, Latitude };

/// Degrees as people write them.
struct Angle
{
    /// Signed.
    double degrees = 0.0;
    /// As a hemisphere letter says.
    Axis axis = Axis::Unknown;
};

/// Language of hemisphere letters.
enum class Letters { Latin, Cyrillic };

/// Where a comma in an angle is a decimal mark: "37,5°", or "37,5E" too.
enum class DecimalCommas { BeforeMarks, BeforeLetters };

/// Reads the angle at the beginning of [p, end): decimal degrees, or degrees and minutes, or these and
/// seconds, only the last with decimals, each followed by its mark (° d, ' ′ ’, " ″ ” '' and the like; the
/// last may be missing) or separated by colons; a sign or a hemisphere letter before it, or the letter behind
/// it (N S E W, С Ю В З, с.ш., French O, German Ö and so on). With a letter also separated by dashes, or by
/// nothing in the full count of digits (554521.5N, 5545.358N, 0373702E). Blanks may stand behind a mark and
/// before a letter. Minutes are less than 60, seconds 60 at most: 59'60" is what rounding leaves behind.
/// \return behind the angle, null when there is none; then \p why tells the reason.
NIVORA_CS_EXPORT const char *parseAngle(const char *p, const char *end, DecimalCommas commas, Angle &angle,
                                        const char *&why);

/// An angle that takes up the whole text; blanks may separate its parts in place of marks.
NIVORA_CS_EXPORT bool readAngle(std::string_view text, Angle &angle, const char *&why);

/// An angle whose parts are columns of their own: up to three numbers and a letter, or the letter first. The
/// letter may be a column too.
struct AngleColumns
{
    const char *behind = nullptr; ///< null: there is none
    int count = 0;                ///< of numbers
    /// The letter stands before the numbers.
    bool letterFirst = false;
    bool valid = false; ///< false: it looks like one, but why tells what is wrong
    /// What is wrong, where valid is false.
    const char *why = "";
};
/// The one at \p p, with at most \p most numbers.
NIVORA_CS_EXPORT AngleColumns parseAngleColumns(const char *p, const char *end, int most,
                                                DecimalCommas commas, Angle &angle);

/// Whether a letter alone among the columns, or behind a number, can be a hemisphere.
NIVORA_CS_EXPORT bool hasHemisphereColumn(const char *p, const char *end);
/// Whether a hemisphere's letter stands at \p p.
NIVORA_CS_EXPORT bool isHemisphere(const char *p, const char *end);

constexpr int mostSecondDecimals = 9; ///< decimals of arc-seconds that are written
/// Bytes that putAngle() needs.
constexpr std::size_t longestAngle = 400;
/// Behind the angle, written as 55°45'21.5"N. Values of more than a thousand turns are written as decimals.
NIVORA_CS_EXPORT char *putAngle(char *at, double degrees, bool latitude, int decimals, Letters letters);

} // namespace nivora::cs
